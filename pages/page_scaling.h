#ifndef NOTETOOL_PAGE_SCALING_H
#define NOTETOOL_PAGE_SCALING_H

// A composited page (palette.h) drawn larger or smaller than its pixels: what every host that
// shows a page at another size draws, so that a PNG of notetool and a viewer's page agree
// pixel for pixel. A reduction averages the page pixels each picture pixel covers; an
// enlargement by other than a whole number is filtered by cairo. A whole-number enlargement
// repeats each page pixel in the page's own palette (palette_picture.h) and is not drawn here.

#include <cstdint>
#include <vector>

namespace notetool {

// The side of a page `pixels` long, drawn `scale` times its size, at least one pixel.
int scaledLength(int pixels, double scale);

// How many times each page pixel is repeated across and down in a picture of width x height,
// or 0 when the picture is not the page at a whole-number scale.
int wholeScaleOf(int width, int height);

// The page drawn at width x height, row by row without padding: one grey value a pixel, or
// grey and alpha when the paper is left out (transparent).
std::vector<uint8_t> scaledGrey(const uint8_t* pixels, int width, int height, bool transparent);

}  // namespace notetool

#endif
