#ifndef LIBNOTE_SRC_FACTS_PICTURE_H
#define LIBNOTE_SRC_FACTS_PICTURE_H

// A layer's picture as the note format has it: its size, and the eight pixel values with
// the colour code each is stored as and the colour it is shown in. This is the one place
// these facts are written down; the library's public tables (UNCOMPRESS_INDEX,
// COMPRESS_INDEX, NOTE_COLOR_CONVERT_INDEX) are made from it when the library is compiled,
// and the programs built beside the library (tests, notetool, fuzz targets, examples,
// benchmarks) take it from here too. Header-only and never installed.

#include <array>
#include <cstddef>
#include <cstdint>

namespace noteformat {

constexpr int kPictureWidth = 1404;
constexpr int kPictureHeight = 1872;
// One byte a pixel, row by row: 2628288 bytes.
constexpr std::size_t kPictureSize = std::size_t(kPictureWidth) * std::size_t(kPictureHeight);

struct PixelValue {
    uint8_t value;    // the byte in a decoded picture
    uint8_t code;     // the colour code that stands for it in the run-length code
    uint32_t colour;  // 0xAARRGGBB, as NOTE_COLOR_CONVERT_INDEX holds it
};

// Seven values carry ink; 0xFF is transparent: nothing drawn. Each grey comes in two values
// of one colour, which the library carries without telling them apart.
constexpr PixelValue kPixelValues[] = {
    {0x00, 0x61, 0xFF010101u},  // black
    {0x01, 0x66, 0xFF010101u},  // black
    {0x30, 0x63, 0xFF9D9D9Du},  // dark grey
    {0x31, 0x67, 0xFF9D9D9Du},  // dark grey
    {0x50, 0x64, 0xFFC9C9C9u},  // light grey
    {0x51, 0x68, 0xFFC9C9C9u},  // light grey
    {0xFE, 0x65, 0xFFFEFEFEu},  // white
    {0xFF, 0x62, 0x00000000u},  // transparent
};

constexpr uint8_t kWhite = 0xFE;
constexpr uint8_t kTransparent = 0xFF;

// The code a decoder meets for nothing else: a byte that is not a pixel value is coded so,
// and decodes as a skipped pixel.
constexpr uint8_t kNoCode = 0x00;

// The pixel values that carry ink, white ink included, in the order of kPixelValues.
constexpr std::array<uint8_t, 7> kInkValues = [] {
    std::array<uint8_t, 7> ink{};
    std::size_t n = 0;
    for (const PixelValue& p : kPixelValues)
        if (p.value != kTransparent) ink[n++] = p.value;
    return ink;
}();

// Whether a byte is one of the eight pixel values.
constexpr bool isPixelValue(uint8_t byte) {
    for (const PixelValue& p : kPixelValues)
        if (p.value == byte) return true;
    return false;
}

// The pixel value a colour code stands for; transparent (a skipped run) for a code that
// stands for none.
constexpr uint8_t valueOfCode(uint8_t code) {
    for (const PixelValue& p : kPixelValues)
        if (p.code == code) return p.value;
    return kTransparent;
}

// The colour code of a pixel value; kNoCode for a byte that is not one.
constexpr uint8_t codeOfValue(uint8_t byte) {
    for (const PixelValue& p : kPixelValues)
        if (p.value == byte) return p.code;
    return kNoCode;
}

// The colour of a pixel value; 0 for a byte that is not one.
constexpr uint32_t colourOfValue(uint8_t byte) {
    for (const PixelValue& p : kPixelValues)
        if (p.value == byte) return p.colour;
    return 0;
}

}  // namespace noteformat

#endif
