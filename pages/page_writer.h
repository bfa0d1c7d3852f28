#ifndef NOTETOOL_PAGE_WRITER_H
#define NOTETOOL_PAGE_WRITER_H

// What every output format's writer offers, and the options pages are drawn with.

#include <cstdint>
#include <string>

#include "document_info.h"
#include "output_file.h"
#include "page_reader.h"
#include "palette_picture.h"

namespace notetool {

// How pages are drawn, whatever the format.
struct DrawingOptions {
    double scale = 1.0;        // of the page's 1404 x 1872 pixels
    bool transparent = false;  // leave out the paper: only ink is opaque
    bool raster = false;       // SVG: embed the picture as an image instead of tracing it
    bool vector = false;       // PDF: trace the picture into outlines instead of embedding it
    LayerSelection layers;     // which layers are composited
    double dpi = 0;            // page pixels per inch on paper; 0 takes the note's own (document_info.h)
    std::string creator;       // the program named as the files' maker
};

// The content of one output file, written into an OutputFile that the caller owns and
// commits once finish() has returned. Pages are composited pictures (palette.h), added in
// order; a format with a file per page takes exactly one. Every call throws
// std::runtime_error on failure, OutputError when the file cannot be written.
//
// A page as its file holds it: the bytes, and for a picture the palette they index.
struct EncodedPage {
    std::string bytes;
    Palette palette;
};

// Turning a page into what the file holds of it (compressing, tracing) is most of the work,
// and pages are independent: encodePage() may run for several pages at once on several
// threads, and their results are then added in page order.
class PageWriter {
public:
    virtual ~PageWriter() = default;
    // What the file holds of the page. Safe to call from any number of threads at once.
    virtual EncodedPage encodePage(const uint8_t* pixels) const = 0;
    // Adds a page that encodePage() made, after the pages added before it.
    virtual void addEncodedPage(EncodedPage page) = 0;
    void addPage(const uint8_t* pixels) { addEncodedPage(encodePage(pixels)); }
    virtual void finish() = 0;
};

// The writer of a format with a file per page, whose encoded page is the whole file.
class PageFileWriter : public PageWriter {
public:
    explicit PageFileWriter(OutputFile& file) : file_(file) {}
    void addEncodedPage(EncodedPage page) override { file_.write(page.bytes.data(), page.bytes.size()); }
    void finish() override {}

private:
    OutputFile& file_;
};

}  // namespace notetool

#endif
