#ifndef NOTETOOL_PALETTE_H
#define NOTETOOL_PALETTE_H

// The colours of a composited page, as the tablet shows it. A page picture is 1404 x 1872
// pixel values, row by row, as the library decodes them: 0xFF where no layer drew.

#include <array>
#include <cstdint>

#include "config.h"

namespace notetool {

constexpr int kPageWidth = 1404;
constexpr int kPageHeight = 1872;
constexpr std::size_t kPagePixels = std::size_t(kPageWidth) * kPageHeight;

constexpr uint8_t kNothing = 0xFF;  // no layer drew here: paper, or transparent
constexpr uint8_t kWhiteInk = 0xFE;
constexpr uint32_t kPaper = 0xFFFFFFFFu;

// The pixel values that carry ink (white ink included), in a fixed order.
constexpr std::array<uint8_t, 7> kInkValues = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51, 0xFE};

// 0xAARRGGBB of a pixel value. Ink takes the library's colour table; white ink is opaque
// white, so that it covers what lies below it. Nothing drawn is paper, or fully transparent
// when the paper is left out.
inline uint32_t pixelColour(uint8_t value, bool transparentPaper) {
    if (value == kNothing) return transparentPaper ? 0u : kPaper;
    return static_cast<uint32_t>(NOTE_COLOR_CONVERT_INDEX[value]);
}

}  // namespace notetool

#endif
