#ifndef LIBNOTE_WEB_PAGE_RGBA_H
#define LIBNOTE_WEB_PAGE_RGBA_H

// A composited page (palette.h) as the RGBA image a canvas takes, with the pixels of notetool
// render --scale: a whole scale repeats each page pixel, as the palette pictures of PNG output
// do, and a scale below 1 is PNG output's reduction. Plain C++, so that the benchmarks time
// the same work natively.

#include <cstdint>
#include <vector>

namespace libnoteweb {

struct RgbaImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> data;  // 4 bytes a pixel, row by row
};

// Whether pageRgba() takes that scale: above 0 up to 1, or a whole number.
bool drawableScale(double scale);

// Fills `image` (its storage reused from call to call) with the page at `scale`.
void pageRgba(const uint8_t* pixels, double scale, bool transparent, RgbaImage& image);

}  // namespace libnoteweb

#endif
