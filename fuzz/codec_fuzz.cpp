// Proves that the codecs survive any bytes: the stroke decoder never reads outside its
// record and never asks for more memory than the record could describe; the bitmap decoder
// never writes outside its 2628288-byte picture, whatever the runs add up to and whatever
// the colour codes; and a picture made of the eight pixel values comes back equal from the
// encoder and the decoder, which never overrun the buffers the layer module gives them.
//
// The first input byte chooses the codec; the rest is its input.

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "config.h"
#include "harness.h"

namespace {

constexpr std::size_t kPictureSize = 1872 * 1404;
constexpr uint8_t kPixelValues[8] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51, 0xFE, 0xFF};

// Two pictures of exactly 2628288 bytes, so that a write past the end is caught; kept from
// one input to the next, as mapping fresh pages for every input would cost more than the
// coding.
char* pictureBuffer(int which) {
    static const std::unique_ptr<char[]> pictures[2] = {std::unique_ptr<char[]>(new char[kPictureSize]),
                                                        std::unique_ptr<char[]>(new char[kPictureSize])};
    return pictures[which].get();
}

// A record buffer of exactly the record's length: the decoder must not look beyond it.
void decodeStroke(const uint8_t* data, std::size_t size) {
    std::unique_ptr<char[]> record(new char[size]);
    if (size) std::memcpy(record.get(), data, size);
    TrailContainer trail;
    int result = -1;
    fuzzharness::expectingDocumentedErrors(
        [&] { result = data2Trail(record.get(), static_cast<int>(size), trail); });
    if (result != 0) return;
    // A decoded stroke is what hosts map onto their images.
    std::vector<MorvaPoint> points;
    mappingTrailPoints2imageSize(trail, 1404, 1872, points, 1);
    mappingTrailPoints2imageSize(trail, 1, 1, points, 0);
}

// The code as the layer module holds it: one spare zero byte behind it, which the decoder
// reads as the last length byte of an odd-sized code.
void expandPicture(const uint8_t* data, std::size_t size) {
    std::unique_ptr<char[]> code(new char[size + 1]);
    if (size) std::memcpy(code.get(), data, size);
    code[size] = 0;
    if (!uncompresseDataByRLE(pictureBuffer(0), kPictureSize, code.get(), size)) __builtin_trap();
}

// Each input byte pair is a run: the first byte's low 3 bits choose the pixel value and its
// next 3 bits scale the length that the second byte gives, so runs reach from one pixel to
// many thousands. What the runs leave over is transparent.
char* pictureFrom(const uint8_t* data, std::size_t size) {
    char* picture = pictureBuffer(0);
    std::memset(picture, 0xFF, kPictureSize);
    std::size_t at = 0;
    for (std::size_t i = 0; i + 1 < size && at < kPictureSize; i += 2) {
        const std::size_t run = std::min<std::size_t>((data[i + 1] + 1u) << ((data[i] >> 3) & 7), kPictureSize - at);
        std::memset(picture + at, kPixelValues[data[i] & 7], run);
        at += run;
    }
    return picture;
}

void roundTrip(const uint8_t* data, std::size_t size) {
    char* picture = pictureFrom(data, size);
    // The room the layer module gives the encoder: two bytes a pixel and one more.
    const std::size_t room = 2 * kPictureSize + 1;
    static const std::unique_ptr<unsigned char[]> code(new unsigned char[room + 1]);
    unsigned long length = 0;
    if (!compresseDataByRLE(picture, kPictureSize, code.get(), length) || length > room) __builtin_trap();
    code[length] = 0;
    // Transparent runs are skipped by the decoder, so the picture comes back over a
    // transparent one.
    char* back = pictureBuffer(1);
    std::memset(back, 0xFF, kPictureSize);
    uncompresseDataByRLE(back, kPictureSize, reinterpret_cast<char*>(code.get()), length);
    if (std::memcmp(picture, back, kPictureSize) != 0) __builtin_trap();
}

// Any bytes of any size into two bytes of room a byte: nothing may be written past it.
void compressAnything(const uint8_t* data, std::size_t size) {
    std::unique_ptr<char[]> source(new char[size]);
    if (size) std::memcpy(source.get(), data, size);
    std::unique_ptr<unsigned char[]> code(new unsigned char[2 * size]);
    unsigned long length = 0;
    if (!compresseDataByRLE(source.get(), size, code.get(), length) || length > 2 * size) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzharness::silenceLibraryLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const uint8_t* rest = data + 1;
    const std::size_t restSize = size - 1;
    switch (data[0] % 4) {
        case 0: decodeStroke(rest, restSize); break;
        case 1: expandPicture(rest, restSize); break;
        case 2: roundTrip(rest, restSize); break;
        default: compressAnything(rest, restSize); break;
    }
    return 0;
}
