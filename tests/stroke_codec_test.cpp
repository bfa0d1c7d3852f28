// The stroke record: what data2Trail reads and where each of its checks fires, that it
// never reads or allocates beyond the record, and what trail2data writes.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#include <gtest/gtest.h>

#include "notefiles.h"

// Every allocation of this program passes here, so that a test can see how much one decode
// asks for and refuse a huge request instead of touching the memory. Out of line, so that
// the compiler (and valgrind) never sees free() meet a pointer from operator new.
namespace allocation {
std::size_t requested = 0, refuseAbove = SIZE_MAX;
}
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (size > allocation::refuseAbove) throw std::bad_alloc();
    allocation::requested += size;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using notetest::Logged;
using notetest::sameStroke;
using notewriter::StrokeFields;
using notewriter::strokeRecord;

// A stroke with every stored field set apart from its default.
TrailContainer sampleTrail() {
    TrailContainer t = notetest::sampleStroke(3);
    int v = 100;
    for (int* a : {&t.attrA0, &t.attrA3, &t.attrA11, &t.attrB0, &t.attrB3, &t.attrC, &t.attrF0, &t.attrG, &t.attrJ0,
                   &t.attrH, &t.attrL, &t.attrM0, &t.attrM1, &t.attrI, &t.attrE, &t.attrN, &t.rectB[0], &t.rectB[3]})
        *a = v++;
    std::tie(t.subName, t.attrB4, t.attrO, t.renderFlag, t.attrD, t.textA, t.textB) =
        std::make_tuple("fine", 0x1122334455667788ul, 10, 0, 13, "first", "secondZ");
    t.epaPoints = {{9, 8}};
    t.epaGrays = {-3, 4};
    t.PointContour = {{{1.5f, 2.5f}}, {}, {{3.f, 4.f}, {5.25f, -6.f}}};
    return t;
}

struct Decoded { Logged r; TrailContainer trail; };

// The first `length` bytes of `bytes` are the record. In a buffer of exactly the record's
// size (the default) a read past it is a heap overflow that the sanitizers report.
Decoded decode(const std::string& bytes, int length = -1) {
    std::vector<char> buffer(bytes.begin(), bytes.end());
    Decoded out;
    out.r = notetest::logged(
        [&] { return data2Trail(buffer.data(), length < 0 ? int(bytes.size()) : length, out.trail); });
    return out;
}

std::string withWord(std::string record, std::size_t at, int32_t value) {
    std::memcpy(&record[at], &value, sizeof value);
    return record;
}

// Every field comes back, the texts behind the tail are not read, an axis other than 1 is
// logged and decoded all the same, and 16 x 0x10000000 skipped bytes wrap to 0 in the
// record's 32-bit arithmetic.
TEST(Data2Trail, DecodesWrittenRecords) {
    TrailContainer sample = sampleTrail(), turned = sampleTrail();
    turned.m_emrPointAxis = 2;
    const std::size_t skipped = notewriter::strokeFields(TrailContainer()).skippedCount;
    const struct { std::string record; TrailContainer trail; std::string log; } rows[] = {
        {strokeRecord(sample, 2, true), sample, ""},
        {strokeRecord(turned), turned, "m_emrPointAxis != 1"},
        {withWord(strokeRecord(TrailContainer()), skipped, 0x10000000), TrailContainer(), ""},
    };
    for (const auto& row : rows) {
        const Decoded d = decode(row.record);
        EXPECT_EQ(std::make_tuple(d.r, d.trail.textA), std::make_tuple(Logged(0, row.log), "none"));
        EXPECT_TRUE(sameStroke(d.trail, row.trail)) << row.log;
    }
}

// Each check fires at the first byte missing; a record that ends just before renderFlag
// (an older record) is accepted as read so far, and tail fields end the record silently.
TEST(Data2Trail, WhereEachCheckFires) {
    using Fill = void (*)(TrailContainer&);
    const Fill oneArea = [](TrailContainer& t) { t.disableAreaList = {FlagRect{}}; };
    const Fill contours = [](TrailContainer& t) { t.PointContour = {{}, {{1.5f, 2.5f}}}; };
    const Fill extra = [](TrailContainer& t) { t.extraControlNums = {77}; };
    const Fill none = [](TrailContainer&) {};
    // The record is cut `cut` bytes after the start of a field; one list of each kind:
    // sized up front, bytes, appended.
    const struct { Fill fill; std::size_t StrokeFields::*field; int cut; Logged expected; } rows[] = {
        {oneArea, &StrokeFields::pointCount, -1, {-1, "disableAreaList"}},
        {oneArea, &StrokeFields::pointCount, 0, {0, "renderFlag empty."}},
        {[](TrailContainer& t) { t.disableAreaList = {FlagRect{}, FlagRect{}}; }, &StrokeFields::pointCount, -1,
         {-1, "disableAreaList"}},
        {[](TrailContainer& t) { t.m_points = {{7, 8}}; }, &StrokeFields::pressureCount, -1, {-1, "m_points"}},
        {[](TrailContainer& t) { t.flagDraw = {true}; }, &StrokeFields::epaPointCount, -1, {-1, "flagDraw"}},
        {[](TrailContainer& t) { t.epaPoints = {{3, 4}}; }, &StrokeFields::epaGrayCount, -1, {-1, "epaPoints"}},
        {[](TrailContainer& t) { t.m_controlNums = {6}; }, &StrokeFields::attrM0, -1, {-1, "m_controlNums"}},
        {none, &StrokeFields::renderFlag, 0, {0, "renderFlag empty."}},
        {none, &StrokeFields::renderFlag, 1, {0, ""}},
        {contours, &StrokeFields::skippedCount, -1, {-1, "PointContour"}},
        {contours, &StrokeFields::skippedCount, 0, {0, ""}},
        {extra, &StrokeFields::pageWidth, -1, {-1, "m_controlNums"}},
        {extra, &StrokeFields::pageWidth, 0, {0, ""}},
    };
    for (const auto& row : rows) {
        TrailContainer t;
        t.renderFlag = 0;
        row.fill(t);
        const StrokeFields at = notewriter::strokeFields(t);
        const std::size_t length = at.*row.field + row.cut;
        const Decoded d = decode(strokeRecord(t).substr(0, length));
        EXPECT_EQ(d.r, row.expected) << length;
        EXPECT_EQ(d.trail.renderFlag, length > at.renderFlag ? 0 : 1) << length;  // a cut record keeps the default
    }

    // A tail field is read only with its guard's room left, which is not always its own width.
    TrailContainer t;
    std::tie(t.attrD, t.attrE, t.pageWidth, t.pageHeight, t.attrP) = std::make_tuple(3, 44, 100, 200, 6);
    const std::string record = strokeRecord(t);
    const StrokeFields at = notewriter::strokeFields(t);
    const struct { std::size_t firstLength; bool (*read)(const TrailContainer&); } tail[] = {
        {at.attrD + 8, [](const TrailContainer& d) { return d.attrD == 3; }},
        {at.attrE + 8, [](const TrailContainer& d) { return d.attrE == 44; }},
        {at.pageWidth + 4, [](const TrailContainer& d) { return d.pageWidth == 100 && d.pageHeight == 0; }},
        {at.pageHeight + 1, [](const TrailContainer& d) { return d.pageHeight == 200; }},  // no guard of its own
        {at.attrP + 4, [](const TrailContainer& d) { return d.attrP == 6; }},
    };
    for (const auto& row : tail) {
        const Decoded before = decode(record.substr(0, row.firstLength - 1)), whole = decode(record, int(row.firstLength));
        EXPECT_TRUE(!row.read(before.trail) && row.read(whole.trail) && before.r == whole.r && whole.r == Logged(0, ""))
            << row.firstLength;
    }
}

TEST(Data2Trail, NegativeAndHostileCounts) {
    const std::string empty = strokeRecord(TrailContainer());
    const StrokeFields at = notewriter::strokeFields(TrailContainer());
    // Negative counts of the lists that are not sized up front read nothing.
    std::string negative = withWord(empty, at.epaGrayCount, INT_MIN);
    for (std::size_t StrokeFields::*count : {&StrokeFields::disableAreaCount, &StrokeFields::flagDrawCount,
                                             &StrokeFields::epaPointCount, &StrokeFields::controlNumCount,
                                             &StrokeFields::contourCount, &StrokeFields::extraControlNumCount})
        negative = withWord(negative, at.*count, -1);
    EXPECT_TRUE(sameStroke(decode(negative).trail, TrailContainer()));

    // Hostile counts fail without a large allocation; 0x20000000 elements of 8 bytes make
    // 2^32 bytes, zero in 32-bit arithmetic. The second contour's count lies where the first
    // contour's points would be.
    const struct { const char* name; std::size_t at; } rows[] = {
        {"disableAreaList", at.disableAreaCount}, {"m_points", at.pointCount}, {"pressures", at.pressureCount},
        {"angles", at.angleCount}, {"flagDraw", at.flagDrawCount}, {"epaPoints", at.epaPointCount},
        {"epaGrays", at.epaGrayCount}, {"m_controlNums", at.controlNumCount}, {"PointContour", at.contourCount},
        {"PointContour", at.contourCount + 4}, {"m_controlNums", at.extraControlNumCount}};
    for (int32_t count : {0x7FFFFFFF, 0x20000000}) {
        for (const auto& row : rows) {
            std::string bytes = withWord(row.at == at.contourCount + 4 ? withWord(empty, at.contourCount, 1) : empty, row.at, count);
            TrailContainer trail;  // its own room is not counted
            const Logged r = notetest::logged([&] {
                std::tie(allocation::requested, allocation::refuseAbove) = std::make_pair(0, 1 << 20);
                int result = -99;
                try {
                    result = data2Trail(&bytes[0], int(bytes.size()), trail);
                } catch (...) {
                }
                allocation::refuseAbove = SIZE_MAX;
                return result;
            });
            EXPECT_TRUE(r == Logged(-1, row.name) && allocation::requested < 16u * 1024) << row.at;
        }
    }
}

std::string encode(const TrailContainer& t, std::size_t spare = 0) {
    std::string out(trail2dataSize(t) + spare, char(0xAA));
    trail2data(t, &out[0]);
    return out;
}

// The reader's layout without the skipped count, in exactly trail2dataSize bytes. A text
// field takes its text up to and including the first zero byte, whatever follows it in the
// string; only the characters before that zero count against the field's 50 bytes.
TEST(Trail2Data, WritesTheReadersLayoutWithoutTheSkippedCount) {
    TrailContainer sample = sampleTrail(), asRead = sample;
    sample.typeName = std::string("ab\0\x02", 4);
    sample.subName = std::string(49, 'x') + std::string(1, '\0') + "yy";
    std::tie(asRead.typeName, asRead.subName) = std::make_tuple("ab", std::string(49, 'x'));
    std::copy_n(sample.rectB, 4, asRead.rectA);  // rectA's words carry rectB when written
    const std::string read = strokeRecord(asRead, 0, true);
    const std::string written = encode(sample, 64);
    EXPECT_EQ(written.substr(written.size() - 64), std::string(64, char(0xAA)));  // the size is exact
    const std::size_t skipped = notewriter::strokeFields(asRead).skippedCount;
    EXPECT_EQ(written.substr(0, written.size() - 64), read.substr(0, skipped) + read.substr(skipped + 4));
    TrailContainer tooLong;
    tooLong.subName = std::string(50, 'x');
    EXPECT_DEATH(encode(tooLong), "");
}

}  // namespace
