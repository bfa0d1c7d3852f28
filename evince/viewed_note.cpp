#include "viewed_note.h"

#include <glib.h>

#include <algorithm>
#include <cstring>

#include "document_info.h"
#include "file_names.h"
#include "page_reader.h"
#include "scaled_page.h"
#include "palette.h"
#include "tool_error.h"

namespace notebackend {

using namespace notetool;

namespace {

// The header, or none when there is none or it cannot be read: the pages still show, at the
// usual resolution.
std::optional<KwFileFeatureModule> headerOf(const std::string& path) {
    try {
        return readNoteHeader(path);
    } catch (const ToolError&) {
        return std::nullopt;
    }
}

std::string titleOf(const std::string& layer) {
    if (layer == "MAINLAYER") return "Main layer";
    if (layer == "BGLAYER") return "Background";
    return "Layer " + layer.substr(std::strlen("LAYER"));  // LAYER1 -> Layer 1
}

Surface newSurface(int width, int height) {
    return Surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height), cairo_surface_destroy);
}

// The page at width x height, as it would be were it not turned.
Surface drawUpright(const uint8_t* pixels, int width, int height) {
    Surface surface = newSurface(width, height);
    cairo_surface_flush(surface.get());
    auto* data = reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(surface.get()));
    const std::size_t stride = std::size_t(cairo_image_surface_get_stride(surface.get())) / 4;
    // Each of the page library's rows is led by its PNG filter byte.
    const std::string rows = scaledGreyRows(pixels, width, height, false);
    for (int y = 0; y < height; ++y) {
        const auto* grey = reinterpret_cast<const uint8_t*>(rows.data()) + std::size_t(y) * (std::size_t(width) + 1) + 1;
        for (int x = 0; x < width; ++x) data[std::size_t(y) * stride + x] = 0xFF000000u | 0x010101u * grey[x];
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

// The picture turned clockwise; quarter turns move whole pixels, so nothing is filtered.
Surface turned(Surface upright, int rotation) {
    if (rotation == 0) return upright;
    const int width = cairo_image_surface_get_width(upright.get());
    const int height = cairo_image_surface_get_height(upright.get());
    const bool sideways = rotation == 90 || rotation == 270;
    Surface out = newSurface(sideways ? height : width, sideways ? width : height);
    cairo_t* cr = cairo_create(out.get());
    cairo_translate(cr, cairo_image_surface_get_width(out.get()) / 2.0, cairo_image_surface_get_height(out.get()) / 2.0);
    cairo_rotate(cr, rotation * G_PI / 180);
    cairo_translate(cr, -width / 2.0, -height / 2.0);
    cairo_set_source_surface(cr, upright.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    cairo_paint(cr);
    cairo_destroy(cr);
    return out;
}

}  // namespace

ViewedNote::ViewedNote(std::string path)
    : path_(std::move(path)), title_(noteStem(path_)), pages_(notePages(path_)), header_(headerOf(path_)) {
    if (pages_.empty()) throw ToolError(path_ + ": the note has no pages");
    dpi_ = pageDpi(0, header_ ? header_->deviceDpi : "");
}

double ViewedNote::widthPoints() const { return pagePoints(kPageWidth, dpi_, 1); }
double ViewedNote::heightPoints() const { return pagePoints(kPageHeight, dpi_, 1); }

std::vector<LayerTitle> ViewedNote::layers() const {
    std::set<std::string> present;
    for (const int page : pages_) {
        try {
            for (const std::string& layer : drawingOrder(readPageLayers(path_, page), {})) present.insert(layer);
        } catch (const ToolError&) {
            // A page that cannot be read adds no layer; it shows blank.
        }
    }
    std::vector<LayerTitle> titles;
    for (auto layer = kDefaultLayerOrder.rbegin(); layer != kDefaultLayerOrder.rend(); ++layer)
        if (present.count(*layer)) titles.push_back({*layer, titleOf(*layer)});
    return titles;
}

std::vector<uint8_t> ViewedNote::compose(int index, const std::set<std::string>& hidden) const {
    std::vector<uint8_t> pixels(kPagePixels, kNothing);
    LayerSelection selection;
    for (const std::string& layer : kDefaultLayerOrder)
        if (!hidden.count(layer)) selection.only.insert(layer);
    if (selection.only.empty()) return pixels;  // every layer hidden: the paper alone
    try {
        composePage(path_, pageNumber(index), selection, false, pixels.data());
    } catch (const ToolError& e) {
        g_warning("%s", e.what());
        std::fill(pixels.begin(), pixels.end(), kNothing);
    }
    return pixels;
}

Surface ViewedNote::draw(int index, int width, int height, int rotation, const std::set<std::string>& hidden) const {
    const std::vector<uint8_t> pixels = compose(index, hidden);
    return turned(drawUpright(pixels.data(), width, height), rotation);
}

Surface ViewedNote::drawFull(int index, const std::set<std::string>& hidden) const {
    const std::vector<uint8_t> pixels = compose(index, hidden);
    return drawUpright(pixels.data(), kPageWidth, kPageHeight);
}

}  // namespace notebackend
