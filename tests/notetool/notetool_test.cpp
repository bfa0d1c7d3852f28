// notetool run as a user runs it, on notes made by the note writer: exit codes, error
// lines, output names, and pictures read back with libpng.

#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "notetool_run.h"

namespace {

namespace fs = std::filesystem;
using notetest::box;
using notetest::boxPages;
using notetest::filesIn;
using notetest::notetool;
using notetest::readPng;
using notetest::ScratchDir;
using notetest::ToolRun;
using notewriter::kPictureSize;
using notewriter::kPictureWidth;

std::vector<uint8_t> filled(uint8_t value) { return std::vector<uint8_t>(kPictureSize, value); }

notewriter::Page pageWith(std::vector<notewriter::Layer> layers, const std::string& layerSeq = "") {
    notewriter::Page page;
    page.layers = std::move(layers);
    if (!layerSeq.empty()) page.extra = {{"LAYERSEQ", layerSeq}};
    return page;
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
    const std::string note = dir.write("diary.note", notewriter::buildNote(boxPages(12)));
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

// "Page size:  W x H pts" of pdfinfo's report, and the whole report.
std::pair<double, double> pdfPageSize(const ScratchDir& dir, const std::string& pdf, std::string* report = nullptr) {
    const ToolRun info = notetest::program(dir, {"pdfinfo", pdf});
    if (report) *report = info.out;
    double width = 0, height = 0;
    const std::size_t at = info.out.find("Page size:");
    if (at != std::string::npos) std::sscanf(info.out.c_str() + at, "Page size: %lf x %lf pts", &width, &height);
    return {width, height};
}

// One unreadable page costs that page, not the document: a PDF keeps its place with a
// blank page, a set of files leaves its file out; --strict writes nothing instead.
TEST(NotetoolRender, ABrokenPageIsBlankInADocumentAndMissingFromASet) {
    ScratchDir dir;
    notewriter::NoteSites sites;
    std::string bytes = notewriter::buildNote(boxPages(3), &sites);
    // The second page's picture claims to be longer than the file.
    bytes.replace(sites.pages[1].pictures.at("MAINLAYER"), 4, std::string("\xF0\xFF\xFF\x0F", 4));
    const std::string path = dir.write("torn.note", bytes);
    const std::string broken = "notetool: " + path + ": page 2: layer MAINLAYER: the layer is missing or cannot be read (code 27)";

    ToolRun r = notetool(dir, {"render", path, "-o", dir.path("png/")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, broken + "\n");
    EXPECT_EQ(filesIn(dir.path("png")), (std::vector<std::string>{"torn-p1.png", "torn-p3.png"}));

    r = notetool(dir, {"render", path, "-o", dir.path("torn.pdf")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, broken + "; a blank page in its place\n");
    std::string report;
    EXPECT_GT(pdfPageSize(dir, dir.path("torn.pdf"), &report).first, 0);
    EXPECT_NE(report.find("Pages:           3\n"), std::string::npos) << report;

    r = notetool(dir, {"render", path, "-o", dir.path("strict.pdf"), "--strict"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, broken + "; " + dir.path("strict.pdf") + " not written\n");
    r = notetool(dir, {"render", path, "-o", dir.path("strict/"), "--strict", "-j", "1"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, broken + "\nnotetool: " + path + ": no page written (--strict)\n");
    EXPECT_EQ(filesIn(dir.path("")), (std::vector<std::string>{"png", "stderr.txt", "stdout.txt", "strict", "torn.note", "torn.pdf"}));
    EXPECT_TRUE(filesIn(dir.path("strict")).empty());
}

// A PDF holds each page as the picture its PNG is, in page order however many workers made
// them; --vector traces the pages into outlines instead, and holds no image.
TEST(NotetoolRender, PdfPagesAreThePngsInOrderOrTracedOnRequest) {
    ScratchDir dir;
    const std::string path = dir.write("n.note", notewriter::buildNote(boxPages(7)));
    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("png/")}).code, 0);
    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("n.pdf"), "-j", "2"}).code, 0);
    ASSERT_EQ(notetest::program(dir, {"pdfimages", "-png", dir.path("n.pdf"), dir.path("image")}).code, 0);
    for (int page = 1; page <= 7; ++page) {
        SCOPED_TRACE(page);
        unsigned width, height, imageWidth, imageHeight;
        const std::vector<uint8_t> png = readPng(dir.path("png/n-p" + std::to_string(page) + ".png"), width, height);
        const std::vector<uint8_t> image = readPng(dir.path("image-00" + std::to_string(page - 1) + ".png"), imageWidth, imageHeight);
        EXPECT_EQ(imageWidth, width);
        EXPECT_EQ(imageHeight, height);
        EXPECT_TRUE(image == png);
    }

    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("v.pdf"), "--vector", "--pages", "2", "--dpi", "72"}).code, 0);
    const ToolRun list = notetest::program(dir, {"pdfimages", "-list", dir.path("v.pdf")});
    EXPECT_EQ(list.out.find("image"), std::string::npos) << list.out;
    // Page 2's box covers (100, 120) to (400, 130): ink inside, paper around it.
    ASSERT_EQ(notetest::program(dir, {"pdftocairo", "-png", "-r", "72", dir.path("v.pdf"), dir.path("v")}).code, 0);
    unsigned width, height;
    const std::vector<uint8_t> traced = readPng(dir.path("v-1.png"), width, height);
    ASSERT_EQ(width, 1404u);
    EXPECT_EQ(pixel(traced, 250, 125).first, 0x01);
    EXPECT_EQ(pixel(traced, 110, 121).first, 0x01);
    EXPECT_EQ(pixel(traced, 250, 133).first, 0xFF);
    EXPECT_EQ(pixel(traced, 250, 116).first, 0xFF);
}

// A PDF page is as large as the tablet's page: its pixels at the note's own resolution
// (DEVICE_DPI, when it is a sane number), else 226 dpi, unless --dpi says otherwise. Files
// carry the note's name and their maker, and the same note makes the same bytes.
TEST(NotetoolRender, PagesHaveTheirPhysicalSizeAndTheSameBytesEachTime) {
    struct Case {
        std::string deviceDpi;  // empty: no header
        std::vector<std::string> extra;
        double dpi;
    };
    const std::vector<Case> cases = {{"226", {}, 226}, {"300", {}, 300}, {"crooked", {}, 226}, {"5", {}, 226},
                                     {"", {}, 226}, {"300", {"--dpi", "100"}, 100}, {"226", {"--scale", "2"}, 113}};
    ScratchDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.deviceDpi + (c.extra.empty() ? "" : " " + c.extra[0]));
        notewriter::Note note = boxPages(1);
        if (!c.deviceDpi.empty()) note.header = {{"DEVICE_DPI", c.deviceDpi}};
        const std::string path = dir.write("n.note", notewriter::buildNote(note));
        std::vector<std::string> args = {"render", path, "-o", dir.path("n.pdf")};
        args.insert(args.end(), c.extra.begin(), c.extra.end());
        ASSERT_EQ(notetool(dir, args).code, 0);
        const auto size = pdfPageSize(dir, dir.path("n.pdf"));
        EXPECT_NEAR(size.first, 1404 * 72 / c.dpi, 0.01);
        EXPECT_NEAR(size.second, 1872 * 72 / c.dpi, 0.01);
    }

    // Page 3 alone is the same file as page 3 among the others, which were written before it
    // or beside it on another thread.
    const std::string path = dir.write("n.note", notewriter::buildNote(boxPages(4)));
    for (const std::string format : {"pdf", "svg", "png"}) {
        SCOPED_TRACE(format);
        ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("a/"), "--format", format, "-j", "2"}).code, 0);
        ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("b/"), "--format", format, "-j", "2"}).code, 0);
        ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("c/"), "--format", format, "--pages", "3"}).code, 0);
        for (const std::string& name : filesIn(dir.path("a")))
            EXPECT_EQ(notetest::readWholeFile(dir.path("a/" + name)), notetest::readWholeFile(dir.path("b/" + name))) << name;
        if (format != "pdf") {
            EXPECT_EQ(notetest::readWholeFile(dir.path("c/n-p3." + format)), notetest::readWholeFile(dir.path("a/n-p3." + format)));
        }
        for (const char* folder : {"a", "b", "c"}) fs::remove_all(dir.path(folder));
    }
    std::string report;
    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("n.pdf")}).code, 0);
    pdfPageSize(dir, dir.path("n.pdf"), &report);
    EXPECT_NE(report.find("Title:           n\n"), std::string::npos) << report;
    EXPECT_NE(report.find("Creator:         notetool "), std::string::npos) << report;
    EXPECT_EQ(report.find("CreationDate:"), std::string::npos) << report;
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    notetool(dir, {"render", path, "-o", dir.path("n.pdf")});
    ::unsetenv("SOURCE_DATE_EPOCH");
    pdfPageSize(dir, dir.path("n.pdf"), &report);
    EXPECT_NE(report.find("CreationDate:    Tue Nov 14 22:13:20 2023 UTC"), std::string::npos) << report;

    // SVG: the same drawing units, on a page of physical size.
    ASSERT_EQ(notetool(dir, {"render", path, "--pages", "1", "-o", dir.path("n.svg")}).code, 0);
    EXPECT_NE(notetest::readWholeFile(dir.path("n.svg")).find("width=\"157.79mm\" height=\"210.39mm\" viewBox=\"0 0 1404 1872\""),
              std::string::npos);
}

// With --transparent, the background layer's white is paper and is left out; white written
// on a layer above it covers what lies below and stays opaque, and so does the ruling.
TEST(NotetoolRender, TransparentLeavesOutThePaperOfTheBackground) {
    std::vector<uint8_t> background = filled(0xFE), ink = filled(0xFF);
    box(background, 0, 100, kPictureWidth, 102, 0x50);
    box(ink, 250, 60, 280, 140, 0xFE);
    box(ink, 100, 90, 200, 110, 0x00);
    notewriter::Note note;
    note.pages.push_back(pageWith({{"BGLAYER", background, {}}, {"MAINLAYER", ink, {}}}));
    ScratchDir dir;
    const std::string path = dir.write("t.note", notewriter::buildNote(note));

    for (const std::string scale : {"1", "1.5"}) {
        SCOPED_TRACE(scale);
        ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("t.png"), "--transparent", "--scale", scale}).code, 0);
        unsigned width = 0, height = 0;
        const std::vector<uint8_t> rgba = readPng(dir.path("t.png"), width, height);
        const double s = std::stod(scale);
        const auto alpha = [&](int x, int y) { return rgba[(std::size_t(y * s) * width + std::size_t(x * s)) * 4 + 3]; };
        EXPECT_EQ(alpha(10, 10), 0);      // the background's white
        EXPECT_EQ(alpha(10, 101), 255);   // its ruling
        EXPECT_EQ(alpha(265, 80), 255);   // white ink above it
        EXPECT_EQ(alpha(150, 100), 255);  // black ink
        std::size_t clear = 0;
        for (std::size_t i = 3; i < rgba.size(); i += 4) clear += rgba[i] == 0;
        EXPECT_GT(clear, rgba.size() / 4 * 9 / 10);
    }
}

TEST(NotetoolRender, AWriteThatFailsHalfWayLeavesNothingBehind) {
    ScratchDir dir;
    const std::string note = dir.write("n.note", notewriter::buildNote(boxPages(1)));
    fs::create_directory(dir.path("out"));
    // Writes past 1000 bytes fail, well inside the page's PNG.
    ToolRun r = notetool(dir, {"render", note, "-o", dir.path("out/page.png")}, {{1000, 0}, "", 0});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + note + ": " + dir.path("out/page.png") + ": File too large\n");
    EXPECT_TRUE(filesIn(dir.path("out")).empty());
}

TEST(NotetoolConvert, OneBadNoteIsReportedAndTheRestConverted) {
    ScratchDir dir;
    fs::create_directories(dir.path("in/trip"));
    dir.write("in/a.note", notewriter::buildNote(boxPages(2)));
    dir.write("in/trip/b.note", notewriter::buildNote(boxPages(1)));
    dir.write("in/trip/bad.note", "not a note at all");
    dir.write("in/readme.txt", "not looked at");

    ToolRun r = notetool(dir, {"convert", dir.path("in"), "-o", dir.path("out"), "-j", "2"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + dir.path("in/trip/bad.note") + ": not a readable note: a read failed, or a block, site or layer name is bad (code 17)\n");
    EXPECT_EQ(r.out.rfind("notetool: converted 3 pages of 2 notes to png", 0), 0u) << r.out;
    EXPECT_EQ(filesIn(dir.path("out")), (std::vector<std::string>{"a-p1.png", "a-p2.png", "trip"}));
    EXPECT_EQ(filesIn(dir.path("out/trip")), std::vector<std::string>{"b-p1.png"});

    r = notetool(dir, {"convert", dir.path("in/a.note"), dir.path("in/trip"), "-o", dir.path("pdf"), "--format", "pdf"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(filesIn(dir.path("pdf")), (std::vector<std::string>{"a.pdf", "b.pdf"}));
}

// Sync folders are converted again and again: --update skips a note whose outputs are all
// there and newer than it. Notes are found whatever the case of their extension.
TEST(NotetoolConvert, UpdateConvertsOnlyWhatChanged) {
    ScratchDir dir;
    fs::create_directories(dir.path("in/sub"));
    const std::string a = dir.write("in/a.note", notewriter::buildNote(boxPages(2)));
    dir.write("in/sub/B.NOTE", notewriter::buildNote(boxPages(1)));
    const std::vector<std::string> convert = {"convert", dir.path("in"), "-o", dir.path("out"), "--update"};

    ToolRun r = notetool(dir, convert);
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out.rfind("notetool: converted 3 pages of 2 notes to png", 0), 0u) << r.out;
    EXPECT_EQ(filesIn(dir.path("out/sub")), std::vector<std::string>{"B-p1.png"});

    r = notetool(dir, convert);
    EXPECT_EQ(r.out.rfind("notetool: converted 0 pages of 0 notes to png", 0), 0u) << r.out;
    EXPECT_NE(r.out.find("; 2 up to date;"), std::string::npos) << r.out;

    // A note written since, or an output gone, is converted again.
    fs::last_write_time(a, fs::file_time_type::clock::now() + std::chrono::seconds(5));
    fs::remove(dir.path("out/sub/B-p1.png"));
    r = notetool(dir, convert);
    EXPECT_EQ(r.out.rfind("notetool: converted 3 pages of 2 notes to png", 0), 0u) << r.out;
    EXPECT_NE(r.out.find("; 0 up to date;"), std::string::npos) << r.out;

    fs::create_directory(dir.path("empty"));
    r = notetool(dir, {"convert", dir.path("empty"), "-o", dir.path("none")});
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out, "notetool: found no notes in " + dir.path("empty") + "\n");
}

TEST(NotetoolStrokes, PointsAreMappedOntoTheImageWithTheirPressures) {
    ScratchDir dir;
    TrailContainer stroke;
    stroke.maxX = 1403;  // one digitizer unit a pixel, so the mapping is exact
    stroke.maxY = 1871;
    stroke.m_emrPointAxis = 0;
    stroke.m_points = {{0, 0}, {1403, 0}, {0, 1871}};
    stroke.pressures = {100, 4095, 7};
    notewriter::Note note = boxPages(1);
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
    const std::string bare = dir.write("bare.note", notewriter::buildNote(boxPages(1)));

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
