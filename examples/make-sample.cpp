// Writes the bundled sample note: four pages of a ruled notebook with a few lines of
// handwriting, written the way the tablet does it (pen strokes in digitizer units, the same
// strokes rendered as ink into the main layer's picture).
//
// Usage: make-sample <output.note>
//
// The output is deterministic: the random jitter comes from fixed seeds through
// std::mt19937, whose sequence the standard fixes, and only arithmetic (no library maths
// functions) shapes the strokes.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "config.h"
#include "notewriter.h"

namespace {

using notewriter::Items;
using notewriter::kPictureHeight;
using notewriter::kPictureSize;
using notewriter::kPictureWidth;
using Pixels = std::vector<uint8_t>;

// The digitizer of the tablet, turned a quarter against the picture (axis value 1).
constexpr int kMaxX = 15725;
constexpr int kMaxY = 20967;
constexpr int kAxis = 1;

constexpr uint8_t kInk = 0x00;
constexpr uint8_t kPaper = 0xFE;
constexpr uint8_t kTransparent = 0xFF;
constexpr uint8_t kRule = 0x50;
constexpr uint8_t kTitleRule = 0x30;

constexpr int kFirstRule = 180;  // picture row of the first ruled line
constexpr int kRuleStep = 60;
constexpr int kTitleRow = 120;
constexpr double kLeftMargin = 130;

// ---- A small handwriting font ----

struct Vec {
    double x;
    double y;
};
using Path = std::vector<Vec>;

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

// One line of handwriting as pen paths in picture pixels (x right, y down), starting at the
// left margin on the given baseline row.
std::vector<Path> handwriting(const std::string& words, double baseline, std::mt19937& rng) {
    constexpr double kScale = 6.5;  // pixels per glyph unit: an x-height of 26 pixels
    constexpr double kSlant = 0.18;
    std::vector<Path> paths;
    double x = kLeftMargin;
    for (char c : words) {
        const auto glyph = font().find(c);
        if (glyph == font().end()) {  // a space, or a letter the font lacks
            x += 3.5 * kScale;
            continue;
        }
        const double size = kScale * (0.95 + 0.1 * unit(rng));
        const double lift = 0.6 * (unit(rng) - 0.5);
        for (const Path& stroke : glyph->second.strokes) {
            Path control;
            for (const Vec& p : stroke)
                control.push_back({x + (p.x + kSlant * p.y) * size, baseline - (p.y + lift) * size});
            paths.push_back(smooth(control, 6));
        }
        x += (glyph->second.width + 1.4) * size;
    }
    return paths;
}

// ---- Strokes ----

// Picture pixel to digitizer units: the inverse of the library's mapping for axis value 1
// onto the last pixel index, so that the mapping brings the stroke back where it was drawn.
MorvaPoint toDigitizer(const Vec& p) {
    const double a = kPictureWidth - 1;
    const double b = kPictureHeight - 1;
    return {static_cast<int>(p.y * kMaxX / b + 0.5), static_cast<int>((a - p.x) * kMaxY / a + 0.5)};
}

// The pen presses hardest in the middle of a stroke and lifts off at both ends.
uint16_t pressureAt(std::size_t i, std::size_t n, std::mt19937& rng) {
    const double t = n < 2 ? 0.5 : static_cast<double>(i) / (n - 1);
    return static_cast<uint16_t>(700 + 2600 * 4 * t * (1 - t) + 150 * unit(rng));
}

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

// Renders a stroke through the library's own mapping, so the picture and the strokes agree
// exactly as a host sees them; a firmer pen draws a wider line.
void ink(Pixels& picture, const TrailContainer& trail) {
    std::vector<MorvaPoint> pixels;
    mappingTrailPoints2imageSize(trail, kPictureWidth, kPictureHeight, pixels, 1);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int size = trail.pressures[i] > 2200 ? 3 : 2;
        line(picture, pixels[i == 0 ? 0 : i - 1], pixels[i], size, kInk);
    }
}

void band(Pixels& picture, int top, int bottom, int left, int right, uint8_t value) {
    for (int row = top; row < bottom; ++row)
        for (int col = left; col < right; ++col)
            picture[static_cast<std::size_t>(row) * kPictureWidth + col] = value;
}

Pixels ruledPaper() {
    Pixels paper(kPictureSize, kPaper);
    band(paper, kTitleRow, kTitleRow + 3, 0, kPictureWidth, kTitleRule);
    for (int row = kFirstRule; row < kPictureHeight - kRuleStep; row += kRuleStep)
        band(paper, row, row + 2, 0, kPictureWidth, kRule);
    return paper;
}

int baselineOf(int lineNo) { return kFirstRule + kRuleStep * (1 + 2 * lineNo); }

// ---- Pages ----

struct Writing {
    Pixels picture = Pixels(kPictureSize, kTransparent);
    std::vector<TrailContainer> strokes;
};

Writing write(const std::vector<std::string>& lines, unsigned seed) {
    std::mt19937 rng(seed);
    Writing w;
    for (std::size_t i = 0; i < lines.size(); ++i)
        for (const Path& path : handwriting(lines[i], baselineOf(static_cast<int>(i)), rng)) {
            w.strokes.push_back(penStroke(path, rng));
            ink(w.picture, w.strokes.back());
        }
    return w;
}

Items pageItems(const std::string& layers, int pageNo) {
    return {{"PAGESTYLE", "style_lined"},
            {"PAGESTYLEMD5", "0"},
            {"LAYERSEQ", layers},
            {"PAGEID", "P20240301120000" + std::to_string(100 + pageNo)},
            {"THUMBNAILTYPE", "0"},
            {"RECOGNSTATUS", "0"}};
}

notewriter::Page writtenPage(const std::vector<std::string>& lines, unsigned seed, int pageNo) {
    Writing w = write(lines, seed);
    notewriter::Page page;
    page.layers = {{"MAINLAYER", std::move(w.picture), {}}, {"BGLAYER", ruledPaper(), {}}};
    page.strokes = std::move(w.strokes);
    page.extra = pageItems("MAINLAYER,BGLAYER", pageNo);
    return page;
}

// A page that uses every layer: handwriting on the main layer, a highlighter band on
// LAYER1, a frame on LAYER2 and tick marks on LAYER3.
notewriter::Page layeredPage(int pageNo) {
    notewriter::Page page = writtenPage({"the layers", "on top"}, 3, pageNo);
    Pixels highlight(kPictureSize, kTransparent);
    band(highlight, baselineOf(0) - 30, baselineOf(0) + 6, 120, 440, 0x51);
    Pixels frame(kPictureSize, kTransparent);
    band(frame, baselineOf(1) - 70, baselineOf(1) + 30, 100, 420, 0x30);
    band(frame, baselineOf(1) - 66, baselineOf(1) + 26, 104, 416, kTransparent);
    Pixels ticks(kPictureSize, kTransparent);
    for (int i = 0; i < 2; ++i) band(ticks, baselineOf(i) - 24, baselineOf(i) - 4, 70, 90, i == 0 ? 0x01 : 0x31);
    page.layers.insert(page.layers.begin() + 1, {{"LAYER1", std::move(highlight), {}},
                                                 {"LAYER2", std::move(frame), {}},
                                                 {"LAYER3", std::move(ticks), {}}});
    page.extra = pageItems("MAINLAYER,LAYER1,LAYER2,LAYER3,BGLAYER", pageNo);
    return page;
}

// A fresh page: the ruled background, a main layer without a picture and an empty stroke
// block, as a page looks before anything is written on it.
notewriter::Page blankPage(int pageNo) {
    notewriter::Page page;
    page.layers = {{"MAINLAYER", {}, {}}, {"BGLAYER", ruledPaper(), {}}};
    page.extra = pageItems("MAINLAYER,BGLAYER", pageNo);
    return page;
}

notewriter::Note sampleNote() {
    notewriter::Note note;
    note.header = {{"MODULE_LABEL", "none"},
                   {"FILE_TYPE", "NOTE"},
                   {"APPLY_EQUIPMENT", "EINK_A5"},
                   {"FINALOPERATION_PAGE", "2"},
                   {"FINALOPERATION_LAYER", "MAINLAYER"},
                   {"ORIGINAL_STYLE", "style_lined"},
                   {"ORIGINAL_STYLEMD5", "0"},
                   {"DEVICE_DPI", "226"},
                   {"SOFT_DPI", "226"},
                   {"FILE_PARSE_TYPE", "0"},
                   {"APP_VERSION", "20240301"},
                   {"FILE_ID", "F20240301120000123456sample"},
                   {"FILE_RECOGN_TYPE", "0"},
                   {"FILE_RECOGN_LANGUAGE", "none"}};
    note.pages = {writtenPage({"hello world", "notes on ink", "a short list"}, 1, 1),
                  writtenPage({"buy paper", "fix the pen", "why not"}, 2, 2),
                  layeredPage(3),
                  blankPage(4)};
    return note;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-sample <output.note>\n");
        return 2;
    }
    try {
        notewriter::Note note = sampleNote();
        // The style entry points at the ruled background the pages were made from; its site
        // is known only once the pages are laid out, and adding it changes nothing before the
        // index.
        notewriter::NoteSites sites;
        notewriter::buildNote(note, &sites);
        note.extraIndex = {{"STYLE_style_lined", std::to_string(sites.pages[0].pictures.at("BGLAYER"))}};
        notewriter::writeFile(argv[1], notewriter::buildNote(note));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make-sample: %s\n", e.what());
        return 1;
    }
    return 0;
}
