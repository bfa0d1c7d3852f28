#ifndef NOTETOOL_PAGE_WRITER_H
#define NOTETOOL_PAGE_WRITER_H

// What every output format's writer offers, and the options pages are drawn with.

#include <cstdint>
#include <string>

#include "document_info.h"
#include "output_file.h"
#include "page_reader.h"

namespace notetool {

// How pages are drawn, whatever the format.
struct DrawingOptions {
    double scale = 1.0;        // of the page's 1404 x 1872 pixels
    bool transparent = false;  // leave out the paper: only ink is opaque
    bool raster = false;       // PDF and SVG: embed the picture as an image instead of tracing it
    LayerSelection layers;     // which layers are composited
    double dpi = 0;            // page pixels per inch on paper; 0 takes the note's own (document_info.h)
    std::string creator;       // the program named as the files' maker
};

// The content of one output file, written into an OutputFile that the caller owns and
// commits once finish() has returned. Pages are composited pictures (palette.h), added in
// order; a format with a file per page takes exactly one. Every call throws
// std::runtime_error on failure, OutputError when the file cannot be written.
class PageWriter {
public:
    virtual ~PageWriter() = default;
    virtual void addPage(const uint8_t* pixels) = 0;
    virtual void finish() = 0;
};

}  // namespace notetool

#endif
