// The full handwritten pages the benchmarks measure: as busy as a tablet's real pages, every
// pen point inked in the picture, and a note of such pages read back whole by the library.

#include <algorithm>

#include <gtest/gtest.h>

#include "handwriting.h"
#include "kwdataload.h"
#include "kwdataoperationfile.h"
#include "notefiles.h"

namespace {

using notewriter::kPictureSize;
using notewriter::kPictureWidth;

std::size_t countOf(const std::vector<uint8_t>& pixels, uint8_t value) {
    return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), value));
}

TEST(FullPage, AsBusyAsARealPage) {
    for (const int number : {1, 2, 60}) {
        const notewriter::Page page = handwriting::fullPage(number);
        ASSERT_EQ(page.layers.size(), 3u);
        const std::vector<uint8_t>& writing = page.layers[0].pixels;
        std::size_t points = 0;
        for (const TrailContainer& stroke : page.strokes) points += stroke.m_points.size();
        const double inked = 1.0 - double(countOf(writing, handwriting::kTransparent)) / kPictureSize;

        EXPECT_TRUE(page.strokes.size() >= 800 && page.strokes.size() <= 1050) << number << ": " << page.strokes.size();
        EXPECT_TRUE(points >= 22000 && points <= 29000) << number << ": " << points;
        EXPECT_TRUE(inked >= 0.04 && inked <= 0.12) << number << ": " << inked;
        EXPECT_GT(countOf(writing, handwriting::kGrey), 0u) << number;  // a grey pen on some lines
        const std::size_t code = notewriter::encodePicture(writing).size();
        EXPECT_TRUE(code >= 600000 && code <= 900000) << number << ": " << code;
        EXPECT_GT(countOf(page.layers[1].pixels, handwriting::kHighlighter), 0u) << number;
        EXPECT_EQ(countOf(page.layers[2].pixels, handwriting::kTransparent), 0u) << number;  // paper throughout
    }
}

// Where the library maps a pen point onto the picture, the picture has ink.
TEST(FullPage, EveryPenPointIsInked) {
    const notewriter::Page page = handwriting::fullPage(7);
    const std::vector<uint8_t>& writing = page.layers[0].pixels;
    std::vector<MorvaPoint> mapped;
    std::size_t blank = 0;
    for (const TrailContainer& stroke : page.strokes) {
        mappingTrailPoints2imageSize(stroke, kPictureWidth, notewriter::kPictureHeight, mapped, 1);
        for (const MorvaPoint& p : mapped)
            blank += writing[std::size_t(p.y) * kPictureWidth + std::size_t(p.x)] == handwriting::kTransparent;
    }
    EXPECT_EQ(blank, 0u);
}

TEST(FullPage, NoteOfFullPagesReadsBack) {
    notetest::ScratchDir dir;
    const std::string path = dir.write("full.note", handwriting::fullNoteFile(3));
    EXPECT_EQ(notetest::logged([&] { return KwDataOperationFile().fetchTotalPageNumOfNote(path); }).first, 3);

    const notewriter::Page second = handwriting::fullPage(2);
    std::vector<uint8_t> pixels(kPictureSize + 1, handwriting::kTransparent);
    std::vector<TrailContainer> strokes;
    const auto read = notetest::logged([&] {
        return KwDataLoad().fetchNoteDataFromFileByLayer(path, 2, "MAINLAYER", reinterpret_cast<char*>(pixels.data())) |
               KwDataLoad().fetchNotePathFromFile(strokes, path, 2);
    });
    ASSERT_EQ(read.first, 0) << read.second;
    pixels.pop_back();
    EXPECT_TRUE(pixels == second.layers[0].pixels);
    ASSERT_EQ(strokes.size(), second.strokes.size());
    EXPECT_TRUE(notetest::sameStroke(strokes.back(), second.strokes.back()));
}

}  // namespace
