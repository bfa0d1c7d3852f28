#ifndef NOTETOOL_PALETTE_PICTURE_H
#define NOTETOOL_PALETTE_PICTURE_H

// A composited page (palette.h) as a palette picture: each pixel an index into the few colours
// a page can show, packed several to a byte, each row led by its PNG filter byte, the whole
// compressed once in the zlib format. That is exactly the image data of a PNG file and, with
// PNG predictors, of a PDF image, so both formats take the same bytes and a page is never
// compressed twice.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace notetool {

// The colours of a page and which pixel value takes which. A value that has no colour of its
// own (the decoder writes none such; a layer skips those pixels) shows what shows where
// nothing is drawn. A page shows at most five colours: three of ink, white ink and paper (or
// transparency). Most pages lack one of the last two (a background layer covers the paper;
// without one there is seldom white ink), and four colours take two bits a pixel instead of
// four, which halves what is compressed.
struct Palette {
    std::vector<uint32_t> colours;     // 0xAARRGGBB, by index
    std::array<uint8_t, 256> indexOf{};  // pixel value -> index
    int bitDepth = 2;                    // bits a pixel: 2 or 4

    // The index that is fully transparent, or -1.
    int transparentIndex() const;
};

// The palette of this page's pixels.
Palette pagePalette(const uint8_t* pixels, bool transparentPaper);

// The page's pixels, each repeated `scale` times across and down, as compressed rows.
struct PalettePicture {
    int width = 0;
    int height = 0;
    std::string data;  // zlib stream of the rows, each a filter byte (0, none) and the packed indices
};
PalettePicture compressPicture(const uint8_t* pixels, int scale, const Palette& palette);

// The bytes compressed in the zlib format, as fast as the format allows at about the size of
// zlib's own run-length strategy: the one compressor of every PNG and PDF page.
std::string compressZlib(const void* data, std::size_t size);

}  // namespace notetool

#endif
