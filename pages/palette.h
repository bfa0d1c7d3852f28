#ifndef NOTETOOL_PALETTE_H
#define NOTETOOL_PALETTE_H

// The colours of a composited page, as the tablet shows it. A page picture is 1404 x 1872
// pixel values, row by row, as the library decodes them: 0xFF where no layer drew.

#include <array>
#include <cstdint>

#include "config.h"
#include "picture.h"

namespace notetool {

constexpr int kPageWidth = noteformat::kPictureWidth;
constexpr int kPageHeight = noteformat::kPictureHeight;
constexpr std::size_t kPagePixels = noteformat::kPictureSize;

constexpr uint8_t kNothing = noteformat::kTransparent;  // no layer drew here: paper, or transparent
constexpr uint8_t kWhiteInk = noteformat::kWhite;
constexpr uint32_t kPaper = 0xFFFFFFFFu;

// The pixel values that carry ink (white ink included), in a fixed order.
constexpr std::array<uint8_t, 7> kInkValues = noteformat::kInkValues;

// 0xAARRGGBB of a pixel value. Ink takes the library's colour table; white ink is opaque
// white, so that it covers what lies below it. Nothing drawn is paper, or fully transparent
// when the paper is left out.
inline uint32_t pixelColour(uint8_t value, bool transparentPaper) {
    if (value == kNothing) return transparentPaper ? 0u : kPaper;
    return static_cast<uint32_t>(NOTE_COLOR_CONVERT_INDEX[value]);
}

}  // namespace notetool

#endif
