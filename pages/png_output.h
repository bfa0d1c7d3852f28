#ifndef NOTETOOL_PNG_OUTPUT_H
#define NOTETOOL_PNG_OUTPUT_H

// PNG output of a composited page (palette.h). A page holds at most five colours, so it is
// written as a small palette (palette_picture.h: two bits a pixel, four with a tRNS entry for
// transparent paper), which is many times smaller and faster to compress than 32-bit colour.
// Other scales are grey (and alpha): a reduction averages the page pixels each image pixel
// covers, cairo filters enlargements. The DocumentInfo's attributes become tEXt chunks.

#include <cstdint>
#include <memory>
#include <string>

#include "page_writer.h"

namespace notetool {

// One page as one PNG file, which records the page's resolution on paper (pHYs), so that it
// prints at its physical size.
std::unique_ptr<PageWriter> openPng(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

// The bytes of that file, for a format that embeds the page's PNG.
std::string encodePng(const uint8_t* pixels, const DrawingOptions& options, const DocumentInfo& info);

}  // namespace notetool

#endif
