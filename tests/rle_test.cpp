// The run-length code of layer pictures: exact encoder output, round trips, and a decoder
// that never writes outside the picture.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "capture.h"
#include "config.h"
#include "notewriter.h"

namespace {

using notewriter::kPictureSize;
using Code = std::vector<uint8_t>;

constexpr uint8_t kGuard = 0xA5;
constexpr std::size_t kGuardSize = 4096;

// `times` copies of the pair (code, lengthByte).
Code pairs(uint8_t code, uint8_t lengthByte, std::size_t times = 1) {
    Code out;
    for (std::size_t i = 0; i < times; ++i) {
        out.push_back(code);
        out.push_back(lengthByte);
    }
    return out;
}

Code operator+(Code a, const Code& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Encodes into a destination of the room a worst-case picture needs (two bytes a pixel and
// one spare), followed by a guard region that must stay untouched.
Code encode(std::vector<uint8_t> pixels) {
    const std::size_t room = 2 * pixels.size() + 1;
    std::vector<uint8_t> dest(room + kGuardSize, kGuard);
    unsigned long destLen = 12345;
    EXPECT_TRUE(compresseDataByRLE(reinterpret_cast<char*>(pixels.data()), pixels.size(),
                                   dest.data(), destLen));
    EXPECT_LE(destLen, room);
    EXPECT_TRUE(std::all_of(dest.begin() + room, dest.end(), [](uint8_t b) { return b == kGuard; }))
        << "the encoder wrote past its destination";
    dest.resize(std::min<std::size_t>(destLen, room));
    return dest;
}

struct Decoded {
    bool ok;
    std::vector<uint8_t> pixels;  // the picture, then the guard region
    std::string log;
};

// Decodes into a picture pre-filled with `fill`, followed by the guard region.
Decoded decode(Code code, uint8_t fill, unsigned long codeLength) {
    Decoded out{false, std::vector<uint8_t>(kPictureSize, fill), ""};
    out.pixels.resize(kPictureSize + kGuardSize, kGuard);
    out.log = notetest::captureStdout([&] {
        out.ok = uncompresseDataByRLE(reinterpret_cast<char*>(out.pixels.data()), kPictureSize,
                                      reinterpret_cast<char*>(code.data()), codeLength);
    });
    return out;
}

Decoded decode(const Code& code, uint8_t fill) { return decode(code, fill, code.size()); }

bool guardIntact(const Decoded& d) {
    return std::all_of(d.pixels.begin() + kPictureSize, d.pixels.end(),
                       [](uint8_t b) { return b == kGuard; });
}

bool allEqual(const std::vector<uint8_t>& v, std::size_t from, std::size_t to, uint8_t value) {
    return std::all_of(v.begin() + from, v.begin() + to, [&](uint8_t b) { return b == value; });
}

// The code of a whole picture of one pixel value: 160 pairs of 16384 pixels, then the
// remaining 6848 = 53 x 128 + 64 pixels.
Code wholePicture(uint8_t code) { return pairs(code, 0xFF, 160) + pairs(code, 0xB4) + pairs(code, 0x3F); }

TEST(ColourTables, HoldTheEightPixelValuesAndNothingElse) {
    struct Entry {
        uint8_t pixel;
        uint8_t code;
        uint32_t colour;
    };
    const Entry entries[] = {
        {0x00, 0x61, 0xFF010101}, {0x01, 0x66, 0xFF010101}, {0x30, 0x63, 0xFF9D9D9D},
        {0x31, 0x67, 0xFF9D9D9D}, {0x50, 0x64, 0xFFC9C9C9}, {0x51, 0x68, 0xFFC9C9C9},
        {0xFE, 0x65, 0xFFFEFEFE}, {0xFF, 0x62, 0x00000000},
    };
    std::vector<int> pixelOfCode(256, 0xFF);
    std::vector<int> codeOfPixel(256, 0x00);
    std::vector<uint32_t> colourOfPixel(256, 0);
    for (const Entry& e : entries) {
        pixelOfCode[e.code] = e.pixel;
        codeOfPixel[e.pixel] = e.code;
        colourOfPixel[e.pixel] = e.colour;
    }
    for (int i = 0; i < 256; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(UNCOMPRESS_INDEX[i] & 0xFF, pixelOfCode[i]);
        EXPECT_EQ(COMPRESS_INDEX[i], codeOfPixel[i]);
        EXPECT_EQ(uint32_t(NOTE_COLOR_CONVERT_INDEX[i]), colourOfPixel[i]);
    }
}

TEST(UnitForRle, WritesWholePairsThenOneMultipleOf128ThenTheRest) {
    uint8_t out[16];
    std::fill(std::begin(out), std::end(out), kGuard);
    int count = 20000;
    unsigned long outLen = 10;
    EXPECT_EQ(unitForRLE(count, 0x00, out, outLen), 6);
    EXPECT_EQ(outLen, 16u);
    EXPECT_EQ(count, 20000 & 0x3FFF);
    EXPECT_EQ(Code(out, out + 7), (Code{0x61, 0xFF, 0x61, 0x9B, 0x61, 0x1F, kGuard}));

    struct Case {
        int count;
        uint8_t value;
        Code code;
    };
    const Case cases[] = {
        {0, 0x00, {}},
        {1, 0xFF, {0x62, 0x00}},
        {127, 0x30, {0x63, 0x7E}},
        {128, 0x50, {0x64, 0x80}},
        {16384, 0xFE, {0x65, 0xFF}},
        {16384 * 2 + 129, 0x01, {0x66, 0xFF, 0x66, 0xFF, 0x66, 0x80, 0x66, 0x00}},
        {3, 0x31, {0x67, 0x02}},
        {3, 0x51, {0x68, 0x02}},
        {3, 0x12, {0x00, 0x02}},  // not a pixel value of a layer
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.count);
        uint8_t buf[16];
        int runLeft = c.count;
        unsigned long len = 0;
        EXPECT_EQ(unitForRLE(runLeft, c.value, buf, len), int(c.code.size()));
        EXPECT_EQ(len, c.code.size());
        EXPECT_EQ(Code(buf, buf + len), c.code);
        EXPECT_EQ(runLeft, c.count & 0x3FFF);
    }
}

TEST(CompresseDataByRle, AllZeroPictureTakes324Bytes) {
    Code code = encode(std::vector<uint8_t>(kPictureSize, 0x00));
    EXPECT_EQ(code.size(), 324u);
    EXPECT_EQ(code, wholePicture(0x61));
}

TEST(CompresseDataByRle, HighPixelsMetOutsideTheFastStepAreRunsOfTheirOwn) {
    // The 0x00 in front takes the first block off the fast step; the signed comparison then
    // never continues a run of 0xFE or 0xFF, so pixels 1 to 6 are single runs and pixel 7
    // starts the run that the following whole blocks extend: 1 + 8 x 328535 = 2628281 pixels
    // = 160 x 16384 + 53 x 128 + 57.
    using PixelCode = std::pair<uint8_t, uint8_t>;
    for (const auto& [pixel, code] : {PixelCode{0xFF, 0x62}, PixelCode{0xFE, 0x65}}) {
        SCOPED_TRACE(int(pixel));
        std::vector<uint8_t> picture(kPictureSize, pixel);
        picture[0] = 0x00;
        Code expected = pairs(0x61, 0x00) + pairs(code, 0x00, 6) + pairs(code, 0xFF, 160) +
                        pairs(code, 0xB4) + pairs(code, 0x38);
        EXPECT_EQ(encode(picture), expected);
    }
}

TEST(CompresseDataByRle, LastByteOfAnEightByteInputIsARunOfItsOwn) {
    const std::vector<uint8_t> block{0x30, 0x30, 0x30, 0x30, 0x30, 0x30, 0x31, 0x31};
    EXPECT_EQ(encode(block), (Code{0x63, 0x05, 0x67, 0x00, 0x67, 0x00}));

    // In a longer input the same block ends normally.
    std::vector<uint8_t> longer = block;
    longer.insert(longer.end(), 8, 0x31);
    EXPECT_EQ(encode(longer), (Code{0x63, 0x05, 0x67, 0x09}));
}

TEST(CompresseDataByRle, BytesBeyondTheLastWholeBlockAreNotCoded) {
    std::vector<uint8_t> eleven(8, 0x00);
    eleven.insert(eleven.end(), 3, 0x30);
    EXPECT_EQ(encode(eleven), pairs(0x61, 0x07));
    EXPECT_EQ(encode(std::vector<uint8_t>(5, 0x30)), Code{});
}

TEST(CompresseDataByRle, ForeignPixelValueIsCodedZeroAndDecodesAsSkip) {
    std::vector<uint8_t> pixels(16, 0x00);
    pixels[7] = 0x12;
    Code code = encode(pixels);
    EXPECT_EQ(code, (Code{0x61, 0x06, 0x00, 0x00, 0x61, 0x07}));

    Decoded d = decode(code, 0xEE);
    EXPECT_TRUE(allEqual(d.pixels, 0, 7, 0x00));
    EXPECT_EQ(d.pixels[7], 0xEE);
    EXPECT_TRUE(allEqual(d.pixels, 8, 16, 0x00));
    EXPECT_EQ(d.pixels[16], 0xEE);
}

TEST(RleCodec, RoundTripsPicturesOfAllEightPixelValues) {
    const uint8_t values[] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51, 0xFE, 0xFF};
    std::mt19937 random(7);
    std::vector<uint8_t> noise(kPictureSize), rows(kPictureSize), alternating(kPictureSize),
        alternatingHigh(kPictureSize), strokes(kPictureSize, 0xFF);
    for (std::size_t i = 0; i < kPictureSize; ++i) {
        noise[i] = values[random() % 8];
        rows[i] = values[(i / notewriter::kPictureWidth) % 8];
        alternating[i] = values[i % 2];
        alternatingHigh[i] = values[6 + i % 2];
    }
    for (std::size_t i = 0; i < kPictureSize; i += 977) {
        std::fill_n(strokes.begin() + i, std::min<std::size_t>(40, kPictureSize - i), values[i % 7]);
    }

    for (const auto* picture : {&noise, &rows, &alternating, &alternatingHigh, &strokes}) {
        Code code = encode(*picture);
        Decoded d = decode(code, 0xFF);  // transparent pixels are skipped runs
        EXPECT_TRUE(std::equal(picture->begin(), picture->end(), d.pixels.begin()));
        EXPECT_EQ(d.log, "");
    }
    // Every pixel a run of its own: two bytes a pixel.
    EXPECT_EQ(encode(alternating).size(), 2 * kPictureSize);
}

TEST(UncompresseDataByRle, TransparentPictureLeavesTheDestinationUntouched) {
    Decoded d = decode(wholePicture(0x62), 0x5A);
    EXPECT_TRUE(d.ok);
    EXPECT_EQ(d.log, "");
    EXPECT_TRUE(allEqual(d.pixels, 0, kPictureSize, 0x5A));
}

TEST(UncompresseDataByRle, MapsEveryCodeAndLengthByte) {
    Code code = pairs(0x61, 0) + pairs(0x62, 0) + pairs(0x63, 0) + pairs(0x64, 0) + pairs(0x65, 0) +
                pairs(0x66, 0) + pairs(0x67, 0) + pairs(0x68, 0);
    Decoded d = decode(code, 0x5A);
    EXPECT_TRUE(d.ok);
    EXPECT_EQ(Code(d.pixels.begin(), d.pixels.begin() + 9),
              (Code{0x00, 0x5A, 0x30, 0x50, 0xFE, 0x01, 0x31, 0x51, 0x5A}));
    EXPECT_EQ(d.log, "uncompresseDataByRLE DataLen:8");

    // 0x7F and 0x80 both stand for 128 pixels, 0xFF for 16384.
    Decoded runs = decode(pairs(0x63, 0x7F) + pairs(0x64, 0x80) + pairs(0x66, 0xFF), 0x5A);
    EXPECT_TRUE(allEqual(runs.pixels, 0, 128, 0x30));
    EXPECT_TRUE(allEqual(runs.pixels, 128, 256, 0x50));
    EXPECT_TRUE(allEqual(runs.pixels, 256, 256 + 16384, 0x01));
    EXPECT_EQ(runs.pixels[256 + 16384], 0x5A);
    EXPECT_EQ(runs.log, "uncompresseDataByRLE DataLen:16640");
}

TEST(UncompresseDataByRle, UnknownAndHighCodesAreSkippedRuns) {
    // Codes 0x00, 0x90, 0xFF, 0x12 and 0x69 map to no pixel value: their runs advance the
    // write position without writing.
    Code code = pairs(0x00, 0x01) + pairs(0x90, 0) + pairs(0xFF, 0) + pairs(0x12, 0) +
                pairs(0x69, 0) + pairs(0x61, 0);
    Decoded d = decode(code, 0x5A);
    EXPECT_TRUE(d.ok);
    EXPECT_TRUE(allEqual(d.pixels, 0, 6, 0x5A));
    EXPECT_EQ(d.pixels[6], 0x00);
    EXPECT_EQ(d.pixels[7], 0x5A);
    EXPECT_EQ(d.log, "uncompresseDataByRLE DataLen:7");
}

TEST(UncompresseDataByRle, OddLengthTakesTheSpareByteAsLastLengthByte) {
    Decoded d = decode(Code{0x61, 0x00, 0x63, 0x02}, 0x5A, 3);
    EXPECT_EQ(Code(d.pixels.begin(), d.pixels.begin() + 5), (Code{0x00, 0x30, 0x30, 0x30, 0x5A}));
    EXPECT_EQ(d.log, "uncompresseDataByRLE DataLen:4");
}

TEST(UncompresseDataByRle, RunsBeyondThePictureAreCutAtItsEnd) {
    // One pixel too many: the last run crosses the end by one.
    Decoded oneOver = decode(pairs(0x61, 0xFF, 160) + pairs(0x61, 0xB4) + pairs(0x61, 0x40), 0x5A);
    EXPECT_TRUE(oneOver.ok);
    EXPECT_TRUE(allEqual(oneOver.pixels, 0, kPictureSize, 0x00));
    EXPECT_TRUE(guardIntact(oneOver));
    EXPECT_EQ(oneOver.log, "uncompresseDataByRLE DataLen:2628289");

    // Runs adding up to about two billion pixels, every one of them an ink run.
    Decoded billions = decode(pairs(0x61, 0xFF, 130000), 0x5A);
    EXPECT_TRUE(billions.ok);
    EXPECT_TRUE(allEqual(billions.pixels, 0, kPictureSize, 0x00));
    EXPECT_TRUE(guardIntact(billions));
    EXPECT_EQ(billions.log, "uncompresseDataByRLE DataLen:2129920000");
}

TEST(UncompresseDataByRle, NullSourceFails) {
    std::vector<char> pixels(kPictureSize, 0x5A);
    bool ok = true;
    std::string log = notetest::captureStdout(
        [&] { ok = uncompresseDataByRLE(pixels.data(), pixels.size(), nullptr, 2); });
    EXPECT_FALSE(ok);
    EXPECT_EQ(log, "uncompresseDataByRLE srcData nullptr.");
    EXPECT_TRUE(std::all_of(pixels.begin(), pixels.end(), [](char c) { return c == 0x5A; }));
}

}  // namespace
