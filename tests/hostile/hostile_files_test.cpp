// Note files built to break the reader: sites and lengths past the end, counts that no file
// could hold, runs and colour codes outside the picture, truncation, a folder for a file.
// Every public call must give its documented result without a crash, keep to its buffers,
// claim no more than 64 MB at its peak and leave no stream open.

#include <dirent.h>

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "capture.h"
#include "config.h"
#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "hostile_notes.h"
#include "notefiles.h"
#include "notewriter.h"
#include "peak_memory.h"

// AddressSanitizer's quarantine keeps freed pictures resident; a small one keeps the memory
// bound about the call under test rather than about the calls before it.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=16"; }

namespace {

using notetest::captureStdout;
using notewriter::Bytes;
using notewriter::kPictureSize;
using hostile::onePage;
using hostile::site;
using hostile::strokeWithPointCount;
using notewriter::NoteFile;

constexpr long kMemoryBound = 64L * 1024 * 1024;
constexpr std::size_t kGuard = 4096;  // bytes behind the picture that no call may touch
constexpr char kGuardByte = 0x5A;

int openStreams() {
    int n = 0;
    if (DIR* fds = opendir("/proc/self/fd")) {
        while (readdir(fds)) ++n;
        closedir(fds);
    }
    return n;
}

// Runs one call with its output captured, checking the two resources a hostile file could
// make it hold on to.
template <class F>
std::string bounded(F&& call) {
    const int streams = openStreams();
    std::string log;
    const long rise = peakmemory::growth([&] { log = captureStdout(call); });
    EXPECT_LE(rise, kMemoryBound) << log;
    EXPECT_EQ(openStreams(), streams) << log;
    return log;
}

// What the four public calls give for one file.
struct Results {
    int pages = 0;
    int picture = 0;
    std::vector<char> pixels;  // the picture, then the guard
    bool colours = false;
    int strokes = 0;
    std::vector<TrailContainer> trails;
    std::string log;  // of all four calls, in order
};

Results readAll(const std::string& path, int page = 1, const std::string& layer = "MAINLAYER") {
    KwDataOperationFile api;
    Results r;
    r.pixels.assign(kPictureSize, 0x77);
    r.pixels.resize(kPictureSize + kGuard, kGuardByte);
    r.trails.resize(1);
    r.log += bounded([&] { r.pages = api.fetchTotalPageNumOfNote(path); });
    r.log += bounded([&] { r.picture = api.fetchNoteDataFromFileByLayer(path, page, layer, r.pixels.data()); });
    r.log += bounded([&] {
        uint32_t* colours = api.loadImageData(path, page, layer);
        r.colours = colours != nullptr;
        delete[] colours;
    });
    r.log += bounded([&] { r.strokes = api.fetchNotePathFromFile(r.trails, path, page); });
    EXPECT_EQ(std::string(r.pixels.begin() + kPictureSize, r.pixels.end()), std::string(kGuard, kGuardByte))
        << "written past the picture";
    return r;
}

class HostileFiles : public ::testing::Test {
protected:
    std::string write(const std::string& bytes) { return dir_.write("hostile.note", bytes); }
    notetest::ScratchDir dir_;
};

// The footer's index site, and the index block's length, pointing anywhere: nothing past the
// file's end is read, and no length makes the reader allocate it.
TEST_F(HostileFiles, IndexOutsideTheFile) {
    struct Case {
        const char* what;
        std::string bytes;
        const char* log;
    };
    std::vector<Case> cases;
    {
        NoteFile f;
        f.block({{"PAGE1", "24"}});
        cases.push_back({"site past the end", f.finish(f.size() + 100), "nSite is error"});
        cases.push_back({"site 0xFFFFFFFF", f.finish(0xFFFFFFFFu), "nSite is error"});
    }
    {
        NoteFile f;
        cases.push_back({"length 0xFFFFFFFF", f.finish(f.rawBlock("<PAGE1:24>", 0xFFFFFFFFu)),
                         "content size is bigger than file size"});
    }
    {
        NoteFile f;
        cases.push_back({"no item", f.finish(f.rawBlock("<PAGE1><:>>>::")), "readModuleItemFromFile failed.\n"});
    }
    {
        NoteFile f;
        cases.push_back({"length 0", f.finish(f.rawBlock("")), "content read file failed-----errno:"});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Results r = readAll(write(c.bytes));
        EXPECT_EQ(r.pages, -1);
        EXPECT_EQ(r.picture, 26);
        EXPECT_FALSE(r.colours);
        EXPECT_EQ(r.strokes, 26);
        EXPECT_EQ(r.trails.size(), 1u) << "a failed call keeps the caller's strokes";
        EXPECT_NE(r.log.find(c.log), std::string::npos) << r.log;
    }
}

// Page, layer and bitmap blocks whose sites or lengths leave the file, up to the largest
// site a layer item can name.
TEST_F(HostileFiles, BlocksOutsideTheFile) {
    {
        NoteFile f;
        const uint64_t page = f.rawBlock("<MAINLAYER:24>", 0xFFFFFFFFu);
        const Results r = readAll(write(f.finish(f.block({{"PAGE1", site(page)}}))));
        EXPECT_EQ(r.pages, 1);
        EXPECT_EQ(r.picture, 26);
        EXPECT_EQ(r.strokes, 26);
        EXPECT_NE(r.log.find("content size is bigger than file size"), std::string::npos) << r.log;
    }
    {
        NoteFile f;
        const uint64_t layer = f.rawBlock("<LAYERBITMAP:24>", 0xFFFFFFFFu);
        const uint64_t page = f.block({{"MAINLAYER", site(layer)}});
        const Results r = readAll(write(f.finish(f.block({{"PAGE1", site(page)}}))));
        EXPECT_EQ(r.picture, 27);
        EXPECT_NE(r.log.find("content size is bigger than file size"), std::string::npos) << r.log;
    }
    // The largest site wraps past the size check and is refused by the seek.
    const struct { const char* site; const char* log; } bitmaps[] = {
        {"18446744073709551615", "fseek failed-----errno:22setInfoOfLayerFeature error"},
        {"4294967295", "compress data m_siteCompressData error."}};
    for (const auto& bitmap : bitmaps) {
        NoteFile f;
        const Results r = readAll(write(onePage(f, bitmap.site, "0")));
        EXPECT_EQ(r.picture, 27) << bitmap.site;
        EXPECT_NE(r.log.find(bitmap.log), std::string::npos) << r.log;
    }
    {
        // A page site of -1 in the index is the largest site too.
        NoteFile f;
        const Results r = readAll(write(f.finish(f.block({{"PAGE1", "-1"}}))));
        EXPECT_EQ(r.picture, 26);
        EXPECT_EQ(r.strokes, 26);
        EXPECT_NE(r.log.find("fseek failed-----errno:22errmsg:"), std::string::npos) << r.log;
    }
    {
        NoteFile f;
        const uint64_t picture = f.codedPicture("\x61\xff", 0xFFFFFFFFu);
        const Results r = readAll(write(onePage(f, site(picture), "0")));
        EXPECT_EQ(r.picture, 27);
        EXPECT_FALSE(r.colours);
        EXPECT_EQ(r.strokes, 0) << "the strokes do not depend on the picture";
        EXPECT_NE(r.log.find("compress data m_siteCompressData error."), std::string::npos) << r.log;
    }
}

// Runs adding up to billions of pixels fill the picture and stop at its end; colour codes of
// 0x80 and above lie outside the code table and skip their pixels.
TEST_F(HostileFiles, RunsBeyondThePictureAndUnknownColourCodes) {
    {
        std::string pairs;
        for (int i = 0; i < 200000; ++i) pairs += "\x61\xff";  // 200000 x 16384 pixels of ink
        NoteFile f;
        const Results r = readAll(write(onePage(f, site(f.codedPicture(pairs)), "0")));
        EXPECT_EQ(r.picture, 0);
        EXPECT_TRUE(r.colours);
        EXPECT_NE(r.log.find("uncompresseDataByRLE DataLen:3276800000"), std::string::npos);
        EXPECT_EQ(std::string(r.pixels.begin(), r.pixels.begin() + kPictureSize), std::string(kPictureSize, '\0'));
    }
    {
        // 16384 + 1 + 128 skipped pixels, then one pixel of ink.
        const std::string pairs("\x80\xff" "\xff\x00" "\xe1\x7f" "\x61\x00", 8);
        NoteFile f;
        const Results r = readAll(write(onePage(f, site(f.codedPicture(pairs)), "0")));
        EXPECT_EQ(r.picture, 0);
        const std::size_t ink = 16384 + 1 + 128;
        EXPECT_EQ(std::string(r.pixels.begin(), r.pixels.begin() + ink), std::string(ink, 0x77));
        EXPECT_EQ(r.pixels[ink], 0x00);
        EXPECT_EQ(r.pixels[ink + 1], 0x77);
    }
}

// Stroke counts that no file could hold, negative ones, and record lengths past the end:
// each fails the page without claiming memory for what is not there.
TEST_F(HostileFiles, StrokeCountsAndLengths) {
    const std::string record = notewriter::strokeRecord(notetest::sampleStroke(1));
    struct Case {
        const char* what;
        int32_t blockCount;
        std::string record;
        int result;
        const char* log;
    };
    const std::vector<Case> cases = {
        // The blocks after the stroke block are read as records until one overruns the file.
        {"block count 0x7FFFFFFF", 0x7FFFFFFF, record, 26, "read trail"},
        {"block count past the file", 1000, record, 26, "read trail"},
        {"point count 0x7FFFFFFF", 1, strokeWithPointCount(0x7FFFFFFF), 26, "m_pointsdata2Trail error."},
        {"block count negative", -1, record, 0, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        NoteFile f;
        const uint64_t strokes = f.strokeBlock({c.record, c.record}, c.blockCount);
        const Results r = readAll(write(onePage(f, "0", site(strokes))));
        EXPECT_EQ(r.strokes, c.result);
        EXPECT_EQ(r.trails.size(), c.result == 0 ? 0u : 1u);
        EXPECT_NE(r.log.find(c.log), std::string::npos) << r.log;
    }
    {
        NoteFile f;
        const uint64_t strokes = f.raw(Bytes().u32(12).i32(1).u32(0xFFFFFFFFu).raw(record).str());
        const Results r = readAll(write(onePage(f, "0", site(strokes))));
        EXPECT_EQ(r.strokes, 26);
        EXPECT_NE(r.log.find("read trail data error-----errno:"), std::string::npos) << r.log;
    }
}

// The documented exceptions of hostile values leave the call without a stream left open:
// a negative point count, and a five-star value that is no number.
TEST_F(HostileFiles, DocumentedExceptionsCloseTheirStreams) {
    NoteFile f;
    const uint64_t strokes = f.strokeBlock({strokeWithPointCount(-1)});
    const uint64_t page = f.block({{"FIVESTAR", "1,2,3,4,5,x,7,8,9,10,11"}, {"TOTALPATH", site(strokes)}});
    const std::string path = write(f.finish(f.block({{"PAGE1", site(page)}})));

    std::vector<TrailContainer> trails;
    bounded([&] { EXPECT_THROW(KwDataLoad().fetchNotePathFromFile(trails, path, 1), std::length_error); });

    KwFileProcess file;
    ASSERT_TRUE(file.init_datafile(path));
    KwPageFeatureModule module;
    PageFeatureReadFlag flags;
    flags.fiveStar = true;
    bounded([&] { EXPECT_THROW(file.fetchPageFeature(module, 1, flags), std::invalid_argument); });
}

// A well-formed note cut at each of its boundaries (the start and the first bytes of every
// block, picture and stroke block, and the footer) loses its footer, and every call fails.
TEST_F(HostileFiles, TruncatedAtEveryBoundary) {
    notewriter::Note note;
    notewriter::Page page;
    page.layers = {{"MAINLAYER", notetest::samplePicture(3), {}}, {"BGLAYER", {}, {}}};
    page.strokes = {notetest::sampleStroke(1), notetest::sampleStroke(2)};
    note.pages = {page};
    note.header = {{"FILE_TYPE", "NOTE"}};
    notewriter::NoteSites sites;
    const std::string whole = notewriter::buildNote(note, &sites);

    std::vector<uint64_t> cuts = {0, 3, 4, 23, 24, whole.size() - 8, whole.size() - 4, whole.size() - 1};
    std::vector<uint64_t> starts = {sites.index, sites.header};
    for (const notewriter::PageSites& p : sites.pages) {
        starts.insert(starts.end(), {p.block, p.totalPath});
        for (const auto& [name, at] : p.layerBlocks) starts.push_back(at);
        for (const auto& [name, at] : p.pictures) starts.push_back(at);
    }
    for (uint64_t start : starts)
        for (uint64_t offset : {0, 1, 4, 5}) cuts.push_back(start + offset);

    for (uint64_t cut : cuts) {
        SCOPED_TRACE("cut at " + std::to_string(cut));
        const Results r = readAll(write(whole.substr(0, cut)));
        EXPECT_EQ(r.pages, -1);
        EXPECT_EQ(r.picture, 26);
        EXPECT_FALSE(r.colours);
        EXPECT_EQ(r.strokes, 26);
    }
}

TEST_F(HostileFiles, FolderForAFile) {
    const Results r = readAll(dir_.path(""));
    EXPECT_EQ(r.pages, -1);
    EXPECT_EQ(r.picture, 26);
    EXPECT_FALSE(r.colours);
    EXPECT_EQ(r.strokes, 26);
}

}  // namespace
