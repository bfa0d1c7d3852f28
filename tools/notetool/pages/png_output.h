#ifndef NOTETOOL_PNG_OUTPUT_H
#define NOTETOOL_PNG_OUTPUT_H

// PNG output of a composited page (palette.h). A page holds at most five greys, so it is
// written as a small palette (four bits a pixel, a tRNS entry for transparent paper), which
// is several times smaller and faster to compress than 32-bit colour. cairo writes only
// RGB, RGBA and alpha-only PNGs, so the file is written with libpng. A reduction averages
// the page pixels each image pixel covers; cairo filters enlargements by other than whole
// numbers. The DocumentInfo's attributes become tEXt chunks.

#include <memory>
#include <string>

#include "page_writer.h"

namespace notetool {

// One page as one PNG file, which records the page's resolution on paper (pHYs), so that it
// prints at its physical size.
std::unique_ptr<PageWriter> openPng(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

}  // namespace notetool

#endif
