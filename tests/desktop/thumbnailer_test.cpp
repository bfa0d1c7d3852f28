// The installed thumbnailer as a file manager runs it: its entry read from the install's
// share/thumbnailers, its command line filled in, the program found on the install's bin/,
// and the PNG it writes read back with libpng.

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

#include "notetool_run.h"

namespace {

namespace fs = std::filesystem;
using namespace notetest;

const std::string kPrefix = DESKTOP_PREFIX;
const std::string kBin = kPrefix + "/" + DESKTOP_BINDIR;

// The keys of the installed entry's group, as GLib's key files read them.
std::map<std::string, std::string> thumbnailerEntry() {
    std::ifstream in(kPrefix + "/" + DESKTOP_DATADIR + "/thumbnailers/notetool.thumbnailer");
    std::map<std::string, std::string> keys;
    bool inGroup = false;
    for (std::string line; std::getline(in, line);) {
        const std::size_t equals = line.find('=');
        if (!line.empty() && line[0] == '[') inGroup = line == "[Thumbnailer Entry]";
        else if (inGroup && line[0] != '#' && equals != std::string::npos) keys[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return keys;
}

// The thumbnailer run on input as a file manager runs it: the Exec line split into words and
// each word's field codes replaced (%s the size, %i the input's path, %u its URI, %o the
// output, %% a percent sign), the program found on the install's bin/.
ToolRun runThumbnailer(const ScratchDir& dir, const std::string& input, const std::string& output, int size = 256) {
    const auto entry = thumbnailerEntry();
    EXPECT_TRUE(fs::exists(kBin + "/" + entry.at("TryExec")));  // else the file manager skips the entry
    const std::map<char, std::string> fields = {
        {'s', std::to_string(size)}, {'i', input}, {'u', "file://" + input}, {'o', output}, {'%', "%"}};
    std::vector<std::string> argv;
    std::istringstream words(entry.at("Exec"));
    for (std::string word; words >> word;) {
        std::string expanded;
        for (std::size_t i = 0; i < word.size(); ++i)
            expanded += word[i] == '%' && i + 1 < word.size() ? fields.at(word[++i]) : std::string(1, word[i]);
        argv.push_back(expanded);
    }
    if (argv.at(0).find('/') == std::string::npos) argv[0] = kBin + "/" + argv[0];
    return runTool(dir.path(""), argv);
}

// The first page as render draws it at that size, with the attributes by which a thumbnail
// cache knows its file, before the image data, where a cache stops reading.
TEST(Thumbnailer, ShowsTheFirstPageWithTheAttributesOfItsFile) {
    ScratchDir dir;
    const std::string note = dir.path("Meeting #3 50%.note");  // a name a URI must escape
    fs::copy_file(SAMPLE_NOTE, note);
    // Written long ago and read now: its modification time differs from every other time.
    const timespec times[2] = {{0, UTIME_NOW}, {1262304000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, note.c_str(), times, 0), 0);
    const ToolRun r = runThumbnailer(dir, note, dir.path("thumb.png"));
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");

    // The page's 1404 x 1872 fitted inside 256 x 256.
    ASSERT_EQ(notetool(dir, {"render", note, "--pages", "1", "--scale", "0.1367521367", "-o", dir.path("page.png")}).code, 0);
    unsigned width = 0, height = 0, pageWidth = 0, pageHeight = 0;
    const std::vector<uint8_t> thumb = readPng(dir.path("thumb.png"), width, height);
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(192u, 256u));
    EXPECT_TRUE(thumb == readPng(dir.path("page.png"), pageWidth, pageHeight));

    const std::string bytes = readWholeFile(dir.path("thumb.png"));
    const std::string attributes[][2] = {{"Thumb::URI", "file://" + dir.path("Meeting%20%233%2050%25.note")},
                                         {"Thumb::MTime", "1262304000"},
                                         {"Thumb::Size", std::to_string(fs::file_size(note))}};
    for (const auto& [key, value] : attributes) {
        const std::string text = key + '\0' + value;
        std::string chunk = {0, 0, char(text.size() >> 8), char(text.size())};  // its length, type and data
        chunk += "tEXt" + text;
        EXPECT_LT(bytes.find(chunk), bytes.find("IDAT")) << key;
    }
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
        EXPECT_EQ(std::make_pair(width, height), std::make_pair(c.width, c.height));
    }
}

// A note that cannot be drawn fails with one line naming it, and leaves no file: the file
// manager then shows its generic icon and records the failure.
TEST(Thumbnailer, BrokenNoteWritesNothing) {
    notewriter::NoteSites sites;
    std::string firstPageBroken = notewriter::buildNote(boxPages(2), &sites);
    // The first page's picture claims more bytes than the file holds.
    firstPageBroken.replace(sites.pages.at(0).pictures.at("MAINLAYER"), 4, "\xFF\xFF\xFF\x7F");
    for (const std::string& bytes : {std::string("not a note at all\n"), firstPageBroken}) {
        ScratchDir dir;
        const std::string note = dir.write("broken.note", bytes);
        const ToolRun r = runThumbnailer(dir, note, dir.path("thumb.png"));
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err.rfind("notetool: " + note + ": ", 0), 0u) << r.err;
        EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << r.err;
        // Nothing but the note and the runner's own files: no thumbnail, no temporary file.
        EXPECT_EQ(filesIn(dir.path("")), (std::vector<std::string>{"broken.note", "stderr.txt", "stdout.txt"}));
    }
}

}  // namespace
