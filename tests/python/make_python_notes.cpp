// Writes what the Python tests read, into the folder given: notes laid out by the note writer
// (notes/), what the C++ API reads from each of them (reference/), the hostile notes of
// tests/hostile with whether the page library refuses each (hostile/), and a folder
// tree of notes with a broken one among them for whole-folder conversions (tree/). The
// Python package is then held to the C++ answers, not to numbers copied into the tests.
//
// Usage: make_python_notes DIR

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "hostile_notes.h"
#include "kwdataload.h"
#include "notefiles.h"
#include "notewriter.h"
#include "page_reader.h"
#include "palette.h"

namespace {

namespace fs = std::filesystem;
using notewriter::Layer;
using notewriter::Note;
using notewriter::Page;

// The writer's sample picture in a band of rows only: vector output traces every row of
// ink, and a full page of them would make every test that writes PDF or SVG slow.
std::vector<uint8_t> bandPicture(int seed) {
    std::vector<uint8_t> pixels = notetest::samplePicture(seed);
    const std::size_t first = std::size_t(200 + 40 * seed) * notewriter::kPictureWidth;
    std::fill(pixels.begin(), pixels.begin() + first, 0xFF);
    std::fill(pixels.begin() + first + 160 * notewriter::kPictureWidth, pixels.end(), 0xFF);
    return pixels;
}

// Pages that differ in what a reader must get right: layers drawn over each other, a page
// order that leaves a layer out, strokes on every axis, a page with neither pictures nor
// strokes, and page numbers that do not start at 1.
std::vector<std::pair<std::string, Note>> testNotes() {
    const auto strokeOnAxis = [](int seed, int axis) {
        TrailContainer stroke = notetest::sampleStroke(seed);
        stroke.m_emrPointAxis = axis;
        return stroke;
    };
    Note layered;
    layered.header = {{"FILE_TYPE", "NOTE"}, {"APPLY_EQUIPMENT", "EINK_A5"}, {"DEVICE_DPI", "226"},
                      {"APP_VERSION", "20240301"}, {"FINALOPERATION_LAYER", "LAYER1"}};
    Page first, reordered, empty;
    first.layers = {{"BGLAYER", bandPicture(1), {}}, {"MAINLAYER", bandPicture(2), {}}, {"LAYER1", bandPicture(3), {}}};
    for (int axis = 0; axis < 4; ++axis) first.strokes.push_back(strokeOnAxis(axis + 1, axis));
    reordered.layers = {{"BGLAYER", bandPicture(4), {}}, {"LAYER2", bandPicture(5), {}}, {"MAINLAYER", bandPicture(6), {}}};
    reordered.extra = {{"LAYERSEQ", "BGLAYER,MAINLAYER"}};  // top first: the background over the main layer
    reordered.strokes = {strokeOnAxis(7, 1)};
    empty.hasStrokeBlock = false;
    empty.extra = {{"PAGESTYLE", "style_blank"}};
    layered.pages = {first, reordered, empty};

    Note renumbered;
    renumbered.firstPageNumber = 5;
    Page only;
    only.layers = {{"MAINLAYER", bandPicture(8), {}}};
    renumbered.pages = {only};
    return {{"layered", layered}, {"renumbered", renumbered}};
}

void writeBytes(const fs::path& path, const void* data, std::size_t size) {
    std::ofstream out(path, std::ios::binary);
    out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

nlohmann::json pointsJson(const std::vector<MorvaPoint>& points) {
    nlohmann::json list = nlohmann::json::array();
    for (const MorvaPoint& p : points) list.push_back({p.x, p.y});
    return list;
}

// The picture of every layer the page has, drawn or not, as bytes and colours, and the
// strokes with their points mapped onto two image sizes, as the C++ calls return them.
void writeReference(const std::string& note, int page, const fs::path& stem) {
    KwDataLoad loader;
    KwPageFeatureModule module = notetool::readPageLayers(note, page);
    module.layerSeq = "nolayer";  // every layer the page has, in the default order
    for (const std::string& layer : notetool::drawingOrder(module, {})) {
        std::vector<char> pixels(notetool::kPagePixels, char(notetool::kNothing));
        if (loader.fetchNoteDataFromFileByLayer(note, page, layer, pixels.data()) != 0)
            throw std::runtime_error(note + ": layer " + layer + " unreadable");
        writeBytes(stem.string() + "." + layer + ".pixels", pixels.data(), pixels.size());
        const std::unique_ptr<uint32_t[]> colours(loader.loadImageData(note, page, layer));
        writeBytes(stem.string() + "." + layer + ".colours", colours.get(), notetool::kPagePixels * 4);
    }
    std::vector<TrailContainer> trails;
    if (loader.fetchNotePathFromFile(trails, note, page) != 0) throw std::runtime_error(note + ": strokes unreadable");
    nlohmann::json strokes = nlohmann::json::array();
    for (const TrailContainer& trail : trails) {
        nlohmann::json stroke{{"points", pointsJson(trail.m_points)}, {"pressures", trail.pressures},
                              {"max_x", trail.maxX}, {"max_y", trail.maxY}, {"axis", trail.m_emrPointAxis}};
        for (const auto& [width, height] : {std::pair<int, int>{1404, 1872}, {300, 400}}) {
            std::vector<MorvaPoint> mapped;
            mappingTrailPoints2imageSize(trail, width, height, mapped, 1);
            stroke["mapped"][std::to_string(width) + "x" + std::to_string(height)] = pointsJson(mapped);
        }
        strokes.push_back(stroke);
    }
    std::ofstream(stem.string() + ".strokes.json") << strokes.dump();
}

// Whether the page library refuses any part of the note: its pages, any page's
// layers, pictures or strokes.
bool refused(const std::string& note) {
    try {
        KwDataLoad loader;
        for (int page : notetool::notePages(note)) {
            std::vector<uint8_t> pixels(notetool::kPagePixels);
            notetool::composePage(note, page, {}, false, pixels.data());
            std::vector<TrailContainer> trails;
            if (loader.fetchNotePathFromFile(trails, note, page) != 0) return true;
        }
        return false;
    } catch (const std::exception&) {
        return true;
    }
}

// The test notes at three depths, one with its extension in capitals, and a note cut short
// beside them.
void writeTree(const fs::path& tree, const fs::path& notes) {
    fs::create_directories(tree / "sub" / "deeper");
    fs::copy_file(notes / "layered.note", tree / "layered.note");
    fs::copy_file(notes / "renumbered.note", tree / "sub" / "renumbered.note");
    fs::copy_file(notes / "layered.note", tree / "sub" / "deeper" / "again.note");
    fs::copy_file(notes / "renumbered.note", tree / "sub" / "deeper" / "SHOUTED.NOTE");
    const std::string whole = notewriter::buildNote(testNotes().front().second);
    notewriter::writeFile((tree / "sub" / "broken.note").string(), whole.substr(0, whole.size() / 2));
}

void writeAll(const fs::path& dir) {
    fs::create_directories(dir / "notes");
    fs::create_directories(dir / "reference");
    fs::create_directories(dir / "hostile");
    for (const auto& [name, note] : testNotes()) {
        const std::string path = (dir / "notes" / (name + ".note")).string();
        notewriter::writeFile(path, notewriter::buildNote(note));
        for (int page : notetool::notePages(path))
            writeReference(path, page, dir / "reference" / (name + ".p" + std::to_string(page)));
    }
    writeTree(dir / "tree", dir / "notes");
    std::ofstream catalogue(dir / "hostile" / "catalogue.tsv");
    int number = 0;
    for (const hostile::Note& note : hostile::catalogue()) {
        const std::string path = (dir / "hostile" / (std::to_string(++number) + ".note")).string();
        notewriter::writeFile(path, note.bytes);
        catalogue << number << '\t' << refused(path) << '\t' << note.attack << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_python_notes DIR\n");
        return 2;
    }
    try {
        writeAll(argv[1]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make_python_notes: %s\n", e.what());
        return 1;
    }
    return 0;
}
