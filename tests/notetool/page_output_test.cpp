// PNG, PDF and SVG pages are checked by the readers people use (libpng, qpdf, poppler,
// librsvg, libxml2): the files must be valid, and their renderings must look like the picture
// they were made of, exactly where the page is a picture.

#include <cairo.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "palette.h"
#include "run_tool.h"
#include "pdf_output.h"
#include "png_output.h"
#include "svg_output.h"

namespace fs = std::filesystem;
using namespace notetool;

namespace {

using Picture = std::vector<uint8_t>;
using Image = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

// Paints the pixels of [x0, x1) x [y0, y1) for which inside(dx, dy) holds, dx and dy taken
// from the box's centre.
template <class Inside>
void paint(Picture& p, int x0, int y0, int x1, int y1, uint8_t value, Inside inside) {
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            if (inside(x - (x0 + x1) / 2, y - (y0 + y1) / 2)) p[std::size_t(y) * kPageWidth + x] = value;
}
const auto whole = [](int, int) { return true; };
void disc(Picture& p, int cx, int cy, int r, uint8_t value) {
    paint(p, cx - r, cy - r, cx + r + 1, cy + r + 1, value, [r](int dx, int dy) { return dx * dx + dy * dy <= r * r; });
}

// Ruled paper, one-pixel lines (straight and slanted), and a black blob with a hole
// holding an island: holes must stay holes.
Picture linesAndBlobs() {
    Picture p(kPagePixels, kNothing);
    for (int y = 100; y < 1700; y += 60) paint(p, 80, y, 1324, y + 2, 0x50, whole);
    paint(p, 120, 100, 121, 1700, 0x01, whole);
    paint(p, 200, 300, 1100, 1200, 0x00, [](int dx, int dy) { return dx == dy; });
    disc(p, 700, 1400, 250, 0x00);
    disc(p, 700, 1400, 120, kNothing);
    disc(p, 700, 1400, 50, 0x31);
    return p;
}

// All four ink colours, both values of each, and white ink over grey with black on it.
Picture colours() {
    Picture p(kPagePixels, kNothing);
    const uint8_t values[] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51};
    for (int i = 0; i < 6; ++i) paint(p, 100 + 200 * i, 100, 280 + 200 * i, 700, values[i], whole);
    paint(p, 100, 900, 1300, 1700, 0x30, whole);
    paint(p, 300, 1100, 1100, 1500, kWhiteInk, whole);
    disc(p, 700, 1300, 100, 0x00);
    return p;
}

DrawingOptions drawing(double scale, bool transparent, bool raster, bool vector = false) {
    DrawingOptions options;
    options.scale = scale;
    options.transparent = transparent;
    options.raster = raster;
    options.vector = vector;
    return options;
}

using Open = std::unique_ptr<PageWriter> (*)(OutputFile&, const DrawingOptions&, const DocumentInfo&);

// The pages as one file of the format `open` writes, at one point per pixel.
void write(Open open, const std::string& path, const std::vector<Picture>& pages, const DrawingOptions& options) {
    DocumentInfo info;
    info.dpi = 72;
    OutputFile file(path);
    const auto writer = open(file, options, info);
    for (const Picture& page : pages) writer->addPage(page.data());
    writer->finish();
    file.commit();
}

// Runs a command; returns its standard output and error, and its status through status.
std::string run(const std::string& command, int* status = nullptr) {
    std::string out;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char buf[4096];
    while (std::size_t n = fread(buf, 1, sizeof buf, pipe)) out.append(buf, n);
    int rc = pclose(pipe);
    if (status) *status = rc;
    return out;
}

uint32_t pixelAt(cairo_surface_t* image, int x, int y) {
    auto* row = cairo_image_surface_get_data(image) + std::size_t(y) * cairo_image_surface_get_stride(image);
    uint32_t argb = reinterpret_cast<const uint32_t*>(row)[x];
    return cairo_image_surface_get_format(image) == CAIRO_FORMAT_RGB24 ? argb | 0xFF000000u : argb;
}

struct Difference {
    double share = 0;  // of all pixels, those off by more than 48 in a channel
    int interior = 0;  // of those, the ones inside an area of one colour (2 pixels around)
    int exact = 0;     // pixels not exactly equal
};

// Compares a PNG rendered at one pixel per page unit with the picture (cairo's reader).
Difference compare(const std::string& png, const Picture& picture, bool transparent) {
    Image image(cairo_image_surface_create_from_png(png.c_str()), &cairo_surface_destroy);
    EXPECT_EQ(cairo_surface_status(image.get()), CAIRO_STATUS_SUCCESS) << png;
    EXPECT_EQ(cairo_image_surface_get_width(image.get()), kPageWidth);
    EXPECT_EQ(cairo_image_surface_get_height(image.get()), kPageHeight);
    auto colour = [&](int x, int y) { return pixelColour(picture[std::size_t(y) * kPageWidth + x], transparent); };
    Difference d;
    int off = 0;
    for (int y = 0; y < kPageHeight; ++y)
        for (int x = 0; x < kPageWidth; ++x) {
            uint32_t got = pixelAt(image.get(), x, y), want = colour(x, y);
            int distance = 0;
            for (int shift = 0; shift < 32; shift += 8)
                distance = std::max(distance, std::abs(int((got >> shift) & 0xFF) - int((want >> shift) & 0xFF)));
            d.exact += distance != 0;
            if (distance <= 48) continue;
            ++off;
            bool uniform = x >= 2 && y >= 2 && x < kPageWidth - 2 && y < kPageHeight - 2;
            for (int i = 0; uniform && i < 25; ++i) uniform = colour(x + i % 5 - 2, y + i / 5 - 2) == want;
            d.interior += uniform;
        }
    d.share = double(off) / kPagePixels;
    return d;
}

class PageOutputTest : public ::testing::Test {
protected:
    void SetUp() override { fs::create_directories(dir_); }
    void TearDown() override { fs::remove_all(dir_); }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    const fs::path dir_ = fs::temp_directory_path() / ("page_output_test." + std::to_string(getpid()) + "." +
                                                       ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(PageOutputTest, TracedPdfIsValidAndRendersLikeThePicture) {
    const std::vector<Picture> pages = {linesAndBlobs(), colours()};
    write(openPdf, path("note.pdf"), pages, drawing(1.0, false, false, true));
    int status;
    std::string check = run("qpdf --check " + path("note.pdf"), &status);
    EXPECT_EQ(status, 0) << check;

    // 1 pt a pixel: only pixels along edges may differ, and few of them.
    run("pdftoppm -r 72 -png " + path("note.pdf") + " " + path("page"));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        Difference d = compare(path("page-" + std::to_string(i + 1) + ".png"), pages[i], false);
        EXPECT_LT(d.share, 0.002) << "page " << i + 1;
        EXPECT_EQ(d.interior, 0) << "page " << i + 1;
    }
    // Spot checks: a line one pixel wide stays a line, if a thinner one (pages are traced at
    // their own size, where an outline may lie up to half a pixel inside the pixels); a slanted
    // one spreads each row's ink over two pixels, so it renders half grey; the hole is paper,
    // the island in it ink.
    Image lines(cairo_image_surface_create_from_png(path("page-1.png").c_str()), &cairo_surface_destroy);
    EXPECT_LT(pixelAt(lines.get(), 120, 900) & 0xFF, 0xC0u);
    EXPECT_LT(pixelAt(lines.get(), 700, 800) & 0xFF, 0xA0u);
    EXPECT_EQ(pixelAt(lines.get(), 700, 1300), 0xFFFFFFFFu);
    EXPECT_EQ(pixelAt(lines.get(), 700, 1400), 0xFF9D9D9Du);
}

// By default a PDF page is the picture: one palette image each, drawn unsmoothed over the
// whole page, of the very bytes the page's PNG holds, and rendered it is the PNG, exactly.
// Pages keep their order. poppler smooths any image drawn at less than four times its size,
// whatever the file asks, so its pdftoppm is checked at 4x; its cairo renderer keeps the
// pixels at 1x.
TEST_F(PageOutputTest, PdfPagesAreThePicturesAndHoldThePngsData) {
    const std::vector<Picture> pages = {colours(), linesAndBlobs()};
    write(openPdf, path("note.pdf"), pages, DrawingOptions{});
    int status;
    const std::string check = run("qpdf --check " + path("note.pdf"), &status);
    EXPECT_EQ(status, 0) << check;
    // Four bits a pixel where white ink and paper meet (page 1), else two.
    const std::string list = run("pdfimages -list " + path("note.pdf"));
    EXPECT_NE(list.find("1     0 image    1404  1872  index   1   4  image  no"), std::string::npos) << list;
    EXPECT_NE(list.find("2     1 image    1404  1872  index   1   2  image  no"), std::string::npos) << list;

    const std::string pdf = notetest::readWholeFile(path("note.pdf"));
    run("pdftocairo -r 72 -png " + path("note.pdf") + " " + path("page"));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        const std::string png = path("p" + number + ".png");
        write(openPng, png, {pages[i]}, DrawingOptions{});
        EXPECT_EQ(compare(png, pages[i], false).exact, 0);
        EXPECT_EQ(compare(path("page-" + number + ".png"), pages[i], false).exact, 0) << "page " << number;
        // The PNG's image data (its IDAT chunk, after length and type) is in the PDF as it is.
        const std::string bytes = notetest::readWholeFile(png);
        const std::size_t idat = bytes.find("IDAT");
        ASSERT_NE(idat, std::string::npos);
        std::size_t length = 0;
        for (std::size_t k = idat - 4; k < idat; ++k) length = length << 8 | uint8_t(bytes[k]);
        EXPECT_NE(pdf.find(bytes.substr(idat + 4, length)), std::string::npos) << "page " << number;

        // At 4x, a square of 100 x 100 pixels across the edges of a disc.
        const int x0 = 560, y0 = 1160, side = 100;
        run("pdftoppm -r 288 -png -f " + number + " -l " + number + " -x " + std::to_string(4 * x0) + " -y " +
            std::to_string(4 * y0) + " -W " + std::to_string(4 * side) + " -H " + std::to_string(4 * side) + " " +
            path("note.pdf") + " " + path("zoom"));
        const std::string zoomed = path("zoom-" + number + ".png");
        Image image(cairo_image_surface_create_from_png(zoomed.c_str()), &cairo_surface_destroy);
        ASSERT_EQ(cairo_image_surface_get_width(image.get()), 4 * side) << zoomed;
        int wrong = 0;
        for (int y = 0; y < 4 * side; ++y)
            for (int x = 0; x < 4 * side; ++x)
                wrong += pixelAt(image.get(), x, y) !=
                         pixelColour(pages[i][std::size_t(y0 + y / 4) * kPageWidth + x0 + x / 4], false);
        EXPECT_EQ(wrong, 0) << "page " << number;
    }
}

TEST_F(PageOutputTest, SvgIsValidAndRendersLikeThePicture) {
    const Picture page = colours();
    write(openSvg, path("traced.svg"), {page}, drawing(1.0, true, false));
    write(openSvg, path("raster.svg"), {page}, drawing(1.0, true, true));
    for (const char* name : {"traced", "raster"}) {
        int status;
        std::string lint = run("xmllint --noout " + path(name) + ".svg", &status);
        EXPECT_EQ(status, 0) << lint;
        // One pixel a page unit, whatever the size on paper.
        run("rsvg-convert -w 1404 -h 1872 -o " + path(name) + ".png " + path(name) + ".svg");
    }
    // Without paper, nothing drawn is transparent and ink, white ink too, is opaque.
    Difference traced = compare(path("traced.png"), page, true);
    EXPECT_LT(traced.share, 0.002);
    EXPECT_EQ(traced.interior, 0);
    EXPECT_EQ(compare(path("raster.png"), page, true).exact, 0);
}

TEST_F(PageOutputTest, UnfinishedPdfLeavesNoFile) {
    const Picture page = colours();
    {
        OutputFile file(path("gone.pdf"));
        const auto pdf = openPdf(file, DrawingOptions{}, DocumentInfo{});
        pdf->addPage(page.data());
    }
    EXPECT_TRUE(fs::is_empty(dir_));
    EXPECT_THROW(OutputFile(path("missing/folder.pdf")), OutputError);
}

}  // namespace
