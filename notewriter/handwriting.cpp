#include "handwriting.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include "config.h"

namespace handwriting {

using notewriter::kPictureHeight;
using notewriter::kPictureSize;
using notewriter::kPictureWidth;

// ---- The font ----

namespace {

// Letters in glyph units: x to the right, y up, baseline at 0, x-height 4, ascenders 8.
struct Glyph {
    double width;
    std::vector<Path> strokes;
};

const std::map<char, Glyph>& font() {
    static const Path bowl = {{3.8, 3}, {2, 4}, {0.4, 3}, {0, 1.8}, {0.6, 0.4}, {2, 0}, {3.4, 0.6}, {3.9, 2}};
    static const Path hump = {{0, 2.5}, {1, 3.7}, {2.3, 4}, {3.5, 3.4}, {4, 2.2}, {4, 0}};
    static const Path tail = {{4, 4}, {4, -2}, {3.2, -3.2}, {1.6, -3.4}, {0.4, -2.6}};
    static const std::map<char, Glyph> glyphs = {
        {'a', {4.4, {bowl, {{4, 4}, {4, 0.5}, {4.4, 0}}}}},
        {'b', {4, {{{0, 8}, {0, 0}}, {{0, 2.8}, {1.2, 3.8}, {2.6, 4}, {3.8, 3}, {4, 1.8}, {3.4, 0.5}, {2, 0}, {0.8, 0.3}, {0, 1.2}}}}},
        {'d', {4.4, {bowl, {{4, 8}, {4, 0.5}, {4.4, 0}}}}},
        {'e', {4, {{{0.2, 2}, {4, 2}, {3.6, 3.4}, {2, 4}, {0.5, 3.2}, {0, 1.8}, {0.6, 0.5}, {2, 0}, {3.7, 0.6}}}}},
        {'f', {2.6, {{{3, 7.4}, {2, 8}, {1.2, 7.4}, {1, 6}, {1, 0}}, {{0, 4}, {2.4, 4}}}}},
        {'h', {4, {{{0, 8}, {0, 0}}, hump}}},
        {'i', {1, {{{0.5, 4}, {0.5, 0}}, {{0.4, 5.6}, {0.6, 5.9}}}}},
        {'k', {3.6, {{{0, 8}, {0, 0}}, {{3.4, 4}, {0.2, 1.8}, {3.6, 0}}}}},
        {'l', {1, {{{0, 8}, {0, 0.6}, {0.6, 0}}}}},
        {'n', {4, {{{0, 4}, {0, 0}}, hump}}},
        {'o', {4, {{{3.5, 3.2}, {2, 4}, {0.5, 3.2}, {0, 2}, {0.5, 0.6}, {2, 0}, {3.5, 0.8}, {4, 2}, {3.5, 3.2}, {2, 4}}}}},
        {'p', {4, {{{0, 4}, {0, -3.5}}, {{0, 2.8}, {1.2, 3.8}, {2.6, 4}, {3.8, 3}, {4, 1.8}, {3.4, 0.5}, {2, 0}, {0.8, 0.3}, {0, 1.2}}}}},
        {'r', {3.2, {{{0, 4}, {0, 0}}, {{0, 2.4}, {1, 3.6}, {2.2, 4}, {3.2, 3.8}}}}},
        {'s', {3.6, {{{3.4, 3.5}, {2, 4}, {0.6, 3.6}, {0.4, 2.6}, {1.6, 2.1}, {3, 1.7}, {3.6, 0.8}, {2.6, 0}, {1, 0}, {0, 0.6}}}}},
        {'t', {2.6, {{{1, 7}, {1, 0.6}, {1.6, 0}, {2.6, 0.3}}, {{0, 4}, {2.6, 4}}}}},
        {'u', {4.4, {{{0, 4}, {0, 1.5}, {0.6, 0.3}, {2, 0}, {3.4, 0.6}, {4, 2}}, {{4, 4}, {4, 0.5}, {4.4, 0}}}}},
        {'w', {5, {{{0, 4}, {1.2, 0}, {2.5, 3}, {3.8, 0}, {5, 4}}}}},
        {'x', {4, {{{0, 4}, {4, 0}}, {{4, 4}, {0, 0}}}}},
        {'y', {4, {{{0, 4}, {0.4, 1.4}, {1.6, 0}, {3, 0.4}, {4, 2}}, tail}}},
    };
    return glyphs;
}

constexpr double kSpace = 3.5;      // glyph units of a space, or of a letter the font lacks
constexpr double kLetterGap = 1.4;  // glyph units between two letters

// A number in [0, 1) from the generator's raw output (the standard fixes that sequence, but
// not the results of its distributions).
double unit(std::mt19937& rng) { return rng() / 4294967296.0; }

// Catmull-Rom through the control points, so that the pen path is smooth and passes
// through every one of them.
Path smooth(const Path& control, int samplesPerSegment) {
    if (control.size() < 2) return control;
    Path out;
    const std::size_t last = control.size() - 1;
    for (std::size_t i = 0; i < last; ++i) {
        const Vec& p0 = control[i == 0 ? 0 : i - 1];
        const Vec& p1 = control[i];
        const Vec& p2 = control[i + 1];
        const Vec& p3 = control[i + 1 == last ? last : i + 2];
        for (int s = 0; s < samplesPerSegment; ++s) {
            const double t = static_cast<double>(s) / samplesPerSegment;
            const double t2 = t * t;
            const double t3 = t2 * t;
            auto blend = [&](double a, double b, double c, double d) {
                return 0.5 * (2 * b + (c - a) * t + (2 * a - 5 * b + 4 * c - d) * t2 + (3 * b - a - 3 * c + d) * t3);
            };
            out.push_back({blend(p0.x, p1.x, p2.x, p3.x), blend(p0.y, p1.y, p2.y, p3.y)});
        }
    }
    out.push_back(control.back());
    return out;
}

}  // namespace

std::vector<Path> writeLine(const std::string& words, double baseline, const Hand& hand, std::mt19937& rng) {
    std::vector<Path> paths;
    double x = hand.leftMargin;
    for (char c : words) {
        const auto glyph = font().find(c);
        if (glyph == font().end()) {
            x += kSpace * hand.scale;
            continue;
        }
        const double size = hand.scale * (0.95 + 0.1 * unit(rng));
        const double lift = 0.6 * (unit(rng) - 0.5);
        for (const Path& stroke : glyph->second.strokes) {
            Path control;
            for (const Vec& p : stroke)
                control.push_back({x + (p.x + hand.slant * p.y) * size, baseline - (p.y + lift) * size});
            paths.push_back(smooth(control, hand.samplesPerSegment));
        }
        x += (glyph->second.width + kLetterGap) * size;
    }
    return paths;
}

double lineWidth(const std::string& words, const Hand& hand) {
    double width = 0;
    for (char c : words) {
        const auto glyph = font().find(c);
        width += glyph == font().end() ? kSpace : glyph->second.width + kLetterGap;
    }
    return width * hand.scale;
}

// ---- Strokes ----

namespace {

// Picture pixel to digitizer units: the inverse of the library's mapping for axis value 1
// onto the last pixel index, so that the mapping brings the stroke back where it was drawn.
MorvaPoint toDigitizer(const Vec& p) {
    const double a = kPictureWidth - 1;
    const double b = kPictureHeight - 1;
    return {static_cast<int>(p.y * kMaxX / b + 0.5), static_cast<int>((a - p.x) * kMaxY / a + 0.5)};
}

uint16_t pressureAt(std::size_t i, std::size_t n, std::mt19937& rng) {
    const double t = n < 2 ? 0.5 : static_cast<double>(i) / (n - 1);
    return static_cast<uint16_t>(700 + 2600 * 4 * t * (1 - t) + 150 * unit(rng));
}

// Pressure above which the pen draws a pixel wider.
constexpr uint16_t kFirmPressure = 2200;

}  // namespace

TrailContainer penStroke(const Path& path, std::mt19937& rng) {
    TrailContainer trail;
    trail.maxX = kMaxX;
    trail.maxY = kMaxY;
    trail.m_emrPointAxis = kAxis;
    for (std::size_t i = 0; i < path.size(); ++i) {
        trail.m_points.push_back(toDigitizer(path[i]));
        trail.pressures.push_back(pressureAt(i, path.size(), rng));
        trail.angles.push_back({static_cast<int16_t>(420 + 40 * unit(rng)), static_cast<int16_t>(-310 - 40 * unit(rng))});
        trail.flagDraw.push_back(true);
    }
    return trail;
}

// ---- Pictures ----

namespace {

void stamp(Pixels& picture, int x, int y, int size, uint8_t value) {
    for (int row = y; row < y + size; ++row)
        for (int col = x; col < x + size; ++col)
            if (row >= 0 && row < kPictureHeight && col >= 0 && col < kPictureWidth)
                picture[static_cast<std::size_t>(row) * kPictureWidth + col] = value;
}

void line(Pixels& picture, MorvaPoint from, MorvaPoint to, int size, uint8_t value) {
    const int dx = to.x - from.x;
    const int dy = to.y - from.y;
    const int steps = std::max(std::abs(dx), std::abs(dy));
    for (int s = 0; s <= steps; ++s) {
        const int x = steps == 0 ? from.x : from.x + dx * s / steps;
        const int y = steps == 0 ? from.y : from.y + dy * s / steps;
        stamp(picture, x - size / 2, y - size / 2, size, value);
    }
}

}  // namespace

void ink(Pixels& picture, const TrailContainer& stroke, const Pen& pen) {
    std::vector<MorvaPoint> pixels;
    mappingTrailPoints2imageSize(stroke, kPictureWidth, kPictureHeight, pixels, 1);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int size = pen.width + (stroke.pressures[i] > kFirmPressure ? 1 : 0);
        line(picture, pixels[i == 0 ? 0 : i - 1], pixels[i], size, pen.value);
    }
}

void band(Pixels& picture, int top, int bottom, int left, int right, uint8_t value) {
    for (int row = top; row < bottom; ++row)
        for (int col = left; col < right; ++col)
            picture[static_cast<std::size_t>(row) * kPictureWidth + col] = value;
}

Pixels ruledPaper(const Ruling& ruling) {
    Pixels paper(kPictureSize, kPaper);
    band(paper, ruling.titleRow, ruling.titleRow + 3, 0, kPictureWidth, kGrey);
    for (int row = ruling.firstRule; row < kPictureHeight - ruling.step; row += ruling.step)
        band(paper, row, row + 2, 0, kPictureWidth, kLightGrey);
    return paper;
}

// ---- Full pages ----

namespace {

// Text on every rule: 25 lines between the title rule and the foot of the page.
constexpr Ruling kFullRuling = {110, 172, 68};
constexpr int kFullLines = 25;
constexpr Hand kFullHand = {8, 0.18, 90, 7};
constexpr double kRightMargin = 60;

// Words the font can write, in the lengths a note's sentences have.
const std::vector<std::string>& words() {
    static const std::vector<std::string> all = {
        "the",   "ink",    "pen",   "paper",  "notes", "on",    "a",      "short", "list",  "buy",
        "fix",   "why",    "not",   "hello",  "world", "top",   "and",    "write", "side",  "road",
        "hard",  "let",    "us",    "try",    "to",    "draw",  "safe",   "days",  "with",  "fresh",
        "tea",   "bread",  "butter", "kind",  "words", "ideas", "fold",   "thin",  "stay",  "flow",
        "free",  "what",   "when",  "idea",   "draft", "stop",  "is",     "it",    "of",    "in",
        "this",  "that",   "for",   "work",   "plan",  "will",  "new",    "at",    "there", "before",
        "look",  "into",   "so",    "book",   "best",  "west",  "found",  "ask",   "here",  "yes",
    };
    return all;
}

// Words in random order up to the width a line has room for; about one line in five ends
// a paragraph and stops short.
std::string lineText(std::mt19937& rng) {
    const double full = kPictureWidth - kFullHand.leftMargin - kRightMargin;
    const double room = rng() % 5 == 0 ? full * (0.5 + 0.4 * unit(rng)) : full;
    std::string text;
    for (;;) {
        const std::string& word = words()[rng() % words().size()];
        const std::string longer = text.empty() ? word : text + " " + word;
        // Each letter may come out up to 5 % larger than its nominal size.
        if (lineWidth(longer, kFullHand) * 1.05 > room) return text;
        text = longer;
    }
}

// A black pen mostly, grey on about one line in five; light or firm.
Pen linePen(std::mt19937& rng) {
    Pen pen;
    pen.value = rng() % 5 == 0 ? kGrey : kBlack;
    pen.width = 2 + static_cast<int>(rng() % 2);
    return pen;
}

// A highlighter mark over part of about one line in six: a band from above the x-height
// down to just below the baseline.
void highlight(Pixels& layer, int baseline, std::mt19937& rng) {
    if (rng() % 6 != 0) return;
    const int left = static_cast<int>(kFullHand.leftMargin) - 8 + static_cast<int>(rng() % 400);
    const int right = std::min<int>(kPictureWidth - 20, left + 200 + static_cast<int>(rng() % 600));
    band(layer, baseline - 34, baseline + 6, left, right, kHighlighter);
}

}  // namespace

notewriter::Page fullPage(int pageNumber) {
    std::mt19937 rng(20240300u + static_cast<unsigned>(pageNumber));
    Pixels writing(kPictureSize, kTransparent), highlights(kPictureSize, kTransparent);
    std::vector<TrailContainer> strokes;
    for (int i = 0; i < kFullLines; ++i) {
        const int baseline = kFullRuling.firstRule + kFullRuling.step * i;
        const Pen pen = linePen(rng);
        highlight(highlights, baseline, rng);
        for (const Path& path : writeLine(lineText(rng), baseline, kFullHand, rng)) {
            strokes.push_back(penStroke(path, rng));
            ink(writing, strokes.back(), pen);
        }
    }
    notewriter::Page page;
    page.layers = {{"MAINLAYER", std::move(writing), {}},
                   {"LAYER1", std::move(highlights), {}},
                   {"BGLAYER", ruledPaper(kFullRuling), {}}};
    page.strokes = std::move(strokes);
    page.extra = {{"PAGESTYLE", "style_lined"}, {"LAYERSEQ", "MAINLAYER,LAYER1,BGLAYER"}};
    return page;
}

std::string fullNoteFile(int pages) {
    notewriter::NoteBuilder builder;
    for (int number = 1; number <= pages; ++number) builder.addPage(fullPage(number));
    return builder.finish();
}

}  // namespace handwriting
