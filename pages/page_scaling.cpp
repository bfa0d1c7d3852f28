#include "page_scaling.h"

#include <algorithm>
#include <array>
#include <cairo.h>
#include <cmath>
#include <memory>
#include <vector>

#include "palette.h"
#include "tool_error.h"

namespace notetool {

namespace {

// Appends a grey pixel, with its alpha when the rows have one.
void putGrey(std::string& rows, unsigned grey, unsigned alpha, bool withAlpha) {
    rows += static_cast<char>(grey);
    if (withAlpha) rows += static_cast<char>(alpha);
}

// ---- Reductions: each pixel the mean of the page pixels it covers ----

// The page is read once, a band of rows for each row of the image, and nothing of its size is
// made: scaling a full-size colour copy costs many times what averaging does, and a reduction
// (a thumbnail, a preview) is where speed matters most. Blocks have their edges on whole page
// pixels, so they differ in size by one pixel at most.
std::string reducedRows(const uint8_t* pixels, int width, int height, bool transparent) {
    std::array<uint32_t, 256> greyTimesAlpha{};  // so that a clear pixel adds no colour to the mean
    std::array<uint32_t, 256> alphaOf{};
    for (int value = 0; value < 256; ++value) {
        const uint32_t colour = pixelColour(static_cast<uint8_t>(value), transparent);
        alphaOf[std::size_t(value)] = colour >> 24;
        // All page colours are grey, so red stands for all.
        greyTimesAlpha[std::size_t(value)] = ((colour >> 16) & 0xFF) * (colour >> 24);
    }
    std::vector<int> blockLeft;  // page column where each block starts, and the page width last
    for (int x = 0; x <= width; ++x) blockLeft.push_back(static_cast<int>(int64_t(x) * kPageWidth / width));

    std::string rows;
    rows.reserve(std::size_t(height) * (1 + std::size_t(width) * (transparent ? 2 : 1)));
    for (int y = 0; y < height; ++y) {
        const int top = static_cast<int>(int64_t(y) * kPageHeight / height);
        const int bottom = static_cast<int>(int64_t(y + 1) * kPageHeight / height);
        rows += '\0';
        for (int x = 0; x < width; ++x) {
            const int left = blockLeft[std::size_t(x)];
            const int right = blockLeft[std::size_t(x) + 1];
            uint64_t colour = 0;
            uint64_t alpha = 0;
            for (int pageY = top; pageY < bottom; ++pageY) {
                const uint8_t* in = pixels + std::size_t(pageY) * kPageWidth;
                for (int pageX = left; pageX < right; ++pageX) {
                    colour += greyTimesAlpha[in[pageX]];
                    alpha += alphaOf[in[pageX]];
                }
            }
            const uint64_t count = uint64_t(bottom - top) * uint64_t(right - left);
            const auto grey = static_cast<unsigned>(alpha == 0 ? 0 : (colour + alpha / 2) / alpha);
            putGrey(rows, grey, static_cast<unsigned>((alpha + count / 2) / count), transparent);
        }
    }
    return rows;
}

// ---- Enlargements by other than whole numbers: filtered by cairo ----

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Surface scaledPage(const uint8_t* pixels, int width, int height, bool transparent) {
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

    Surface scaled(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height), cairo_surface_destroy);
    cairo_t* cr = cairo_create(scaled.get());
    cairo_scale(cr, double(width) / kPageWidth, double(height) / kPageHeight);
    cairo_set_source_surface(cr, page.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_paint(cr);
    const cairo_status_t status = cairo_status(cr);
    cairo_destroy(cr);
    cairo_surface_flush(scaled.get());
    if (status != CAIRO_STATUS_SUCCESS) throw ToolError(std::string("cannot scale the page: ") + cairo_status_to_string(status));
    return scaled;
}

// The rows of a scaled page as grey, or grey and alpha, each led by its filter byte.
std::string greyRows(cairo_surface_t* image, bool alpha) {
    const int width = cairo_image_surface_get_width(image);
    const int height = cairo_image_surface_get_height(image);
    const int stride = cairo_image_surface_get_stride(image);
    const unsigned char* data = cairo_image_surface_get_data(image);
    std::string rows;
    rows.reserve(std::size_t(height) * (1 + std::size_t(width) * (alpha ? 2 : 1)));
    for (int y = 0; y < height; ++y) {
        const auto* in = reinterpret_cast<const uint32_t*>(data + std::size_t(y) * stride);
        rows += '\0';
        for (int x = 0; x < width; ++x) {
            const uint32_t p = in[x];
            const unsigned a = p >> 24;
            // cairo's pixels are premultiplied; all page colours are grey, so red stands for all.
            putGrey(rows, a == 0 ? 0 : (((p >> 16) & 0xFF) * 255 + a / 2) / a, a, alpha);
        }
    }
    return rows;
}

// ---- Enlargements by whole numbers: each page pixel a block ----

std::string repeatedRows(const uint8_t* pixels, int factor, bool transparent) {
    const int width = kPageWidth * factor;
    std::string rows;
    rows.reserve(std::size_t(kPageHeight) * factor * (1 + std::size_t(width) * (transparent ? 2 : 1)));
    std::string row;
    for (int y = 0; y < kPageHeight; ++y) {
        row.assign(1, '\0');
        const uint8_t* in = pixels + std::size_t(y) * kPageWidth;
        for (int x = 0; x < kPageWidth; ++x) {
            const uint32_t colour = pixelColour(in[x], transparent);
            for (int copy = 0; copy < factor; ++copy) putGrey(row, (colour >> 16) & 0xFF, colour >> 24, transparent);
        }
        for (int copy = 0; copy < factor; ++copy) rows += row;
    }
    return rows;
}

}  // namespace

int scaledLength(int pixels, double scale) { return std::max(1, static_cast<int>(std::lround(pixels * scale))); }

double fitScale(int width, int height) {
    return std::min({1.0, double(width) / kPageWidth, double(height) / kPageHeight});
}

std::string scaledGreyRows(const uint8_t* pixels, int width, int height, bool transparent) {
    if (width <= kPageWidth && height <= kPageHeight) return reducedRows(pixels, width, height, transparent);
    if (width % kPageWidth == 0 && width / kPageWidth * kPageHeight == height)
        return repeatedRows(pixels, width / kPageWidth, transparent);
    return greyRows(scaledPage(pixels, width, height, transparent).get(), transparent);
}

}  // namespace notetool
