// The full handwritten pages the benchmarks measure: as busy as a tablet's real pages, and a
// note of such pages read back whole by the library, with ink under every pen point.

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

// Strokes, points, inked share and code size within what real pages have; a grey pen on
// some lines, highlighter on LAYER1 and paper throughout the background.
TEST(FullPage, AsBusyAsARealPage) {
    for (const int number : {1, 60}) {
        const notewriter::Page page = handwriting::fullPage(number);
        ASSERT_EQ(page.layers.size(), 3u);
        const std::vector<uint8_t>& writing = page.layers[0].pixels;
        std::size_t points = 0;
        for (const TrailContainer& stroke : page.strokes) points += stroke.m_points.size();
        const double inked = 1.0 - double(countOf(writing, handwriting::kTransparent)) / kPictureSize;
        const std::size_t code = notewriter::encodePicture(writing).size();
        EXPECT_TRUE(page.strokes.size() >= 800 && page.strokes.size() <= 1050 && points >= 22000 && points <= 29000 &&
                    inked >= 0.04 && inked <= 0.12 && code >= 600000 && code <= 900000)
            << number << ": " << page.strokes.size() << " strokes, " << points << " points, " << inked << " inked, "
            << code << " bytes of code";
        EXPECT_TRUE(countOf(writing, handwriting::kGrey) > 0 && countOf(page.layers[1].pixels, handwriting::kHighlighter) > 0 &&
                    countOf(page.layers[2].pixels, handwriting::kTransparent) == 0) << number;
    }
}

// What the library reads back is what was written, and where it maps a pen point onto the
// picture, the picture has ink.
TEST(FullPage, NoteOfFullPagesReadsBackWithInkUnderEveryPenPoint) {
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
    std::vector<MorvaPoint> mapped;
    std::size_t blank = 0;
    for (const TrailContainer& stroke : strokes) {
        mappingTrailPoints2imageSize(stroke, kPictureWidth, notewriter::kPictureHeight, mapped, 1);
        for (const MorvaPoint& p : mapped)
            blank += pixels[std::size_t(p.y) * kPictureWidth + std::size_t(p.x)] == handwriting::kTransparent;
    }
    EXPECT_EQ(blank, 0u);
}

}  // namespace
