#include "palette_picture.h"

#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <new>

#include "palette.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace notetool {

namespace {

// One compressor a thread, kept for the thread's life: setting one up costs as much as
// compressing a few rows.
libdeflate_compressor* threadCompressor() {
    // The fastest level: on pages it is faster than zlib's run-length strategy and its output
    // smaller (bench/pages_bench.cpp measures both).
    constexpr int kLevel = 1;
    thread_local std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(kLevel), &libdeflate_free_compressor);
    if (!compressor) throw std::bad_alloc();
    return compressor.get();
}

// The values that do not take the most common index, with theirs: the few ink values. Where
// each even value takes the index of the odd one after it (the pen's two values of a colour),
// values are compared without their lowest bit, which halves the comparisons.
struct Exceptions {
    uint8_t common = 0;
    uint8_t mask = 0xFF;                              // of the bits compared
    std::vector<std::pair<uint8_t, uint8_t>> values;  // value (masked), index
};

Exceptions exceptionsOf(const Palette& palette) {
    std::array<int, 16> uses{};
    for (uint8_t index : palette.indexOf) ++uses[index];
    Exceptions e;
    e.common = static_cast<uint8_t>(std::max_element(uses.begin(), uses.end()) - uses.begin());
    bool paired = true;
    for (int value = 0; value < 256; value += 2) paired &= palette.indexOf[value] == palette.indexOf[value + 1];
    e.mask = paired ? 0xFE : 0xFF;
    for (int value = 0; value < 256; value += paired ? 2 : 1)
        if (palette.indexOf[value] != e.common) e.values.emplace_back(uint8_t(value), palette.indexOf[value]);
    return e;
}

// Packs a row of pixel values into indices, `perByte` to a byte, the leftmost pixel in the
// highest bits, as PNG and PDF both order them. `count` is a multiple of perByte.
class RowPacker {
public:
    explicit RowPacker(const Palette& palette) : indexOf_(palette.indexOf), bits_(palette.bitDepth) {
#if defined(__SSE2__)
        const Exceptions e = exceptionsOf(palette);
        common_ = _mm_set1_epi8(static_cast<char>(e.common));
        mask_ = _mm_set1_epi8(static_cast<char>(e.mask));
        for (const auto& [value, index] : e.values)
            exceptions_.push_back({_mm_set1_epi8(static_cast<char>(value)), _mm_set1_epi8(static_cast<char>(index ^ e.common))});
#endif
    }

    void pack(const uint8_t* values, int count, uint8_t* out) const {
        int x = 0;
#if defined(__SSE2__)
        // Pages are mostly one value, so each pixel's index is the common one unless it is
        // one of the few exceptions: a comparison with each of them, 16 pixels at a time.
        const int step = 32;
        for (; x + step <= count; x += step) out = packSse2(values + x, out);
#endif
        const int perByte = 8 / bits_;
        for (; x < count; x += perByte) {
            unsigned byte = 0;
            for (int k = 0; k < perByte; ++k) byte = byte << bits_ | indexOf_[values[x + k]];
            *out++ = static_cast<uint8_t>(byte);
        }
    }

private:
#if defined(__SSE2__)
    struct Exception {
        __m128i value;  // masked
        __m128i delta;  // its index, bits that differ from the common one
    };

    // At most one exception matches a pixel, so its delta turns the common index into its own.
    __m128i indices(const uint8_t* values) const {
        const __m128i v = _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(values)), mask_);
        __m128i index = common_;
        for (const Exception& e : exceptions_) index = _mm_xor_si128(index, _mm_and_si128(_mm_cmpeq_epi8(v, e.value), e.delta));
        return index;
    }

    // Two neighbouring fields of each 16-bit lane, the left one in the low byte, joined into
    // one field of twice the bits in the low byte.
    static __m128i joinPairs(__m128i lanes, int bits) {
        const __m128i low = _mm_and_si128(lanes, _mm_set1_epi16(0xFF));
        return _mm_or_si128(_mm_slli_epi16(low, bits), _mm_srli_epi16(lanes, 8));
    }

    // 32 pixels: 16 bytes at four bits, 8 at two.
    uint8_t* packSse2(const uint8_t* values, uint8_t* out) const {
        __m128i packed = _mm_packus_epi16(joinPairs(indices(values), bits_), joinPairs(indices(values + 16), bits_));
        if (bits_ == 4) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), packed);
            return out + 16;
        }
        packed = _mm_packus_epi16(joinPairs(packed, 2 * bits_), _mm_setzero_si128());
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), packed);
        return out + 8;
    }
#endif

    const std::array<uint8_t, 256>& indexOf_;
    int bits_;
#if defined(__SSE2__)
    __m128i common_;
    __m128i mask_;
    std::vector<Exception> exceptions_;
#endif
};

// Whether the values a and b occur among the page's pixels.
std::pair<bool, bool> occurrences(const uint8_t* pixels, uint8_t a, uint8_t b) {
    bool hasA = false, hasB = false;
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128i va = _mm_set1_epi8(static_cast<char>(a)), vb = _mm_set1_epi8(static_cast<char>(b));
    constexpr std::size_t kBlock = 4096;  // looked at between checks for an early end
    while (i + kBlock <= kPagePixels && !(hasA && hasB)) {
        __m128i seenA = _mm_setzero_si128(), seenB = _mm_setzero_si128();
        for (const std::size_t end = i + kBlock; i < end; i += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + i));
            seenA = _mm_or_si128(seenA, _mm_cmpeq_epi8(v, va));
            seenB = _mm_or_si128(seenB, _mm_cmpeq_epi8(v, vb));
        }
        hasA |= _mm_movemask_epi8(seenA) != 0;
        hasB |= _mm_movemask_epi8(seenB) != 0;
    }
#endif
    for (; i < kPagePixels && !(hasA && hasB); ++i) {
        hasA |= pixels[i] == a;
        hasB |= pixels[i] == b;
    }
    return {hasA, hasB};
}

}  // namespace

int Palette::transparentIndex() const {
    for (std::size_t i = 0; i < colours.size(); ++i)
        if (colours[i] >> 24 == 0) return static_cast<int>(i);
    return -1;
}

Palette pagePalette(const uint8_t* pixels, bool transparentPaper) {
    Palette palette;
    uint32_t nothing = pixelColour(kNothing, transparentPaper);
    uint32_t whiteInk = pixelColour(kWhiteInk, transparentPaper);
    // A page without one of the two leaves its colour out: what would take it (no pixel
    // does) takes the other.
    const std::pair<bool, bool> occur = occurrences(pixels, kWhiteInk, kNothing);
    if (!occur.first) whiteInk = nothing;
    if (!occur.second) nothing = whiteInk;
    for (int value = 0; value < 256; ++value) {
        uint32_t colour = pixelColour(static_cast<uint8_t>(value), transparentPaper);
        if (colour >> 24 == 0 || value == kNothing) colour = nothing;  // nothing drawn, or no colour of its own
        if (value == kWhiteInk) colour = whiteInk;
        auto at = std::find(palette.colours.begin(), palette.colours.end(), colour);
        if (at == palette.colours.end()) at = palette.colours.insert(palette.colours.end(), colour);
        palette.indexOf[value] = static_cast<uint8_t>(at - palette.colours.begin());
    }
    palette.bitDepth = palette.colours.size() <= 4 ? 2 : 4;
    return palette;
}

PalettePicture compressPicture(const uint8_t* pixels, int scale, const Palette& palette) {
    PalettePicture picture;
    picture.width = kPageWidth * scale;
    picture.height = kPageHeight * scale;
    // The scaled width is a multiple of four (1404 is), so no row ends in a part of a byte.
    const std::size_t rowBytes = 1 + std::size_t(picture.width) * palette.bitDepth / 8;
    thread_local std::vector<uint8_t> rows;
    thread_local std::vector<uint8_t> wide;  // a row of values repeated `scale` times
    rows.resize(rowBytes * picture.height);
    const RowPacker packer(palette);
    for (int y = 0; y < kPageHeight; ++y) {
        const uint8_t* values = pixels + std::size_t(y) * kPageWidth;
        if (scale > 1) {
            wide.resize(std::size_t(picture.width));
            for (int x = 0; x < kPageWidth; ++x) std::fill_n(wide.begin() + std::size_t(x) * scale, scale, values[x]);
            values = wide.data();
        }
        uint8_t* row = rows.data() + std::size_t(y) * scale * rowBytes;
        row[0] = 0;
        packer.pack(values, picture.width, row + 1);
        for (int copy = 1; copy < scale; ++copy) std::copy_n(row, rowBytes, row + std::size_t(copy) * rowBytes);
    }
    picture.data = compressZlib(rows.data(), rows.size());
    return picture;
}

std::string compressZlib(const void* data, std::size_t size) {
    libdeflate_compressor* compressor = threadCompressor();
    // Room for the worst case, kept for the next page: the result is a fraction of it.
    thread_local std::vector<char> room;
    room.resize(std::max(room.size(), libdeflate_zlib_compress_bound(compressor, size)));
    return std::string(room.data(), libdeflate_zlib_compress(compressor, data, size, room.data(), room.size()));
}

}  // namespace notetool
