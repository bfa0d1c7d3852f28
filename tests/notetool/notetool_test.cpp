// notetool run as a user runs it, on notes made by the note writer: exit codes, error
// lines, output names, and pictures read back with libpng.

#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <png.h>

#include "notefiles.h"
#include "run_tool.h"

namespace {

namespace fs = std::filesystem;
using notetest::filesIn;
using notetest::ScratchDir;
using notetest::ToolRun;
using notewriter::kPictureSize;
using notewriter::kPictureWidth;

// notetool with args; fileSizeLimit > 0 makes writes beyond that many bytes fail.
ToolRun notetool(const ScratchDir& dir, std::vector<std::string> args, rlim_t fileSizeLimit = 0) {
    args.insert(args.begin(), NOTETOOL_PATH);
    return notetest::runTool(dir.path(""), std::move(args), {fileSizeLimit, 0});
}

// The PNG as 8-bit RGBA, through libpng's own reader.
std::vector<uint8_t> readPng(const std::string& path, unsigned& width, unsigned& height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) throw std::runtime_error(image.message);
    image.format = PNG_FORMAT_RGBA;
    std::vector<uint8_t> rgba(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr)) throw std::runtime_error(image.message);
    width = image.width;
    height = image.height;
    return rgba;
}

std::vector<uint8_t> filled(uint8_t value) { return std::vector<uint8_t>(kPictureSize, value); }

void box(std::vector<uint8_t>& pixels, int x0, int y0, int x1, int y1, uint8_t value) {
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) pixels[std::size_t(y) * kPictureWidth + x] = value;
}

notewriter::Page pageWith(std::vector<notewriter::Layer> layers, const std::string& layerSeq = "") {
    notewriter::Page page;
    page.layers = std::move(layers);
    if (!layerSeq.empty()) page.extra = {{"LAYERSEQ", layerSeq}};
    return page;
}

// Pages each with one ink box, placed by page.
notewriter::Note notePages(int count) {
    notewriter::Note note;
    for (int i = 0; i < count; ++i) {
        std::vector<uint8_t> ink = filled(0xFF);
        box(ink, 100, 100 + 20 * i, 400, 110 + 20 * i, 0x00);
        note.pages.push_back(pageWith({{"MAINLAYER", ink, {}}}));
    }
    return note;
}

// Overlapping boxes on the background, LAYER1 and the main layer. Where they overlap, the
// upper layer's value must show: the main layer's white ink covers LAYER1's grey.
notewriter::Note stackedNote(const std::string& layerSeq) {
    std::vector<uint8_t> background = filled(0xFF), highlight = filled(0xFF), ink = filled(0xFF);
    box(background, 0, 100, kPictureWidth, 102, 0x50);  // a ruled line
    box(highlight, 50, 50, 300, 150, 0x30);
    box(ink, 100, 90, 200, 110, 0x00);
    box(ink, 250, 60, 280, 140, 0xFE);
    notewriter::Note note;
    note.pages.push_back(pageWith({{"BGLAYER", background, {}}, {"LAYER1", highlight, {}}, {"MAINLAYER", ink, {}}}, layerSeq));
    return note;
}

// The grey each pixel value is shown in, as the tablet shows it: the colour table's greys,
// white ink as opaque white, and white paper where no layer drew.
int shownGrey(uint8_t value) {
    switch (value) {
    case 0x00: case 0x01: return 0x01;
    case 0x30: case 0x31: return 0x9D;
    case 0x50: case 0x51: return 0xC9;
    case 0xFE: return 0xFE;
    default: return 0xFF;
    }
}

// Grey level at (x, y) and its alpha.
std::pair<int, int> pixel(const std::vector<uint8_t>& rgba, int x, int y) {
    const uint8_t* p = &rgba[(std::size_t(y) * kPictureWidth + x) * 4];
    EXPECT_TRUE(p[0] == p[1] && p[1] == p[2]) << x << "," << y;
    return {p[0], p[3]};
}

TEST(NotetoolRender, PngShowsTheLayersStackedOnPaper) {
    ScratchDir dir;
    const std::string note = dir.write("stack.note", notewriter::buildNote(stackedNote("")));
    ToolRun r = notetool(dir, {"--log", dir.path("lib.log"), "render", note, "-o", dir.path("page.png")});
    ASSERT_EQ(r.code, 0) << r.err;
    // The library's log goes to its file, not into the tool's output.
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    EXPECT_NE(notetest::readWholeFile(dir.path("lib.log")).find("fetchNoteDataFromFileByLayer"), std::string::npos);
    unsigned width = 0, height = 0;
    std::vector<uint8_t> rgba = readPng(dir.path("page.png"), width, height);
    ASSERT_EQ(width, 1404u);
    ASSERT_EQ(height, 1872u);
    // Every pixel is the upper-most drawn layer's, or paper.
    const notewriter::Note stacked = stackedNote("");
    const notewriter::Page& page = stacked.pages[0];
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < kPictureSize; ++i) {
        uint8_t top = 0xFF;
        for (const notewriter::Layer& layer : page.layers)  // bottom first
            if (layer.pixels[i] != 0xFF) top = layer.pixels[i];
        wrong += rgba[4 * i] != shownGrey(top) || rgba[4 * i + 3] != 255;
    }
    EXPECT_EQ(wrong, 0u);
    using P = std::pair<int, int>;
    EXPECT_EQ(pixel(rgba, 10, 10), P(0xFF, 255));    // paper
    EXPECT_EQ(pixel(rgba, 10, 101), P(0xC9, 255));   // the ruled line of the background
    EXPECT_EQ(pixel(rgba, 60, 101), P(0x9D, 255));   // LAYER1 covers the background
    EXPECT_EQ(pixel(rgba, 150, 101), P(0x01, 255));  // ink covers LAYER1
    EXPECT_EQ(pixel(rgba, 260, 100), P(0xFE, 255));  // white ink covers LAYER1 too

    // The page's own order, top first: LAYER1 above the main layer; the background is not
    // listed, so it is not drawn.
    notewriter::writeFile(note, notewriter::buildNote(stackedNote("LAYER1,MAINLAYER")));
    r = notetool(dir, {"render", note, "-o", dir.path("seq.png"), "--transparent"});
    ASSERT_EQ(r.code, 0) << r.err;
    rgba = readPng(dir.path("seq.png"), width, height);
    EXPECT_EQ(pixel(rgba, 10, 10).second, 0);  // no paper
    EXPECT_EQ(pixel(rgba, 10, 101).second, 0);  // no background
    EXPECT_EQ(pixel(rgba, 150, 101), P(0x9D, 255));
    EXPECT_EQ(pixel(rgba, 260, 100), P(0x9D, 255));

    // --no-background and a whole-number scale.
    notewriter::writeFile(note, notewriter::buildNote(stackedNote("")));
    r = notetool(dir, {"render", note, "-o", dir.path("big.png"), "--no-background", "--scale", "2"});
    ASSERT_EQ(r.code, 0) << r.err;
    rgba = readPng(dir.path("big.png"), width, height);
    EXPECT_EQ(width, 2808u);
    EXPECT_EQ(rgba[(std::size_t(202) * width + 20) * 4], 0xFF);  // the ruled line is gone

    // --layers draws only the layers it names.
    r = notetool(dir, {"render", note, "-o", dir.path("one.png"), "--layers", "LAYER1"});
    ASSERT_EQ(r.code, 0) << r.err;
    rgba = readPng(dir.path("one.png"), width, height);
    EXPECT_EQ(pixel(rgba, 10, 101), P(0xFF, 255));  // no background
    EXPECT_EQ(pixel(rgba, 150, 101), P(0x9D, 255));  // LAYER1, no ink above it
    r = notetool(dir, {"render", note, "-o", dir.path("none.png"), "--layers", "PAPER"});
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.err, "notetool: --layers: unknown layer PAPER (known: MAINLAYER, LAYER1, LAYER2, LAYER3, BGLAYER)\n");
}

// A PNG pixel holds four bits, two to a byte, so a column whose neighbour in its byte has
// another colour shows whether the two were packed in their order. Stripes one pixel wide in
// all eight values put an edge at every x; a box spans odd edges. Scale 3 puts the picture's
// pixels across byte boundaries too.
TEST(NotetoolRender, PngKeepsEveryColumnInPlace) {
    const uint8_t values[] = {0x00, 0x30, 0xFF, 0x50, 0xFE, 0x01, 0x31, 0x51};
    std::vector<uint8_t> ink = filled(0xFF);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < kPictureWidth; ++x) ink[std::size_t(y) * kPictureWidth + x] = values[x % 8];
    box(ink, 101, 100, 303, 140, 0x30);
    box(ink, 303, 100, 305, 140, 0x00);
    notewriter::Note note;
    note.pages.push_back(pageWith({{"MAINLAYER", ink, {}}}));
    ScratchDir dir;
    const std::string path = dir.write("columns.note", notewriter::buildNote(note));

    for (int scale : {1, 3}) {
        SCOPED_TRACE(scale);
        const std::string png = dir.path("x" + std::to_string(scale) + ".png");
        const ToolRun r = notetool(dir, {"render", path, "-o", png, "--scale", std::to_string(scale)});
        ASSERT_EQ(r.code, 0) << r.err;
        unsigned width = 0, height = 0;
        const std::vector<uint8_t> rgba = readPng(png, width, height);
        ASSERT_EQ(width, unsigned(kPictureWidth * scale));
        std::size_t wrong = 0;
        for (unsigned y = 0; y < 150u * scale; ++y)
            for (unsigned x = 0; x < width; ++x)
                wrong += rgba[(std::size_t(y) * width + x) * 4] != shownGrey(ink[(y / scale) * kPictureWidth + x / scale]);
        EXPECT_EQ(wrong, 0u);
    }
}

TEST(NotetoolRender, PagesAreChosenByIndexNumberAndNamedByIt) {
    ScratchDir dir;
    const std::string note = dir.write("diary.note", notewriter::buildNote(notePages(12)));
    ToolRun r = notetool(dir, {"render", note, "-o", dir.path("out"), "--pages", "1,3-4,10,3"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(filesIn(dir.path("out")),
              (std::vector<std::string>{"diary-p01.png", "diary-p03.png", "diary-p04.png", "diary-p10.png"}));

    r = notetool(dir, {"render", note, "-o", dir.path("out"), "--pages", "2,13"});
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.err, "notetool: --pages 2,13: the note has no page 13 (it has 12)\n");
    r = notetool(dir, {"render", note, "-o", dir.path("out"), "--pages", "4-2"});
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(r.err, "notetool: --pages 4-2: the range 4-2 runs backwards\n");
    r = notetool(dir, {"render", note, "-o", dir.path("out"), "--format", "gif"});
    EXPECT_EQ(r.code, 2);
    EXPECT_EQ(filesIn(dir.path("out")).size(), 4u);
}

TEST(NotetoolRender, ABrokenLayerIsOneErrorLineAndLeavesNoFile) {
    ScratchDir dir;
    notewriter::Note note = notePages(2);
    notewriter::NoteSites sites;
    std::string bytes = notewriter::buildNote(note, &sites);
    // The second page's picture claims to be longer than the file.
    bytes.replace(sites.pages[1].pictures.at("MAINLAYER"), 4, std::string("\xF0\xFF\xFF\x0F", 4));
    const std::string path = dir.write("torn.note", bytes);

    ToolRun r = notetool(dir, {"render", path, "-o", dir.path("png/")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + path + ": page 2: layer MAINLAYER cannot be read (code 27)\n");
    EXPECT_EQ(filesIn(dir.path("png")), std::vector<std::string>{"torn-p1.png"});

    // A PDF is all or nothing.
    fs::create_directory(dir.path("pdf"));
    r = notetool(dir, {"render", path, "-o", dir.path("pdf/torn.pdf")});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("page 2: layer MAINLAYER cannot be read (code 27)"), std::string::npos) << r.err;
    EXPECT_TRUE(filesIn(dir.path("pdf")).empty());
}

TEST(NotetoolRender, AWriteThatFailsHalfWayLeavesNothingBehind) {
    ScratchDir dir;
    const std::string note = dir.write("n.note", notewriter::buildNote(notePages(1)));
    fs::create_directory(dir.path("out"));
    // Writes past 1000 bytes fail, well inside the page's PNG.
    ToolRun r = notetool(dir, {"render", note, "-o", dir.path("out/page.png")}, 1000);
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err.rfind("notetool: " + dir.path("out/page.png") + ": cannot write: ", 0), 0u) << r.err;
    EXPECT_TRUE(filesIn(dir.path("out")).empty());
}

TEST(NotetoolConvert, OneBadNoteIsReportedAndTheRestConverted) {
    ScratchDir dir;
    fs::create_directories(dir.path("in/trip"));
    dir.write("in/a.note", notewriter::buildNote(notePages(2)));
    dir.write("in/trip/b.note", notewriter::buildNote(notePages(1)));
    dir.write("in/trip/bad.note", "not a note at all");
    dir.write("in/readme.txt", "not looked at");

    ToolRun r = notetool(dir, {"convert", dir.path("in"), "-o", dir.path("out"), "-j", "2"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + dir.path("in/trip/bad.note") + ": not a readable note: the index cannot be read (code 17)\n");
    EXPECT_EQ(r.out.rfind("notetool: converted 3 pages of 2 notes to png", 0), 0u) << r.out;
    EXPECT_EQ(filesIn(dir.path("out")), (std::vector<std::string>{"a-p1.png", "a-p2.png", "trip"}));
    EXPECT_EQ(filesIn(dir.path("out/trip")), std::vector<std::string>{"b-p1.png"});

    r = notetool(dir, {"convert", dir.path("in/a.note"), dir.path("in/trip"), "-o", dir.path("pdf"), "--format", "pdf"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(filesIn(dir.path("pdf")), (std::vector<std::string>{"a.pdf", "b.pdf"}));
}

TEST(NotetoolStrokes, PointsAreMappedOntoTheImageWithTheirPressures) {
    ScratchDir dir;
    TrailContainer stroke;
    stroke.maxX = 1403;  // one digitizer unit a pixel, so the mapping is exact
    stroke.maxY = 1871;
    stroke.m_emrPointAxis = 0;
    stroke.m_points = {{0, 0}, {1403, 0}, {0, 1871}};
    stroke.pressures = {100, 4095, 7};
    notewriter::Note note = notePages(1);
    note.pages[0].strokes = {stroke};
    const std::string path = dir.write("s.note", notewriter::buildNote(note));

    ToolRun r = notetool(dir, {"strokes", path, "--page", "1", "--size", "702x936"});
    ASSERT_EQ(r.code, 0) << r.err;
    const auto json = nlohmann::json::parse(r.out);
    EXPECT_EQ(json["strokes"][0]["points"], nlohmann::json::parse("[[0, 0], [701, 0], [0, 935]]"));
    EXPECT_EQ(json["strokes"][0]["pressures"], nlohmann::json::parse("[100, 4095, 7]"));

    r = notetool(dir, {"strokes", path, "--page", "1", "--format", "svg"});
    EXPECT_NE(r.out.find("<polyline points=\"0,0 1403,0 0,1871\" data-pressures=\"100 4095 7\"/>"), std::string::npos) << r.out;
    EXPECT_EQ(notetool(dir, {"strokes", path, "--page", "2"}).code, 2);
    EXPECT_EQ(notetool(dir, {"strokes", path, "--page", "1", "--size", "12"}).code, 2);
}

TEST(NotetoolInfo, JsonCarriesHeaderPagesAndStyles) {
    ScratchDir dir;
    notewriter::Note note = stackedNote("");
    note.header = {{"FILE_TYPE", "NOTE"}, {"APP_VERTION", "7"}};
    note.extraIndex = {{"STYLE_grid", "0"}};
    note.pages[0].extra = {{"PAGESTYLE", "grid"}};
    const std::string path = dir.write("i.note", notewriter::buildNote(note));
    const std::string bare = dir.write("bare.note", notewriter::buildNote(notePages(1)));

    ToolRun r = notetool(dir, {"info", "--json", path, bare});
    ASSERT_EQ(r.code, 0) << r.err;
    const auto json = nlohmann::json::parse(r.out)["notes"];
    EXPECT_EQ(json[0]["header"]["FILE_TYPE"], "NOTE");
    EXPECT_EQ(json[0]["header"]["APP_VERSION"], 7);
    EXPECT_EQ(json[0]["header"]["DEVICE_DPI"], "none");
    EXPECT_EQ(json[0]["styles"], nlohmann::json::parse("[\"grid\"]"));
    EXPECT_EQ(json[0]["pages"][0]["layers"], nlohmann::json::parse("[\"MAINLAYER\", \"LAYER1\", \"BGLAYER\"]"));
    EXPECT_EQ(json[0]["pages"][0]["style"], "grid");
    EXPECT_TRUE(json[1]["header"].is_null());

    r = notetool(dir, {"info", dir.path("missing.note")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + dir.path("missing.note") + ": No such file or directory\n");
}

TEST(NotetoolUsage, HelpDocumentsExitCodesAndMistakesExitWithTwo) {
    ScratchDir dir;
    ToolRun r = notetool(dir, {"--help"});
    EXPECT_EQ(r.code, 0);
    EXPECT_NE(r.out.find("Exit codes: 0 all done; 1 some inputs failed"), std::string::npos);
    EXPECT_EQ(notetool(dir, {"render", "x.note"}).code, 2);  // no -o
    EXPECT_EQ(notetool(dir, {"frobnicate"}).code, 2);
    EXPECT_EQ(notetool(dir, {}).code, 2);
    r = notetool(dir, {"--man"});
    EXPECT_EQ(r.out.rfind(".TH NOTETOOL 1", 0), 0u);
    EXPECT_NE(r.out.find(".SS convert"), std::string::npos);
}

}  // namespace
