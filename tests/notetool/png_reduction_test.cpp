// A page reduced as a PNG (render --scale below 1, and every thumbnail): each pixel is the
// mean of the page pixels it covers, colour weighted by opacity, on paper and without it.

#include <gtest/gtest.h>

#include "notetool_run.h"

namespace {

using notetest::box;
using notetest::notetool;
using notetest::readPng;
using notetest::ScratchDir;

// Blocks of 4 x 4 page pixels in the top row of a quarter-size image, each one pixel there:
// full ink, half ink, white ink, a quarter of highlighter grey (0x9D), and nothing.
notewriter::Note blocks() {
    std::vector<uint8_t> ink(notewriter::kPictureSize, 0xFF);
    box(ink, 0, 0, 4, 4, 0x00);
    box(ink, 4, 0, 6, 4, 0x00);
    box(ink, 8, 0, 12, 4, 0xFE);
    box(ink, 12, 0, 14, 2, 0x30);
    notewriter::Note note;
    note.pages.push_back({});
    note.pages.back().layers = {{"MAINLAYER", ink, {}}};
    return note;
}

TEST(PngReduction, EachPixelIsTheMeanOfTheBlockItCovers) {
    ScratchDir dir;
    const std::string note = dir.write("blocks.note", notewriter::buildNote(blocks()));
    using GreyAlpha = std::pair<int, int>;
    const struct {
        bool transparent;
        std::vector<GreyAlpha> pixels;  // the first five of the top row
    } cases[] = {
        // On paper: half ink is the mean of ink (1) and paper (255).
        {false, {{1, 255}, {128, 255}, {254, 255}, {231, 255}, {255, 255}}},
        // Without paper, ink keeps its grey and covers part of the pixel; white ink stays opaque.
        {true, {{1, 255}, {1, 128}, {254, 255}, {157, 64}, {0, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.transparent);
        std::vector<std::string> args = {"render", note, "-o", dir.path("small.png"), "--scale", "0.25"};
        if (c.transparent) args.push_back("--transparent");
        const notetest::ToolRun r = notetool(dir, args);
        ASSERT_EQ(r.code, 0) << r.err;
        unsigned width = 0, height = 0;
        const std::vector<uint8_t> rgba = readPng(dir.path("small.png"), width, height);
        EXPECT_EQ(width, 351u);
        EXPECT_EQ(height, 468u);
        std::vector<GreyAlpha> top;
        for (std::size_t x = 0; x < c.pixels.size(); ++x) top.emplace_back(rgba[4 * x], rgba[4 * x + 3]);
        EXPECT_EQ(top, c.pixels);
    }
}

}  // namespace
