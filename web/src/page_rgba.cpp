#include "page_rgba.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

#include "page_scaling.h"
#include "palette.h"

namespace libnoteweb {

namespace {

using notetool::kPageHeight;
using notetool::kPageWidth;

void putPixel(uint8_t* out, uint32_t argb) {
    out[0] = uint8_t(argb >> 16);
    out[1] = uint8_t(argb >> 8);
    out[2] = uint8_t(argb);
    out[3] = uint8_t(argb >> 24);
}

// Each pixel value's RGBA as the word that holds those bytes in memory: one table look-up and
// one store a pixel, which halves the time of a page at scale 1.
std::array<uint32_t, 256> rgbaWords(bool transparent) {
    std::array<uint32_t, 256> words{};
    for (int value = 0; value < 256; ++value) {
        uint8_t bytes[4];
        putPixel(bytes, notetool::pixelColour(static_cast<uint8_t>(value), transparent));
        std::memcpy(&words[std::size_t(value)], bytes, 4);
    }
    return words;
}

void enlarged(const uint8_t* pixels, int scale, bool transparent, RgbaImage& image) {
    image.width = kPageWidth * scale;
    image.height = kPageHeight * scale;
    const std::size_t rowBytes = std::size_t(image.width) * 4;
    image.data.resize(rowBytes * image.height);
    const std::array<uint32_t, 256> words = rgbaWords(transparent);
    for (int y = 0; y < kPageHeight; ++y) {
        uint8_t* row = image.data.data() + std::size_t(y) * scale * rowBytes;
        const uint8_t* in = pixels + std::size_t(y) * kPageWidth;
        if (scale == 1)  // the common case, without the inner loop
            for (int x = 0; x < kPageWidth; ++x) std::memcpy(row + std::size_t(x) * 4, &words[in[x]], 4);
        else
            for (int x = 0; x < kPageWidth; ++x)
                for (int copy = 0; copy < scale; ++copy)
                    std::memcpy(row + (std::size_t(x) * scale + copy) * 4, &words[in[x]], 4);
        for (int copy = 1; copy < scale; ++copy) std::copy_n(row, rowBytes, row + copy * rowBytes);
    }
}

// The reduction's rows are grey (and alpha), each led by its filter byte.
void reduced(const uint8_t* pixels, double scale, bool transparent, RgbaImage& image) {
    image.width = notetool::scaledLength(kPageWidth, scale);
    image.height = notetool::scaledLength(kPageHeight, scale);
    const std::string rows = notetool::reducedRows(pixels, image.width, image.height, transparent);
    const std::size_t channels = transparent ? 2 : 1;
    image.data.resize(std::size_t(image.width) * image.height * 4);
    const char* in = rows.data();
    uint8_t* out = image.data.data();
    for (int y = 0; y < image.height; ++y) {
        ++in;
        for (int x = 0; x < image.width; ++x, in += channels, out += 4) {
            out[0] = out[1] = out[2] = uint8_t(in[0]);
            out[3] = transparent ? uint8_t(in[1]) : 0xFF;
        }
    }
}

}  // namespace

bool drawableScale(double scale) { return scale > 0 && (scale <= 1 || scale == std::floor(scale)); }

void pageRgba(const uint8_t* pixels, double scale, bool transparent, RgbaImage& image) {
    if (scale < 1)
        reduced(pixels, scale, transparent, image);
    else
        enlarged(pixels, static_cast<int>(scale), transparent, image);
}

}  // namespace libnoteweb
