#include "vector_output.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>
#include <potracelib.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <vector>

#include "output_file.h"
#include "palette.h"

namespace notetool {

namespace {

using SurfacePtr = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using ContextPtr = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

[[noreturn]] void fail(const std::string& what, cairo_status_t status) {
    throw std::runtime_error(what + ": " + cairo_status_to_string(status));
}

void checkSurface(cairo_surface_t* surface, const std::string& what) {
    cairo_status_t status = cairo_surface_status(surface);
    if (status != CAIRO_STATUS_SUCCESS) fail(what, status);
}

cairo_status_t appendToString(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

void setSourceColour(cairo_t* cr, uint32_t argb) {
    cairo_set_source_rgba(cr, ((argb >> 16) & 0xFF) / 255.0, ((argb >> 8) & 0xFF) / 255.0,
                          (argb & 0xFF) / 255.0, (argb >> 24) / 255.0);
}

uint8_t luminance(uint32_t argb) {
    return static_cast<uint8_t>((((argb >> 16) & 0xFF) * 299 + ((argb >> 8) & 0xFF) * 587 +
                                 (argb & 0xFF) * 114) / 1000);
}

// The colours a page can show, each with the pixel values that take it, lightest first.
// Each pixel has one colour, so the order matters only where a renderer blends the
// anti-aliased edges of neighbouring colours: painting the dark ink last keeps writing crisp
// over grey and white ink, as the pixels show it.
struct InkColour {
    uint32_t argb;
    std::vector<uint8_t> values;
};

std::vector<InkColour> inkColours() {
    std::vector<InkColour> colours;
    for (uint8_t value : kInkValues) {
        uint32_t argb = pixelColour(value, false);
        auto same = std::find_if(colours.begin(), colours.end(),
                                 [argb](const InkColour& c) { return c.argb == argb; });
        if (same == colours.end())
            colours.push_back({argb, {value}});
        else
            same->values.push_back(value);
    }
    std::stable_sort(colours.begin(), colours.end(), [](const InkColour& a, const InkColour& b) {
        return luminance(a.argb) > luminance(b.argb);
    });
    return colours;
}

// Traces each colour of a page into outlines. One bitmap per colour is kept across pages:
// a page fills them all in one pass over its pixels, and only colours present are traced.
class PageTracer {
public:
    explicit PageTracer(bool onPaper)
        : colours_(inkColours()), params_(potrace_param_default(), &potrace_param_free) {
        if (!params_) throw std::runtime_error("cannot set up tracing: out of memory");
        // Keep every speck and one-pixel line (no area is dropped as noise), allow curves
        // where the outline bends gently but keep the corners of pen strokes, and let
        // segments join into longer curves within half a pixel, which keeps files small
        // without a visible change.
        params_->turdsize = 0;
        params_->alphamax = 1.0;
        params_->opticurve = 1;
        params_->opttolerance = 0.5;
        setCoverage(onPaper);
        bitmaps_.assign(colours_.size(), std::vector<potrace_word>(std::size_t(kWordsPerRow) * kTraceHeight));
        present_.assign(colours_.size(), false);
    }

    void draw(cairo_t* cr, const uint8_t* pixels) {
        fillBitmaps(pixels);
        for (std::size_t g = 0; g < colours_.size(); ++g)
            if (present_[g]) fillColour(cr, g);
    }

private:
    // potrace fits its outlines within half a pixel of the pixels' edges, so a line one
    // pixel wide may become a sliver of no width. Traced at twice the size, every pixel is
    // two wide and thin lines keep their width.
    static constexpr int kTraceZoom = 2;
    static constexpr int kTraceWidth = kPageWidth * kTraceZoom;
    static constexpr int kTraceHeight = kPageHeight * kTraceZoom;
    static constexpr int kWordBits = sizeof(potrace_word) * CHAR_BIT;
    static constexpr int kWordsPerRow = (kTraceWidth + kWordBits - 1) / kWordBits;

    // Which colours' bitmaps each pixel value belongs to, one bit a colour. Each value
    // belongs to its own colour. On paper, a colour that looks like the paper (white ink)
    // also takes in the darker ink painted after it: that ink covers it anyway, and without
    // it every letter written on white ink would be traced twice, once as a hole in the
    // white. Its edges then blend with ink instead of paper, which looks the same. Without
    // paper this would leave a faint white rim around ink, so there colours stay apart.
    void setCoverage(bool onPaper) {
        coverage_.fill(0);
        for (std::size_t g = 0; g < colours_.size(); ++g) {
            for (uint8_t value : colours_[g].values) coverage_[value] |= 1u << g;
            if (!onPaper || colourDistance(colours_[g].argb, kPaper) > 1) continue;
            for (std::size_t later = g + 1; later < colours_.size(); ++later)
                for (uint8_t value : colours_[later].values) coverage_[value] |= 1u << g;
        }
    }

    static int colourDistance(uint32_t a, uint32_t b) {
        int most = 0;
        for (int shift = 0; shift < 32; shift += 8)
            most = std::max(most, std::abs(int((a >> shift) & 0xFF) - int((b >> shift) & 0xFF)));
        return most;
    }

    // potrace reads rows of words, leftmost pixel in the most significant bit; the bits
    // beyond the width stay 0. Each page row makes kTraceZoom equal bitmap rows.
    void fillBitmaps(const uint8_t* pixels) {
        std::array<bool, 256> seen{};
        std::vector<potrace_word> words(colours_.size());
        for (int y = 0; y < kPageHeight; ++y) {
            const uint8_t* row = pixels + std::size_t(y) * kPageWidth;
            std::size_t first = std::size_t(y) * kTraceZoom * kWordsPerRow;
            for (int w = 0; w < kWordsPerRow; ++w) {
                std::fill(words.begin(), words.end(), 0);
                int end = std::min(kTraceWidth, (w + 1) * kWordBits);
                for (int x = w * kWordBits; x < end; ++x) {
                    uint8_t value = row[x / kTraceZoom];
                    seen[value] = true;
                    potrace_word bit = potrace_word(1) << (kWordBits - 1 - (x - w * kWordBits));
                    for (unsigned g = 0, groups = coverage_[value]; groups; ++g, groups >>= 1)
                        if (groups & 1u) words[g] |= bit;
                }
                for (std::size_t g = 0; g < words.size(); ++g) bitmaps_[g][first + w] = words[g];
            }
            for (auto& bitmap : bitmaps_)
                for (int copy = 1; copy < kTraceZoom; ++copy)
                    std::copy_n(bitmap.begin() + first, kWordsPerRow,
                                bitmap.begin() + first + std::size_t(copy) * kWordsPerRow);
        }
        // A colour is traced only when pixels of its own occur, not for ink it lies under.
        for (std::size_t g = 0; g < colours_.size(); ++g)
            present_[g] = std::any_of(colours_[g].values.begin(), colours_[g].values.end(),
                                      [&seen](uint8_t value) { return seen[value]; });
    }

    void fillColour(cairo_t* cr, std::size_t group) {
        potrace_bitmap_t bitmap{kTraceWidth, kTraceHeight, kWordsPerRow, bitmaps_[group].data()};
        std::unique_ptr<potrace_state_t, decltype(&potrace_state_free)> state(
            potrace_trace(params_.get(), &bitmap), &potrace_state_free);
        if (!state || state->status != POTRACE_STATUS_OK)
            throw std::runtime_error("cannot trace the page: out of memory");
        // Outer outlines and their holes run in opposite directions, so the nonzero rule
        // fills the ink and leaves holes open, even where curves of neighbours touch.
        cairo_save(cr);
        cairo_scale(cr, 1.0 / kTraceZoom, 1.0 / kTraceZoom);
        cairo_new_path(cr);
        for (const potrace_path_t* path = state->plist; path; path = path->next)
            appendCurve(cr, path->curve);
        cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
        setSourceColour(cr, colours_[group].argb);
        cairo_fill(cr);
        cairo_restore(cr);
    }

    // A closed potrace curve starts at the end point of its last segment. Bitmap row y is
    // potrace's y, so the outline keeps the page's orientation.
    static void appendCurve(cairo_t* cr, const potrace_curve_t& curve) {
        if (curve.n == 0) return;
        const potrace_dpoint_t& start = curve.c[curve.n - 1][2];
        cairo_move_to(cr, start.x, start.y);
        for (int i = 0; i < curve.n; ++i) {
            const potrace_dpoint_t* c = curve.c[i];
            if (curve.tag[i] == POTRACE_CORNER) {
                cairo_line_to(cr, c[1].x, c[1].y);
                cairo_line_to(cr, c[2].x, c[2].y);
            } else {
                cairo_curve_to(cr, c[0].x, c[0].y, c[1].x, c[1].y, c[2].x, c[2].y);
            }
        }
        cairo_close_path(cr);
    }

    std::vector<InkColour> colours_;
    std::unique_ptr<potrace_param_t, decltype(&potrace_param_free)> params_;
    std::array<uint8_t, 256> coverage_;
    std::vector<std::vector<potrace_word>> bitmaps_;
    std::vector<bool> present_;
};

// The picture as a cairo image for the raster mode. Only ink has a colour of its own; every
// other value is what shows where nothing is drawn.
class PageImage {
public:
    explicit PageImage(bool transparent)
        : surface_(cairo_image_surface_create(transparent ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24,
                                              kPageWidth, kPageHeight),
                   &cairo_surface_destroy) {
        checkSurface(surface_.get(), "cannot make the page image");
        for (int value = 0; value < 256; ++value) {
            uint32_t argb = pixelColour(static_cast<uint8_t>(value), transparent);
            colourOf_[value] = (argb >> 24) ? argb : pixelColour(kNothing, transparent);
        }
    }

    void draw(cairo_t* cr, const uint8_t* pixels) {
        cairo_surface_flush(surface_.get());
        unsigned char* data = cairo_image_surface_get_data(surface_.get());
        int stride = cairo_image_surface_get_stride(surface_.get());
        for (int y = 0; y < kPageHeight; ++y) {
            auto* out = reinterpret_cast<uint32_t*>(data + std::size_t(y) * stride);
            const uint8_t* row = pixels + std::size_t(y) * kPageWidth;
            for (int x = 0; x < kPageWidth; ++x) out[x] = colourOf_[row[x]];
        }
        cairo_surface_mark_dirty(surface_.get());
        // Nearest-neighbour scaling keeps every pixel a sharp square at any scale.
        cairo_set_source_surface(cr, surface_.get(), 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
        cairo_paint(cr);
    }

private:
    SurfacePtr surface_;
    std::array<uint32_t, 256> colourOf_;
};

// Draws pages in page units (one a pixel), traced or as an image as the options ask, onto a
// surface whose units are unitsPerPixel times smaller.
class PagePainter {
public:
    PagePainter(const DrawingOptions& options, double unitsPerPixel) : options_(options), unitsPerPixel_(unitsPerPixel) {
        if (!(unitsPerPixel > 0)) throw std::runtime_error("the scale must be greater than 0");
    }

    double width() const { return kPageWidth * unitsPerPixel_; }
    double height() const { return kPageHeight * unitsPerPixel_; }

    // Leaves cr's target with the page drawn; the caller shows or finishes it.
    void paint(cairo_t* cr, const uint8_t* pixels) {
        cairo_scale(cr, unitsPerPixel_, unitsPerPixel_);
        if (options_.raster) {
            if (!image_) image_ = std::make_unique<PageImage>(options_.transparent);
            image_->draw(cr, pixels);
        } else {
            if (!options_.transparent) paintPaper(cr);
            if (!tracer_) tracer_ = std::make_unique<PageTracer>(!options_.transparent);
            tracer_->draw(cr, pixels);
        }
    }

private:
    static void paintPaper(cairo_t* cr) {
        cairo_rectangle(cr, 0, 0, kPageWidth, kPageHeight);
        setSourceColour(cr, kPaper);
        cairo_fill(cr);
    }

    DrawingOptions options_;
    double unitsPerPixel_;
    std::unique_ptr<PageTracer> tracer_;
    std::unique_ptr<PageImage> image_;
};

// A document that cairo draws, a page for each picture added. A failure names the output,
// and gives the reason the file keeps when a write failed.
class CairoDocument {
public:
    using SurfaceMaker = cairo_surface_t* (*)(cairo_write_func_t, void*, double, double);

    CairoDocument(const DrawingOptions& options, double unitsPerPixel, SurfaceMaker make, cairo_write_func_t write,
                  void* closure, const OutputFile& file)
        : painter_(options, unitsPerPixel),
          file_(file),
          surface_(make(write, closure, painter_.width(), painter_.height()), &cairo_surface_destroy) {
        check(cairo_surface_status(surface_.get()));
    }

    cairo_surface_t* surface() const { return surface_.get(); }

    void addPage(const uint8_t* pixels) {
        ContextPtr cr(cairo_create(surface_.get()), &cairo_destroy);
        painter_.paint(cr.get(), pixels);
        cairo_show_page(cr.get());
        check(cairo_status(cr.get()));
    }

    void finish() {
        cairo_surface_finish(surface_.get());
        check(cairo_surface_status(surface_.get()));
    }

private:
    // cairo does not report every failed write (those of a PDF's last table are dropped), so
    // the file's own record is looked at first.
    void check(cairo_status_t status) const {
        file_.rethrowFailure();
        if (status != CAIRO_STATUS_SUCCESS) fail(file_.name(), status);
    }

    PagePainter painter_;
    const OutputFile& file_;
    SurfacePtr surface_;
};

// All pages as one PDF, each page its size on paper, written as cairo makes it.
class PdfWriter : public PageWriter {
public:
    PdfWriter(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info)
        : sink_(&file),
          document_(options, pagePoints(1, info.dpi, options.scale), &cairo_pdf_surface_create_for_stream, &writeToSink,
                    &sink_, file) {
        cairo_pdf_surface_set_metadata(document_.surface(), CAIRO_PDF_METADATA_TITLE, info.title.c_str());
        cairo_pdf_surface_set_metadata(document_.surface(), CAIRO_PDF_METADATA_CREATOR, info.creator.c_str());
        // cairo dates every file with the time it was made unless told another date; an
        // empty one leaves the date out.
        cairo_pdf_surface_set_metadata(document_.surface(), CAIRO_PDF_METADATA_CREATE_DATE, info.created.c_str());
    }

    // cairo ends a document it destroys unfinished, trailer and all; one cut short must not
    // look complete where it cannot be taken back (the standard output, a device), so what
    // cairo writes from here on goes nowhere.
    ~PdfWriter() override { sink_ = nullptr; }

    void addPage(const uint8_t* pixels) override { document_.addPage(pixels); }
    void finish() override { document_.finish(); }

private:
    // cairo's stream writers report a failed write as a status; the file keeps its reason.
    static cairo_status_t writeToSink(void* closure, const unsigned char* data, unsigned int length) {
        OutputFile* file = *static_cast<OutputFile**>(closure);
        return file && OutputFile::writeCallback(file, data, length) ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
    }

    OutputFile* sink_;  // declared before the document, which writes to it
    CairoDocument document_;
};

// The value of the attribute in the tag that starts at `tag` is replaced.
void setAttribute(std::string& svg, std::size_t tag, const std::string& name, const std::string& value) {
    const std::size_t start = svg.find(" " + name + "=\"", tag);
    if (start == std::string::npos || start > svg.find('>', tag)) return;
    const std::size_t from = start + name.size() + 3;
    svg.replace(from, svg.find('"', from) - from, value);
}

// cairo numbers the ids of an SVG file (surface5, image7) by counters that all surfaces of the
// process share, so the same page would come out different by what was written before it or
// on another thread. Ids are numbered anew in order of definition, and so are the references
// to them ("#image7", in href="..." or url(...)).
std::string renumberIds(const std::string& svg) {
    std::map<std::string, std::string> ids;
    const auto isIdChar = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-'; };
    const auto tokenAt = [&](std::size_t at) {
        std::size_t end = at;
        while (end < svg.size() && isIdChar(svg[end])) ++end;
        return svg.substr(at, end - at);
    };
    for (std::size_t at = svg.find(" id=\""); at != std::string::npos; at = svg.find(" id=\"", at + 1)) {
        const std::string id = tokenAt(at + 5);
        std::size_t letters = 0;
        while (letters < id.size() && std::isalpha(static_cast<unsigned char>(id[letters]))) ++letters;
        ids.emplace(id, id.substr(0, letters) + std::to_string(ids.size() + 1));
    }
    std::string out;
    out.reserve(svg.size());
    for (std::size_t at = 0; at < svg.size();) {
        const char c = svg[at++];
        out += c;
        if (c != '"' && c != '#') continue;
        const std::string token = tokenAt(at);
        const auto renamed = ids.find(token);
        const char after = at + token.size() < svg.size() ? svg[at + token.size()] : '\0';
        if (renamed == ids.end() || (after != '"' && after != ')')) continue;
        out += renamed->second;
        at += token.size();
    }
    return out;
}

// One page as one SVG file. cairo writes it to memory first: the file then gets its size on
// paper, in millimetres around the unchanged viewBox of page units, and ids that do not
// depend on what else the process wrote, so that the same page always makes the same bytes.
class SvgWriter : public PageWriter {
public:
    SvgWriter(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info)
        : file_(file),
          widthMm_(pagePoints(kPageWidth, info.dpi, options.scale) * 25.4 / 72),
          heightMm_(pagePoints(kPageHeight, info.dpi, options.scale) * 25.4 / 72),
          document_(options, options.scale, &svgSurface, &appendToString, &text_, file) {}

    void addPage(const uint8_t* pixels) override { document_.addPage(pixels); }

    void finish() override {
        document_.finish();
        std::string svg = renumberIds(text_);
        const std::size_t tag = svg.find("<svg");
        setAttribute(svg, tag, "width", millimetres(widthMm_));
        setAttribute(svg, tag, "height", millimetres(heightMm_));
        file_.write(svg.data(), svg.size());
    }

private:
    static cairo_surface_t* svgSurface(cairo_write_func_t write, void* closure, double width, double height) {
        cairo_surface_t* surface = cairo_svg_surface_create_for_stream(write, closure, width, height);
        // Unitless sizes: one user unit a page unit; the size on paper is set afterwards.
        cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_USER);
        return surface;
    }

    static std::string millimetres(double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2fmm", value);
        return text;
    }

    OutputFile& file_;
    double widthMm_;
    double heightMm_;
    std::string text_;  // declared before the document, so that it outlives the surface
    CairoDocument document_;
};

}  // namespace

std::unique_ptr<PageWriter> openPdf(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info) {
    return std::make_unique<PdfWriter>(file, options, info);
}

std::unique_ptr<PageWriter> openSvg(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info) {
    return std::make_unique<SvgWriter>(file, options, info);
}

}  // namespace notetool
