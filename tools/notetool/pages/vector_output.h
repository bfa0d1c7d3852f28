#ifndef NOTETOOL_VECTOR_OUTPUT_H
#define NOTETOOL_VECTOR_OUTPUT_H

// PDF and SVG output of composited pages. A page is kPagePixels pixel values (palette.h),
// row by row, 0xFF where nothing is drawn. By default each colour is traced into filled
// outlines, so that pages scale without blur; raster embeds the picture losslessly instead.
// Every file is written under a temporary name and renamed only when it is complete.

#include <cstdint>
#include <memory>
#include <string>

namespace notetool {

struct VectorOptions {
    double scale = 1.0;
    bool transparent = false;  // leave out the paper: only ink is opaque
    bool raster = false;       // embed the picture as an image instead of tracing it
};

// One multi-page PDF. Pages are added in order; finish() completes the file and moves it to
// its name. Destroying an unfinished document removes what was written.
class PdfDocument {
public:
    PdfDocument(const std::string& path, const VectorOptions& options);  // throws std::runtime_error
    ~PdfDocument();
    PdfDocument(const PdfDocument&) = delete;
    PdfDocument& operator=(const PdfDocument&) = delete;

    void addPage(const uint8_t* pixels);  // throws std::runtime_error
    void finish();                        // throws std::runtime_error

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// One page as one SVG file. Throws std::runtime_error.
void writeSvgPage(const std::string& path, const uint8_t* pixels, const VectorOptions& options);

}  // namespace notetool

#endif
