#ifndef LIBNOTE_TESTS_SUPPORT_NOTEFILES_H
#define LIBNOTE_TESTS_SUPPORT_NOTEFILES_H

// What the tests share: a scratch directory for the note files they write, sample strokes
// and pictures, metadata items, and a call's result together with its log.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "capture.h"
#include "config.h"
#include "notewriter.h"
#include "trailContainer.h"

namespace notetest {

// A directory of its own for one test, removed with its files afterwards.
class ScratchDir {
public:
    ScratchDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "libnote-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
        dir_ = pattern;
    }
    ~ScratchDir() { std::filesystem::remove_all(dir_); }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string path(const std::string& name) const { return dir_ + "/" + name; }
    // Writes the bytes as the file `name` and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const {
        notewriter::writeFile(path(name), bytes);
        return path(name);
    }

private:
    std::string dir_;
};

// A stroke whose sections and scalars depend on seed, so that strokes cannot be mistaken
// for one another.
inline TrailContainer sampleStroke(int seed) {
    TrailContainer t;
    t.typeName = "pen" + std::to_string(seed);
    t.maxX = 15725 + seed;
    t.maxY = 20967;
    t.disableAreaList.push_back(FlagRect{{1, 2, 3, 4, 5, static_cast<uint32_t>(seed)}});
    for (int i = 0; i < 5 + seed; ++i) {
        t.m_points.push_back({100 * i + seed, 7 * i});
        t.pressures.push_back(static_cast<uint16_t>(300 + i));
        t.angles.push_back({static_cast<int16_t>(i), static_cast<int16_t>(-i)});
        t.flagDraw.push_back(i % 3 != 0);
    }
    t.rectA[2] = 40 + seed;
    t.m_controlNums = {1, seed};
    t.PointContour = {{{1.5f, 2.5f}}, {}};
    t.ratioB = 0.25 * seed;
    t.extraControlNums = {seed};
    t.attrP = 7;
    return t;
}

// Two strokes are the same when they make the same record, which carries every stored field.
inline bool sameStroke(const TrailContainer& a, const TrailContainer& b) {
    return notewriter::strokeRecord(a) == notewriter::strokeRecord(b);
}

// Rows of every pixel value a layer is made of, placed by seed, on a transparent ground.
inline std::vector<uint8_t> samplePicture(int seed) {
    std::vector<uint8_t> pixels(notewriter::kPictureSize, noteformat::kTransparent);
    for (int row = 0; row < notewriter::kPictureHeight; row += 13 + seed) {
        const uint8_t value = noteformat::kInkValues[(row + seed) % noteformat::kInkValues.size()];
        for (int x = seed; x < notewriter::kPictureWidth; x += 1 + (row % 4))
            pixels[static_cast<std::size_t>(row) * notewriter::kPictureWidth + x] = value;
    }
    return pixels;
}

inline std::vector<ModuleItem> itemsOf(const notewriter::Items& pairs) {
    std::vector<ModuleItem> items;
    for (const auto& [key, value] : pairs) items.push_back({key, value});
    return items;
}
inline notewriter::Items pairsOf(const std::vector<ModuleItem>& items) {
    notewriter::Items pairs;
    for (const ModuleItem& item : items) pairs.emplace_back(item.key, item.value);
    return pairs;
}

// The result of f (as an int: codes, flags, counts) and what it printed.
using Logged = std::pair<int, std::string>;
template <class F>
Logged logged(F&& f) {
    int result = -99;
    std::string log = captureStdout([&] { result = static_cast<int>(f()); });
    return {result, log};
}

// The result with only the start of its log, for logs that go on with the system's error text.
inline Logged headOf(const Logged& r, std::size_t length) { return {r.first, r.second.substr(0, length)}; }

}  // namespace notetest

#endif
