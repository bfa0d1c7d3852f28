#ifndef NOTETOOL_PAGE_TRACER_H
#define NOTETOOL_PAGE_TRACER_H

// A composited page (palette.h) traced into filled outlines (potrace), one set for each colour
// of ink, and written as the path operators of a PDF page or the path data of an SVG file.

#include <cstdint>
#include <string>
#include <vector>

namespace notetool {

// The path syntax outlines are written in. Both give whole numbers of kOutlineUnitsPerPixel
// units a page pixel, y down as the picture's rows run; the writer scales them to the page.
enum class PathSyntax {
    Pdf,  // "x y m", "x y l", "x1 y1 x2 y2 x3 y3 c", "h"
    Svg,  // "Mx y", then relative "l", "c" and "z"
};

// Precision of the outlines: a coordinate is rounded by at most half a unit, an eighth of a
// pixel, which no one sees even at 4x and keeps files small.
constexpr int kOutlineUnitsPerPixel = 4;

// The outlines of one colour: the fill and its path, filled with the nonzero rule.
struct ColourOutlines {
    uint32_t argb;
    std::string path;
};

// Traces the page's ink, a colour at a time, lightest first, so that dark ink painted last
// keeps writing crisp where a renderer blends the edges of neighbouring colours. On paper, a
// colour that cannot be told from the paper (white ink, a level darker) is not traced: the
// paper shows it, and it is most of a page with a background. Safe to call from several
// threads at once.
std::vector<ColourOutlines> tracePage(const uint8_t* pixels, bool onPaper, PathSyntax syntax);

}  // namespace notetool

#endif
