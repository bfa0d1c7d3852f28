// The stroke record codec: what data2Trail reads where, where each of its checks fires, that
// it never reads or allocates beyond what the record holds, and what trail2data writes.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "capture.h"
#include "config.h"
#include "notewriter.h"

// Every allocation of this program, the library's included, passes here, so that a test can
// see how much one decode asks for, and refuse a huge request instead of touching the memory.
// All three are kept out of line: inlined, the compiler (and valgrind) would see free() meet
// a pointer from operator new.
namespace allocation {
std::size_t requested = 0;
std::size_t refuseAbove = SIZE_MAX;
}  // namespace allocation

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (size > allocation::refuseAbove) throw std::bad_alloc();
    allocation::requested += size;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }

static bool operator==(const MorvaPoint& a, const MorvaPoint& b) { return a.x == b.x && a.y == b.y; }
static bool operator==(const MorvaPointF& a, const MorvaPointF& b) { return a.x == b.x && a.y == b.y; }
static bool operator==(const MorvaPointS& a, const MorvaPointS& b) { return a.x == b.x && a.y == b.y; }
static bool operator==(const FlagRect& a, const FlagRect& b) {
    return std::equal(std::begin(a.words), std::end(a.words), std::begin(b.words));
}

namespace {

using notewriter::Bytes;
using notewriter::strokeRecord;

// Offsets in a record whose sections are all empty.
constexpr int kHeadSize = 208;
constexpr int kCountOfMPoints = 212;
constexpr int kCountOfPressures = 216;
constexpr int kCountOfAngles = 220;
constexpr int kCountOfFlagDraw = 224;
constexpr int kCountOfEpaPoints = 228;
constexpr int kCountOfEpaGrays = 232;
constexpr int kCountOfControlNums = 288;
constexpr int kRenderFlag = 301;
constexpr int kCountOfContours = 302;
constexpr int kSkippedCount = 306;
constexpr int kCountOfExtraControlNums = 327;

// A stroke with every stored field set apart from its default.
TrailContainer sampleTrail() {
    TrailContainer t;
    int v = 100;
    for (int* a : {&t.attrA0, &t.attrA1, &t.attrA2, &t.attrA3, &t.attrA4, &t.attrA5, &t.attrA6,
                   &t.attrA7, &t.attrA8, &t.attrA9, &t.attrA10, &t.attrA11, &t.attrB0, &t.attrB1,
                   &t.attrB2, &t.attrB3, &t.attrC, &t.maxX, &t.maxY, &t.attrF0, &t.attrF1,
                   &t.attrF2, &t.attrG, &t.attrJ0, &t.attrJ1, &t.attrH, &t.attrK, &t.attrL,
                   &t.attrM0, &t.attrM1, &t.attrI, &t.attrE, &t.pageWidth, &t.pageHeight, &t.attrN}) {
        *a = v++;
    }
    t.typeName = "pen";
    t.subName = "fine";
    t.attrB4 = 0x1122334455667788ul;
    t.disableAreaList = {FlagRect{{1, 2, 3, 4, 5, 6}}, FlagRect{{7, 8, 9, 10, 11, 0xFFFFFFFF}}};
    // The companions keep their own counts.
    t.m_points = {{1, 2}, {3, 4}, {-5, 6}};
    t.pressures = {10, 65535, 3};
    t.angles = {{-1, 2}, {3, -4}};
    t.flagDraw = {true, false, true, true};
    t.epaPoints = {{9, 8}};
    t.epaGrays = {-3, 4};
    for (int i = 0; i < 4; ++i) {
        t.rectA[i] = 11 + i;
        t.rectB[i] = 21 + i;
    }
    t.m_controlNums = {5, 6, 7};
    t.attrO = 10;
    t.renderFlag = 0;
    t.PointContour = {{{1.5f, 2.5f}}, {}, {{3.f, 4.f}, {5.25f, -6.f}}};
    t.ratioB = 0.75;
    t.attrD = 13;
    t.extraControlNums = {15, 16};
    t.attrP = 18;
    t.textA = "first";
    t.textB = "secondZ";
    return t;
}

std::vector<int> headWords(const TrailContainer& t) {
    return {t.attrA0, t.attrA1, t.attrA2, t.attrA3, t.attrA4, t.attrA5, t.attrA6, t.attrA7,
            t.attrA8, t.attrA9, t.attrA10, t.attrA11, t.attrB0, t.attrB1, t.attrB2, t.attrB3,
            t.attrC, t.maxX, t.maxY, t.m_emrPointAxis, t.attrF0, t.attrF1, t.attrF2, t.attrG};
}

std::vector<int> rect(const int (&r)[4]) { return {r[0], r[1], r[2], r[3]}; }

bool sameSections(const TrailContainer& a, const TrailContainer& b) {
    return a.disableAreaList == b.disableAreaList && a.m_points == b.m_points &&
           a.pressures == b.pressures && a.angles == b.angles && a.flagDraw == b.flagDraw &&
           a.epaPoints == b.epaPoints && a.epaGrays == b.epaGrays &&
           a.m_controlNums == b.m_controlNums && a.PointContour == b.PointContour;
}

// Everything the record carries before the skipped section, rectA aside.
void expectSameUpToContours(const TrailContainer& expected, const TrailContainer& actual) {
    EXPECT_EQ(headWords(actual), headWords(expected));
    EXPECT_EQ(actual.attrB4, expected.attrB4);
    EXPECT_EQ(actual.typeName, expected.typeName);
    EXPECT_EQ(actual.subName, expected.subName);
    EXPECT_TRUE(sameSections(actual, expected));
    EXPECT_EQ((std::vector<int>{actual.attrJ0, actual.attrJ1, actual.attrH, actual.attrK, actual.attrL}),
              (std::vector<int>{expected.attrJ0, expected.attrJ1, expected.attrH, expected.attrK,
                                expected.attrL}));
    EXPECT_EQ(rect(actual.rectB), rect(expected.rectB));
    EXPECT_EQ(actual.attrM0, expected.attrM0);
    EXPECT_EQ(actual.attrM1, expected.attrM1);
    EXPECT_EQ(actual.attrO, expected.attrO);
    EXPECT_EQ(actual.renderFlag, expected.renderFlag);
}

void expectSameTail(const TrailContainer& expected, const TrailContainer& actual) {
    EXPECT_EQ(actual.attrI, expected.attrI);
    EXPECT_EQ(actual.ratioB, expected.ratioB);
    EXPECT_EQ(actual.attrD, expected.attrD);
    EXPECT_EQ(actual.attrE, expected.attrE);
    EXPECT_EQ(actual.extraControlNums, expected.extraControlNums);
    EXPECT_EQ(actual.pageWidth, expected.pageWidth);
    EXPECT_EQ(actual.pageHeight, expected.pageHeight);
    EXPECT_EQ(actual.attrN, expected.attrN);
    EXPECT_EQ(actual.attrP, expected.attrP);
}

struct Decoded {
    int result = 0;
    TrailContainer trail;
    std::string log;
};

Decoded decodeBuffer(std::vector<char> buffer, int length) {
    Decoded out;
    out.log = notetest::captureStdout([&] { out.result = data2Trail(buffer.data(), length, out.trail); });
    return out;
}

// The record handed over in a buffer of exactly its size, so that a read past it is a heap
// overflow that the sanitizers and valgrind report.
Decoded decode(const std::string& record) {
    return decodeBuffer({record.begin(), record.end()}, int(record.size()));
}

// The first `length` bytes of `bytes` as the record, while the buffer goes on: what lies
// beyond the record must read as zero, not as those bytes.
Decoded decodeWithin(const std::string& bytes, int length) {
    return decodeBuffer({bytes.begin(), bytes.end()}, length);
}

std::string withWord(std::string record, std::size_t at, int32_t value) {
    std::memcpy(&record[at], &value, sizeof value);
    return record;
}

std::string headOf(const TrailContainer& t) { return strokeRecord(t).substr(0, kHeadSize); }

TEST(Data2Trail, DecodesEveryFieldOfAWrittenRecord) {
    const TrailContainer sample = sampleTrail();
    Decoded d = decode(strokeRecord(sample, 2, true));
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.log, "");
    expectSameUpToContours(sample, d.trail);
    EXPECT_EQ(rect(d.trail.rectA), rect(sample.rectA));
    expectSameTail(sample, d.trail);
    EXPECT_EQ(d.trail.textA, "none");  // never read
    EXPECT_EQ(d.trail.textB, "none");
}

TEST(Data2Trail, OtherAxisIsLoggedAndDecodingGoesOn) {
    TrailContainer sample = sampleTrail();
    sample.m_emrPointAxis = 2;
    Decoded d = decode(strokeRecord(sample));
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.log, "m_emrPointAxis != 1");
    EXPECT_EQ(d.trail.m_emrPointAxis, 2);
    expectSameTail(sample, d.trail);
}

TEST(Data2Trail, EachSectionFailsAtTheFirstElementThatDoesNotFit) {
    struct Case {
        const char* name;
        std::function<void(TrailContainer&)> fill;
        int end;  // where the section's last element ends
    };
    const Case cases[] = {
        {"disableAreaList", [](TrailContainer& t) { t.disableAreaList = {FlagRect{{1, 2, 3, 4, 5, 6}}}; }, 236},
        {"disableAreaList",
         [](TrailContainer& t) { t.disableAreaList = {FlagRect{{1, 2, 3, 4, 5, 6}}, FlagRect{{7, 0, 0, 0, 0, 8}}}; },
         260},
        {"m_points", [](TrailContainer& t) { t.m_points = {{7, 8}}; }, 224},
        {"pressures", [](TrailContainer& t) { t.pressures = {9}; }, 222},
        {"angles", [](TrailContainer& t) { t.angles = {{-1, 1}}; }, 228},
        {"flagDraw", [](TrailContainer& t) { t.flagDraw = {true}; }, 229},
        {"epaPoints", [](TrailContainer& t) { t.epaPoints = {{3, 4}}; }, 240},
        {"epaGrays", [](TrailContainer& t) { t.epaGrays = {5}; }, 240},
        {"m_controlNums", [](TrailContainer& t) { t.m_controlNums = {6}; }, 296},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.name) + " ending at " + std::to_string(c.end));
        TrailContainer t;
        c.fill(t);
        const std::string record = strokeRecord(t);

        Decoded cut = decode(record.substr(0, c.end - 1));
        EXPECT_EQ(cut.result, -1);
        EXPECT_EQ(cut.log, c.name);

        // With the element inside, the record runs out before renderFlag instead.
        Decoded whole = decode(record.substr(0, c.end));
        EXPECT_EQ(whole.result, 0);
        EXPECT_EQ(whole.log, "renderFlag empty.");
        EXPECT_TRUE(sameSections(whole.trail, t));
    }
}

TEST(Data2Trail, PointListsFailAtOnceWhenTheCountCannotFitTheRecord) {
    // 150 pressures take 300 bytes, as much as the record: the list gets its count and the
    // 40 pressures that lie inside; one more and nothing is resized.
    TrailContainer t;
    for (int i = 0; i < 151; ++i) t.pressures.push_back(uint16_t(i + 1));
    const std::string over = strokeRecord(t).substr(0, 300);
    t.pressures.pop_back();
    const std::string fits = strokeRecord(t).substr(0, 300);

    Decoded partly = decode(fits);
    EXPECT_EQ(partly.result, -1);
    EXPECT_EQ(partly.log, "pressures");
    ASSERT_EQ(partly.trail.pressures.size(), 150u);
    EXPECT_TRUE(std::equal(t.pressures.begin(), t.pressures.begin() + 40, partly.trail.pressures.begin()));
    EXPECT_TRUE(std::all_of(partly.trail.pressures.begin() + 40, partly.trail.pressures.end(),
                            [](uint16_t p) { return p == 0; }));

    Decoded refused = decode(over);
    EXPECT_EQ(refused.result, -1);
    EXPECT_EQ(refused.log, "pressures");
    EXPECT_TRUE(refused.trail.pressures.empty());

    // The same for points: 30 points (240 bytes) fit a 300-byte record by count, the first
    // 10 by position.
    TrailContainer points;
    for (int i = 0; i < 30; ++i) points.m_points.push_back({i + 1, -i});
    Decoded stored = decode(strokeRecord(points).substr(0, 300));
    EXPECT_EQ(stored.result, -1);
    EXPECT_EQ(stored.log, "m_points");
    ASSERT_EQ(stored.trail.m_points.size(), 30u);
    EXPECT_TRUE(std::equal(points.m_points.begin(), points.m_points.begin() + 10, stored.trail.m_points.begin()));
    EXPECT_TRUE(stored.trail.m_points[10] == (MorvaPoint{0, 0}));
}

TEST(Data2Trail, NegativePointListCountRaisesLengthError) {
    const std::string empty = strokeRecord(TrailContainer());
    for (int at : {kCountOfMPoints, kCountOfPressures, kCountOfAngles}) {
        SCOPED_TRACE(at);
        EXPECT_THROW(decode(withWord(empty, at, -1)), std::length_error);
    }
}

TEST(Data2Trail, NegativeCountsOfOtherSectionsMeanNoElements) {
    TrailContainer t;
    t.pageWidth = 999;
    std::string record = strokeRecord(t);
    for (int at : {kHeadSize, kCountOfFlagDraw, kCountOfEpaPoints, kCountOfEpaGrays, kCountOfControlNums,
                   kCountOfContours, kCountOfExtraControlNums}) {
        record = withWord(record, at, at == kCountOfEpaGrays ? INT_MIN : -1);
    }
    Decoded d = decode(record);
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.log, "");
    EXPECT_TRUE(sameSections(d.trail, TrailContainer()));
    EXPECT_TRUE(d.trail.extraControlNums.empty());
    EXPECT_EQ(d.trail.pageWidth, 999);
}

TEST(Data2Trail, RecordEndingBeforeRenderFlagIsAccepted) {
    TrailContainer t;
    t.renderFlag = 0;
    t.attrM1 = 42;
    const std::string record = strokeRecord(t);

    Decoded old = decode(record.substr(0, kRenderFlag));
    EXPECT_EQ(old.result, 0);
    EXPECT_EQ(old.log, "renderFlag empty.");
    EXPECT_EQ(old.trail.attrM1, 42);
    EXPECT_EQ(old.trail.renderFlag, 1);

    Decoded withFlag = decode(record.substr(0, kRenderFlag + 1));
    EXPECT_EQ(withFlag.result, 0);
    EXPECT_EQ(withFlag.log, "");
    EXPECT_EQ(withFlag.trail.renderFlag, 0);
}

TEST(Data2Trail, ContourMustLieInsideTheRecord) {
    // Contour count at 302, an empty contour's count at 306, the next count at 310 and its
    // point from 314 to 321.
    TrailContainer t;
    t.PointContour = {{}, {{1.5f, 2.5f}}};
    const std::string record = strokeRecord(t);

    for (int length : {313, 321}) {  // the count, then the point, reaching past the end
        SCOPED_TRACE(length);
        Decoded cut = decode(record.substr(0, length));
        EXPECT_EQ(cut.result, -1);
        EXPECT_EQ(cut.log, "PointContour");
        EXPECT_EQ(cut.trail.PointContour.size(), 1u);  // contours before it are kept
    }
    Decoded whole = decode(record.substr(0, 322));
    EXPECT_EQ(whole.result, 0);
    EXPECT_EQ(whole.log, "");
    EXPECT_TRUE(whole.trail.PointContour == t.PointContour);
    EXPECT_EQ(whole.trail.attrI, -1);  // no room for the tail
}

TEST(Data2Trail, TailFieldsNeedTheirGuardsRoom) {
    TrailContainer t;
    t.attrI = 11;
    t.ratioB = 2.5;
    t.attrD = 3;
    t.attrE = 44;
    t.pageWidth = 100;
    t.pageHeight = 200;
    t.attrN = 55;
    t.attrP = 6;
    const std::string record = strokeRecord(t);
    ASSERT_EQ(record.size(), 347u);

    struct Case {
        const char* field;
        int firstLengthRead;  // the field's position plus its guard's room
        std::function<bool(const TrailContainer&)> read;
    };
    const Case cases[] = {
        {"attrI", 310 + 4, [](const TrailContainer& d) { return d.attrI == 11; }},
        {"ratioB", 314 + 8, [](const TrailContainer& d) { return d.ratioB == 2.5; }},
        {"attrD", 322 + 8, [](const TrailContainer& d) { return d.attrD == 3; }},
        {"attrE", 323 + 8, [](const TrailContainer& d) { return d.attrE == 44; }},
        {"pageWidth", 331 + 4, [](const TrailContainer& d) { return d.pageWidth == 100; }},
        {"attrN", 339 + 4, [](const TrailContainer& d) { return d.attrN == 55; }},
        {"attrP", 343 + 4, [](const TrailContainer& d) { return d.attrP == 6; }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        Decoded before = decode(record.substr(0, c.firstLengthRead - 1));
        Decoded at = decode(record.substr(0, c.firstLengthRead));
        EXPECT_FALSE(c.read(before.trail));
        EXPECT_TRUE(c.read(at.trail));
        EXPECT_EQ(before.result, 0);
        EXPECT_EQ(at.result, 0);
        EXPECT_EQ(before.log + at.log, "");  // a missing tail field ends the record silently
    }

    // pageHeight has no guard of its own: right behind pageWidth's room it reads as zero,
    // whatever the buffer holds beyond the record.
    EXPECT_EQ(decode(record.substr(0, 335)).trail.pageHeight, 0);
    EXPECT_EQ(decodeWithin(record, 335).trail.pageHeight, 0);
    EXPECT_EQ(decode(record.substr(0, 339)).trail.pageHeight, 200);
}

TEST(Data2Trail, ExtraControlNumsElementOutsideTheRecordFails) {
    TrailContainer t;
    t.extraControlNums = {77};
    t.pageWidth = 100;
    const std::string record = strokeRecord(t);  // the element lies at 331..334

    Decoded cut = decode(record.substr(0, 334));
    EXPECT_EQ(cut.result, -1);
    EXPECT_EQ(cut.log, "m_controlNums");

    Decoded whole = decode(record.substr(0, 335));
    EXPECT_EQ(whole.result, 0);
    EXPECT_EQ(whole.trail.extraControlNums, std::vector<int>{77});
    EXPECT_EQ(whole.trail.pageWidth, 1404);  // its guard wants 4 bytes more
}

TEST(Data2Trail, SkipIsComputedIn32Bits) {
    // 16 x 0x10000000 wraps to 0: the tail follows the count directly.
    TrailContainer t;
    t.attrI = 11;
    t.pageWidth = 100;
    Decoded d = decode(withWord(strokeRecord(t), kSkippedCount, 0x10000000));
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.trail.attrI, 11);
    EXPECT_EQ(d.trail.pageWidth, 100);
}

TEST(Data2Trail, BytesBeyondTheRecordReadAsZero) {
    const TrailContainer sample = sampleTrail();
    const std::string record = strokeRecord(sample, 1, true);

    // Cut inside the head: the rest of the head is zero, typeName included.
    Decoded head = decodeWithin(record, 50);
    EXPECT_EQ(head.result, 0);
    EXPECT_EQ(head.log, "m_emrPointAxis != 1renderFlag empty.");
    EXPECT_EQ(head.trail.attrA0, sample.attrA0);
    EXPECT_EQ(head.trail.typeName, "pe");
    EXPECT_EQ(head.trail.attrC, 0);
    EXPECT_EQ(head.trail.maxX, 0);
    EXPECT_EQ(head.trail.m_emrPointAxis, 0);

    // Cut inside a count: its upper bytes are zero, so 0x50000 areas read as none.
    const std::string count = Bytes().raw(headOf(sample)).i32(0x50000).zeros(100).str();
    Decoded areas = decodeWithin(count, kHeadSize + 2);
    EXPECT_EQ(areas.result, 0);
    EXPECT_EQ(areas.log, "renderFlag empty.");
    EXPECT_TRUE(areas.trail.disableAreaList.empty());

    // Cut inside the unchecked fixed block: its words read as zero from the cut on.
    TrailContainer fixed;
    fixed.attrJ0 = 0x44332211;
    fixed.attrJ1 = 5;
    fixed.attrH = 6;
    std::fill_n(fixed.rectA, 4, 7);
    std::fill_n(fixed.rectB, 4, 8);
    for (const Decoded& d : {decodeWithin(strokeRecord(fixed), 238), decode(strokeRecord(fixed).substr(0, 238))}) {
        EXPECT_EQ(d.result, 0);
        EXPECT_EQ(d.log, "renderFlag empty.");
        EXPECT_EQ(d.trail.attrJ0, 0x2211);
        EXPECT_EQ(d.trail.attrJ1, 0);
        EXPECT_EQ(d.trail.attrH, 0);
        EXPECT_EQ(rect(d.trail.rectA), (std::vector<int>{0, 0, 0, 0}));
        EXPECT_EQ(rect(d.trail.rectB), (std::vector<int>{0, 0, 0, 0}));
    }

    // At every length, the decoder cannot tell a buffer that ends with the record from one
    // that goes on.
    for (int length = 1; length < int(record.size()); ++length) {
        SCOPED_TRACE(length);
        Decoded tight = decode(record.substr(0, length));
        Decoded within = decodeWithin(record, length);
        EXPECT_EQ(tight.result, within.result);
        EXPECT_EQ(tight.log, within.log);
        expectSameUpToContours(within.trail, tight.trail);
        EXPECT_EQ(rect(tight.trail.rectA), rect(within.trail.rectA));
        expectSameTail(within.trail, tight.trail);
    }
}

TEST(Data2Trail, HostileCountsFailWithoutLargeAllocation) {
    const std::string empty = strokeRecord(TrailContainer());
    const std::string oneContour = withWord(empty, kCountOfContours, 1);
    struct Case {
        const char* name;
        std::string record;  // with the count at `at` still to set
        int at;
    };
    const Case cases[] = {
        {"disableAreaList", empty, kHeadSize},
        {"m_points", empty, kCountOfMPoints},
        {"pressures", empty, kCountOfPressures},
        {"angles", empty, kCountOfAngles},
        {"flagDraw", empty, kCountOfFlagDraw},
        {"epaPoints", empty, kCountOfEpaPoints},
        {"epaGrays", empty, kCountOfEpaGrays},
        {"m_controlNums", empty, kCountOfControlNums},
        {"PointContour", empty, kCountOfContours},
        {"PointContour", oneContour, kCountOfContours + 4},
        {"m_controlNums", empty, kCountOfExtraControlNums},
    };
    // 0x20000000 elements of 8 bytes make 2^32 bytes: zero in 32-bit arithmetic.
    for (int32_t count : {0x7FFFFFFF, 0x20000000}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(c.name) + " at " + std::to_string(c.at) + " count " + std::to_string(count));
            std::vector<char> buffer;
            const std::string record = withWord(c.record, c.at, count);
            buffer.assign(record.begin(), record.end());
            Decoded d;
            std::size_t requested = 0;
            EXPECT_NO_THROW(d.log = notetest::captureStdout([&] {
                allocation::requested = 0;
                allocation::refuseAbove = 1 << 20;
                try {
                    d.result = data2Trail(buffer.data(), int(buffer.size()), d.trail);
                } catch (...) {
                    allocation::refuseAbove = SIZE_MAX;
                    throw;
                }
                allocation::refuseAbove = SIZE_MAX;
                requested = allocation::requested;
            }));
            EXPECT_EQ(d.result, -1);
            EXPECT_EQ(d.log, c.name);
            // A record of 347 bytes may cost a few kilobytes beyond the constructor's room.
            EXPECT_LT(requested, 16u * 1024);
        }
    }
}

// Where the skipped section's count would lie in the record of t: the head, the seven
// sections, the fixed block, m_controlNums, the four scalars after it and the contours.
std::size_t skippedCountOffset(const TrailContainer& t) {
    std::size_t at = kHeadSize + 4 + 24 * t.disableAreaList.size() + 4 + 8 * t.m_points.size() + 4 +
                     2 * t.pressures.size() + 4 + 4 * t.angles.size() + 4 + t.flagDraw.size() + 4 +
                     8 * t.epaPoints.size() + 4 + 4 * t.epaGrays.size() + 13 * 4 + 4 +
                     4 * t.m_controlNums.size() + 10 + 4;
    for (const auto& contour : t.PointContour) at += 4 + 8 * contour.size();
    return at;
}

constexpr char kUnwritten = char(0xAA);

// The record of t in a buffer `spare` bytes longer than its size, pre-filled with a pattern.
std::string encode(const TrailContainer& t, std::size_t spare = 0) {
    std::string out(trail2dataSize(t) + spare, kUnwritten);
    trail2data(t, &out[0]);
    return out;
}

TEST(Trail2Data, WritesTheRecordWithoutSkippedSection) {
    TrailContainer sample = sampleTrail();
    std::copy_n(sample.rectB, 4, sample.rectA);  // words 5-8 hold rectB when written
    const std::string read = strokeRecord(sample, 0, true);
    const std::size_t skipped = skippedCountOffset(sample);
    EXPECT_EQ(encode(sample), read.substr(0, skipped) + read.substr(skipped + 4));
}

TEST(Trail2Data, SizeIsTheBytesWritten) {
    for (const TrailContainer& t : {TrailContainer(), sampleTrail()}) {
        const std::size_t size = trail2dataSize(t);
        const std::string out = encode(t, 64);
        EXPECT_EQ(out[size - 1], t.textB.back());  // textB's last byte ends the record
        EXPECT_EQ(out.substr(size), std::string(64, kUnwritten));
    }
}

TEST(Trail2Data, UnsetHeadBytesAreZero) {
    TrailContainer t;
    t.typeName = "ab";
    t.subName = std::string(49, 's');  // the longest that fits with its terminator
    const std::string out = encode(t);
    EXPECT_EQ(out.substr(48, 52), "ab" + std::string(50, '\0'));  // padding and bytes 98-99
    EXPECT_EQ(out.substr(136, 52), std::string(49, 's') + std::string(3, '\0'));
}

TEST(Trail2Data, TextOfFiftyCharactersIsFatal) {
    TrailContainer t;
    t.typeName = std::string(50, 't');
    std::vector<char> out(4096);
    EXPECT_DEATH(trail2data(t, out.data()), "");
}

TEST(Trail2Data, ReadingBackShowsTheDocumentedDifferences) {
    // rectA is never written; attrI takes the place of the skipped count, so with attrI 0
    // the decoder reads everything after it four bytes late.
    TrailContainer t = sampleTrail();
    t.attrI = 0;
    const uint64_t ratioBits = 0x12345678u;
    std::memcpy(&t.ratioB, &ratioBits, sizeof ratioBits);
    t.attrD = 0;
    t.attrE = 0;
    t.extraControlNums.clear();
    t.pageWidth = 0;  // read as the (empty) extraControlNums count
    t.pageHeight = 7;
    t.attrN = 8;
    Decoded d = decode(encode(t));
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.log, "");
    expectSameUpToContours(t, d.trail);
    EXPECT_EQ(rect(d.trail.rectA), rect(t.rectB));
    EXPECT_EQ(d.trail.attrI, 0x12345678);
    EXPECT_EQ(d.trail.pageWidth, 7);
    EXPECT_EQ(d.trail.pageHeight, 8);

    // The default attrI of -1 steps 4 - 16 bytes, back into attrM0 and attrM1.
    TrailContainer fresh;
    fresh.attrM0 = 0x22221111;
    fresh.attrM1 = 0x44443333;
    Decoded back = decode(encode(fresh));
    EXPECT_EQ(back.result, 0);
    EXPECT_EQ(back.trail.attrI, 0x33332222);
}

}  // namespace
