// notetool thumbnail: a note's first page as a small PNG, as file managers show a file. The
// desktop's .thumbnailer entry runs it for every note a folder shows, so it reads no more of
// the note than that page.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>

#include "commands.h"
#include "completion.h"
#include "console.h"
#include "output_file.h"
#include "palette.h"
#include "png_output.h"

namespace notetool {

namespace {

// From the smallest icon a file manager draws to well past the largest thumbnail it caches
// (1024); a page is never enlarged, so a larger size gives the page itself.
constexpr Bounds kThumbnailSizes{16, 4096, true};

// The characters a file URI's path keeps as they are: RFC 3986's unreserved ones and the
// sub-delimiters that GLib leaves unescaped too. File managers find a thumbnail by the MD5
// of the URI they make of the file with GLib, so Thumb::URI must be the same text.
bool keptInUri(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           (c != 0 && std::strchr("-._~!$&'()*+,=:@/", c) != nullptr);
}

// file:///absolute/path, the path's bytes percent-encoded where a URI needs it.
std::string fileUri(const std::string& path) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const unsigned char c : std::filesystem::absolute(path).lexically_normal().string()) {
        if (keptInUri(c)) {
            uri += static_cast<char>(c);
        } else {
            uri += '%';
            uri += kHex[c >> 4];
            uri += kHex[c & 0xF];
        }
    }
    return uri;
}

// The attributes of the Freedesktop thumbnail standard by which a cache knows whether a
// thumbnail still shows its file: the file's URI, its modification time and its size.
std::vector<std::pair<std::string, std::string>> thumbnailAttributes(const std::string& note) {
    struct stat st;
    if (::stat(note.c_str(), &st) != 0) throw ToolError(note + ": " + std::strerror(errno));
    return {{"Thumb::URI", fileUri(note)},
            {"Thumb::MTime", std::to_string(static_cast<long long>(st.st_mtime))},
            {"Thumb::Size", std::to_string(static_cast<long long>(st.st_size))}};
}

}  // namespace

CLI::App* addThumbnailOptions(CLI::App& app, ThumbnailArgs& args) {
    CLI::App* command = app.add_subcommand("thumbnail", "Draw a note's first page as a small PNG, as file managers show it");
    command->footer(
        "The first page is composited as render draws it and shrunk to fit inside SIZE x SIZE pixels (never "
        "enlarged), each pixel the mean of the page pixels it covers. The PNG carries the attributes of the "
        "Freedesktop thumbnail standard (Thumb::URI, Thumb::MTime, Thumb::Size) by which file managers keep "
        "thumbnails up to date. A note that cannot be read writes no file and exits with 1, and the file manager "
        "shows its generic icon. The installed share/thumbnailers/notetool.thumbnailer runs this command.");
    addPathOption(*command, "INPUT", args.note, "The note file")->required();
    offerFiles(addPathOption(*command, "OUTPUT", args.out, "The PNG file, or - for standard output")->required());
    command->add_option("-s,--size", args.size, "Fit the page inside SIZE x SIZE pixels (default 256)")
        ->check(numberFrom(kThumbnailSizes));
    return command;
}

int runThumbnail(const ThumbnailArgs& args) {
    // Taken before the note is read: a note that changes meanwhile gets a new thumbnail the
    // next time the file manager compares them.
    DocumentInfo info = documentInfo(args.note, 0, kCreator);
    info.attributes = thumbnailAttributes(args.note);
    const std::vector<int> pages = notePages(args.note);
    if (pages.empty()) throw ToolError(args.note + ": the note has no pages");
    std::vector<uint8_t> pixels(kPagePixels);
    composePage(args.note, pages.front(), LayerSelection{}, false, pixels.data());

    DrawingOptions options;
    options.scale = std::min(1.0, double(args.size) / std::max(kPageWidth, kPageHeight));
    try {
        OutputFile file(args.out);
        const std::unique_ptr<PageWriter> writer = openPng(file, options, info);
        writer->addPage(pixels.data());
        writer->finish();
        file.commit();
    } catch (const ToolError& e) {  // the writers name the output; the error line names the note first
        throw ToolError(args.note + ": " + e.what());
    }
    return kExitOk;
}

}  // namespace notetool
