// PDF and SVG pages are checked by the readers people use (qpdf, poppler, librsvg, libxml2):
// the files must be valid, and their renderings must look like the picture they were made of.

#include <cairo.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "palette.h"
#include "vector_output.h"

namespace fs = std::filesystem;
using namespace notetool;

namespace {

using Picture = std::vector<uint8_t>;

void fillRect(Picture& p, int x0, int y0, int x1, int y1, uint8_t value) {
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) p[std::size_t(y) * kPageWidth + x] = value;
}

void fillDisc(Picture& p, int cx, int cy, int r, uint8_t value) {
    for (int y = cy - r; y <= cy + r; ++y)
        for (int x = cx - r; x <= cx + r; ++x)
            if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= r * r) p[std::size_t(y) * kPageWidth + x] = value;
}

// Ruled paper with handwriting-like thin lines: one-pixel lines, horizontal, vertical and
// slanted, in black and grey.
Picture ruledPage() {
    Picture p(kPagePixels, kNothing);
    for (int y = 100; y < kPageHeight - 100; y += 60) fillRect(p, 80, y, kPageWidth - 80, y + 2, 0x50);
    fillRect(p, 120, 100, 121, 1700, 0x01);
    for (int i = 0; i < 900; ++i) p[std::size_t(300 + i) * kPageWidth + 200 + i] = 0x00;  // slanted
    for (int i = 0; i < 600; ++i) p[std::size_t(400 + i / 3) * kPageWidth + 250 + i] = 0x31;
    return p;
}

// Blobs with holes, and an island inside a hole: holes must stay holes.
Picture blobPage() {
    Picture p(kPagePixels, kNothing);
    fillDisc(p, 400, 400, 250, 0x00);
    fillDisc(p, 400, 400, 120, kNothing);
    fillDisc(p, 400, 400, 50, 0x00);
    fillRect(p, 800, 900, 1300, 1700, 0x30);
    fillRect(p, 900, 1000, 1200, 1600, kNothing);
    return p;
}

// All four ink colours side by side, both values of each, and white ink over grey.
Picture colourPage() {
    Picture p(kPagePixels, kNothing);
    const uint8_t values[] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51};
    for (int i = 0; i < 6; ++i) fillRect(p, 100 + 200 * i, 100, 280 + 200 * i, 700, values[i]);
    fillRect(p, 100, 900, 1300, 1700, 0x30);
    fillRect(p, 300, 1100, 1100, 1500, kWhiteInk);
    fillDisc(p, 700, 1300, 100, 0x00);  // black over the white ink
    return p;
}

std::string run(const std::string& command, int* status = nullptr) {
    std::string out;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char buf[4096];
    while (std::size_t n = fread(buf, 1, sizeof buf, pipe)) out.append(buf, n);
    int rc = pclose(pipe);
    if (status) *status = rc;
    return out;
}

using Image = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Image readPng(const std::string& path) {
    Image image(cairo_image_surface_create_from_png(path.c_str()), &cairo_surface_destroy);
    EXPECT_EQ(cairo_surface_status(image.get()), CAIRO_STATUS_SUCCESS) << path;
    return image;
}

uint32_t pixelAt(cairo_surface_t* image, int x, int y) {
    const unsigned char* row = cairo_image_surface_get_data(image) + std::size_t(y) * cairo_image_surface_get_stride(image);
    uint32_t argb = reinterpret_cast<const uint32_t*>(row)[x];
    return cairo_image_surface_get_format(image) == CAIRO_FORMAT_RGB24 ? argb | 0xFF000000u : argb;
}

int channelDistance(uint32_t a, uint32_t b) {
    int most = 0;
    for (int shift = 0; shift < 32; shift += 8)
        most = std::max(most, std::abs(int((a >> shift) & 0xFF) - int((b >> shift) & 0xFF)));
    return most;
}

struct Difference {
    double share = 0;     // of all pixels, those off by more than the threshold
    int interior = 0;     // of those, pixels inside an area of one colour (2 pixels around)
    int exact = 0;        // pixels not exactly equal
};

// Compares a rendering at one pixel per page unit with the picture.
Difference compare(cairo_surface_t* image, const Picture& picture, bool transparent) {
    EXPECT_EQ(cairo_image_surface_get_width(image), kPageWidth);
    EXPECT_EQ(cairo_image_surface_get_height(image), kPageHeight);
    auto colour = [&](int x, int y) { return pixelColour(picture[std::size_t(y) * kPageWidth + x], transparent); };
    Difference d;
    int off = 0;
    for (int y = 0; y < kPageHeight; ++y)
        for (int x = 0; x < kPageWidth; ++x) {
            int distance = channelDistance(pixelAt(image, x, y), colour(x, y));
            d.exact += distance != 0;
            if (distance <= 48) continue;
            ++off;
            bool uniform = x >= 2 && y >= 2 && x < kPageWidth - 2 && y < kPageHeight - 2;
            for (int dy = -2; uniform && dy <= 2; ++dy)
                for (int dx = -2; uniform && dx <= 2; ++dx) uniform = colour(x + dx, y + dy) == colour(x, y);
            d.interior += uniform;
        }
    d.share = double(off) / kPagePixels;
    return d;
}

class VectorOutputTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "vector_output_test.XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { fs::remove_all(dir_); }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    fs::path dir_;
};

TEST_F(VectorOutputTest, TracedPdfIsValidAndRendersLikeThePicture) {
    const std::vector<Picture> pages = {ruledPage(), blobPage(), colourPage()};
    PdfDocument pdf(path("note.pdf"), VectorOptions{});
    for (const Picture& page : pages) pdf.addPage(page.data());
    pdf.finish();

    int status;
    std::string check = run("qpdf --check " + path("note.pdf"), &status);
    EXPECT_EQ(status, 0) << check;
    EXPECT_NE(run("pdfinfo " + path("note.pdf")).find("Pages:           3\n"), std::string::npos);

    run("pdftoppm -r 72 -png " + path("note.pdf") + " " + path("page"));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        Image image = readPng(path("page-" + std::to_string(i + 1) + ".png"));
        Difference d = compare(image.get(), pages[i], false);
        EXPECT_LT(d.share, 0.02) << "page " << i + 1;
        EXPECT_EQ(d.interior, 0) << "page " << i + 1;
    }
    // Spot checks: one-pixel lines stay visible, and the holes of the blob page stay paper
    // while the island in the hole is ink.
    Image ruled = readPng(path("page-1.png"));
    // (A slanted one-pixel line becomes a smooth line of the same ink per row, spread over
    // two pixels: it renders half grey.)
    EXPECT_LT(pixelAt(ruled.get(), 120, 900) & 0xFF, 0x40u);
    EXPECT_LT(pixelAt(ruled.get(), 700, 800) & 0xFF, 0xA0u);
    Image blobs = readPng(path("page-2.png"));
    EXPECT_EQ(pixelAt(blobs.get(), 400, 300), 0xFFFFFFFFu);
    EXPECT_EQ(pixelAt(blobs.get(), 400, 400), 0xFF010101u);
    EXPECT_EQ(pixelAt(blobs.get(), 1050, 1300), 0xFFFFFFFFu);
}

TEST_F(VectorOutputTest, RasterPdfEmbedsThePictureLosslessly) {
    const Picture page = colourPage();
    PdfDocument pdf(path("raster.pdf"), VectorOptions{2.0, false, true});
    pdf.addPage(page.data());
    pdf.addPage(page.data());
    pdf.finish();
    EXPECT_NE(run("pdfinfo " + path("raster.pdf")).find(" 2808 x 3744 pts"), std::string::npos);

    // The image as poppler reads it out of the file is the picture, pixel for pixel, and
    // is not to be smoothed. (Renderings cannot show this exactly: poppler smooths
    // images drawn at less than four times their size, whatever the file asks.)
    std::string list = run("pdfimages -list " + path("raster.pdf"));
    EXPECT_NE(list.find("1404  1872"), std::string::npos) << list;
    EXPECT_NE(list.find(" no "), std::string::npos) << list;  // interpolation
    EXPECT_EQ(list.find("jpeg"), std::string::npos) << list;
    run("pdfimages -png -f 2 " + path("raster.pdf") + " " + path("image"));
    Image image = readPng(path("image-000.png"));
    EXPECT_EQ(compare(image.get(), page, false).exact, 0);
}

TEST_F(VectorOutputTest, SvgIsValidAndRendersLikeThePicture) {
    const Picture page = colourPage();
    writeSvgPage(path("traced.svg"), page.data(), VectorOptions{1.0, true, false});
    writeSvgPage(path("raster.svg"), page.data(), VectorOptions{1.0, true, true});
    for (const char* name : {"traced", "raster"}) {
        int status;
        std::string lint = run("xmllint --noout " + path(name) + ".svg", &status);
        EXPECT_EQ(status, 0) << lint;
        run("rsvg-convert -o " + path(name) + ".png " + path(name) + ".svg");
    }
    // Without paper, nothing drawn is transparent and ink, white ink too, is opaque.
    Image traced = readPng(path("traced.png"));
    Difference d = compare(traced.get(), page, true);
    EXPECT_LT(d.share, 0.02);
    EXPECT_EQ(d.interior, 0);
    Image raster = readPng(path("raster.png"));
    EXPECT_EQ(compare(raster.get(), page, true).exact, 0);
}

TEST_F(VectorOutputTest, UnfinishedPdfLeavesNoFile) {
    const Picture page = blobPage();
    {
        PdfDocument pdf(path("gone.pdf"), VectorOptions{});
        pdf.addPage(page.data());
    }
    EXPECT_TRUE(fs::is_empty(dir_));
    EXPECT_THROW(PdfDocument(path("missing/folder.pdf"), VectorOptions{}), std::runtime_error);
}

}  // namespace
