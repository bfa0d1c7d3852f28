// Note files built to break the reader: sites and lengths past the end, counts that no file
// could hold, runs and colour codes outside the picture, truncation, a folder for a file.
// Every public call must give its documented result without a crash, keep to its buffers,
// claim no more than 64 MB at its peak and leave no stream open.

#include <dirent.h>

#include <algorithm>
#include <cstring>
#include <tuple>
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
using notewriter::kPictureSize;
using hostile::site;
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
    r.pixels.assign(kPictureSize, hostile::kUntouched);
    r.pixels.resize(kPictureSize + kGuard, kGuardByte);
    r.trails.resize(1);
    r.log += bounded([&] { r.pages = api.fetchTotalPageNumOfNote(path); });
    r.log += bounded([&] { r.picture = api.fetchNoteDataFromFileByLayer(path, page, layer, r.pixels.data()); });
    r.log += bounded([&] {
        uint32_t* colours = api.loadImageData(path, page, layer);
        r.colours = colours != nullptr;
        delete[] colours;
    });
    r.log += bounded([&] {
        try {
            r.strokes = api.fetchNotePathFromFile(r.trails, path, page);
        } catch (const std::length_error&) {
            r.strokes = hostile::kLengthError;
        }
    });
    EXPECT_EQ(std::string(r.pixels.begin() + kPictureSize, r.pixels.end()), std::string(kGuard, kGuardByte))
        << "written past the picture";
    return r;
}

class HostileFiles : public ::testing::Test {
protected:
    std::string write(const std::string& bytes) { return dir_.write("hostile.note", bytes); }
    notetest::ScratchDir dir_;
};

// Sites and lengths past the end, counts no file could hold, runs and colour codes outside
// the picture, truncation: each note of the catalogue gives the results stored beside it.
TEST_F(HostileFiles, EachNoteGivesItsDocumentedResults) {
    for (const hostile::Note& note : hostile::catalogue()) {
        SCOPED_TRACE(note.attack);
        const hostile::Expected& e = note.expected;
        const Results r = readAll(write(note.bytes));
        EXPECT_EQ(std::make_tuple(r.pages, r.picture, r.colours, r.strokes),
                  std::make_tuple(e.pages, e.picture, e.colours, e.strokes));
        EXPECT_EQ(r.trails.size(), e.strokes == status::Ok ? 0u : 1u) << "a failed call keeps the caller's strokes";
        EXPECT_NE(r.log.find(e.log), std::string::npos) << r.log;
        EXPECT_TRUE(std::equal(e.pixels.begin(), e.pixels.end(), r.pixels.begin()));
    }
}

// The documented exceptions of hostile values leave the call without a stream left open:
// a negative point count, and a five-star value that is no number.
TEST_F(HostileFiles, DocumentedExceptionsCloseTheirStreams) {
    NoteFile f;
    const uint64_t strokes = f.strokeBlock({hostile::strokeWithPointCount(-1)});
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
        EXPECT_EQ(std::make_tuple(r.pages, r.picture, r.colours, r.strokes),
                  std::make_tuple(-1, int(status::PageUnreadable), false, int(status::PageUnreadable)));
    }
    // A folder in place of the file fails the same way.
    const Results r = readAll(dir_.path(""));
    EXPECT_EQ(std::make_tuple(r.pages, r.picture, r.colours, r.strokes),
              std::make_tuple(-1, int(status::PageUnreadable), false, int(status::PageUnreadable)));
}

}  // namespace
