#include "png_output.h"

#include <algorithm>
#include <array>
#include <cairo.h>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <memory>
#include <png.h>
#include <zlib.h>
#include <vector>

#include "output_file.h"
#include "palette.h"
#include "tool_error.h"

namespace notetool {

namespace {

// An image ready for libpng: rows produced on demand into one row buffer, so that a page is
// never held twice in memory.
struct PngImage {
    int width = 0;
    int height = 0;
    png_uint_32 pixelsPerMetre = 0;
    int bitDepth = 8;
    int colourType = PNG_COLOR_TYPE_PALETTE;
    std::vector<png_color> palette;
    std::vector<png_byte> alphas;  // tRNS entries, palette order
    std::vector<png_text> text;    // tEXt chunks, pointing into the writer's attributes
    std::vector<png_byte> row;
    void (*fillRow)(void* source, int y, png_byte* row) = nullptr;
    void* source = nullptr;
};

// The file keeps a failed write's reason; libpng is only told to stop.
void writeBytes(png_structp png, png_bytep data, png_size_t length) {
    if (!OutputFile::writeCallback(png_get_io_ptr(png), data, length)) png_error(png, "write failed");
}

void flushNothing(png_structp) {}

void recordError(png_structp png, png_const_charp message) {
    auto* error = static_cast<std::string*>(png_get_error_ptr(png));
    if (error->empty()) *error = message;
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

// libpng reports errors by longjmp, so nothing here may own memory or have a destructor:
// every C++ object lives in the caller.
bool encode(png_structp png, png_infop info, PngImage& image) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                 image.bitDepth, image.colourType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_pHYs(png, info, image.pixelsPerMetre, image.pixelsPerMetre, PNG_RESOLUTION_METER);
    // Before the image data, where readers that stop at the pixels (thumbnail caches) look.
    if (!image.text.empty()) png_set_text(png, info, image.text.data(), static_cast<int>(image.text.size()));
    if (image.colourType == PNG_COLOR_TYPE_PALETTE) {
        png_set_PLTE(png, info, image.palette.data(), static_cast<int>(image.palette.size()));
        if (!image.alphas.empty())
            png_set_tRNS(png, info, image.alphas.data(), static_cast<int>(image.alphas.size()), nullptr);
        // Filters do not help palette indices, and skipping them saves most of the time.
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    }
    // Pages are mostly long runs of one value: run-length matching compresses them as well
    // as the default strategy at a fraction of the time.
    png_set_compression_strategy(png, Z_RLE);
    png_write_info(png, info);
    for (int y = 0; y < image.height; ++y) {
        image.fillRow(image.source, y, image.row.data());
        png_write_row(png, image.row.data());
    }
    png_write_end(png, info);
    return true;
}

void writeImage(OutputFile& file, PngImage& image) {
    std::string error;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &error, recordError, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw ToolError(file.name() + ": cannot start the PNG encoder");
    }
    png_set_write_fn(png, &file, writeBytes, flushNothing);
    const bool ok = encode(png, info, image);
    png_destroy_write_struct(&png, &info);
    if (ok) return;
    file.rethrowFailure();
    throw ToolError(file.name() + ": " + error);
}

// ---- The page as a palette picture, scaled by a whole number ----

// The decoder writes only the eight pixel values of a layer, which take at most six
// colours, so one palette of four bits a pixel serves every page, and no pass over the
// page is needed to choose it.
struct PaletteSource {
    const uint8_t* pixels;
    int scale;
    std::array<uint8_t, 256> index;  // pixel value -> palette index
    std::vector<png_byte> pairs;     // two pixel values (first in the low byte) -> packed byte
    std::vector<uint8_t> indices;    // one scaled row of palette indices
};

void fillPaletteRow(void* source, int y, png_byte* row) {
    auto& s = *static_cast<PaletteSource*>(source);
    const uint8_t* in = s.pixels + std::size_t(y / s.scale) * kPageWidth;
    if (s.scale == 1) {  // the common case: one table look-up for each two pixels
        for (int x = 0; x < kPageWidth; x += 2) *row++ = s.pairs[in[x] | in[x + 1] << 8];
        return;
    }
    uint8_t* out = s.indices.data();
    for (int x = 0; x < kPageWidth; ++x) out = std::fill_n(out, s.scale, s.index[in[x]]);
    for (std::size_t x = 0; x < s.indices.size(); x += 2)  // the scaled width is even: 1404 is
        *row++ = static_cast<png_byte>(s.indices[x] << 4 | s.indices[x + 1]);
}

void writePalettePng(OutputFile& file, const uint8_t* pixels, int scale, bool transparent, PngImage image) {
    PaletteSource source{pixels, scale, {}, std::vector<png_byte>(65536), std::vector<uint8_t>(std::size_t(kPageWidth) * scale)};
    std::vector<uint32_t> colours;
    for (int value = 0; value < 256; ++value) {
        const uint32_t colour = pixelColour(static_cast<uint8_t>(value), transparent);
        auto at = std::find(colours.begin(), colours.end(), colour);
        if (at == colours.end()) at = colours.insert(colours.end(), colour);
        source.index[value] = static_cast<uint8_t>(at - colours.begin());
    }
    for (int pair = 0; pair < 65536; ++pair)
        source.pairs[pair] = static_cast<png_byte>(source.index[pair & 0xFF] << 4 | source.index[pair >> 8]);
    for (uint32_t colour : colours) {
        image.palette.push_back({png_byte(colour >> 16), png_byte(colour >> 8), png_byte(colour)});
        image.alphas.push_back(png_byte(colour >> 24));
    }
    // tRNS may stop at the last entry that is not opaque.
    while (!image.alphas.empty() && image.alphas.back() == 0xFF) image.alphas.pop_back();

    image.width = kPageWidth * scale;
    image.height = kPageHeight * scale;
    image.bitDepth = 4;
    image.row.resize(std::size_t(image.width + 1) / 2);
    image.fillRow = fillPaletteRow;
    image.source = &source;
    writeImage(file, image);
}

// ---- Any other scale: grey (and alpha) images ----

// The side of a page side's `pixels` scaled, at least one pixel.
int scaledLength(int pixels, double scale) { return std::max(1, static_cast<int>(std::lround(pixels * scale))); }

// Puts pixel x of a grey row, or of a grey-and-alpha row.
void putGrey(png_byte* row, int x, unsigned grey, unsigned alpha, bool withAlpha) {
    if (withAlpha) {
        row[2 * x] = png_byte(grey);
        row[2 * x + 1] = png_byte(alpha);
    } else {
        row[x] = png_byte(grey);
    }
}

void writeGreyPng(OutputFile& file, PngImage& image, int width, int height, bool withAlpha,
                  void (*fillRow)(void* source, int y, png_byte* row), void* source) {
    image.width = width;
    image.height = height;
    image.colourType = withAlpha ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_GRAY;
    image.row.resize(std::size_t(width) * (withAlpha ? 2 : 1));
    image.fillRow = fillRow;
    image.source = source;
    writeImage(file, image);
}

// ---- Reductions: each pixel the mean of the page pixels it covers ----

// The page is read once, a band of rows for each row of the image, and nothing of its size is
// made: scaling a full-size colour copy costs many times what averaging does, and a reduction
// (a thumbnail, a preview) is where speed matters most. Blocks have their edges on whole page
// pixels, so they differ in size by one pixel at most.
struct ReductionSource {
    const uint8_t* pixels;
    int width;
    int height;
    bool alpha;
    std::array<uint32_t, 256> greyTimesAlpha;  // so that a clear pixel adds no colour to the mean
    std::array<uint32_t, 256> alphaOf;
    std::vector<int> blockLeft;  // page column where each block starts, and the page width last
};

void fillReducedRow(void* source, int y, png_byte* row) {
    const auto& s = *static_cast<const ReductionSource*>(source);
    const int top = static_cast<int>(int64_t(y) * kPageHeight / s.height);
    const int bottom = static_cast<int>(int64_t(y + 1) * kPageHeight / s.height);
    for (int x = 0; x < s.width; ++x) {
        const int left = s.blockLeft[std::size_t(x)];
        const int right = s.blockLeft[std::size_t(x) + 1];
        uint64_t colour = 0;
        uint64_t alpha = 0;
        for (int pageY = top; pageY < bottom; ++pageY) {
            const uint8_t* in = s.pixels + std::size_t(pageY) * kPageWidth;
            for (int pageX = left; pageX < right; ++pageX) {
                colour += s.greyTimesAlpha[in[pageX]];
                alpha += s.alphaOf[in[pageX]];
            }
        }
        const uint64_t count = uint64_t(bottom - top) * uint64_t(right - left);
        const auto grey = static_cast<unsigned>(alpha == 0 ? 0 : (colour + alpha / 2) / alpha);
        putGrey(row, x, grey, static_cast<unsigned>((alpha + count / 2) / count), s.alpha);
    }
}

void writeReducedPng(OutputFile& file, const uint8_t* pixels, double scale, bool transparent, PngImage image) {
    ReductionSource source{pixels, scaledLength(kPageWidth, scale), scaledLength(kPageHeight, scale), transparent, {}, {}, {}};
    for (int value = 0; value < 256; ++value) {
        const uint32_t colour = pixelColour(static_cast<uint8_t>(value), transparent);
        source.alphaOf[std::size_t(value)] = colour >> 24;
        // All page colours are grey, so red stands for all.
        source.greyTimesAlpha[std::size_t(value)] = ((colour >> 16) & 0xFF) * (colour >> 24);
    }
    for (int x = 0; x <= source.width; ++x)
        source.blockLeft.push_back(static_cast<int>(int64_t(x) * kPageWidth / source.width));
    writeGreyPng(file, image, source.width, source.height, transparent, fillReducedRow, &source);
}

// ---- Enlargements by other than whole numbers: filtered by cairo ----

struct GreySource {
    const unsigned char* data;
    int stride;
    int width;
    bool alpha;
};

void fillGreyRow(void* source, int y, png_byte* row) {
    const auto& s = *static_cast<const GreySource*>(source);
    const auto* in = reinterpret_cast<const uint32_t*>(s.data + std::size_t(y) * s.stride);
    for (int x = 0; x < s.width; ++x) {
        const uint32_t p = in[x];
        const unsigned a = p >> 24;
        // cairo's pixels are premultiplied; all page colours are grey, so red stands for all.
        putGrey(row, x, a == 0 ? 0 : (((p >> 16) & 0xFF) * 255 + a / 2) / a, a, s.alpha);
    }
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

void writeScaledPng(OutputFile& file, const uint8_t* pixels, double scale, bool transparent, PngImage image) {
    Surface page(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kPageWidth, kPageHeight), cairo_surface_destroy);
    cairo_surface_flush(page.get());
    unsigned char* data = cairo_image_surface_get_data(page.get());
    const int stride = cairo_image_surface_get_stride(page.get());
    for (int y = 0; y < kPageHeight; ++y) {
        auto* out = reinterpret_cast<uint32_t*>(data + std::size_t(y) * stride);
        const uint8_t* in = pixels + std::size_t(y) * kPageWidth;
        for (int x = 0; x < kPageWidth; ++x) out[x] = pixelColour(in[x], transparent);  // grey or clear: premultiplied as is
    }
    cairo_surface_mark_dirty(page.get());

    const int width = scaledLength(kPageWidth, scale);
    const int height = scaledLength(kPageHeight, scale);
    Surface scaled(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height), cairo_surface_destroy);
    cairo_t* cr = cairo_create(scaled.get());
    cairo_scale(cr, double(width) / kPageWidth, double(height) / kPageHeight);
    cairo_set_source_surface(cr, page.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_paint(cr);
    const cairo_status_t status = cairo_status(cr);
    cairo_destroy(cr);
    cairo_surface_flush(scaled.get());
    if (status != CAIRO_STATUS_SUCCESS) throw ToolError(file.name() + ": cannot scale the page: " + cairo_status_to_string(status));

    GreySource source{cairo_image_surface_get_data(scaled.get()), cairo_image_surface_get_stride(scaled.get()), width,
                      transparent};
    writeGreyPng(file, image, width, height, transparent, fillGreyRow, &source);
}

class PngWriter : public PageWriter {
public:
    PngWriter(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info)
        : file_(file),
          options_(options),
          attributes_(info.attributes),
          pixelsPerMetre_(static_cast<png_uint_32>(std::lround(info.dpi * options.scale / 0.0254))) {}

    void addPage(const uint8_t* pixels) override {
        const double whole = std::round(options_.scale);
        if (whole >= 1 && std::fabs(options_.scale - whole) < 1e-9)
            writePalettePng(file_, pixels, static_cast<int>(whole), options_.transparent, described());
        else if (options_.scale < 1)
            writeReducedPng(file_, pixels, options_.scale, options_.transparent, described());
        else
            writeScaledPng(file_, pixels, options_.scale, options_.transparent, described());
    }

    void finish() override {}

private:
    // An image that says what every page of this writer says: its resolution and attributes.
    PngImage described() const {
        PngImage image;
        image.pixelsPerMetre = pixelsPerMetre_;
        for (const auto& [key, text] : attributes_) {
            png_text chunk{};
            chunk.compression = PNG_TEXT_COMPRESSION_NONE;
            chunk.key = const_cast<char*>(key.c_str());  // libpng copies both, and writes neither
            chunk.text = const_cast<char*>(text.c_str());
            image.text.push_back(chunk);
        }
        return image;
    }

    OutputFile& file_;
    DrawingOptions options_;
    std::vector<std::pair<std::string, std::string>> attributes_;
    png_uint_32 pixelsPerMetre_;
};

}  // namespace

std::unique_ptr<PageWriter> openPng(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info) {
    return std::make_unique<PngWriter>(file, options, info);
}

}  // namespace notetool
