#ifndef NOTETOOL_PAGE_WRITER_H
#define NOTETOOL_PAGE_WRITER_H

// What every output format's writer offers, and the options pages are drawn with.

#include <cstdint>

#include "page_reader.h"

namespace notetool {

// How pages are drawn, whatever the format.
struct DrawingOptions {
    double scale = 1.0;        // of the page's 1404 x 1872 pixels
    bool transparent = false;  // leave out the paper: only ink is opaque
    bool raster = false;       // PDF and SVG: embed the picture as an image instead of tracing it
    LayerSelection layers;     // which layers are composited
};

// One output file under construction. Pages are composited pictures (palette.h), added in
// order; a format with a file per page takes exactly one. The file is written under a
// temporary name and appears under its own only when finish() succeeds; a writer destroyed
// unfinished removes what it wrote. Every call throws std::runtime_error on failure.
class PageWriter {
public:
    virtual ~PageWriter() = default;
    virtual void addPage(const uint8_t* pixels) = 0;
    virtual void finish() = 0;
};

}  // namespace notetool

#endif
