#ifndef NOTETOOL_PAGE_SCALING_H
#define NOTETOOL_PAGE_SCALING_H

// A composited page (palette.h) at another size than its own. Every host that shows a page
// smaller or larger (a PNG at --scale, a thumbnail, a viewer's pixmap) takes it from here, so
// that the same size gives the same pixels everywhere.

#include <cstdint>
#include <string>

namespace notetool {

// The side of a page `pixels` long, scaled, at least one pixel.
int scaledLength(int pixels, double scale);

// The scale that fits the page inside width x height pixels, never above 1: a thumbnail is
// never larger than the page.
double fitScale(int width, int height);

// The page drawn width x height pixels large, as grey rows (grey and alpha when the paper is
// left out), each led by its PNG filter byte (0, none): a grey PNG's image data as it is, and
// a picture for any other host once it skips that byte. A reduction averages the page pixels
// each image pixel covers; an enlargement by a whole number repeats each page pixel; other
// enlargements are filtered by cairo.
std::string scaledGreyRows(const uint8_t* pixels, int width, int height, bool transparent);

}  // namespace notetool

#endif
