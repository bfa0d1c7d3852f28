// Proves that the encoder and the decoder agree: a picture made of the eight pixel values
// comes back equal, and neither overruns the buffers the layer module gives them; and that
// the encoder, on any bytes of any size, never writes more than two bytes a byte.

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>

#include "config.h"
#include "harness.h"
#include "picture.h"

namespace {

using noteformat::kPictureSize;
using noteformat::kPixelValues;
static_assert(std::size(kPixelValues) == 8, "three bits of an input byte choose a pixel value");

// Two pictures of exactly 2628288 bytes, so that a write past the end is caught; kept from
// one input to the next, as mapping fresh pages for every input would cost more than the
// coding.
char* pictureBuffer(int which) {
    static const std::unique_ptr<char[]> pictures[2] = {std::unique_ptr<char[]>(new char[kPictureSize]),
                                                        std::unique_ptr<char[]>(new char[kPictureSize])};
    return pictures[which].get();
}

// Each input byte pair is a run: the first byte's low 3 bits choose the pixel value and its
// next 3 bits scale the length that the second byte gives, so runs reach from one pixel to
// many thousands. What the runs leave over is transparent.
char* pictureFrom(const uint8_t* data, std::size_t size) {
    char* picture = pictureBuffer(0);
    std::memset(picture, noteformat::kTransparent, kPictureSize);
    std::size_t at = 0;
    for (std::size_t i = 0; i + 1 < size && at < kPictureSize; i += 2) {
        const std::size_t run = std::min<std::size_t>((data[i + 1] + 1u) << ((data[i] >> 3) & 7), kPictureSize - at);
        std::memset(picture + at, kPixelValues[data[i] & 7].value, run);
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

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    roundTrip(data, size);
    compressAnything(data, size);
    return 0;
}
