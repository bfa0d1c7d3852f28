// Writes the bundled sample note: four pages of a ruled notebook with a few lines of
// handwriting, written the way the tablet does it (pen strokes in digitizer units, the same
// strokes rendered as ink into the main layer's picture).
//
// Usage: make-sample <output.note>
//
// The output is deterministic: the handwriting comes from fixed seeds (see handwriting.h).

#include <cstdio>
#include <exception>
#include <random>
#include <string>
#include <vector>

#include "handwriting.h"
#include "notewriter.h"

namespace {

using namespace handwriting;
using notewriter::Items;
using notewriter::kPictureSize;

// Text on every other rule below the title rule.
constexpr Ruling kRuling = {120, 180, 60};

int baselineOf(int lineNo) { return kRuling.firstRule + kRuling.step * (1 + 2 * lineNo); }

// ---- Pages ----

struct Writing {
    Pixels picture = Pixels(kPictureSize, kTransparent);
    std::vector<TrailContainer> strokes;
};

Writing write(const std::vector<std::string>& lines, unsigned seed) {
    std::mt19937 rng(seed);
    Writing w;
    for (std::size_t i = 0; i < lines.size(); ++i)
        for (const Path& path : writeLine(lines[i], baselineOf(static_cast<int>(i)), Hand(), rng)) {
            w.strokes.push_back(penStroke(path, rng));
            ink(w.picture, w.strokes.back(), Pen());
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
    page.layers = {{"MAINLAYER", std::move(w.picture), {}}, {"BGLAYER", ruledPaper(kRuling), {}}};
    page.strokes = std::move(w.strokes);
    page.extra = pageItems("MAINLAYER,BGLAYER", pageNo);
    return page;
}

// A page that uses every layer: handwriting on the main layer, a highlighter band on
// LAYER1, a frame on LAYER2 and tick marks on LAYER3.
notewriter::Page layeredPage(int pageNo) {
    notewriter::Page page = writtenPage({"the layers", "on top"}, 3, pageNo);
    Pixels highlight(kPictureSize, kTransparent);
    band(highlight, baselineOf(0) - 30, baselineOf(0) + 6, 120, 440, kHighlighter);
    Pixels frame(kPictureSize, kTransparent);
    band(frame, baselineOf(1) - 70, baselineOf(1) + 30, 100, 420, kGrey);
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
    page.layers = {{"MAINLAYER", {}, {}}, {"BGLAYER", ruledPaper(kRuling), {}}};
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
