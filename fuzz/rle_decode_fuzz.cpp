// Proves that the bitmap decoder never writes outside its 2628288-byte picture, whatever
// the runs add up to and whatever the colour codes, and never reads outside its tables.

#include <cstring>
#include <memory>

#include "config.h"
#include "harness.h"
#include "picture.h"

namespace {

using noteformat::kPictureSize;

// A picture of exactly 2628288 bytes, so that a write past its end is caught; kept from one
// input to the next, as mapping fresh pages for every input would cost more than the decoding.
char* picture() {
    static const std::unique_ptr<char[]> buffer(new char[kPictureSize]);
    return buffer.get();
}

// The code as the layer module holds it: one spare zero byte behind it, which the decoder
// reads as the last length byte of an odd-sized code.
void expandPicture(const uint8_t* data, std::size_t size) {
    std::unique_ptr<char[]> code(new char[size + 1]);
    if (size) std::memcpy(code.get(), data, size);
    code[size] = 0;
    if (!uncompresseDataByRLE(picture(), kPictureSize, code.get(), size)) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    expandPicture(data, size);
    return 0;
}
