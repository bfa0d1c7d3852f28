// Binding a reader to a note file, finding the index through the footer, and the page count.

#include <cerrno>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "notefiles.h"

using notetest::captureStdout;
using notewriter::NoteFile;

namespace {

const std::string kNoSuchFile = std::to_string(ENOENT) + ",errmsg:" + std::strerror(ENOENT);

// A note whose index names two pages and a style.
std::string twoPageNote(const std::string& tag, const std::string& marker) {
    NoteFile file(tag);
    return file.finish(file.block({{"PAGE1", "100"}, {"PAGE2", "200"}, {"STYLE_x", "300"}}), marker);
}

}  // namespace

TEST(FileBinding, PathsMustBeGivenAndExist) {
    notetest::ScratchDir dir;
    KwFileProcess file;
    bool bound = true;
    EXPECT_EQ(captureStdout([&] { bound = file.init_fileload(""); }), "init_fileload error.");
    EXPECT_FALSE(bound);
    EXPECT_EQ(captureStdout([&] { bound = file.init_datafile(""); }), "ERROR path is null");
    EXPECT_FALSE(bound);
    EXPECT_EQ(captureStdout([&] { bound = file.init_datafile(dir.path("missing.note")); }),
              "ERROR file is note exists.errno:" + kNoSuchFile);
    EXPECT_FALSE(bound);
    EXPECT_EQ(file.filePath, "");

    const std::string path = dir.write("a.note", "x");
    EXPECT_TRUE(file.init_datafile(path));
    EXPECT_EQ(file.filePath, path);
    EXPECT_FALSE(file.init_fileload(""));
    EXPECT_EQ(file.filePath, path);
}

// Each file is read by fetchIndex (code and messages) and counted by
// fetchTotalPageNumOfNote, which folds every failure into -1.
TEST(IndexAndPageCount, FooterLeadsToTheIndex) {
    notetest::ScratchDir dir;
    NoteFile empty;
    const struct {
        const char* name;
        std::string bytes;
        int code;
        std::string log;
    } cases[] = {
        {"good", twoPageNote(notewriter::kTag, "tail"), 0, ""},
        // Another tag: the marker is not looked at, the last 4 bytes are the site all the same.
        {"other tag", twoPageNote("KW_FILE_VER_20190001", "tAil"), 0, ""},
        {"wrong marker", twoPageNote(notewriter::kTag, "tAil"), 3, "file trail str error"},
        {"site past the end", empty.finish(empty.size() + 100), 17,
         "nSite is errorreadModuleItemFromFile error."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.write("a.note", c.bytes);
        KwFileProcess file;
        file.init_datafile(path);
        KwFileIndexModule index;
        index.vecModuleIndex = {{"OLD", 1}};
        int code = -1;
        EXPECT_EQ(captureStdout([&] { code = file.fetchIndex(index); }), c.log);
        EXPECT_EQ(code, c.code);
        // A failure leaves the index as it was.
        EXPECT_EQ(index.vecModuleIndex.size(), c.code == 0 ? 3u : 1u);

        int pages = 0;
        EXPECT_EQ(captureStdout([&] { pages = KwDataOperationFile().fetchTotalPageNumOfNote(path); }),
                  c.code == 0 ? "Num:2" : c.log + "fetchIndex error.");
        EXPECT_EQ(pages, c.code == 0 ? 2 : -1);
    }
}

TEST(IndexAndPageCount, UnreadableFiles) {
    notetest::ScratchDir dir;
    KwFileLoad file;
    KwFileIndexModule index;
    int code = -1;
    EXPECT_EQ(captureStdout([&] { code = file.fetchIndex(index); }), "open file failed-----errno:" + kNoSuchFile);
    EXPECT_EQ(code, 1);

    // Shorter than the tag: the tag read fails under the footer's message and separator.
    file.init_fileload(dir.write("short.note", "NOTEKW_FILE"));
    const std::string log = captureStdout([&] { code = file.fetchIndex(index); });
    EXPECT_EQ(code, 17);
    EXPECT_EQ(log.rfind("read file tail failed-----errno:", 0), 0u) << log;
    EXPECT_NE(log.find("errmsg:"), std::string::npos);
    EXPECT_EQ(log.find(",errmsg:"), std::string::npos);

    KwDataOperationFile op;
    EXPECT_EQ(captureStdout([&] { code = op.fetchTotalPageNumOfNote(file.filePath); }), log + "fetchIndex error.");
    EXPECT_EQ(code, -1);
    EXPECT_EQ(captureStdout([&] { code = op.fetchTotalPageNumOfNote(dir.path("none.note")); }),
              "ERROR file is note exists.errno:" + kNoSuchFile + "init_datafile failed");
    EXPECT_EQ(code, -1);
    EXPECT_EQ(captureStdout([&] { code = op.fetchTotalPageNumOfNote(""); }), "ERROR path is nullinit_datafile failed");
    EXPECT_EQ(code, -1);
}
