// The backend as the Document Viewer meets it: found through its .evince-backend file in the
// folder EV_BACKENDS_DIR names, created by libevdocument's backend manager for the notes' MIME
// type, and used only through libevdocument's public calls. Its pages are compared with what
// notetool draws of the same note, pixel for pixel.

#include <evince-document.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "hostile_notes.h"
#include "notetool_run.h"

namespace {

using notetest::ScratchDir;
constexpr int kWidth = notewriter::kPictureWidth, kHeight = notewriter::kPictureHeight;
constexpr double kDeviceDpi = 300;  // not the default, so that the size on paper shows the header was read

template <class T>
using Owned = std::unique_ptr<T, void (*)(gpointer)>;
template <class T>
Owned<T> owned(T* object) {
    return Owned<T>(object, g_object_unref);
}
using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

std::vector<uint8_t> boxPicture(int x0, int y0, int x1, int y1, uint8_t ink) {
    std::vector<uint8_t> pixels(notewriter::kPictureSize, 0xFF);
    notetest::box(pixels, x0, y0, x1, y1, ink);
    return pixels;
}

// Two pages: ink on the main layer and on LAYER1, grey rules on the background, each page
// with its boxes in other places.
notewriter::Note twoPageNote() {
    notewriter::Note note;
    note.header = {{"DEVICE_DPI", "300"}, {"APPLY_EQUIPMENT", "N5"}};
    for (int page = 0; page < 2; ++page) {
        notewriter::Page p;
        p.layers = {{"MAINLAYER", boxPicture(101, 203 + 400 * page, 707, 333 + 400 * page, 0x00), {}},
                    {"LAYER1", boxPicture(301, 1203, 1007, 1333 - 100 * page, 0x30), {}},
                    {"BGLAYER", boxPicture(0, 1500, kWidth, 1507, 0x50), {}}};
        note.pages.push_back(p);
    }
    return note;
}

std::string uriOf(const std::string& path) {
    gchar* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
    std::string text = uri;
    g_free(uri);
    return text;
}

// The document the viewer makes of the file, or the error it shows.
Owned<EvDocument> open(const std::string& path, std::string* error = nullptr) {
    auto document = owned(ev_backends_manager_get_document("application/x-handwritten-note"));
    if (!document) throw std::runtime_error("no backend for notes in " + std::string(g_getenv("EV_BACKENDS_DIR")));
    GError* failure = nullptr;
    if (ev_document_load(document.get(), uriOf(path).c_str(), &failure)) return document;
    if (error) *error = failure->message;
    g_error_free(failure);
    return owned<EvDocument>(nullptr);
}

// The viewer's scale (surface pixels per point) at which a page is drawn `pageScale` times
// its pixels, as notetool's --scale draws it.
double viewerScale(double pageScale) { return pageScale * kDeviceDpi / 72; }

Surface render(EvDocument* document, int page, double pageScale, int rotation = 0) {
    auto rc = owned(ev_render_context_new(ev_document_get_page(document, page), rotation, viewerScale(pageScale)));
    g_object_unref(rc->page);  // the context holds its own reference
    return Surface(ev_document_render(document, rc.get()), cairo_surface_destroy);
}

// The surface's pixels, as notetest compares pictures.
notetest::Picture pictureOf(const Surface& surface) {
    cairo_surface_flush(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    notetest::Picture picture{unsigned(cairo_image_surface_get_width(surface.get())),
                              unsigned(cairo_image_surface_get_height(surface.get())), {}};
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x) {
            uint32_t p;
            std::memcpy(&p, cairo_image_surface_get_data(surface.get()) + std::size_t(y) * stride + 4 * x, 4);
            picture.rgba.insert(picture.rgba.end(), {uint8_t(p >> 16), uint8_t(p >> 8), uint8_t(p), uint8_t(p >> 24)});
        }
    return picture;
}

class EvinceBackend : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        // A backend that breaks a contract of libevdocument's makes it complain, not fail.
        g_log_set_always_fatal(GLogLevelFlags(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR));
        ASSERT_TRUE(ev_init());
    }

    // notetool's PNG of a page, with extra options.
    notetest::Picture notetoolPage(int page, double scale, std::vector<std::string> extra = {}) {
        std::vector<std::string> args = {"render", note, "--pages", std::to_string(page), "--scale", std::to_string(scale)};
        args.insert(args.end(), extra.begin(), extra.end());
        args.push_back("-o");
        return notetest::notetoolPicture(dir, args);
    }

    ScratchDir dir;
    std::string note = dir.write("lecture.note", notewriter::buildNote(twoPageNote()));
};

TEST_F(EvinceBackend, PagesHaveTheirSizeOnPaperAndTheNotesProperties) {
    const auto document = open(note);
    ASSERT_TRUE(document);
    EXPECT_EQ(ev_document_get_n_pages(document.get()), 2);
    double width = 0, height = 0;
    ev_document_get_page_size(document.get(), 1, &width, &height);
    EXPECT_DOUBLE_EQ(width, kWidth * 72 / kDeviceDpi);
    EXPECT_DOUBLE_EQ(height, kHeight * 72 / kDeviceDpi);

    EvDocumentInfo* info = ev_document_get_info(document.get());
    EXPECT_STREQ(info->title, "lecture");
    EXPECT_STREQ(info->creator, "N5");
    EXPECT_NE(std::string(info->format).find("300 dpi"), std::string::npos) << info->format;
    EXPECT_EQ(std::string(info->producer).rfind("libNote ", 0), 0u);
}

TEST_F(EvinceBackend, PagesAreNotetoolsPicturesAtEveryScale) {
    const auto document = open(note);
    ASSERT_TRUE(document);
    for (const double scale : {0.5, 1.0, 2.0})
        EXPECT_TRUE(notetest::samePixels(notetoolPage(2, scale), pictureOf(render(document.get(), 1, scale)))) << scale;
}

TEST_F(EvinceBackend, TurnedPagesMoveEveryPixel) {
    const auto document = open(note);
    ASSERT_TRUE(document);
    const std::vector<uint8_t> upright = pictureOf(render(document.get(), 0, 0.25)).rgba;
    const int w = std::lround(kWidth * 0.25), h = std::lround(kHeight * 0.25);
    for (const int rotation : {90, 180, 270}) {
        const notetest::Picture turned = pictureOf(render(document.get(), 0, 0.25, rotation));
        const int tw = int(turned.width);
        ASSERT_EQ(tw, rotation == 180 ? w : h);
        int mismatches = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                // Where the upright pixel (x, y) goes, turning clockwise.
                const int tx = rotation == 90 ? h - 1 - y : rotation == 180 ? w - 1 - x : y;
                const int ty = rotation == 90 ? x : rotation == 180 ? h - 1 - y : w - 1 - x;
                mismatches += std::memcmp(&upright[4 * (std::size_t(y) * w + x)], &turned.rgba[4 * (std::size_t(ty) * tw + tx)], 4) != 0;
            }
        EXPECT_EQ(mismatches, 0) << rotation;
    }
}

TEST_F(EvinceBackend, ThumbnailIsNotetoolsThumbnail) {
    const auto document = open(note);
    ASSERT_TRUE(document);
    const notetest::Picture expected = notetest::notetoolPicture(dir, {"thumbnail", "-s", "256", note});
    const unsigned width = expected.width, height = expected.height;
    auto rc = owned(ev_render_context_new(ev_document_get_page(document.get(), 0), 0, viewerScale(256.0 / kHeight)));
    g_object_unref(rc->page);
    GdkPixbuf* thumbnail = ev_document_get_thumbnail(document.get(), rc.get());
    ASSERT_TRUE(thumbnail);
    ASSERT_EQ(gdk_pixbuf_get_width(thumbnail), int(width));
    ASSERT_EQ(gdk_pixbuf_get_height(thumbnail), int(height));
    int mismatches = 0;
    const int channels = gdk_pixbuf_get_n_channels(thumbnail);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            mismatches += gdk_pixbuf_get_pixels(thumbnail)[y * gdk_pixbuf_get_rowstride(thumbnail) + x * channels] !=
                          expected.rgba[4 * (y * width + x)];
    EXPECT_EQ(mismatches, 0);
    g_object_unref(thumbnail);
}

// The Layers panel's list: titles and the layers behind them, held as the panel holds them.
std::vector<std::pair<std::string, Owned<EvLayer>>> layerRows(EvDocument* document) {
    std::vector<std::pair<std::string, Owned<EvLayer>>> rows;
    GtkTreeModel* model = ev_document_layers_get_layers(EV_DOCUMENT_LAYERS(document));
    GtkTreeIter row;
    for (bool more = gtk_tree_model_get_iter_first(model, &row); more; more = gtk_tree_model_iter_next(model, &row)) {
        gchar* title = nullptr;
        EvLayer* layer = nullptr;
        gtk_tree_model_get(model, &row, EV_DOCUMENT_LAYERS_COLUMN_TITLE, &title, EV_DOCUMENT_LAYERS_COLUMN_LAYER, &layer, -1);
        rows.emplace_back(title, owned(layer));
        g_free(title);
    }
    g_object_unref(model);
    return rows;
}

TEST_F(EvinceBackend, HiddenLayerLeavesEveryPage) {
    const auto document = open(note);
    ASSERT_TRUE(document);
    ASSERT_TRUE(ev_document_layers_has_layers(EV_DOCUMENT_LAYERS(document.get())));
    const auto rows = layerRows(document.get());
    std::vector<std::string> titles;
    for (const auto& row : rows) titles.push_back(row.first);
    EXPECT_EQ(titles, (std::vector<std::string>{"Main layer", "Layer 1", "Background"}));

    ev_document_layers_hide_layer(EV_DOCUMENT_LAYERS(document.get()), rows[1].second.get());
    EXPECT_FALSE(ev_document_layers_layer_is_visible(EV_DOCUMENT_LAYERS(document.get()), rows[1].second.get()));
    for (const int page : {1, 2}) {
        const notetest::Picture without = notetoolPage(page, 1, {"--layers", "MAINLAYER,BGLAYER"});
        EXPECT_TRUE(notetest::samePixels(without, pictureOf(render(document.get(), page - 1, 1)))) << page;
    }
    ev_document_layers_show_layer(EV_DOCUMENT_LAYERS(document.get()), rows[1].second.get());
    EXPECT_TRUE(notetest::samePixels(notetoolPage(1, 1), pictureOf(render(document.get(), 0, 1))));
}

TEST_F(EvinceBackend, PrintsAPageToPdfAtItsSizeOnPaper) {
    const auto document = open(note);
    ASSERT_TRUE(document);
    const std::string pdf = dir.path("printed.pdf");
    EvFileExporter* exporter = EV_FILE_EXPORTER(document.get());
    ASSERT_TRUE(ev_file_exporter_get_capabilities(exporter) & EV_FILE_EXPORTER_CAN_GENERATE_PDF);
    EvFileExporterContext fc{EV_FILE_FORMAT_PDF, pdf.c_str(), 1, 1, 595, 842, FALSE, 1};
    ev_file_exporter_begin(exporter, &fc);
    auto rc = owned(ev_render_context_new(ev_document_get_page(document.get(), 1), 0, 1));
    g_object_unref(rc->page);
    ev_file_exporter_begin_page(exporter);
    ev_file_exporter_do_page(exporter, rc.get());
    ev_file_exporter_end_page(exporter);
    ev_file_exporter_end(exporter);

    EXPECT_EQ(notetest::program(dir, {"qpdf", "--check", pdf}).code, 0);
    // At the device's resolution the printed page is the page's own pixels, unsmoothed: exactly
    // so through poppler's cairo renderer; its own renderer blends the rows and columns at the
    // edges of ink (an image's pixel edges fall between its device pixels), and nothing else.
    const notetest::Picture expected = notetoolPage(2, 1);
    for (const char* renderer : {"pdftocairo", "pdftoppm"}) {
        const std::string out = dir.path(renderer);
        ASSERT_EQ(notetest::program(dir, {renderer, "-r", "300", "-png", "-singlefile", pdf, out}).code, 0);
        unsigned printedWidth = 0, printedHeight = 0;
        const auto printed = notetest::readPng(out + ".png", printedWidth, printedHeight);
        ASSERT_EQ(printedWidth, expected.width);
        ASSERT_EQ(printedHeight, expected.height);
        std::size_t mismatches = 0;
        for (std::size_t i = 0; i < printed.size(); i += 4) mismatches += std::memcmp(&printed[i], &expected.rgba[i], 3) != 0;
        EXPECT_LE(mismatches, renderer == std::string("pdftocairo") ? 0 : printed.size() / 800) << renderer;
    }
}

TEST_F(EvinceBackend, UnreadablePageIsBlankAndTheOthersShow) {
    notewriter::NoteFile f;
    const uint64_t ink = f.picture(boxPicture(0, 0, kWidth, 100, 0x00));
    const uint64_t goodLayer = f.block({{"LAYERNAME", "MAINLAYER"}, {"LAYERBITMAP", hostile::site(ink)}});
    const uint64_t badLayer = f.block({{"LAYERNAME", "MAINLAYER"}, {"LAYERBITMAP", "4294967295"}});
    const uint64_t page1 = f.block({{"MAINLAYER", hostile::site(goodLayer)}, {"TOTALPATH", "0"}});
    const uint64_t page2 = f.block({{"MAINLAYER", hostile::site(badLayer)}, {"TOTALPATH", "0"}});
    const std::string path =
        dir.write("half.note", f.finish(f.block({{"PAGE1", hostile::site(page1)}, {"PAGE2", hostile::site(page2)}})));
    const auto document = open(path);
    ASSERT_TRUE(document);
    const std::vector<uint8_t> first = pictureOf(render(document.get(), 0, 0.5)).rgba;
    const std::vector<uint8_t> second = pictureOf(render(document.get(), 1, 0.5)).rgba;
    EXPECT_EQ(first[0], 0x01);  // black ink
    EXPECT_EQ(second, std::vector<uint8_t>(second.size(), 0xFF));
}

TEST_F(EvinceBackend, HostileNotesGiveTheLibrarysReasonOrPages) {
    for (const hostile::Note& hostileNote : hostile::catalogue()) {
        SCOPED_TRACE(hostileNote.attack);
        const std::string path = dir.write("hostile.note", hostileNote.bytes);
        std::string error;
        const auto document = open(path, &error);
        if (!document) {
            EXPECT_NE(error.find(path + ": "), std::string::npos) << error;
            continue;
        }
        EXPECT_GE(hostileNote.expected.pages, 0) << "a note without an index opened";
        // Whether a page is blank is the page library's to check; here every page must draw.
        for (int page = 0; page < ev_document_get_n_pages(document.get()); ++page) EXPECT_TRUE(render(document.get(), page, 0.1));
    }
    std::string error;
    EXPECT_FALSE(open(dir.write("empty.note", ""), &error));
    EXPECT_NE(error.find("(code "), std::string::npos) << "the library's status: " << error;
}

}  // namespace
