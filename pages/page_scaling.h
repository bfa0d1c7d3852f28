#ifndef NOTETOOL_PAGE_SCALING_H
#define NOTETOOL_PAGE_SCALING_H

// A composited page (palette.h) at another size than its own: the image's sides, and the
// reduction that averages the page pixels each image pixel covers. PNG output and the
// WebAssembly module both take their reduced pages from here, so they show the same pixels.

#include <cstdint>
#include <string>

namespace notetool {

// The side of a page `pixels` long, scaled, at least one pixel.
int scaledLength(int pixels, double scale);

// Appends a grey pixel, with its alpha when the rows have one.
void putGrey(std::string& rows, unsigned grey, unsigned alpha, bool withAlpha);

// The page reduced to width x height (each no larger than the page's), as rows of grey, or of
// grey and alpha when the paper is transparent, each row led by PNG's filter byte 0 (none).
std::string reducedRows(const uint8_t* pixels, int width, int height, bool transparent);

}  // namespace notetool

#endif
