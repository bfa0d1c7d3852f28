#ifndef NOTETOOL_PNG_OUTPUT_H
#define NOTETOOL_PNG_OUTPUT_H

// PNG output of a composited page (palette.h). A page holds at most five greys, so it is
// written as a small palette (four bits a pixel, a tRNS entry for transparent paper), which
// is several times smaller and faster to compress than 32-bit colour. cairo writes only
// RGB, RGBA and alpha-only PNGs, so the file is written with libpng; cairo does the
// filtering of scales that are not whole numbers.

#include <cstdint>
#include <string>

namespace notetool {

struct PngOptions {
    double scale = 1.0;
    bool transparent = false;  // leave out the paper
};

// Writes the page to path through a temporary file; throws ToolError.
void writePng(const std::string& path, const uint8_t* pixels, const PngOptions& options);

}  // namespace notetool

#endif
