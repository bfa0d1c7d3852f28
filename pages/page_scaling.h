#ifndef NOTETOOL_PAGE_SCALING_H
#define NOTETOOL_PAGE_SCALING_H

// A composited page (palette.h) at another size than its own, as far as it needs nothing but
// the page's pixels: the sides of the image, the fit of a thumbnail, the reduction and the
// whole-number enlargement. Every host that shows a page smaller or larger takes it from here
// (enlargements by other fractions, filtered by cairo, from scaled_page.h), so that the same
// size gives the same pixels everywhere. Rows are grey (grey and alpha when the paper is left
// out), each led by its PNG filter byte (0, none): a grey PNG's image data as it is, and a
// picture for any other host once it skips that byte.

#include <cstdint>
#include <string>

namespace notetool {

// The side of a page `pixels` long, scaled, at least one pixel.
int scaledLength(int pixels, double scale);

// The scale that fits the page inside width x height pixels, never above 1: a thumbnail is
// never larger than the page.
double fitScale(int width, int height);

// Appends a grey pixel, with its alpha when the rows have one.
void putGrey(std::string& rows, unsigned grey, unsigned alpha, bool withAlpha);

// The page reduced to width x height (neither larger than the page's): each image pixel the
// mean of the page pixels it covers.
std::string reducedRows(const uint8_t* pixels, int width, int height, bool transparent);

// The page `factor` times its size: each page pixel a block.
std::string repeatedRows(const uint8_t* pixels, int factor, bool transparent);

}  // namespace notetool

#endif
