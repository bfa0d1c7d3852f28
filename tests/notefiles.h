#ifndef LIBNOTE_TESTS_NOTEFILES_H
#define LIBNOTE_TESTS_NOTEFILES_H

// What the reader tests share: a scratch directory for the note files they write, sample
// strokes and pictures, and a field-by-field comparison of strokes.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

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

// A stroke whose every stored field depends on seed, so that strokes cannot be mistaken
// for one another.
inline TrailContainer sampleStroke(int seed) {
    TrailContainer t;
    t.typeName = "pen" + std::to_string(seed);
    t.subName = "sub";
    t.maxX = 15725 + seed;
    t.maxY = 20967;
    t.attrA0 = seed;
    t.attrB4 = 1ULL << 40 | static_cast<unsigned>(seed);
    t.attrC = -seed;
    t.disableAreaList.push_back(FlagRect{{1, 2, 3, 4, 5, static_cast<uint32_t>(seed)}});
    for (int i = 0; i < 5 + seed; ++i) {
        t.m_points.push_back({100 * i + seed, 7 * i});
        t.pressures.push_back(static_cast<uint16_t>(300 + i));
        t.angles.push_back({static_cast<int16_t>(i), static_cast<int16_t>(-i)});
        t.flagDraw.push_back(i % 3 != 0);
    }
    t.epaPoints = {{seed, seed + 1}};
    t.epaGrays = {seed, 2};
    t.attrH = 8;
    t.rectA[2] = 40 + seed;
    t.rectB[3] = 50 + seed;
    t.m_controlNums = {1, seed};
    t.attrM1 = 9;
    t.attrO = 3;
    t.renderFlag = 0;
    t.PointContour = {{{1.5f, 2.5f}}, {}};
    t.attrI = 11;
    t.ratioB = 0.25 * seed;
    t.attrD = 4;
    t.attrE = 5;
    t.extraControlNums = {seed};
    t.pageWidth = 1400;
    t.pageHeight = 1870 + seed;
    t.attrN = 6;
    t.attrP = 7;
    return t;
}

// A picture with rows of every pixel value a layer is made of, placed by seed, on a
// transparent ground.
inline std::vector<uint8_t> samplePicture(int seed) {
    std::vector<uint8_t> pixels(notewriter::kPictureSize, 0xFF);
    const uint8_t values[] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51, 0xFE};
    for (int row = 0; row < notewriter::kPictureHeight; row += 13 + seed) {
        const uint8_t value = values[(row + seed) % 7];
        for (int x = seed; x < notewriter::kPictureWidth; x += 1 + (row % 4))
            pixels[static_cast<std::size_t>(row) * notewriter::kPictureWidth + x] = value;
    }
    return pixels;
}

// Every field that a stroke record carries.
inline void expectSameStroke(const TrailContainer& a, const TrailContainer& b) {
    auto points = [](const std::vector<MorvaPoint>& v) {
        std::vector<std::pair<int, int>> out;
        for (const auto& p : v) out.emplace_back(p.x, p.y);
        return out;
    };
    EXPECT_EQ(a.typeName, b.typeName);
    EXPECT_EQ(a.subName, b.subName);
    EXPECT_EQ(a.maxX, b.maxX);
    EXPECT_EQ(a.maxY, b.maxY);
    EXPECT_EQ(a.attrA0, b.attrA0);
    EXPECT_EQ(a.attrB4, b.attrB4);
    EXPECT_EQ(a.attrC, b.attrC);
    ASSERT_EQ(a.disableAreaList.size(), b.disableAreaList.size());
    for (std::size_t i = 0; i < a.disableAreaList.size(); ++i)
        for (int w = 0; w < 6; ++w) EXPECT_EQ(a.disableAreaList[i].words[w], b.disableAreaList[i].words[w]);
    EXPECT_EQ(points(a.m_points), points(b.m_points));
    EXPECT_EQ(a.pressures, b.pressures);
    ASSERT_EQ(a.angles.size(), b.angles.size());
    for (std::size_t i = 0; i < a.angles.size(); ++i) {
        EXPECT_EQ(a.angles[i].x, b.angles[i].x);
        EXPECT_EQ(a.angles[i].y, b.angles[i].y);
    }
    EXPECT_EQ(a.flagDraw, b.flagDraw);
    EXPECT_EQ(points(a.epaPoints), points(b.epaPoints));
    EXPECT_EQ(a.epaGrays, b.epaGrays);
    EXPECT_EQ(a.attrH, b.attrH);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(a.rectA[i], b.rectA[i]);
        EXPECT_EQ(a.rectB[i], b.rectB[i]);
    }
    EXPECT_EQ(a.m_controlNums, b.m_controlNums);
    EXPECT_EQ(a.attrM1, b.attrM1);
    EXPECT_EQ(a.attrO, b.attrO);
    EXPECT_EQ(a.renderFlag, b.renderFlag);
    ASSERT_EQ(a.PointContour.size(), b.PointContour.size());
    for (std::size_t i = 0; i < a.PointContour.size(); ++i) {
        ASSERT_EQ(a.PointContour[i].size(), b.PointContour[i].size());
        for (std::size_t j = 0; j < a.PointContour[i].size(); ++j) {
            EXPECT_EQ(a.PointContour[i][j].x, b.PointContour[i][j].x);
            EXPECT_EQ(a.PointContour[i][j].y, b.PointContour[i][j].y);
        }
    }
    EXPECT_EQ(a.attrI, b.attrI);
    EXPECT_EQ(a.ratioB, b.ratioB);
    EXPECT_EQ(a.attrD, b.attrD);
    EXPECT_EQ(a.attrE, b.attrE);
    EXPECT_EQ(a.extraControlNums, b.extraControlNums);
    EXPECT_EQ(a.pageWidth, b.pageWidth);
    EXPECT_EQ(a.pageHeight, b.pageHeight);
    EXPECT_EQ(a.attrN, b.attrN);
    EXPECT_EQ(a.attrP, b.attrP);
}

}  // namespace notetest

#endif
