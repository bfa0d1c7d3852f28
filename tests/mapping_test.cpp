// Stroke points onto image pixels: the four orientations, truncation, and what happens to
// the output on each error.

#include <gtest/gtest.h>

#include "config.h"
#include "notefiles.h"

namespace {

using Pixels = std::vector<std::pair<int, int>>;

TrailContainer stroke(int axis, int maxX, int maxY, const std::vector<MorvaPoint>& points) {
    TrailContainer t;
    std::tie(t.m_emrPointAxis, t.maxX, t.maxY, t.m_points) = std::tie(axis, maxX, maxY, points);
    return t;
}

// The result and log of one mapping into `before`, and the pixels it left there.
std::pair<notetest::Logged, Pixels> map(const TrailContainer& t, int width, int height, int toLastIndex,
                                        std::vector<MorvaPoint> out = {}) {
    const notetest::Logged r =
        notetest::logged([&] { return mappingTrailPoints2imageSize(t, width, height, out, toLastIndex); });
    Pixels pixels;
    for (const MorvaPoint& p : out) pixels.emplace_back(p.x, p.y);
    return {r, pixels};
}

TEST(MappingTrailPoints2imageSize, EveryOrientationTruncatedAndUnclamped) {
    // Ranges of powers of two keep every factor exact; maxX differs from maxY so that a
    // swapped divisor shows. With toLastIndex the quarter point lands on 350.75 and truncates.
    const std::vector<MorvaPoint> points{{0, 0}, {2048, 1024}, {512, 256}};
    const struct { int axis, toLastIndex; Pixels expected; } rows[] = {
        {0, 0, {{0, 0}, {1404, 1872}, {351, 468}}},    {0, 1, {{0, 0}, {1403, 1871}, {350, 467}}},
        {1, 0, {{1404, 0}, {0, 1872}, {1053, 468}}},   {1, 1, {{1403, 0}, {0, 1871}, {1052, 467}}},
        {2, 0, {{1404, 1872}, {0, 0}, {1053, 1404}}},  {2, 1, {{1403, 1871}, {0, 0}, {1052, 1403}}},
        {3, 0, {{0, 1872}, {1404, 0}, {351, 1404}}},   {3, 1, {{0, 1871}, {1403, 0}, {350, 1403}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(map(stroke(row.axis, 2048, 1024, points), 1404, 1872, row.toLastIndex),
                  std::make_pair(notetest::Logged(0, ""), row.expected))
            << row.axis << " " << row.toLastIndex;
    // 10.9 gives 10 and -0.5 gives 0 (truncated, not rounded down); points outside the
    // range are not clamped.
    EXPECT_EQ(map(stroke(0, 10, 2, {{1, -1}}), 109, 1, 0).second, (Pixels{{10, 0}}));
    EXPECT_EQ(map(stroke(0, 1024, 1024, {{2048, -1024}}), 1404, 1872, 0).second, (Pixels{{2808, -1872}}));
    EXPECT_EQ(map(stroke(1, 100, 100, {}), 1404, 1872, 0, {{5, 5}}), std::make_pair(notetest::Logged(0, ""), Pixels{}));
}

TEST(MappingTrailPoints2imageSize, ErrorsAndWhatTheyLeaveInTheOutput) {
    const std::vector<MorvaPoint> before{{5, 5}, {6, 6}};
    const Pixels untouched{{5, 5}, {6, 6}};
    const std::string noImage = "cimage==NULL || cimage->p==NULL";
    const std::string noRange = "error ,   trailContainer.maxX==0 || trailContainer.maxY==0";
    const struct { TrailContainer trail; int width, height; std::string log; Pixels left; } rows[] = {
        {stroke(1, 100, 100, {{1, 1}}), 1404, 0, noImage, untouched},
        {stroke(1, 0, 100, {{1, 1}}), 1404, 1872, noRange, untouched},
        {stroke(1, 100, 0, {{1, 1}}), 1404, 1872, noRange, untouched},
        // An unknown orientation resizes the output but writes nothing into it.
        {stroke(4, 100, 100, {{1, 1}, {2, 2}, {3, 3}}), 1404, 1872, "bad coordinateOrigin", {{5, 5}, {6, 6}, {0, 0}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(map(row.trail, row.width, row.height, 0, before), std::make_pair(notetest::Logged(0, row.log), row.left));
}

}  // namespace
