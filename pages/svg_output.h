#ifndef NOTETOOL_SVG_OUTPUT_H
#define NOTETOOL_SVG_OUTPUT_H

// SVG output of a composited page (palette.h). Its users want paths to edit, so by default
// each colour of ink is traced into one filled path (page_tracer.h); DrawingOptions::raster
// embeds the picture instead, as the page's PNG (png_output.h), drawn without smoothing.

#include <memory>
#include <string>

#include "page_writer.h"

namespace notetool {

// One page as one SVG file, sized on paper as the PDF page is (in millimetres), around a
// viewBox of page pixels. The text depends on the page alone, so the same page always makes
// the same bytes.
std::unique_ptr<PageWriter> openSvg(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

}  // namespace notetool

#endif
