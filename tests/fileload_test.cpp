// Binding a reader to a note file, finding the index through the footer, and the page count.

#include <cerrno>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "kwfileindexmodule.h"
#include "notefiles.h"
#include "notewriter.h"

using notetest::captureStdout;
using notewriter::NoteFile;

namespace {

const std::string kNoSuchFile = std::to_string(ENOENT) + ",errmsg:" + std::strerror(ENOENT);

// A note whose index names two pages and a style.
std::string threeEntryNote(const std::string& tag, const std::string& marker) {
    NoteFile file(tag);
    const uint64_t index = file.block({{"PAGE1", "100"}, {"PAGE2", "200"}, {"STYLE_x", "300"}});
    return file.finish(index, marker);
}

struct IndexRead {
    int result;
    std::string log;
    KwFileIndexModule index;
};

// fetchIndex on the file, into an index that already holds one entry.
IndexRead readIndex(const std::string& path) {
    IndexRead r{-1, "", {}};
    r.index.vecModuleIndex = {{"OLD", 1}};
    KwFileLoad loader;
    loader.init_fileload(path);
    r.log = captureStdout([&] { r.result = loader.fetchIndex(r.index); });
    return r;
}

}  // namespace

TEST(FileBinding, EmptyPathsAreRefusedAndKeepTheBoundPath) {
    KwFileLoad loader;
    EXPECT_TRUE(loader.init_fileload("a.note"));
    bool bound = true;
    EXPECT_EQ(captureStdout([&] { bound = loader.init_fileload(""); }), "init_fileload error.");
    EXPECT_FALSE(bound);
    EXPECT_EQ(loader.filePath, "a.note");

    KwFileProcess process;
    EXPECT_EQ(captureStdout([&] { bound = process.init_datafile(""); }), "ERROR path is null");
    EXPECT_FALSE(bound);
}

TEST(FileBinding, DataFileMustExist) {
    notetest::ScratchDir dir;
    KwFileProcess process;
    bool bound = true;
    EXPECT_EQ(captureStdout([&] { bound = process.init_datafile(dir.path("missing.note")); }),
              "ERROR file is note exists.errno:" + kNoSuchFile);
    EXPECT_FALSE(bound);
    EXPECT_EQ(process.filePath, "");

    const std::string path = dir.write("a.note", "x");
    EXPECT_EQ(captureStdout([&] { bound = process.init_datafile(path); }), "");
    EXPECT_TRUE(bound);
    EXPECT_EQ(process.filePath, path);
}

TEST(IndexLocation, FooterLeadsToTheIndex) {
    notetest::ScratchDir dir;
    IndexRead r = readIndex(dir.write("a.note", threeEntryNote(notewriter::kTag, "tail")));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(r.index.fetchAllModuleName(), (std::vector<std::string>{"PAGE1", "PAGE2", "STYLE_x"}));

    // Another tag: the marker is not looked at, the last 4 bytes are the site all the same.
    r = readIndex(dir.write("b.note", threeEntryNote("KW_FILE_VER_20190001", "tAil")));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.index.vecModuleIndex.size(), 3u);
}

TEST(IndexLocation, FailuresLeaveTheIndexAlone) {
    notetest::ScratchDir dir;
    IndexRead r = readIndex(dir.write("marker.note", threeEntryNote(notewriter::kTag, "tAil")));
    EXPECT_EQ(r.result, 3);
    EXPECT_EQ(r.log, "file trail str error");
    EXPECT_EQ(r.index.fetchAllModuleName(), (std::vector<std::string>{"OLD"}));

    // Shorter than the tag: the tag read fails, under the footer's message and separator.
    r = readIndex(dir.write("short.note", "NOTEKW_FILE"));
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(r.log.rfind("read file tail failed-----errno:", 0), 0u) << r.log;
    EXPECT_NE(r.log.find("errmsg:"), std::string::npos);
    EXPECT_EQ(r.log.find(",errmsg:"), std::string::npos);

    NoteFile file;
    r = readIndex(dir.write("past.note", file.finish(file.size() + 100)));
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(r.log, "nSite is errorreadModuleItemFromFile error.");
    EXPECT_EQ(r.index.vecModuleIndex.size(), 1u);

    r = readIndex(dir.path("missing.note"));
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.log, "open file failed-----errno:" + kNoSuchFile);
}

TEST(PageCount, CountsThePagesOfTheIndex) {
    notetest::ScratchDir dir;
    KwDataOperationFile op;
    int pages = 0;
    const std::string good = dir.write("a.note", threeEntryNote(notewriter::kTag, "tail"));
    EXPECT_EQ(captureStdout([&] { pages = op.fetchTotalPageNumOfNote(good); }), "Num:2");
    EXPECT_EQ(pages, 2);

    const std::string bad = dir.write("b.note", threeEntryNote(notewriter::kTag, "tAil"));
    EXPECT_EQ(captureStdout([&] { pages = op.fetchTotalPageNumOfNote(bad); }),
              "file trail str errorfetchIndex error.");
    EXPECT_EQ(pages, -1);

    EXPECT_EQ(captureStdout([&] { pages = op.fetchTotalPageNumOfNote(dir.path("none.note")); }),
              "ERROR file is note exists.errno:" + kNoSuchFile + "init_datafile failed");
    EXPECT_EQ(pages, -1);
    EXPECT_EQ(captureStdout([&] { pages = op.fetchTotalPageNumOfNote(""); }),
              "ERROR path is nullinit_datafile failed");
    EXPECT_EQ(pages, -1);
}
