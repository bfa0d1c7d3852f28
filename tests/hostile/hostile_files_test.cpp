// Note files built to break the reader: sites and lengths past the end, counts that no file
// could hold, runs and colour codes outside the picture, truncation, a folder for a file.
// Every public call must give its documented result without a crash, keep to its buffers,
// claim no more than 64 MB at its peak and leave no stream open.

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kwdataoperationfile.h"
#include "hostile_notes.h"
#include "notefiles.h"
#include "peak_memory.h"

// AddressSanitizer's quarantine keeps freed pictures resident; a small one keeps the memory
// bound about the call under test rather than about the calls before it.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=16"; }

namespace {

using notetest::captureStdout;
using notewriter::kPictureSize;

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
    EXPECT_LE(rise, 64L << 20) << log;
    EXPECT_EQ(openStreams(), streams) << log;
    return log;
}

// What the four public calls give for page 1's main layer of one file; the log is theirs in
// order, the pixels the picture and the guard behind it.
struct Results {
    int pages = 0, picture = 0, strokes = 0;
    bool colours = false;
    std::vector<char> pixels = std::vector<char>(kPictureSize, hostile::kUntouched);
    std::vector<TrailContainer> trails = std::vector<TrailContainer>(1);
    std::string log;
};

Results readAll(const std::string& path) {
    KwDataOperationFile api;
    Results r;
    r.pixels.resize(kPictureSize + kGuard, kGuardByte);
    r.log += bounded([&] { r.pages = api.fetchTotalPageNumOfNote(path); });
    r.log += bounded([&] { r.picture = api.fetchNoteDataFromFileByLayer(path, 1, "MAINLAYER", r.pixels.data()); });
    r.log += bounded([&] { r.colours = std::unique_ptr<uint32_t[]>(api.loadImageData(path, 1, "MAINLAYER")) != nullptr; });
    r.log += bounded([&] {
        try {
            r.strokes = api.fetchNotePathFromFile(r.trails, path, 1);
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

// A folder in place of a file: no index, as in a note cut short, so every call fails.
TEST_F(HostileFiles, AFolderFailsEveryCall) {
    const Results r = readAll(dir_.path(""));
    EXPECT_EQ(std::make_tuple(r.pages, r.picture, r.colours, r.strokes),
              std::make_tuple(-1, int(status::PageUnreadable), false, int(status::PageUnreadable)));
}

}  // namespace
