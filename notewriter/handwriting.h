#ifndef LIBNOTE_TESTS_HANDWRITING_H
#define LIBNOTE_TESTS_HANDWRITING_H

// Handwriting as the tablet records it: a small pen font, lines of text written with it as
// pen strokes (digitizer units, axis value 1, with pressures), the same strokes rendered
// into a layer picture, and ruled paper behind them. The bundled sample and the
// benchmarks' full pages are both written with it.
//
// Everything is deterministic on every machine: the jitter comes from std::mt19937's raw
// output, whose sequence the standard fixes, and only arithmetic (no library maths
// functions) shapes the strokes.

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "notewriter.h"
#include "trailContainer.h"

namespace handwriting {

using Pixels = std::vector<uint8_t>;

// The digitizer of the tablet, turned a quarter against the picture (axis value 1).
constexpr int kMaxX = 15725;
constexpr int kMaxY = 20967;
constexpr int kAxis = 1;

// Pixel values of the pages this writes.
constexpr uint8_t kBlack = 0x00;
constexpr uint8_t kGrey = 0x30;
constexpr uint8_t kLightGrey = 0x50;
constexpr uint8_t kHighlighter = 0x51;
constexpr uint8_t kPaper = 0xFE;
constexpr uint8_t kTransparent = 0xFF;

struct Vec {
    double x;
    double y;
};
using Path = std::vector<Vec>;

// How a hand writes: the size of the letters and where a line starts.
struct Hand {
    double scale = 6.5;         // pixels per glyph unit: an x-height of 26 pixels
    double slant = 0.18;
    double leftMargin = 130;    // picture column where a line starts
    int samplesPerSegment = 6;  // pen samples between two control points of a letter
};

// One line of handwriting as pen paths in picture pixels (x right, y down), starting at
// the hand's left margin on the given baseline row. Letters the font lacks are spaces.
std::vector<Path> writeLine(const std::string& words, double baseline, const Hand& hand, std::mt19937& rng);

// The width the line takes in pixels at the hand's size, before the jitter of each letter
// (at most 5 % either way).
double lineWidth(const std::string& words, const Hand& hand);

// A pen stroke along the path, in digitizer units, with the pressures and angles a pen
// gives: hardest in the middle, lifting off at both ends.
TrailContainer penStroke(const Path& path, std::mt19937& rng);

// A pen: its ink and its line width under light pressure; a firm press adds a pixel.
struct Pen {
    uint8_t value = kBlack;
    int width = 2;
};

// Renders a stroke into a picture through the library's own mapping, so the picture and
// the strokes agree exactly as a host sees them.
void ink(Pixels& picture, const TrailContainer& stroke, const Pen& pen);

// Sets the rectangle [left, right) x [top, bottom) of a picture to value.
void band(Pixels& picture, int top, int bottom, int left, int right, uint8_t value);

// Paper ruled with a title rule and then a rule every `step` rows from `firstRule` on.
struct Ruling {
    int titleRow;
    int firstRule;
    int step;
};
Pixels ruledPaper(const Ruling& ruling);

// A page filled with handwriting, as a tablet's busy page looks: 25 ruled lines of text in
// black and, on some lines, grey, pens 2 to 4 pixels wide, highlighter marks on LAYER1 and
// the ruled paper as the background; about 900 strokes and 25,000 points, rendered into the
// main layer, which codes to 0.6 to 0.8 MB. Each page number gives another page.
notewriter::Page fullPage(int pageNumber);

// The bytes of a note whose pages 1 to `pages` are fullPage(1) to fullPage(pages), laid out
// a page at a time.
std::string fullNoteFile(int pages);

}  // namespace handwriting

#endif
