// libnote._libnote: the compiled half of the Python package. It reads notes through libNote
// and the page library and releases the GIL for every call into them. What they refuse is a
// ToolError, which Python sees as libnote.NoteError with its status code, or as the OSError
// of its errno when an output cannot be written; a request that the page library's checks
// refuse is a ValueError. The classes a user meets (Note, Page) are in the pure-Python half,
// libnote/__init__.py.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "config.h"
#include "kwdataload.h"
#include "log_sink.h"
#include "output_plan.h"
#include "page_pipeline.h"
#include "page_reader.h"
#include "palette.h"
#include "status.h"
#include "tool_error.h"

namespace py = pybind11;

namespace libnote_python {

namespace {

using notetool::kPageHeight;
using notetool::kPagePixels;
using notetool::kPageWidth;

using notetool::ToolError;

std::string pageText(const std::string& path, int page) { return path + ": page " + std::to_string(page); }

void checkStatus(int status, const std::string& what) {
    if (status != status::Ok) throw ToolError(what + " (code " + std::to_string(status) + ")", {status, 0, {}});
}

// Runs work without the GIL, as the library's work for the log, and words every way it can
// fail as a ToolError. The library itself raises standard exceptions for some files (a
// page number that is no number); those are the note's fault too.
template <class Work>
auto libraryCall(Work&& work) -> decltype(work()) {
    py::gil_scoped_release release;
    LibraryWork marked;
    try {
        return work();
    } catch (const ToolError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        throw ToolError(e.what());
    }
}

// ---- The note ----

std::vector<int> pagesOf(const std::string& path) {
    return libraryCall([&] { return notetool::notePages(path); });
}

// The header module's fifteen fields as the library writes them back out, file keys and
// text values; nothing when the index names no header module.
std::optional<std::vector<std::pair<std::string, std::string>>> headerOf(const std::string& path) {
    return libraryCall([&]() -> std::optional<std::vector<std::pair<std::string, std::string>>> {
        std::optional<KwFileFeatureModule> header = notetool::readNoteHeader(path);
        if (!header) return std::nullopt;
        std::vector<ModuleItem> items;
        header->produceVecMI(items);
        std::vector<std::pair<std::string, std::string>> fields;
        for (const ModuleItem& item : items) fields.emplace_back(item.key, item.value);
        return fields;
    });
}

// ---- A page's pictures ----

// The layers drawn, bottom to top, and the layers the page has whether drawn or not.
std::pair<std::vector<std::string>, std::vector<std::string>> layersOf(const std::string& path, int page) {
    return libraryCall([&] {
        KwPageFeatureModule module = notetool::readPageLayers(path, page);
        std::vector<std::string> drawn = notetool::drawingOrder(module, {});
        module.layerSeq = "nolayer";  // the default order, which leaves out no layer
        return std::make_pair(std::move(drawn), notetool::drawingOrder(module, {}));
    });
}

std::string layerText(const std::string& path, int page, const std::string& layer) {
    return pageText(path, page) + ": layer " + layer + " cannot be read";
}

// The library writes only a layer's ink and white, so the picture starts transparent.
void fetchLayer(const std::string& path, int page, const std::string& layer, uint8_t* pixels) {
    std::memset(pixels, notetool::kNothing, kPagePixels);
    KwDataLoad loader;
    checkStatus(loader.fetchNoteDataFromFileByLayer(path, page, layer, reinterpret_cast<char*>(pixels)),
                layerText(path, page, layer));
}

py::array_t<uint8_t> layerPixels(const std::string& path, int page, const std::string& layer) {
    py::array_t<uint8_t> pixels({kPageHeight, kPageWidth});
    uint8_t* data = pixels.mutable_data();
    libraryCall([&] { fetchLayer(path, page, layer, data); });
    return pixels;
}

py::array_t<uint32_t> layerColours(const std::string& path, int page, const std::string& layer) {
    uint32_t* colours = libraryCall([&] {
        KwDataLoad loader;
        uint32_t* loaded = loader.loadImageData(path, page, layer);
        if (!loaded) {
            // loadImageData gives no reason; the picture call of the same layer does.
            std::vector<uint8_t> scratch(kPagePixels);
            fetchLayer(path, page, layer, scratch.data());
            throw ToolError(layerText(path, page, layer));
        }
        return loaded;
    });
    py::capsule owner(colours, [](void* p) { delete[] static_cast<uint32_t*>(p); });
    return py::array_t<uint32_t>({kPageHeight, kPageWidth}, colours, owner);
}

// The composited page as RGBA, each pixel a square of scale x scale, as the PNG writer
// draws a page at a whole scale.
py::array_t<uint8_t> renderPage(const std::string& path, int page, int scale, bool background, bool transparent) {
    if (scale < 1) throw py::value_error("scale must be a whole number of at least 1");
    const std::size_t width = std::size_t(kPageWidth) * scale;
    py::array_t<uint8_t> rgba({std::size_t(kPageHeight) * scale, width, std::size_t(4)});
    uint8_t* out = rgba.mutable_data();
    libraryCall([&] {
        notetool::LayerSelection selection;
        selection.background = background;
        std::vector<uint8_t> pixels(kPagePixels);
        notetool::composePage(path, page, selection, transparent, pixels.data());
        std::array<std::array<uint8_t, 4>, 256> colourOf;
        for (int value = 0; value < 256; ++value) {
            const uint32_t argb = notetool::pixelColour(static_cast<uint8_t>(value), transparent);
            colourOf[value] = {uint8_t(argb >> 16), uint8_t(argb >> 8), uint8_t(argb), uint8_t(argb >> 24)};
        }
        const std::size_t rowBytes = width * 4;
        for (int y = 0; y < kPageHeight; ++y) {
            uint8_t* row = out + std::size_t(y) * scale * rowBytes;
            uint8_t* at = row;
            for (const uint8_t* in = &pixels[std::size_t(y) * kPageWidth]; in != &pixels[std::size_t(y + 1) * kPageWidth]; ++in)
                for (int copy = 0; copy < scale; ++copy, at += 4) std::memcpy(at, colourOf[*in].data(), 4);
            for (int copy = 1; copy < scale; ++copy) std::memcpy(row + copy * rowBytes, row, rowBytes);
        }
    });
    return rgba;
}

// ---- Strokes ----

// One stroke of a page. Python holds it by a shared pointer, so arrays of its points are
// made only when asked for.
using Stroke = std::shared_ptr<TrailContainer>;

std::vector<Stroke> strokesOf(const std::string& path, int page) {
    std::vector<TrailContainer> trails = libraryCall([&] {
        std::vector<TrailContainer> read;
        KwDataLoad loader;
        checkStatus(loader.fetchNotePathFromFile(read, path, page), pageText(path, page) + ": the strokes cannot be read");
        return read;
    });
    std::vector<Stroke> strokes;
    strokes.reserve(trails.size());
    for (TrailContainer& trail : trails) strokes.push_back(std::make_shared<TrailContainer>(std::move(trail)));
    return strokes;
}

py::array_t<int32_t> pointArray(const std::vector<MorvaPoint>& points) {
    static_assert(sizeof(MorvaPoint) == 2 * sizeof(int32_t), "a point is two 32-bit coordinates");
    py::array_t<int32_t> array({points.size(), std::size_t(2)});
    if (!points.empty()) std::memcpy(array.mutable_data(), points.data(), points.size() * sizeof(MorvaPoint));
    return array;
}

py::array_t<uint16_t> pressureArray(const Stroke& stroke) {
    py::array_t<uint16_t> array(stroke->pressures.size());
    if (!stroke->pressures.empty())
        std::memcpy(array.mutable_data(), stroke->pressures.data(), stroke->pressures.size() * sizeof(uint16_t));
    return array;
}

// The mapping reports its failures only in the log and leaves its output as it was, so
// they are checked here first, to raise instead of answering with nothing.
py::array_t<int32_t> strokeOnImage(const Stroke& stroke, int width, int height) {
    if (width < 1 || height < 1) throw py::value_error("width and height must be at least 1");
    if (stroke->maxX == 0 || stroke->maxY == 0)
        throw ToolError("the stroke has no digitizer range (maxX or maxY is 0)");
    if (stroke->m_emrPointAxis < 0 || stroke->m_emrPointAxis > 3)
        throw ToolError("the stroke's axis value " + std::to_string(stroke->m_emrPointAxis) + " is not 0 to 3");
    std::vector<MorvaPoint> mapped;
    // Onto the last pixel index, as notetool's strokes command maps them.
    libraryCall([&] { mappingTrailPoints2imageSize(*stroke, width, height, mapped, 1); });
    return pointArray(mapped);
}

// ---- Writing ----

// The parameters of Note.save(), as the page library's messages name them.
const notetool::ArgumentNames kParameterNames{"format", "path", "pages", "scale", "dpi", "workers"};

struct SaveRequest {
    notetool::NoteJob job;  // the note and its pages; the plan places them
    notetool::OutputRequest output;
    notetool::DrawingOptions drawing;
};

// Writes the pages through notetool's plan, pipeline and writers, so that the bytes are the
// command line's. A failure raises as the first one's cause says (ToolError), its message
// followed by the others'.
void save(SaveRequest request) {
    const notetool::OutputPlan plan = notetool::planOutput(request.output, kParameterNames);
    notetool::NoteJob& job = request.job;
    notetool::placePages(plan, job, kParameterNames);
    // The files are notetool's, written by its writers, and say so.
    request.drawing.creator = notetool::kCreator;
    std::vector<notetool::Failure> failures;
    std::mutex failuresLock;
    libraryCall([&] {
        notetool::makeOutputFolder(job);
        PipelineWork pipeline;
        const notetool::PageEvents events{[&](const notetool::Failure& failure) {
                                              std::lock_guard<std::mutex> lock(failuresLock);
                                              failures.push_back(failure);
                                          },
                                          {}};
        notetool::renderNote(job, plan.format, request.drawing, request.output.workers, events);
    });
    if (failures.empty()) return;
    std::string message = failures.front().message;
    for (std::size_t i = 1; i < failures.size(); ++i) message += (i == 1 ? " (also: " : "; ") + failures[i].message;
    if (failures.size() > 1) message += ")";
    throw ToolError(message, failures.front().cause);
}

// The OSError of the errno, as Python words it; Python chooses its subclass
// (PermissionError for EACCES, FileNotFoundError for ENOENT, ...).
void raiseOSError(int error, const std::string& file) {
    errno = error;
    PyErr_SetFromErrnoWithFilename(PyExc_OSError, file.c_str());
}

void setLogPath(const std::optional<std::string>& path) {
    try {
        setLog(path.value_or(""));
    } catch (const std::system_error& e) {
        raiseOSError(e.code().value(), *path);
        throw py::error_already_set();
    }
}

// An output that cannot be written is an OSError, with its errno when the system gave one;
// anything else a NoteError with libNote's status code.
void raiseFailure(const ToolError& failure) {
    const notetool::Cause& cause = failure.cause;
    if (cause.error != 0) return raiseOSError(cause.error, cause.file);
    if (!cause.file.empty()) return PyErr_SetString(PyExc_OSError, failure.what());
    const char* reason = cause.status ? status::statusText(*cause.status) : nullptr;
    py::object error = py::module_::import("libnote._errors").attr("NoteError")(
        failure.what(), cause.status ? py::object(py::int_(*cause.status)) : py::object(py::none()),
        reason ? py::object(py::str(reason)) : py::object(py::none()));
    PyErr_SetObject(error.get_type().ptr(), error.ptr());
}

}  // namespace

}  // namespace libnote_python

PYBIND11_MODULE(_libnote, m) {
    using namespace libnote_python;
    m.doc() = "The compiled half of libnote; use the libnote package instead.";
    installLogSink();
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const ToolError& failure) {
            raiseFailure(failure);
        }
    });

    m.attr("PAGE_WIDTH") = kPageWidth;
    m.attr("PAGE_HEIGHT") = kPageHeight;
    m.attr("LAYER_ORDER") = notetool::kDefaultLayerOrder;

    m.def("note_pages", &pagesOf, py::arg("path"));
    m.def("header", &headerOf, py::arg("path"));
    m.def("page_layers", &layersOf, py::arg("path"), py::arg("page"));
    m.def("layer_pixels", &layerPixels, py::arg("path"), py::arg("page"), py::arg("layer"));
    m.def("layer_colours", &layerColours, py::arg("path"), py::arg("page"), py::arg("layer"));
    m.def("render_page", &renderPage, py::arg("path"), py::arg("page"), py::arg("scale"), py::arg("background"),
          py::arg("transparent"));
    m.def("page_strokes", &strokesOf, py::arg("path"), py::arg("page"));
    m.def(
        "save",
        [](std::string note, std::vector<int> pages, int largestPage, std::string path, std::string format,
           double scale, bool background, std::vector<std::string> layers, bool transparent, bool raster, bool vector,
           double dpi, bool strict, int workers) {
            SaveRequest request{{note, pages, largestPage, "", "", strict}, {path, format, scale, dpi, workers}, {}};
            notetool::DrawingOptions& drawing = request.drawing;
            drawing.scale = scale;
            drawing.transparent = transparent;
            drawing.raster = raster;
            drawing.vector = vector;
            drawing.dpi = dpi;
            drawing.layers.background = background;
            drawing.layers.only.insert(layers.begin(), layers.end());
            save(std::move(request));
        },
        py::arg("note"), py::arg("pages"), py::arg("largest_page"), py::arg("path"), py::arg("format"),
        py::arg("scale"), py::arg("background"), py::arg("layers"), py::arg("transparent"), py::arg("raster"),
        py::arg("vector"), py::arg("dpi"), py::arg("strict"), py::arg("workers"));
    m.def("set_log", &setLogPath, py::arg("path"));

    py::class_<TrailContainer, Stroke>(m, "Stroke", R"(One pen stroke of a page.

Points are in the digitizer's units (0 to max_x by 0 to max_y), along the digitizer's own
axes; to_image() maps them onto the pixels of an image of any size.)")
        .def_property_readonly(
            "points", [](const Stroke& s) { return pointArray(s->m_points); },
            "The sampled points, an (N, 2) int32 array of x, y in digitizer units.")
        .def_property_readonly("pressures", &pressureArray, "The pen pressure of each point, a uint16 array of N.")
        .def_property_readonly("max_x", [](const Stroke& s) { return s->maxX; }, "The digitizer's range in x.")
        .def_property_readonly("max_y", [](const Stroke& s) { return s->maxY; }, "The digitizer's range in y.")
        .def_property_readonly(
            "axis", [](const Stroke& s) { return s->m_emrPointAxis; },
            "How the digitizer lies on the page: 0 as the image, 1 and 3 a quarter turn, 2 a half turn.")
        .def("to_image", &strokeOnImage, py::arg("width"), py::arg("height"),
             R"(The points on an image of width x height pixels, an (N, 2) int32 array.

The digitizer's range is mapped onto 0 .. width - 1 and 0 .. height - 1, turned as the
stroke's axis says. Raises NoteError when the stroke has no range or an unknown axis.)")
        .def("__len__", [](const Stroke& s) { return s->m_points.size(); })
        .def("__repr__", [](const Stroke& s) { return "<libnote.Stroke of " + std::to_string(s->m_points.size()) + " points>"; });
}
