// Proves that the stroke decoder survives any bytes: it never reads outside its record
// (given a buffer of exactly the record's length), never asks for more memory than the
// record could describe, and a stroke it accepts maps onto any image without fault.

#include <cstring>
#include <memory>
#include <vector>

#include "config.h"
#include "harness.h"
#include "picture.h"
#include "status.h"

namespace {

// A record buffer of exactly the record's length: the decoder must not look beyond it.
void decodeStroke(const uint8_t* data, std::size_t size) {
    std::unique_ptr<char[]> record(new char[size]);
    if (size) std::memcpy(record.get(), data, size);
    TrailContainer trail;
    int result = -1;
    fuzzharness::expectingDocumentedErrors(
        [&] { result = data2Trail(record.get(), static_cast<int>(size), trail); });
    if (result != status::Ok) return;
    // A decoded stroke is what hosts map onto their images.
    std::vector<MorvaPoint> points;
    mappingTrailPoints2imageSize(trail, noteformat::kPictureWidth, noteformat::kPictureHeight, points, 1);
    mappingTrailPoints2imageSize(trail, 1, 1, points, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    decodeStroke(data, size);
    return 0;
}
