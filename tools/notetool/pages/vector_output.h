#ifndef NOTETOOL_VECTOR_OUTPUT_H
#define NOTETOOL_VECTOR_OUTPUT_H

// PDF and SVG output of composited pages. A page is kPagePixels pixel values (palette.h),
// row by row, 0xFF where nothing is drawn. By default each colour is traced into filled
// outlines, so that pages scale without blur; raster embeds the picture losslessly instead.

#include <memory>
#include <string>

#include "page_writer.h"

namespace notetool {

// All pages as one PDF, its pages their size on paper (document_info.h), with the note's
// name as its title.
std::unique_ptr<PageWriter> openPdf(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

// One page as one SVG file, sized on paper as the PDF page is, around a viewBox of page units.
std::unique_ptr<PageWriter> openSvg(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

}  // namespace notetool

#endif
