// Stroke points onto image pixels: the four orientations, truncation, and what happens to
// the output on each error.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "capture.h"
#include "config.h"

namespace {

using Pixels = std::vector<std::pair<int, int>>;

Pixels pixelsOf(const std::vector<MorvaPoint>& points) {
    Pixels out;
    for (const MorvaPoint& p : points) out.emplace_back(p.x, p.y);
    return out;
}

TrailContainer stroke(int axis, int maxX, int maxY, const std::vector<MorvaPoint>& points) {
    TrailContainer t;
    t.m_emrPointAxis = axis;
    t.maxX = maxX;
    t.maxY = maxY;
    t.m_points = points;
    return t;
}

struct Mapped {
    int result;
    Pixels pixels;
    std::string log;
};

Mapped map(const TrailContainer& t, int width, int height, int toLastIndex,
           std::vector<MorvaPoint> out = {}) {
    Mapped m{-99, {}, ""};
    m.log = notetest::captureStdout(
        [&] { m.result = mappingTrailPoints2imageSize(t, width, height, out, toLastIndex); });
    m.pixels = pixelsOf(out);
    return m;
}

TEST(MappingTrailPoints2imageSize, MapsTheCornersAndAQuarterPointInEveryOrientation) {
    // Ranges of powers of two keep every factor exact, so the expected pixels are exact too;
    // maxX differs from maxY so that a swapped divisor shows. The quarter point lands on
    // fractions with toLastIndex (1403 / 4 = 350.75), which truncate.
    const std::vector<MorvaPoint> points{{0, 0}, {2048, 1024}, {512, 256}};
    struct Case {
        int axis;
        int toLastIndex;
        Pixels expected;
    };
    const Case cases[] = {
        {0, 0, {{0, 0}, {1404, 1872}, {351, 468}}},
        {0, 1, {{0, 0}, {1403, 1871}, {350, 467}}},
        {1, 0, {{1404, 0}, {0, 1872}, {1053, 468}}},
        {1, 1, {{1403, 0}, {0, 1871}, {1052, 467}}},
        {2, 0, {{1404, 1872}, {0, 0}, {1053, 1404}}},
        {2, 1, {{1403, 1871}, {0, 0}, {1052, 1403}}},
        {3, 0, {{0, 1872}, {1404, 0}, {351, 1404}}},
        {3, 1, {{0, 1871}, {1403, 0}, {350, 1403}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("axis " + std::to_string(c.axis) + " toLastIndex " + std::to_string(c.toLastIndex));
        Mapped m = map(stroke(c.axis, 2048, 1024, points), 1404, 1872, c.toLastIndex);
        EXPECT_EQ(m.result, 0);
        EXPECT_EQ(m.log, "");
        EXPECT_EQ(m.pixels, c.expected);
    }
}

TEST(MappingTrailPoints2imageSize, MapsTheDeviceRangeOfTheUsualOrientation) {
    const TrailContainer t = stroke(1, 100, 100, {{0, 0}, {100, 100}});
    EXPECT_EQ(map(t, 1404, 1872, 0).pixels, (Pixels{{1404, 0}, {0, 1872}}));
    EXPECT_EQ(map(t, 1404, 1872, 1).pixels, (Pixels{{1403, 0}, {0, 1871}}));
}

TEST(MappingTrailPoints2imageSize, TruncatesTowardZeroAndDoesNotClamp) {
    // Factor 10.9: one unit maps to 10.9, and -1 unit under a factor 0.5 maps to -0.5.
    EXPECT_EQ(map(stroke(0, 10, 10, {{1, 0}}), 109, 109, 0).pixels, (Pixels{{10, 0}}));
    EXPECT_EQ(map(stroke(0, 2, 2, {{-1, -1}}), 1, 1, 0).pixels, (Pixels{{0, 0}}));
    EXPECT_EQ(map(stroke(0, 1024, 1024, {{2048, -1024}}), 1404, 1872, 0).pixels,
              (Pixels{{2808, -1872}}));
}

TEST(MappingTrailPoints2imageSize, EmptyStrokeEmptiesTheOutput) {
    Mapped m = map(stroke(1, 100, 100, {}), 1404, 1872, 0, {{5, 5}, {6, 6}});
    EXPECT_EQ(m.result, 0);
    EXPECT_EQ(m.log, "");
    EXPECT_TRUE(m.pixels.empty());
}

TEST(MappingTrailPoints2imageSize, EarlyErrorsLeaveTheOutputUntouched) {
    const std::vector<MorvaPoint> before{{5, 5}, {6, 6}, {7, 7}, {8, 8}};
    const TrailContainer good = stroke(1, 100, 100, {{1, 1}});
    struct Case {
        TrailContainer trail;
        int width;
        int height;
        const char* log;
    };
    const std::string noImage = "cimage==NULL || cimage->p==NULL";
    const std::string noRange = "error ,   trailContainer.maxX==0 || trailContainer.maxY==0";
    const Case cases[] = {
        {good, 0, 1872, noImage.c_str()},
        {good, 1404, -1, noImage.c_str()},
        {stroke(1, 0, 100, {{1, 1}}), 1404, 1872, noRange.c_str()},
        {stroke(1, 100, 0, {{1, 1}}), 1404, 1872, noRange.c_str()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.log);
        Mapped m = map(c.trail, c.width, c.height, 0, before);
        EXPECT_EQ(m.result, 0);
        EXPECT_EQ(m.log, c.log);
        EXPECT_EQ(m.pixels, pixelsOf(before));
    }
}

TEST(MappingTrailPoints2imageSize, BadOrientationResizesButDoesNotRewrite) {
    for (int axis : {4, -1}) {
        SCOPED_TRACE(axis);
        const TrailContainer t = stroke(axis, 100, 100, {{1, 1}, {2, 2}, {3, 3}});
        Mapped shrunk = map(t, 1404, 1872, 0, {{5, 5}, {6, 6}, {7, 7}, {8, 8}});
        EXPECT_EQ(shrunk.result, 0);
        EXPECT_EQ(shrunk.log, "bad coordinateOrigin");
        EXPECT_EQ(shrunk.pixels, (Pixels{{5, 5}, {6, 6}, {7, 7}}));

        Mapped grown = map(t, 1404, 1872, 0, {{5, 5}});
        EXPECT_EQ(grown.pixels, (Pixels{{5, 5}, {0, 0}, {0, 0}}));
    }
}

}  // namespace
