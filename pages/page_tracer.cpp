#include "page_tracer.h"

#include <potracelib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "palette.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace notetool {

namespace {

// Pages are traced at their own size. Traced at twice it, outlines follow the pixels a little
// closer (on average a tenth of a pixel off instead of a quarter), but potrace then takes
// four times as long and writes four times the segments, to no difference that shows at
// the sizes pages are read at (bench/trace_fidelity.cpp measures both).
constexpr int kWordBits = sizeof(potrace_word) * CHAR_BIT;
constexpr int kWordsPerRow = (kPageWidth + kWordBits - 1) / kWordBits;
constexpr int kChunk = 16;  // pixels looked at together
static_assert(kWordBits % kChunk == 0, "a chunk's bits lie within one word");

uint8_t luminance(uint32_t argb) {
    return static_cast<uint8_t>((((argb >> 16) & 0xFF) * 299 + ((argb >> 8) & 0xFF) * 587 + (argb & 0xFF) * 114) / 1000);
}

// A colour a page can show, with the pixel values that take it.
struct InkColour {
    uint32_t argb;
    std::vector<uint8_t> values;
};

// Whether the colour cannot be told from the paper: white ink (0xFEFEFE) on white paper.
bool looksLikePaper(uint32_t argb) {
    for (int shift = 0; shift < 32; shift += 8)
        if (std::abs(int((argb >> shift) & 0xFF) - int((kPaper >> shift) & 0xFF)) > 1) return false;
    return true;
}

// The colours to trace, lightest first.
std::vector<InkColour> inkColours(bool onPaper) {
    std::vector<InkColour> colours;
    for (uint8_t value : kInkValues) {
        const uint32_t argb = pixelColour(value, false);
        if (onPaper && looksLikePaper(argb)) continue;
        auto same = std::find_if(colours.begin(), colours.end(), [argb](const InkColour& c) { return c.argb == argb; });
        if (same == colours.end())
            colours.push_back({argb, {value}});
        else
            same->values.push_back(value);
    }
    std::stable_sort(colours.begin(), colours.end(),
                     [](const InkColour& a, const InkColour& b) { return luminance(a.argb) > luminance(b.argb); });
    return colours;
}

// A byte of pixel flags (the first pixel in bit 0) as the row bits they make: the first
// pixel in the highest bit, as potrace reads a row.
constexpr std::array<uint8_t, 256> reversedBits() {
    std::array<uint8_t, 256> table{};
    for (int flags = 0; flags < 256; ++flags)
        for (int pixel = 0; pixel < 8; ++pixel)
            if (flags >> pixel & 1) table[flags] |= uint8_t(0x80u >> pixel);
    return table;
}
constexpr std::array<uint8_t, 256> kReversed = reversedBits();

// One colour's pixels as a potrace bitmap, a bit a pixel; the bits beyond the width stay 0.
// Its memory is kept for the next colour and page of the thread.
class ColourBitmap {
public:
    explicit ColourBitmap(const InkColour& colour) : values_(colour.values) {
        for (uint8_t value : values_) member_[value] = true;
        words_.resize(std::size_t(kWordsPerRow) * kPageHeight);
    }

    // Fills the bitmap from the page; returns whether any pixel has the colour.
    bool fill(const uint8_t* pixels) {
        bool any = false;
        for (int y = 0; y < kPageHeight; ++y) {
            potrace_word* row = words_.data() + std::size_t(y) * kWordsPerRow;
            std::fill_n(row, kWordsPerRow, 0);
            const uint8_t* values = pixels + std::size_t(y) * kPageWidth;
            for (int x = 0; x < kPageWidth; x += kChunk) {
                const unsigned flags = chunkFlags(values + x, std::min(kChunk, kPageWidth - x));
                if (flags == 0) continue;
                any = true;
                const potrace_word bits = potrace_word(kReversed[flags & 0xFF]) << 8 | kReversed[flags >> 8];
                row[x / kWordBits] |= bits << (kWordBits - kChunk - x % kWordBits);
            }
        }
        return any;
    }

    potrace_bitmap_t bitmap() { return {kPageWidth, kPageHeight, kWordsPerRow, words_.data()}; }

private:
    // A flag for each of the `count` pixels that has the colour, the first in bit 0.
    unsigned chunkFlags(const uint8_t* values, int count) const {
#if defined(__SSE2__)
        if (count == kChunk) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(values));
            __m128i hit = _mm_setzero_si128();
            for (uint8_t value : values_) hit = _mm_or_si128(hit, _mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(value))));
            return static_cast<unsigned>(_mm_movemask_epi8(hit));
        }
#endif
        unsigned flags = 0;
        for (int i = 0; i < count; ++i) flags |= unsigned(member_[values[i]]) << i;
        return flags;
    }

    std::vector<uint8_t> values_;
    std::array<bool, 256> member_{};
    static thread_local std::vector<potrace_word> words_;
};

thread_local std::vector<potrace_word> ColourBitmap::words_;

// Writes outlines in whole units (kOutlineUnitsPerPixel a pixel).
class PathText {
public:
    PathText(PathSyntax syntax, std::string& out) : syntax_(syntax), out_(out) {}

    // A closed potrace curve starts at the end point of its last segment.
    void curve(const potrace_curve_t& curve) {
        if (curve.n == 0) return;
        potrace_dpoint_t from = curve.c[curve.n - 1][2];
        moveTo(unitsOf(from));
        for (int i = 0; i < curve.n; ++i) {
            const potrace_dpoint_t* c = curve.c[i];
            if (curve.tag[i] == POTRACE_CORNER) {
                lineTo(unitsOf(c[1]));
                lineTo(unitsOf(c[2]));
            } else {
                roundedCorner(from, c[0], c[1], c[2]);
            }
            from = c[2];
        }
        close();
    }

private:
    struct Point {
        long x, y;
        bool operator==(const Point& o) const { return x == o.x && y == o.y; }
    };

    // potrace rounds a corner with a curve from the middle of one edge of its polygon to the
    // middle of the next, its control points on the edges. Where one edge is far longer than
    // the other (a ruled line two pixels tall and hundreds long, cut by the letters on it),
    // that curve bends the long edge along half its length and a straight line becomes a
    // lens. The rounding is kept to the size of the short edge, and the rest of the long one
    // stays straight.
    void roundedCorner(potrace_dpoint_t from, potrace_dpoint_t c1, potrace_dpoint_t c2, potrace_dpoint_t to) {
        // The corner: where the two edges (the curve's tangents at its ends) meet. A curve of
        // one corner has its control points between the ends and the corner, from 0.55 to the
        // whole of the way (potrace's alpha); a curve that joins several corners, or turns
        // the other way, is left as it is.
        const double dx1 = c1.x - from.x, dy1 = c1.y - from.y, dx2 = c2.x - to.x, dy2 = c2.y - to.y;
        const double det = dx1 * dy2 - dy1 * dx2;
        constexpr double kLonger = 3;  // a leg this many times the other, and
        constexpr double kLong = 8;    // this many pixels long, is cut short
        if (std::fabs(det) > 1e-9) {
            const double s = ((to.x - from.x) * dy2 - (to.y - from.y) * dx2) / det;  // corner = from + s (c1 - from)
            const double t = ((to.x - from.x) * dy1 - (to.y - from.y) * dx1) / det;  // corner = to + t (c2 - to)
            const potrace_dpoint_t corner{from.x + s * dx1, from.y + s * dy1};
            const double legFrom = std::hypot(corner.x - from.x, corner.y - from.y);
            const double legTo = std::hypot(corner.x - to.x, corner.y - to.y);
            const auto towards = [&corner](potrace_dpoint_t p, double keep) {  // the point `keep` of the way to p
                return potrace_dpoint_t{corner.x + (p.x - corner.x) * keep, corner.y + (p.y - corner.y) * keep};
            };
            const bool oneCorner = s >= 1 && s <= 2 && t >= 1 && t <= 2;
            if (oneCorner && legFrom > kLong && legFrom > kLonger * legTo) {
                const potrace_dpoint_t start = towards(from, legTo / legFrom);
                lineTo(unitsOf(start));
                c1 = towards(c1, legTo / legFrom);
            } else if (oneCorner && legTo > kLong && legTo > kLonger * legFrom) {
                const potrace_dpoint_t end = towards(to, legFrom / legTo);
                curveTo(unitsOf(c1), unitsOf(towards(c2, legFrom / legTo)), unitsOf(end));
                lineTo(unitsOf(to));
                return;
            }
        }
        curveTo(unitsOf(c1), unitsOf(c2), unitsOf(to));
    }

    static Point unitsOf(const potrace_dpoint_t& p) {
        return {std::lround(p.x * kOutlineUnitsPerPixel), std::lround(p.y * kOutlineUnitsPerPixel)};
    }

    void moveTo(Point p) {
        if (syntax_ == PathSyntax::Pdf) {
            point(p);
            out_ += "m\n";
        } else {
            command('M');
            number(p.x);
            number(p.y);
        }
        at_ = p;
    }

    void lineTo(Point p) {
        if (p == at_) return;  // rounded onto the point before: nothing to draw
        if (syntax_ == PathSyntax::Pdf) {
            point(p);
            out_ += "l\n";
        } else {
            command('l');
            relative(p);
        }
        at_ = p;
    }

    void curveTo(Point a, Point b, Point p) {
        if (syntax_ == PathSyntax::Pdf) {
            point(a);
            point(b);
            point(p);
            out_ += "c\n";
        } else {
            command('c');
            relative(a);
            relative(b);
            relative(p);
        }
        at_ = p;
    }

    void close() {
        out_ += syntax_ == PathSyntax::Pdf ? "h\n" : "z";
        last_ = 'z';
    }

    void point(Point p) {
        number(p.x);
        out_ += ' ';
        number(p.y);
        out_ += ' ';
    }

    // SVG's relative coordinates, from the current point (they are exact: whole units).
    void relative(Point p) {
        number(p.x - at_.x);
        number(p.y - at_.y);
    }

    // An SVG command letter, left out where it repeats the one before.
    void command(char letter) {
        if (letter != last_) out_ += letter;
        separate_ = letter == last_;
        last_ = letter;
    }

    void number(long value) {
        if (syntax_ == PathSyntax::Svg) {
            if (separate_ && value >= 0) out_ += ' ';  // a minus sign separates by itself
            separate_ = true;
        }
        char text[24];
        out_.append(text, std::to_chars(text, text + sizeof text, value).ptr);
    }

    PathSyntax syntax_;
    std::string& out_;
    Point at_{0, 0};
    char last_ = 0;
    bool separate_ = false;
};

using Params = std::unique_ptr<potrace_param_t, decltype(&potrace_param_free)>;

Params traceParams() {
    Params params(potrace_param_default(), &potrace_param_free);
    if (!params) throw std::runtime_error("cannot set up tracing: out of memory");
    // Keep every speck and one-pixel line (no area is dropped as noise), allow curves where
    // the outline bends gently but keep the corners of pen strokes, and let segments join
    // into longer curves within half a pixel. Other corner and joining thresholds change the
    // size of a page's outlines by a few per cent at most (bench/trace_fidelity.cpp).
    params->turdsize = 0;
    params->alphamax = 1.0;
    params->opticurve = 1;
    params->opttolerance = 0.5;
    return params;
}

}  // namespace

std::vector<ColourOutlines> tracePage(const uint8_t* pixels, bool onPaper, PathSyntax syntax) {
    const Params params = traceParams();
    std::vector<ColourOutlines> traced;
    for (const InkColour& colour : inkColours(onPaper)) {
        ColourBitmap bitmap(colour);
        if (!bitmap.fill(pixels)) continue;
        potrace_bitmap_t bits = bitmap.bitmap();
        const std::unique_ptr<potrace_state_t, decltype(&potrace_state_free)> state(potrace_trace(params.get(), &bits),
                                                                                   &potrace_state_free);
        if (!state || state->status != POTRACE_STATUS_OK) throw std::runtime_error("cannot trace the page: out of memory");
        ColourOutlines outlines{colour.argb, {}};
        PathText text(syntax, outlines.path);
        for (const potrace_path_t* path = state->plist; path; path = path->next) text.curve(path->curve);
        traced.push_back(std::move(outlines));
    }
    return traced;
}

}  // namespace notetool
