// The WebAssembly module's interface: the page library's calls on a note that the JavaScript
// side has put into the in-memory file system. Every call hands back a plain object, or
// { error, code } when the library refuses, so that a bad note never becomes a trap that
// would take the instance and every other open note with it.

#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "document_info.h"
#include "page_reader.h"
#include "page_rgba.h"
#include "page_strokes.h"
#include "palette.h"
#include "tool_error.h"

namespace {

using emscripten::val;
using namespace notetool;

val failure(const std::string& message, int code) {
    val result = val::object();
    result.set("error", message);
    result.set("code", code);
    return result;
}

// Runs a call, turning what the page library throws into a failure. The library's log goes to
// standard output, which is flushed so that the JavaScript side has all of this call's text.
template <typename Call>
val guarded(Call call) {
    val result = val::undefined();
    try {
        result = call();
    } catch (const ToolError& e) {
        result = failure(e.what(), e.cause.status.value_or(0));
    } catch (const std::bad_alloc&) {
        result = failure("out of memory", 0);
    } catch (const std::exception& e) {
        result = failure(e.what(), 0);
    }
    std::fflush(stdout);
    return result;
}

val stringArray(const std::vector<std::string>& texts) {
    val list = val::array();
    for (const std::string& text : texts) list.call<void>("push", text);
    return list;
}

val pages(std::string path) {
    return guarded([&] {
        val list = val::array();
        for (int page : notePages(path)) list.call<void>("push", page);
        return list;
    });
}

// The page's size in pixels and on paper, by the rule of notetool's PDF pages.
val pageSize(std::string path) {
    return guarded([&] {
        const double dpi = noteDpi(path, 0);
        val size = val::object();
        size.set("width", kPageWidth);
        size.set("height", kPageHeight);
        size.set("dpi", dpi);
        size.set("widthPt", pagePoints(kPageWidth, dpi, 1));
        size.set("heightPt", pagePoints(kPageHeight, dpi, 1));
        return size;
    });
}

// The layers the page has, top first, as notetool info lists them.
val layers(std::string path, int page) {
    return guarded([&] {
        std::vector<std::string> order = drawingOrder(readPageLayers(path, page), LayerSelection());
        std::reverse(order.begin(), order.end());
        return stringArray(order);
    });
}

// The composited page and its RGBA image live here from one render to the next (the
// JavaScript side copies the image), so that a render allocates nothing.
std::vector<uint8_t> pixels(kPagePixels);
libnoteweb::RgbaImage image;

// The page at `scale` (a whole number, or below 1) as RGBA; `only` empty draws every layer.
val render(std::string path, int page, double scale, val only, bool transparent) {
    return guarded([&] {
        LayerSelection selection;
        for (const std::string& name : emscripten::vecFromJSArray<std::string>(only)) selection.only.insert(name);
        if (!libnoteweb::drawableScale(scale)) throw std::invalid_argument("scale " + std::to_string(scale) + " cannot be drawn");
        composePage(path, page, selection, transparent, pixels.data());
        libnoteweb::pageRgba(pixels.data(), scale, transparent, image);
        val result = val::object();
        result.set("width", image.width);
        result.set("height", image.height);
        result.set("data", val(emscripten::typed_memory_view(image.data.size(), image.data.data())));
        return result;
    });
}

val strokes(std::string path, int page, int width, int height) {
    return guarded([&] {
        val list = val::array();
        for (const MappedStroke& stroke : pageStrokes(path, page, width, height)) {
            val points = val::array();
            for (const MorvaPoint& p : stroke.points) {
                val point = val::array();
                point.call<void>("push", p.x);
                point.call<void>("push", p.y);
                points.call<void>("push", point);
            }
            val pressures = val::array();
            for (uint16_t pressure : stroke.pressures) pressures.call<void>("push", pressure);
            val item = val::object();
            item.set("points", points);
            item.set("pressures", pressures);
            list.call<void>("push", item);
        }
        return list;
    });
}

}  // namespace

EMSCRIPTEN_BINDINGS(libnote) {
    emscripten::function("layerNames", +[] { return stringArray(kDefaultLayerOrder); });
    emscripten::function("pages", &pages);
    emscripten::function("pageSize", &pageSize);
    emscripten::function("layers", &layers);
    emscripten::function("render", &render);
    emscripten::function("strokes", &strokes);
}
