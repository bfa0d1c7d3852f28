#include "inputs.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

#include "handwriting.h"
#include "notewriter.h"
#include "picture.h"

namespace bench {

namespace {

using notewriter::kPictureHeight;
using notewriter::kPictureSize;
using notewriter::kPictureWidth;

using noteformat::kTransparent;
using noteformat::kWhite;
constexpr uint8_t kGrey = 0x30;

// A small generator of our own, so that every run and every machine measures the same
// pictures and strokes.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint32_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return static_cast<uint32_t>(state_ >> 16);
    }
    int between(int low, int high) { return low + static_cast<int>(next() % uint32_t(high - low + 1)); }

private:
    uint64_t state_;
};

// Rules two pixels thick every 64 rows, across the whole width.
std::vector<uint8_t> ruledPicture() {
    std::vector<uint8_t> p(kPictureSize, kWhite);
    for (int row = 62; row < kPictureHeight; row += 64)
        std::fill_n(p.begin() + std::size_t(row) * kPictureWidth, 2 * kPictureWidth, kGrey);
    return p;
}

// One ink run of 2 to 12 pixels every 20 to 60 pixels, about one pixel in six inked, on a
// transparent layer; the runs take the seven ink values in turn.
std::vector<uint8_t> densePicture() {
    std::vector<uint8_t> p(kPictureSize, kTransparent);
    Random random(20220013);
    std::size_t at = 0;
    for (std::size_t run = 0;; ++run) {
        at += random.between(20, 60);
        const std::size_t length = random.between(2, 12);
        if (at + length > kPictureSize) break;
        std::fill_n(p.begin() + at, length, noteformat::kInkValues[run % noteformat::kInkValues.size()]);
    }
    return p;
}

std::vector<uint8_t> alternatingPicture() {
    std::vector<uint8_t> p(kPictureSize);
    for (std::size_t i = 0; i < kPictureSize; ++i) p[i] = i % 2 ? 0x50 : 0x00;
    return p;
}

// Page 1 of the handwritten note, as the writer described it.
const notewriter::Page& firstFullPage() {
    static const notewriter::Page page = handwriting::fullPage(1);
    return page;
}

std::vector<uint8_t> makePixels(Picture picture) {
    switch (picture) {
        case Picture::Blank: return std::vector<uint8_t>(kPictureSize, kTransparent);
        case Picture::Ruled: return ruledPicture();
        case Picture::Dense: return densePicture();
        case Picture::FullPage: return firstFullPage().layers.at(0).pixels;
        case Picture::Alternating: return alternatingPicture();
    }
    throw std::logic_error("unknown picture");
}

// A stroke of handwriting in digitizer units, as the pen samples it: points with their
// pressures, angles and drawing flags.
TrailContainer makeStroke(Random& random) {
    TrailContainer t;
    t.maxX = 15725;
    t.maxY = 20967;
    t.m_emrPointAxis = 1;
    int x = random.between(0, t.maxX), y = random.between(0, t.maxY);
    for (int i = 0; i < kPointsPerStroke; ++i) {
        x += random.between(-40, 40);
        y += random.between(-40, 40);
        t.m_points.push_back({x, y});
        t.pressures.push_back(static_cast<uint16_t>(random.between(200, 4095)));
        t.angles.push_back({static_cast<int16_t>(random.between(-90, 90)), static_cast<int16_t>(random.between(0, 90))});
        t.flagDraw.push_back(true);
    }
    return t;
}

// The note files live in a folder of their own for the length of the run.
class Folder {
public:
    Folder() {
        char name[] = "/tmp/libnote-bench-XXXXXX";
        if (!mkdtemp(name)) throw std::runtime_error("cannot make a folder for the note files");
        path_ = name;
    }
    ~Folder() {
        for (const std::string& file : files_) std::remove(file.c_str());
        rmdir(path_.c_str());
    }
    std::string write(const std::string& name, const std::string& bytes) {
        const std::string file = path_ + "/" + name;
        notewriter::writeFile(file, bytes);
        files_.push_back(file);
        return file;
    }

private:
    std::string path_;
    std::vector<std::string> files_;
};

Folder& folder() {
    static Folder f;
    return f;
}

notewriter::Page pageWithMainLayer(std::vector<uint8_t> pixels) {
    notewriter::Page page;
    page.layers.push_back({"MAINLAYER", std::move(pixels), {}});
    return page;
}

}  // namespace

const char* pictureName(Picture picture) {
    static const char* const names[kPictureKinds] = {"blank", "ruled", "dense", "full_page", "alternating"};
    return names[static_cast<int>(picture)];
}

const std::vector<uint8_t>& pixels(Picture picture) {
    static const std::array<std::vector<uint8_t>, kPictureKinds> all = {
        makePixels(Picture::Blank), makePixels(Picture::Ruled), makePixels(Picture::Dense),
        makePixels(Picture::FullPage), makePixels(Picture::Alternating)};
    return all[static_cast<int>(picture)];
}

const std::vector<char>& code(Picture picture) {
    static std::array<std::vector<char>, kPictureKinds> all;
    std::vector<char>& c = all[static_cast<int>(picture)];
    if (c.empty()) {
        const std::string pairs = notewriter::encodePicture(pixels(picture));
        c.assign(pairs.begin(), pairs.end());
        c.push_back('\0');
    }
    return c;
}

// The synthetic pictures, page n + 1 holding picture n; the full page is read from the
// handwritten note instead.
NotePage pictureSource(Picture picture) {
    static const std::string path = [] {
        notewriter::Note note;
        for (int kind = 0; kind < kPictureKinds; ++kind)
            note.pages.push_back(pageWithMainLayer(pixels(static_cast<Picture>(kind))));
        return folder().write("pictures.note", notewriter::buildNote(note));
    }();
    if (picture == Picture::FullPage) return {handwrittenNote(), 1};
    return {path, static_cast<int>(picture) + 1};
}

const std::string& pagesNote(int pages) {
    static std::string paths[2];
    std::string& path = paths[pages == 1 ? 0 : 1];
    if (path.empty()) {
        notewriter::Note note;
        for (int i = 0; i < pages; ++i) note.pages.push_back(pageWithMainLayer(pixels(Picture::Blank)));
        path = folder().write(std::to_string(pages) + "-pages.note", notewriter::buildNote(note));
    }
    return path;
}

const std::string& handwrittenNote() {
    static const std::string path =
        folder().write("handwritten.note", handwriting::fullNoteFile(kHandwrittenPages));
    return path;
}

const char* strokesName(Strokes kind) { return kind == Strokes::Synthetic ? "2000_strokes" : "full_page"; }

const std::vector<TrailContainer>& strokes(Strokes kind) {
    static const std::vector<TrailContainer> synthetic = [] {
        Random random(15725);
        std::vector<TrailContainer> s;
        for (int i = 0; i < kSyntheticStrokes; ++i) s.push_back(makeStroke(random));
        return s;
    }();
    return kind == Strokes::Synthetic ? synthetic : firstFullPage().strokes;
}

const std::vector<std::string>& strokeRecords(Strokes kind) {
    static std::vector<std::string> all[2];
    std::vector<std::string>& records = all[static_cast<int>(kind)];
    if (records.empty())
        for (const TrailContainer& t : strokes(kind)) records.push_back(notewriter::strokeRecord(t));
    return records;
}

// The synthetic strokes have a note of their own; the full page's are page 1 of the
// handwritten note.
NotePage strokesSource(Strokes kind) {
    if (kind == Strokes::FullPage) return {handwrittenNote(), 1};
    static const std::string path = [] {
        notewriter::Note note;
        notewriter::Page page;
        page.strokes = strokes(Strokes::Synthetic);
        note.pages.push_back(std::move(page));
        return folder().write("strokes.note", notewriter::buildNote(note));
    }();
    return {path, 1};
}

QuietStdout::QuietStdout() : saved_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int null = open("/dev/null", O_WRONLY);
    if (saved_ < 0 || null < 0 || dup2(null, STDOUT_FILENO) < 0) throw std::runtime_error("cannot silence stdout");
    close(null);
}

QuietStdout::~QuietStdout() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
}

}  // namespace bench
