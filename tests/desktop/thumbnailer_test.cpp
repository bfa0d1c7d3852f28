// The installed thumbnailer as a file manager runs it: its entry read from the install's
// share/thumbnailers, its command line expanded and split, the program found on the install's
// bin/, and the PNG it writes read back with libpng.

#include <fcntl.h>
#include <png.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>

#include "notetool/notetool_run.h"

namespace {

namespace fs = std::filesystem;
using notetest::readPng;
using notetest::ScratchDir;
using notetest::ToolRun;

const std::string kPrefix = DESKTOP_PREFIX;
const std::string kEntry = kPrefix + "/" + DESKTOP_DATADIR + "/thumbnailers/notetool.thumbnailer";
const std::string kBin = kPrefix + "/" + DESKTOP_BINDIR;

// The keys of a desktop-entry file's group, as GLib's key files read them.
std::map<std::string, std::string> readGroup(const std::string& path, const std::string& group) {
    std::ifstream in(path);
    std::map<std::string, std::string> keys;
    std::string current;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            current = line.substr(1, line.size() - 2);
        } else if (current == group && line.find('=') != std::string::npos) {
            const std::size_t equals = line.find('=');
            keys[line.substr(0, equals)] = line.substr(equals + 1);
        }
    }
    return keys;
}

std::string shellQuoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// Splits a command line into words as a POSIX shell does (quotes and backslashes), which is
// what the file managers' g_shell_parse_argv does with an expanded Exec line.
std::vector<std::string> shellWords(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == ' ' || c == '\t') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
            continue;
        }
        inWord = true;
        if (c == '\'') {
            const std::size_t end = line.find('\'', i + 1);
            word += line.substr(i + 1, end - i - 1);
            i = end;
        } else if (c == '"') {
            for (++i; line[i] != '"'; ++i) word += line[i] == '\\' ? line[++i] : line[i];
        } else {
            word += c == '\\' ? line[++i] : c;
        }
    }
    if (inWord) words.push_back(word);
    return words;
}

// The Exec line with its field codes replaced as GNOME's thumbnail factory replaces them:
// %s the size, %i the input's path, %u its URI, %o the output, %% a percent sign, each value
// quoted for the shell; then split into words.
std::vector<std::string> expandExec(const std::string& exec, int size, const std::string& input, const std::string& output) {
    std::string line;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        if (exec[i] != '%' || i + 1 == exec.size()) {
            line += exec[i];
            continue;
        }
        switch (exec[++i]) {
        case 's': line += std::to_string(size); break;
        case 'i': line += shellQuoted(input); break;
        case 'u': line += shellQuoted("file://" + input); break;
        case 'o': line += shellQuoted(output); break;
        case '%': line += '%'; break;
        default: ADD_FAILURE() << "unknown field code %" << exec[i];
        }
    }
    return shellWords(line);
}

// The installed thumbnailer run on input, as a file manager runs it, with the install's bin/
// as its PATH.
ToolRun runThumbnailer(const ScratchDir& dir, const std::string& input, const std::string& output, int size = 256) {
    const auto entry = readGroup(kEntry, "Thumbnailer Entry");
    EXPECT_TRUE(fs::exists(kBin + "/" + entry.at("TryExec")));  // else the file manager skips the entry
    std::vector<std::string> argv = expandExec(entry.at("Exec"), size, input, output);
    if (argv.at(0).find('/') == std::string::npos) argv[0] = kBin + "/" + argv[0];
    return notetest::runTool(dir.path(""), argv);
}

// The tEXt chunks before the image data, where a thumbnail cache reads them.
std::map<std::string, std::string> textBeforePixels(const std::string& path) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::map<std::string, std::string> text;
    if (file && !setjmp(png_jmpbuf(png))) {
        png_init_io(png, file.get());
        png_read_info(png, info);
        png_textp chunks = nullptr;
        const int count = png_get_text(png, info, &chunks, nullptr);
        for (int i = 0; i < count; ++i) text[chunks[i].key] = chunks[i].text;
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return text;
}

// The grey levels of an RGBA picture.
std::vector<double> greys(const std::vector<uint8_t>& rgba) {
    std::vector<double> out;
    for (std::size_t i = 0; i < rgba.size(); i += 4) out.push_back(rgba[i]);
    return out;
}

// A page picture shrunk to width x height by exact area averaging: each pixel the mean of
// the page area it covers, partly covered pixels counting for the part they share.
std::vector<double> areaAverage(const std::vector<double>& page, int pageWidth, int pageHeight, int width, int height) {
    const double sx = double(pageWidth) / width;
    const double sy = double(pageHeight) / height;
    std::vector<double> out;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double sum = 0;
            for (int py = int(y * sy); py < std::min(pageHeight, int(std::ceil((y + 1) * sy))); ++py) {
                const double h = std::min(py + 1.0, (y + 1) * sy) - std::max(double(py), y * sy);
                for (int px = int(x * sx); px < std::min(pageWidth, int(std::ceil((x + 1) * sx))); ++px) {
                    const double w = std::min(px + 1.0, (x + 1) * sx) - std::max(double(px), x * sx);
                    sum += page[std::size_t(py) * pageWidth + px] * w * h;
                }
            }
            out.push_back(sum / (sx * sy));
        }
    return out;
}

// How many pixels differ by more than the blocks' edges on whole page pixels can explain: a
// thin stroke or rule that falls in one block or in the next moves a pixel by up to 40 levels.
int farApart(const std::vector<double>& a, const std::vector<double>& b) {
    int count = 0;
    for (std::size_t i = 0; i < a.size(); ++i) count += std::fabs(a[i] - b[i]) > 48;
    return count;
}

TEST(Thumbnailer, ShowsTheFirstPageWithTheAttributesOfItsFile) {
    ScratchDir dir;
    // A name a URI must escape, as users name their notes.
    const std::string note = dir.path("Meeting #3 50%.note");
    fs::copy_file(SAMPLE_NOTE, note);
    // Written long ago and read now: its modification time differs from every other time.
    const timespec times[2] = {{0, UTIME_NOW}, {1262304000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, note.c_str(), times, 0), 0);
    const ToolRun r = runThumbnailer(dir, note, dir.path("thumb.png"));
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");

    unsigned width = 0, height = 0;
    const std::vector<double> thumb = greys(readPng(dir.path("thumb.png"), width, height));
    EXPECT_EQ(width, 192u);  // the page's 1404 x 1872, fitted inside 256 x 256
    EXPECT_EQ(height, 256u);
    // The first page's ink where it is on the page: the page as render draws it, averaged
    // down. The second page, with other words on the same lines, is far from it.
    std::map<int, std::vector<double>> pages;
    for (int page : {1, 2}) {
        const std::string png = dir.path("page" + std::to_string(page) + ".png");
        const ToolRun render = notetest::notetool(dir, {"render", note, "--pages", std::to_string(page), "-o", png});
        ASSERT_EQ(render.code, 0) << render.err;
        unsigned w = 0, h = 0;
        const std::vector<double> full = greys(readPng(png, w, h));
        pages[page] = areaAverage(full, int(w), int(h), int(width), int(height));
    }
    EXPECT_EQ(farApart(thumb, pages[1]), 0);
    EXPECT_GT(farApart(thumb, pages[2]), 300) << farApart(thumb, pages[2]);

    struct stat st;
    ASSERT_EQ(::stat(note.c_str(), &st), 0);
    const std::map<std::string, std::string> expected = {
        {"Thumb::URI", "file://" + dir.path("Meeting%20%233%2050%25.note")},
        {"Thumb::MTime", "1262304000"},
        {"Thumb::Size", std::to_string(st.st_size)}};
    EXPECT_EQ(textBeforePixels(dir.path("thumb.png")), expected);
}

TEST(Thumbnailer, FitsThePageInsideTheSizeAskedForAndNeverEnlargesIt) {
    ScratchDir dir;
    const struct {
        int size;
        unsigned width, height;
    } cases[] = {{128, 96, 128}, {1024, 768, 1024}, {4096, 1404, 1872}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        ASSERT_EQ(runThumbnailer(dir, SAMPLE_NOTE, dir.path("t.png"), c.size).code, 0);
        unsigned width = 0, height = 0;
        readPng(dir.path("t.png"), width, height);
        EXPECT_EQ(width, c.width);
        EXPECT_EQ(height, c.height);
    }
}

// A note that cannot be drawn fails with one line naming it, and leaves no file: the file
// manager then shows its generic icon and records the failure.
TEST(Thumbnailer, BrokenNoteWritesNothing) {
    notewriter::Note twoPages;
    for (int page = 0; page < 2; ++page) {
        twoPages.pages.push_back({});
        twoPages.pages.back().layers = {{"MAINLAYER", std::vector<uint8_t>(notewriter::kPictureSize, 0x00), {}}};
    }
    notewriter::NoteSites sites;
    std::string firstPageBroken = notewriter::buildNote(twoPages, &sites);
    // The first page's picture claims more bytes than the file holds.
    firstPageBroken.replace(sites.pages.at(0).pictures.at("MAINLAYER"), 4, "\xFF\xFF\xFF\x7F");
    std::string sample = notetest::readWholeFile(SAMPLE_NOTE);
    const struct {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"empty", ""},
        {"text", "not a note at all\n"},
        {"cut short", sample.substr(0, sample.size() / 2)},
        {"first page broken", firstPageBroken},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScratchDir dir;
        const std::string note = dir.write("broken.note", c.bytes);
        const ToolRun r = runThumbnailer(dir, note, dir.path("thumb.png"));
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err.rfind("notetool: " + note + ": ", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        // Nothing but the note and the runner's own files: no thumbnail, no temporary file.
        EXPECT_EQ(notetest::filesIn(dir.path("")), (std::vector<std::string>{"broken.note", "stderr.txt", "stdout.txt"}));
    }
}

}  // namespace
