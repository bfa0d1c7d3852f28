#include "scaled_page.h"

#include <cairo.h>

#include <memory>

#include "page_scaling.h"
#include "palette.h"
#include "tool_error.h"

namespace notetool {

namespace {

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

}  // namespace

std::string scaledGreyRows(const uint8_t* pixels, int width, int height, bool transparent) {
    if (width <= kPageWidth && height <= kPageHeight) return reducedRows(pixels, width, height, transparent);
    if (width % kPageWidth == 0 && width / kPageWidth * kPageHeight == height)
        return repeatedRows(pixels, width / kPageWidth, transparent);
    return greyRows(scaledPage(pixels, width, height, transparent).get(), transparent);
}

}  // namespace notetool
