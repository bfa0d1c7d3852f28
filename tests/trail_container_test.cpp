// The stroke record as constructed and as copied.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "trailContainer.h"

namespace {

TEST(TrailContainer, StartsWithTheDocumentedDefaults) {
    const TrailContainer t;
    EXPECT_EQ(t.m_emrPointAxis, 1);
    EXPECT_EQ(t.renderFlag, 1);
    EXPECT_EQ(t.attrC, -1);
    EXPECT_EQ(t.attrI, -1);
    EXPECT_EQ(t.pageWidth, 1404);
    EXPECT_EQ(t.pageHeight, 1872);
    EXPECT_EQ(t.ratioA, 1.0);
    EXPECT_EQ(t.ratioB, 1.0);
    EXPECT_EQ(t.typeName, "others");
    EXPECT_EQ(t.subName, "");
    EXPECT_EQ(t.textA, "none");
    EXPECT_EQ(t.textB, "none");
    EXPECT_EQ(t.attrA4, 32);
    EXPECT_EQ(t.attrA5, 32);
    EXPECT_EQ(t.pointCapacity, 5000);
    EXPECT_EQ(std::vector<int>(t.rectA, t.rectA + 4), (std::vector<int>{0, 0, 1, 1}));
    EXPECT_EQ(std::vector<int>(t.rectB, t.rectB + 4), (std::vector<int>{0, 0, 1, 1}));
    // Left unset by the record's definition; zero here so that nothing reads garbage (the
    // mapping divides by maxX and maxY).
    const std::vector<int> zeros{t.attrA0, t.attrA1, t.attrA2, t.attrA3, t.attrA6, t.attrA7,
                                 t.attrA8, t.attrA9, t.attrA11, t.maxX, t.maxY, t.attrB0,
                                 t.attrB1, t.attrB2, t.attrB3, t.attrE, t.attrF0, t.attrF1,
                                 t.attrF2, t.attrG, t.attrH, t.attrJ0, t.attrJ1, t.attrK,
                                 t.attrL, t.attrM0, t.attrM1, t.attrN};
    EXPECT_EQ(zeros, std::vector<int>(zeros.size(), 0));
    EXPECT_EQ(t.attrB4, 0u);
    EXPECT_EQ(t.spare64, 0u);
    EXPECT_EQ(t.attrD + t.attrO + t.attrP, 0);

    EXPECT_TRUE(t.m_points.empty() && t.workListA.empty() && t.pressures.empty() &&
                t.angles.empty() && t.flagDraw.empty() && t.workListB.empty() &&
                t.PointContour.empty() && t.workListC.empty() && t.workListD.empty() &&
                t.epaPoints.empty() && t.epaGrays.empty() && t.workListE.empty() &&
                t.extraControlNums.empty() && t.workListF.empty() &&
                t.disableAreaList.empty() && t.m_controlNums.empty());
}

TEST(TrailContainer, ReservesRoomForItsPoints) {
    const TrailContainer t;
    EXPECT_GE(t.m_points.capacity(), 5000u);
    EXPECT_GE(t.pressures.capacity(), 5000u);
    EXPECT_GE(t.angles.capacity(), 5000u);
    EXPECT_GE(t.flagDraw.capacity(), std::size_t(t.pointCapacity));
    EXPECT_GE(t.workListB.capacity(), std::size_t(t.pointCapacity));
}

TEST(TrailContainer, CopiesAreIndependent) {
    TrailContainer source;
    source.PointContour = {{{1.f, 2.f}}, {{3.f, 4.f}, {5.f, 6.f}}};
    source.workListD = {{{7, 8}}};
    source.m_points = {{1, 1}};
    source.typeName = "pen";
    source.rectA[2] = 9;
    source.maxX = 20000;

    TrailContainer copy(source);
    EXPECT_EQ(copy.PointContour.size(), 2u);
    EXPECT_EQ(copy.typeName, "pen");
    EXPECT_EQ(copy.rectA[2], 9);
    EXPECT_EQ(copy.maxX, 20000);
    copy.PointContour[1][0].x = 30.f;
    copy.PointContour[0].clear();
    copy.workListD[0][0].x = 70;
    copy.m_points[0].x = 10;
    EXPECT_EQ(source.PointContour[1][0].x, 3.f);
    EXPECT_EQ(source.PointContour[0].size(), 1u);
    EXPECT_EQ(source.workListD[0][0].x, 7);
    EXPECT_EQ(source.m_points[0].x, 1);

    TrailContainer assigned;
    assigned = source;
    assigned.PointContour[1].push_back({0.f, 0.f});
    EXPECT_EQ(source.PointContour[1].size(), 2u);
    EXPECT_EQ(assigned.PointContour[1].size(), 3u);

    // Records kept in a growing list survive its reallocations.
    std::vector<TrailContainer> page;
    for (int i = 0; i < 9; ++i) {
        page.push_back(source);
        page.back().attrG = i;
    }
    EXPECT_EQ(page[0].attrG, 0);
    EXPECT_EQ(page[8].PointContour[1][1].y, 6.f);
}

}  // namespace
