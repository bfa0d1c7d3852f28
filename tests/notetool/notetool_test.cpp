// notetool run as a user runs it, on notes made by the note writer: exit codes, error
// lines, output names, and pictures read back with libpng.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "notetool_run.h"

namespace {

namespace fs = std::filesystem;
using namespace notetest;
using notewriter::kPictureSize;
using notewriter::kPictureWidth;
using Strings = std::vector<std::string>;

std::vector<uint8_t> filled(uint8_t value) { return std::vector<uint8_t>(kPictureSize, value); }

// A ruled background under LAYER1's highlighter box and the main layer's ink, black and
// white, over it; box edges at odd x. Below them the main layer has stripes one pixel wide of
// all eight values, so that every column's neighbour in its PNG byte has another colour, and
// the page is slow to read beside a page of one box.
notewriter::Page stackedPage(const std::string& layerSeq = "") {
    std::vector<uint8_t> background = filled(0xFE), highlight = filled(0xFF), ink = filled(0xFF);
    box(background, 0, 100, kPictureWidth, 102, 0x50);
    box(highlight, 51, 50, 301, 150, 0x30);
    box(ink, 101, 90, 201, 110, 0x00);
    box(ink, 251, 60, 281, 140, 0xFE);
    const uint8_t values[] = {0x00, 0x30, 0xFF, 0x50, 0xFE, 0x01, 0x31, 0x51};
    for (std::size_t i = 200 * kPictureWidth; i < kPictureSize; ++i) ink[i] = values[i % kPictureWidth % 8];
    notewriter::Page page;
    page.layers = {{"BGLAYER", background, {}}, {"LAYER1", highlight, {}}, {"MAINLAYER", ink, {}}};
    if (!layerSeq.empty()) page.extra = {{"LAYERSEQ", layerSeq}};
    return page;
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

// How many pixels of an RGBA picture, `scale` times the page, differ from the page's layers
// drawn in this order (bottom first): the upper-most ink, else paper. Without paper, nothing
// drawn and the background's white are clear.
std::size_t wrongPixels(const std::vector<uint8_t>& rgba, unsigned scale, const notewriter::Page& page,
                        const Strings& bottomFirst, bool transparent) {
    std::vector<const notewriter::Layer*> layers;
    for (const std::string& name : bottomFirst)
        layers.push_back(&*std::find_if(page.layers.begin(), page.layers.end(), [&](const auto& l) { return l.name == name; }));
    std::vector<uint8_t> top(kPictureSize, 0xFF);
    for (std::size_t i = 0; i < kPictureSize; ++i)
        for (const notewriter::Layer* layer : layers)
            if (layer->pixels[i] != 0xFF && !(transparent && layer->name == "BGLAYER" && layer->pixels[i] == 0xFE))
                top[i] = layer->pixels[i];
    const std::size_t width = kPictureWidth * scale;
    std::size_t wrong = 0;
    for (std::size_t y = 0; y < rgba.size() / 4 / width; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            const uint8_t* p = &rgba[(y * width + x) * 4];
            const uint8_t value = top[y / scale * kPictureWidth + x / scale];
            const int alpha = transparent && value == 0xFF ? 0 : 255;
            wrong += p[3] != alpha || (alpha && (p[0] != shownGrey(value) || p[1] != p[0] || p[2] != p[0]));
        }
    return wrong;
}

// Every pixel, at whole scales, is the upper-most drawn layer's, in the default order or the
// page's own (LAYERSEQ, top first, leaving out what it does not list), narrowed by the options.
// A page of four colours takes two bits a pixel, one of five (white ink and paper) four.
TEST(NotetoolRender, PngShowsEveryPixelOfTheLayersDrawn) {
    const Strings all = {"BGLAYER", "LAYER1", "MAINLAYER"};
    const struct {
        std::string layerSeq;
        Strings options;
        Strings bottomFirst;
        unsigned scale;
        bool transparent;
        int bitDepth;
    } cases[] = {
        {"LAYER1,MAINLAYER", {"--transparent"}, {"MAINLAYER", "LAYER1"}, 1, true, 4},
        {"", {}, all, 1, false, 2},
        {"", {"--scale", "3"}, all, 3, false, 2},
        {"", {"--transparent"}, all, 1, true, 4},
        {"", {"--no-background"}, {"LAYER1", "MAINLAYER"}, 1, false, 4},
        {"", {"--layers", "LAYER1"}, {"LAYER1"}, 1, false, 2},
    };
    ScratchDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.layerSeq + " " + (c.options.empty() ? "" : c.options[0]));
        notewriter::Note note;
        note.pages = {stackedPage(c.layerSeq)};
        const std::string path = dir.write("stack.note", notewriter::buildNote(note));
        Strings args = {"--log", dir.path("lib.log"), "render", path, "-o", dir.path("page.png")};
        args.insert(args.end(), c.options.begin(), c.options.end());
        const ToolRun r = notetool(dir, args);
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(r.out + r.err, "");  // the library's log goes to its file
        unsigned width = 0, height = 0;
        const std::vector<uint8_t> rgba = readPng(dir.path("page.png"), width, height);
        ASSERT_EQ(width, kPictureWidth * c.scale);
        EXPECT_EQ(wrongPixels(rgba, c.scale, note.pages[0], c.bottomFirst, c.transparent), 0u);
        EXPECT_EQ(readWholeFile(dir.path("page.png"))[24], c.bitDepth);  // in the header, after the width and height
    }
    EXPECT_NE(readWholeFile(dir.path("lib.log")).find("fetchNoteDataFromFileByLayer"), std::string::npos);

    // Scaled by other than a whole number, ink stays opaque and the background's white clear.
    ASSERT_EQ(notetool(dir, {"render", dir.path("stack.note"), "-o", dir.path("t.png"), "--scale", "1.5", "--transparent"}).code, 0);
    unsigned width = 0, height = 0;
    const std::vector<uint8_t> rgba = readPng(dir.path("t.png"), width, height);
    const auto alpha = [&](int x, int y) { return rgba[(std::size_t(y * 3 / 2) * width + x * 3 / 2) * 4 + 3]; };
    EXPECT_EQ(std::vector<int>({alpha(10, 10), alpha(10, 101), alpha(265, 80), alpha(150, 100)}),
              std::vector<int>({0, 255, 255, 255}));
}

// A page reduced (--scale below 1, and every thumbnail): each pixel is the mean of the page
// pixels it covers, colour weighted by opacity, on paper and without it.
TEST(NotetoolRender, AReducedPixelIsTheMeanOfTheBlockItCovers) {
    // Blocks of 4 x 4 page pixels, each one pixel at a quarter of the size: full ink, half
    // ink, white ink, a quarter of highlighter grey (0x9D), and nothing.
    std::vector<uint8_t> ink = filled(0xFF);
    box(ink, 0, 0, 6, 4, 0x00);
    box(ink, 8, 0, 12, 4, 0xFE);
    box(ink, 12, 0, 14, 2, 0x30);
    notewriter::Note note;
    note.pages.resize(1);
    note.pages[0].layers = {{"MAINLAYER", ink, {}}};
    ScratchDir dir;
    const std::string path = dir.write("blocks.note", notewriter::buildNote(note));
    using GreyAlpha = std::pair<int, int>;
    const struct {
        bool transparent;
        std::vector<GreyAlpha> pixels;  // the first five of the top row
    } cases[] = {
        // On paper: half ink is the mean of ink (1) and paper (255).
        {false, {{1, 255}, {128, 255}, {254, 255}, {231, 255}, {255, 255}}},
        // Without paper, ink keeps its grey and covers part of the pixel; white ink stays opaque.
        {true, {{1, 255}, {1, 128}, {254, 255}, {157, 64}, {0, 0}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.transparent);
        Strings args = {"render", path, "-o", dir.path("small.png"), "--scale", "0.25"};
        if (c.transparent) args.push_back("--transparent");
        ASSERT_EQ(notetool(dir, args).code, 0);
        unsigned width = 0, height = 0;
        const std::vector<uint8_t> rgba = readPng(dir.path("small.png"), width, height);
        EXPECT_EQ(std::make_pair(width, height), std::make_pair(351u, 468u));
        std::vector<GreyAlpha> top;
        for (std::size_t x = 0; x < c.pixels.size(); ++x) top.emplace_back(rgba[4 * x], rgba[4 * x + 3]);
        EXPECT_EQ(top, c.pixels);
    }
}

TEST(NotetoolRender, PagesAreChosenByIndexNumberAndNamedByIt) {
    ScratchDir dir;
    const std::string note = dir.write("diary.note", notewriter::buildNote(boxPages(12)));
    const ToolRun r = notetool(dir, {"render", note, "-o", dir.path("out"), "--pages", "1,3-4,10,3"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(filesIn(dir.path("out")), (Strings{"diary-p01.png", "diary-p03.png", "diary-p04.png", "diary-p10.png"}));
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
    const struct {
        Strings options;
        std::string err;
    } cases[] = {
        {{"-o", dir.path("png/")}, broken + "\n"},
        {{"-o", dir.path("torn.pdf")}, broken + "; a blank page in its place\n"},
        {{"-o", dir.path("strict.pdf"), "--strict"}, broken + "; " + dir.path("strict.pdf") + " not written\n"},
        {{"-o", dir.path("strict/"), "--strict", "-j", "1"}, broken + "\nnotetool: " + path + ": no page written (--strict)\n"},
    };
    for (const auto& c : cases) {
        Strings args = {"render", path};
        args.insert(args.end(), c.options.begin(), c.options.end());
        const ToolRun r = notetool(dir, args);
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err, c.err);
    }
    EXPECT_EQ(filesIn(dir.path("png")), (Strings{"torn-p1.png", "torn-p3.png"}));
    EXPECT_NE(program(dir, {"pdfinfo", dir.path("torn.pdf")}).out.find("Pages:           3\n"), std::string::npos);
    EXPECT_EQ(filesIn(dir.path("")), (Strings{"png", "stderr.txt", "stdout.txt", "strict", "torn.note", "torn.pdf"}));
    EXPECT_TRUE(filesIn(dir.path("strict")).empty());
}

// A PDF holds each page as the picture its PNG is, in page order however many workers made
// them (the first page, slow to read, is finished after the next ones); --vector traces the
// pages into outlines instead, and holds no image.
TEST(NotetoolRender, PdfPagesAreThePngsInOrderOrTracedOnRequest) {
    ScratchDir dir;
    notewriter::Note note = boxPages(6);
    note.pages[0] = stackedPage();
    const std::string path = dir.write("n.note", notewriter::buildNote(note));
    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("png/")}).code, 0);
    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("n.pdf"), "-j", "2"}).code, 0);
    ASSERT_EQ(program(dir, {"pdfimages", "-png", dir.path("n.pdf"), dir.path("image")}).code, 0);
    for (int page = 1; page <= 6; ++page) {
        SCOPED_TRACE(page);
        unsigned width, height, imageWidth, imageHeight;
        const std::vector<uint8_t> png = readPng(dir.path("png/n-p" + std::to_string(page) + ".png"), width, height);
        const std::vector<uint8_t> image = readPng(dir.path("image-00" + std::to_string(page - 1) + ".png"), imageWidth, imageHeight);
        EXPECT_EQ(std::make_pair(imageWidth, imageHeight), std::make_pair(width, height));
        EXPECT_TRUE(image == png);
    }
    ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("v.pdf"), "--vector", "--pages", "2"}).code, 0);
    const ToolRun list = program(dir, {"pdfimages", "-list", dir.path("v.pdf")});
    EXPECT_EQ(list.out.find("image"), std::string::npos) << list.out;
    EXPECT_NE(readWholeFile(dir.path("v.pdf")).find("%%EOF"), std::string::npos);
}

// "Page size:  W x H pts" of pdfinfo's report, and the whole report.
std::pair<double, double> pdfPageSize(const ScratchDir& dir, const std::string& pdf, std::string* report = nullptr) {
    const ToolRun info = program(dir, {"pdfinfo", pdf});
    if (report) *report = info.out;
    double width = 0, height = 0;
    const std::size_t at = info.out.find("Page size:");
    if (at != std::string::npos) std::sscanf(info.out.c_str() + at, "Page size: %lf x %lf pts", &width, &height);
    return {width, height};
}

// A PDF page is as large as the tablet's page: its pixels at the note's own resolution
// (DEVICE_DPI, when it is a sane number), else 226 dpi, unless --dpi says otherwise. Files
// carry the note's name and their maker, and the same note makes the same bytes.
TEST(NotetoolRender, PagesHaveTheirPhysicalSizeAndTheSameBytesEachTime) {
    const struct {
        std::string deviceDpi;  // empty: no header
        Strings options;
        double dpi;
    } cases[] = {{"226", {}, 226}, {"300", {}, 300}, {"crooked", {}, 226}, {"5", {}, 226},
                 {"", {}, 226}, {"300", {"--dpi", "100"}, 100}, {"226", {"--scale", "2"}, 113}};
    ScratchDir dir;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.deviceDpi + (c.options.empty() ? "" : " " + c.options[0]));
        notewriter::Note note = boxPages(1);
        if (!c.deviceDpi.empty()) note.header = {{"DEVICE_DPI", c.deviceDpi}};
        Strings args = {"render", dir.write("n.note", notewriter::buildNote(note)), "-o", dir.path("n.pdf")};
        args.insert(args.end(), c.options.begin(), c.options.end());
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
        for (const char* folder : {"a/", "b/"})
            ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path(folder), "--format", format, "-j", "2"}).code, 0);
        ASSERT_EQ(notetool(dir, {"render", path, "-o", dir.path("c/"), "--format", format, "--pages", "3"}).code, 0);
        const Strings names = filesIn(dir.path("a"));
        EXPECT_EQ(names.size(), format == "pdf" ? 1u : 4u);
        for (const std::string& name : names)
            EXPECT_EQ(readWholeFile(dir.path("a/" + name)), readWholeFile(dir.path("b/" + name))) << name;
        if (format != "pdf") {
            EXPECT_EQ(readWholeFile(dir.path("c/n-p3." + format)), readWholeFile(dir.path("a/n-p3." + format)));
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
    EXPECT_NE(readWholeFile(dir.path("n.svg")).find("width=\"157.79mm\" height=\"210.39mm\" viewBox=\"0 0 1404 1872\""),
              std::string::npos);
}

// Folders are mirrored and counted by the update test below.
TEST(NotetoolConvert, OneBadNoteIsReportedAndTheRestConverted) {
    ScratchDir dir;
    fs::create_directories(dir.path("trip"));
    const std::string a = dir.write("a.note", notewriter::buildNote(boxPages(2)));
    dir.write("trip/b.note", notewriter::buildNote(boxPages(1)));
    dir.write("trip/bad.note", "not a note at all");
    dir.write("trip/readme.txt", "not looked at");

    const ToolRun r = notetool(dir, {"convert", a, dir.path("trip"), "-o", dir.path("pdf"), "--format", "pdf", "-j", "2"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + dir.path("trip/bad.note") + ": not a readable note: a read failed, or a block, site or layer name is bad (code 17)\n");
    EXPECT_EQ(filesIn(dir.path("pdf")), (Strings{"a.pdf", "b.pdf"}));
}

// Sync folders are converted again and again: --update skips a note whose outputs are all
// there and newer than it. Notes are found whatever the case of their extension.
TEST(NotetoolConvert, UpdateConvertsOnlyWhatChanged) {
    ScratchDir dir;
    fs::create_directories(dir.path("in/sub"));
    const std::string a = dir.write("in/a.note", notewriter::buildNote(boxPages(2)));
    dir.write("in/sub/B.NOTE", notewriter::buildNote(boxPages(1)));
    const Strings convert = {"convert", dir.path("in"), "-o", dir.path("out"), "--update"};

    ToolRun r = notetool(dir, convert, {{}, "", 80});  // on a terminal, whose progress bar counts every page
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.err.find("3/3 pages"), std::string::npos) << r.err;
    EXPECT_EQ(r.out.rfind("notetool: converted 3 pages of 2 notes to png", 0), 0u) << r.out;
    EXPECT_EQ(filesIn(dir.path("out/sub")), Strings{"B-p1.png"});

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
    EXPECT_EQ(notetool(dir, {"strokes", path, "--page", "1", "--size", "12"}).code, 2);
}

TEST(NotetoolInfo, JsonCarriesHeaderPagesAndStyles) {
    ScratchDir dir;
    notewriter::Note note;
    note.pages = {stackedPage()};
    note.header = {{"FILE_TYPE", "NOTE"}, {"APP_VERTION", "7"}};
    note.extraIndex = {{"STYLE_grid", "0"}};
    note.pages[0].extra = {{"PAGESTYLE", "grid"}};
    const std::string path = dir.write("i.note", notewriter::buildNote(note));
    const std::string bare = dir.write("bare.note", notewriter::buildNote(boxPages(1)));

    const ToolRun r = notetool(dir, {"info", "--json", path, bare});
    ASSERT_EQ(r.code, 0) << r.err;
    const auto json = nlohmann::json::parse(r.out)["notes"];
    EXPECT_EQ(json[0]["header"]["FILE_TYPE"], "NOTE");
    EXPECT_EQ(json[0]["header"]["APP_VERSION"], 7);
    EXPECT_EQ(json[0]["header"]["DEVICE_DPI"], "none");
    EXPECT_EQ(json[0]["styles"], nlohmann::json::parse("[\"grid\"]"));
    EXPECT_EQ(json[0]["pages"][0]["layers"], nlohmann::json::parse("[\"MAINLAYER\", \"LAYER1\", \"BGLAYER\"]"));
    EXPECT_EQ(json[0]["pages"][0]["style"], "grid");
    EXPECT_TRUE(json[1]["header"].is_null());
}

}  // namespace
