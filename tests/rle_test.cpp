// The run-length code of layer pictures: colour tables, exact encoder output, round trips,
// and a decoder held to a plain one that never writes outside the picture.

#include <sys/mman.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "notefiles.h"

namespace {

using notetest::Logged;
using notewriter::kPictureSize;
using Code = std::vector<uint8_t>;
constexpr uint8_t kGuard = 0xA5;

Code pairs(uint8_t code, uint8_t lengthByte, std::size_t times = 1) {
    Code out;
    for (std::size_t i = 0; i < times; ++i) out.insert(out.end(), {code, lengthByte});
    return out;
}
Code& operator+=(Code& a, const Code& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
Code operator+(Code a, const Code& b) { return a += b; }
bool all(const Code& v, std::size_t from, std::size_t to, uint8_t value) {
    return std::all_of(v.begin() + from, v.begin() + to, [&](uint8_t b) { return b == value; });
}

// Encodes into the room a worst-case picture needs (two bytes a pixel and one spare),
// followed by a guard region that must stay untouched.
Code encode(Code pixels) {
    const std::size_t room = 2 * pixels.size() + 1;
    Code dest(room + 4096, kGuard);
    unsigned long length = 0;
    EXPECT_TRUE(compresseDataByRLE(reinterpret_cast<char*>(pixels.data()), pixels.size(), dest.data(), length));
    EXPECT_TRUE(length <= room && all(dest, room, dest.size(), kGuard)) << "wrote past its destination";
    dest.resize(std::min<std::size_t>(length, room));
    return dest;
}

// A picture of `fill` followed by a guard region.
Code canvas(uint8_t fill) {
    Code out(kPictureSize, fill);
    out.resize(kPictureSize + 4096, kGuard);
    return out;
}

// Decodes the first `length` bytes of code (all by default) over `out`, whose bytes behind
// the picture must stay as they were; returns the result and the log.
Logged expand(Code& out, Code code, std::size_t length = 0) {
    const Code behind(out.begin() + kPictureSize, out.end());
    const Logged r = notetest::logged([&] {
        return uncompresseDataByRLE(reinterpret_cast<char*>(out.data()), kPictureSize,
                                    reinterpret_cast<char*>(code.data()), length ? length : code.size());
    });
    EXPECT_TRUE(std::equal(behind.begin(), behind.end(), out.begin() + kPictureSize)) << "wrote past the picture";
    return r;
}

// A whole picture of one value: 160 pairs of 16384 pixels, then 6848 = 53 x 128 + 64.
Code wholePicture(uint8_t code) { return pairs(code, 0xFF, 160) + pairs(code, 0xB4) + pairs(code, 0x3F); }

// The codes of the pixel values are checked by the coder's tests below.
TEST(ColourTables, GreysAndTransparentWhite) {
    const uint8_t pixels[] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51, 0xFE, 0xFF, 0x12};
    const uint32_t colours[] = {0xFF010101, 0xFF010101, 0xFF9D9D9D, 0xFF9D9D9D, 0xFFC9C9C9, 0xFFC9C9C9, 0xFFFEFEFE, 0, 0};
    for (int i = 0; i < 9; ++i) EXPECT_EQ(uint32_t(NOTE_COLOR_CONVERT_INDEX[pixels[i]]), colours[i]) << i;
}

// Whole 16384-pixel pairs, then one multiple of 128, then the rest; the counter keeps the
// remainder below 16384 and the length is added to.
TEST(UnitForRle, WritesThePairsOfOneRun) {
    const struct { int count; uint8_t value; Code code; } rows[] = {
        {20000, 0x00, {0x61, 0xFF, 0x61, 0x9B, 0x61, 0x1F}}, {3, 0x12, {0x00, 0x02}},
        {16384 * 2 + 129, 0x01, {0x66, 0xFF, 0x66, 0xFF, 0x66, 0x80, 0x66, 0x00}}};
    for (const auto& row : rows) {
        Code out(16, kGuard);
        int count = row.count;
        unsigned long length = 10;
        EXPECT_EQ(unitForRLE(count, row.value, out.data(), length), int(row.code.size())) << row.count;
        EXPECT_EQ(std::make_pair(length, count), std::make_pair(10 + row.code.size(), row.count & 0x3FFF));
        EXPECT_EQ(Code(out.begin(), out.begin() + row.code.size() + 1), row.code + Code{kGuard});
    }
}

TEST(CompresseDataByRle, ExactCode) {
    EXPECT_EQ(encode(Code(kPictureSize, 0x00)), wholePicture(0x61));  // 324 bytes
    // The 0x00 in front takes the first block off the fast step; compared as signed there,
    // 0xFE and 0xFF never continue a run, so pixels 1 to 6 are runs of their own and pixel 7
    // starts the run that the whole blocks extend: 2628281 = 160 x 16384 + 53 x 128 + 57.
    for (const auto& [pixel, code] : {std::pair<uint8_t, uint8_t>{0xFF, 0x62}, {0xFE, 0x65}}) {
        Code picture(kPictureSize, pixel);
        picture[0] = 0x00;
        EXPECT_EQ(encode(picture), pairs(0x61, 0x00) + pairs(code, 0x00, 6) + pairs(code, 0xFF, 160) +
                                       pairs(code, 0xB4) + pairs(code, 0x38));
    }
    const Code block{0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x31, 0x31};
    EXPECT_EQ(encode(block), (Code{0x63, 0x05, 0x67, 0x00, 0x67, 0x00}));  // the last of exactly 8 bytes
    EXPECT_EQ(encode(Code(8, 0x00) + Code(3, 0x30)), pairs(0x61, 0x07));    // bytes after the last whole block
}

// A run of more pixels than the encoder's int counter holds is coded in pieces, as one
// piece would be. The input is a private mapping of zeros that is never written past its
// first page: reading it maps the kernel's shared zero page, so it takes no memory, and
// neither does the encoder's untouched working buffer.
TEST(CompresseDataByRle, RunsBeyondTheCounterAreCodedExactly) {
    constexpr std::size_t kSize = 2148540232;  // 2^31 + 1056584 bytes: 0x30, then zeros
    void* mapping = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) GTEST_SKIP() << "no room for a 2 GiB mapping";
    static_cast<char*>(mapping)[0] = 0x30;
    Code code(1 << 20);
    unsigned long length = 0;
    EXPECT_TRUE(compresseDataByRLE(static_cast<char*>(mapping), kSize, code.data(), length));
    ::munmap(mapping, kSize);
    ASSERT_LE(length, code.size());
    code.resize(length);
    // 2148540231 = 131136 x 16384 + 62 x 128 + 71.
    EXPECT_EQ(code, pairs(0x63, 0x00) + pairs(0x61, 0xFF, 131136) + pairs(0x61, 0xBD) + pairs(0x61, 0x46));
}

TEST(UncompresseDataByRle, RunsCodesAndLengthCount) {
    Code out = canvas(0x5A);
    EXPECT_EQ(expand(out, wholePicture(0x62)), Logged(1, ""));
    EXPECT_TRUE(all(out, 0, kPictureSize, 0x5A));
    Code everyCode;
    for (uint8_t code = 0x61; code <= 0x68; ++code) everyCode += pairs(code, 0);
    EXPECT_EQ(expand(out, everyCode), Logged(1, "uncompresseDataByRLE DataLen:8"));
    EXPECT_EQ(Code(out.begin(), out.begin() + 9), (Code{0x00, 0x5A, 0x30, 0x50, 0xFE, 0x01, 0x31, 0x51, 0x5A}));
    // 0x7F and 0x80 both stand for 128 pixels, 0xFF for 16384.
    out = canvas(0x5A);
    EXPECT_EQ(expand(out, pairs(0x63, 0x7F) + pairs(0x64, 0x80) + pairs(0x66, 0xFF)),
              Logged(1, "uncompresseDataByRLE DataLen:16640"));
    EXPECT_TRUE(all(out, 0, 128, 0x30) && all(out, 128, 256, 0x50) && all(out, 256, 16640, 0x01) && out[16640] == 0x5A);
    // Codes of no pixel value, high ones included, advance without writing; an odd length
    // takes the byte after the last code as its length byte.
    out = canvas(0x5A);
    EXPECT_EQ(expand(out, pairs(0x00, 1) + pairs(0xFF, 0) + pairs(0x69, 0) + Code{0x61, 0x02}, 7),
              Logged(1, "uncompresseDataByRLE DataLen:7"));
    EXPECT_EQ(Code(out.begin(), out.begin() + 8), (Code{0x5A, 0x5A, 0x5A, 0x5A, 0x00, 0x00, 0x00, 0x5A}));
    // Runs past the picture are counted but cut at its end (expand checks the guard).
    EXPECT_EQ(expand(out, pairs(0x61, 0xFF, 160) + pairs(0x61, 0xB4) + pairs(0x61, 0x40)),
              Logged(1, "uncompresseDataByRLE DataLen:2628289"));
    EXPECT_TRUE(all(out, 0, kPictureSize, 0x00));
    EXPECT_EQ(notetest::logged([&] { return uncompresseDataByRLE(nullptr, kPictureSize, nullptr, 2); }),
              Logged(0, "uncompresseDataByRLE srcData nullptr."));
}

// A decoder written for clarity alone, to hold the fast one to: every run pixel by pixel,
// skipped codes leave the picture alone, runs are cut at its end. Returns the total.
std::size_t referenceDecode(const Code& code, Code& out) {
    std::size_t total = 0;
    for (std::size_t i = 0; i + 1 < code.size(); i += 2) {
        const std::size_t n = code[i + 1] < 0x80 ? code[i + 1] + 1u : ((code[i + 1] & 0x7Fu) + 1) * 128;
        const uint8_t value = code[i] < 0x80 ? uint8_t(UNCOMPRESS_INDEX[code[i]]) : 0xFF;
        for (std::size_t k = total; k < total + n && k < kPictureSize; ++k)
            if (value != 0xFF) out[k] = value;
        total += n;
    }
    return total;
}

// Every run of 1 to 40 pixels of every kind of code (ink, white, the skip code, codes of no
// pixel value) at every offset within 16 pixels, between a lone skipped pixel and a lone ink
// pixel: from the start of the picture, running past its end, and 63 pairs at a time, which
// the decoder takes pair by pair rather than in its groups of 64. The picture starts with a
// different byte at every place, so a byte written where it should be left, or left where
// it should be written, shows.
TEST(UncompresseDataByRle, AgreesWithAPlainDecoderOnEveryShortRunAtEveryOffset) {
    Code runs;
    for (int offset = 0; offset < 16; ++offset)
        for (int n = 1; n <= 40; ++n)
            for (const uint8_t code : {0x61, 0x63, 0x65, 0x68, 0x62, 0x00, 0x90})
                runs += pairs(0x62, 0, offset) + pairs(code, uint8_t(n - 1)) + pairs(0x62, 0) + pairs(0x66, 0);
    Code pattern(kPictureSize + 64), scratch(kPictureSize);
    for (std::size_t k = 0; k < pattern.size(); ++k) pattern[k] = uint8_t(k * 7 + 3);
    // Skipped pixels up to where half the runs still fit.
    int count = int(kPictureSize - referenceDecode(runs, scratch) / 2);
    Code intoTheEnd(2 * (count >> 14) + 4);
    unsigned long length = 0;
    intoTheEnd.resize(unitForRLE(count, 0xFF, intoTheEnd.data(), length));
    std::vector<Code> codes{runs, intoTheEnd + runs};
    for (std::size_t from = 0; from < runs.size(); from += 126)
        codes.emplace_back(runs.begin() + from, runs.begin() + std::min(runs.size(), from + 126));

    Code expected = pattern, out = pattern;
    for (const Code& code : codes) {
        const std::size_t total = referenceDecode(code, expected);
        EXPECT_EQ(expand(out, code), Logged(1, "uncompresseDataByRLE DataLen:" + std::to_string(total)));
        if (expected != out)
            FAIL() << "code " << &code - codes.data() << ": first difference at pixel "
                   << std::mismatch(expected.begin(), expected.end(), out.begin()).first - expected.begin();
        std::copy_n(pattern.begin(), std::min(total, kPictureSize), expected.begin());
        std::copy_n(pattern.begin(), std::min(total, kPictureSize), out.begin());
    }
}

}  // namespace
