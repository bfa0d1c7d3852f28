#ifndef NOTETOOL_VECTOR_OUTPUT_H
#define NOTETOOL_VECTOR_OUTPUT_H

// PDF and SVG output of composited pages. A page is kPagePixels pixel values (palette.h),
// row by row, 0xFF where nothing is drawn. By default each colour is traced into filled
// outlines, so that pages scale without blur; raster embeds the picture losslessly instead.

#include <memory>
#include <string>

#include "page_writer.h"

namespace notetool {

// All pages as one PDF.
std::unique_ptr<PageWriter> openPdf(const std::string& path, const DrawingOptions& options);

// One page as one SVG file.
std::unique_ptr<PageWriter> openSvg(const std::string& path, const DrawingOptions& options);

}  // namespace notetool

#endif
