// The Evince backend of notes: the viewer's document type for application/x-handwritten-note,
// registered by the module the .evince-backend file names. It is the viewer's face of
// ViewedNote: pages and their sizes, thumbnails, the document's properties, the Layers panel
// and printing (EvFileExporter).

#include <evince-document.h>
#include <libintl.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "note_info.h"
#include "note_printer.h"
#include "tool_error.h"
#include "viewed_note.h"

using notebackend::ViewedNote;

namespace {

// What a document holds besides its GObject: the note, once loaded, and the layers the user
// hid. The viewer draws on its own threads while the Layers panel changes the hidden set on
// the main one.
struct NoteState {
    std::unique_ptr<ViewedNote> note;
    std::unique_ptr<notebackend::NotePrinter> printer;
    mutable std::mutex mutex;
    std::set<std::string> hidden;

    std::set<std::string> hiddenLayers() const {
        std::lock_guard<std::mutex> lock(mutex);
        return hidden;
    }
};

}  // namespace

struct NoteDocument {
    EvDocument parent;
    NoteState* state;
};
struct NoteDocumentClass {
    EvDocumentClass parent_class;
};

#define GETTEXT_PACKAGE "evince"
#define GNOMELOCALEDIR ev_get_locale_dir()

static void note_document_layers_iface_init(EvDocumentLayersInterface* iface);
static void note_document_file_exporter_iface_init(EvFileExporterInterface* iface);

// The viewer's loader looks the entry point up by its C name.
extern "C" GType register_evince_backend(GTypeModule* module);

// The viewer's macro leaves the last field of its GTypeInfo to the compiler, which clang
// reports in the code the macro expands to: here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
EV_BACKEND_REGISTER_WITH_CODE(NoteDocument, note_document, {
    EV_BACKEND_IMPLEMENT_INTERFACE(EV_TYPE_DOCUMENT_LAYERS, note_document_layers_iface_init);
    EV_BACKEND_IMPLEMENT_INTERFACE(EV_TYPE_FILE_EXPORTER, note_document_file_exporter_iface_init);
})
#pragma GCC diagnostic pop

namespace {

NoteState& stateOf(gpointer document) { return *reinterpret_cast<NoteDocument*>(document)->state; }
const ViewedNote& noteOf(gpointer document) { return *stateOf(document).note; }

// ---- The document ----

gboolean loadNote(EvDocument* document, const char* uri, GError** error) {
    GError* uriError = nullptr;
    gchar* path = g_filename_from_uri(uri, nullptr, &uriError);
    if (!path) {
        g_propagate_error(error, uriError);
        return FALSE;
    }
    try {
        stateOf(document).note = std::make_unique<ViewedNote>(path);
    } catch (const notetool::ToolError& e) {
        // The viewer shows this under "Unable to open document": the library's reason.
        g_set_error_literal(error, EV_DOCUMENT_ERROR, EV_DOCUMENT_ERROR_INVALID, e.what());
    } catch (const std::exception& e) {
        g_set_error(error, EV_DOCUMENT_ERROR, EV_DOCUMENT_ERROR_INVALID, "%s: %s", path, e.what());
    }
    g_free(path);
    return stateOf(document).note != nullptr;
}

int pageCount(EvDocument* document) { return noteOf(document).pageCount(); }

void pageSize(EvDocument* document, EvPage*, double* width, double* height) {
    *width = noteOf(document).widthPoints();
    *height = noteOf(document).heightPoints();
}

gchar* pageLabel(EvDocument* document, EvPage* page) {
    return g_strdup_printf("%d", noteOf(document).pageNumber(page->index));
}

cairo_surface_t* renderPage(EvDocument* document, EvRenderContext* rc) {
    const ViewedNote& note = noteOf(document);
    int width = 0, height = 0;
    ev_render_context_compute_scaled_size(rc, note.widthPoints(), note.heightPoints(), &width, &height);
    try {
        return note.draw(rc->page->index, width, height, rc->rotation, stateOf(document).hiddenLayers()).release();
    } catch (const std::exception& e) {  // out of memory, or cairo could not draw
        g_warning("%s: page %d: %s", note.path().c_str(), rc->page->index + 1, e.what());
        return nullptr;
    }
}

GdkPixbuf* thumbnail(EvDocument* document, EvRenderContext* rc) {
    cairo_surface_t* surface = renderPage(document, rc);
    if (!surface) return nullptr;
    GdkPixbuf* pixbuf = ev_document_misc_pixbuf_from_surface(surface);
    cairo_surface_destroy(surface);
    return pixbuf;
}

EvDocumentInfo* documentInfo(EvDocument* document) { return notebackend::documentInfo(noteOf(document)); }

gboolean backendInfo(EvDocument*, EvDocumentBackendInfo* info) {
    info->name = "libNote";
    info->version = LIBNOTE_VERSION;
    return TRUE;
}

// ---- The Layers panel ----

gboolean hasLayers(EvDocumentLayers*) { return TRUE; }

GtkTreeModel* layerList(EvDocumentLayers* document) {
    GtkTreeStore* store = gtk_tree_store_new(EV_DOCUMENT_LAYERS_N_COLUMNS, G_TYPE_STRING, G_TYPE_OBJECT, G_TYPE_BOOLEAN,
                                             G_TYPE_BOOLEAN, G_TYPE_BOOLEAN, G_TYPE_INT);
    const std::set<std::string> hidden = stateOf(document).hiddenLayers();
    for (const notebackend::LayerTitle& layer : noteOf(document).layers()) {
        EvLayer* item = ev_layer_new(FALSE, 0);
        g_object_set_data_full(G_OBJECT(item), "note-layer", g_strdup(layer.name.c_str()), g_free);
        GtkTreeIter row;
        gtk_tree_store_append(store, &row, nullptr);
        gtk_tree_store_set(store, &row, EV_DOCUMENT_LAYERS_COLUMN_TITLE, layer.title.c_str(),
                           EV_DOCUMENT_LAYERS_COLUMN_LAYER, item, EV_DOCUMENT_LAYERS_COLUMN_VISIBLE,
                           !hidden.count(layer.name), EV_DOCUMENT_LAYERS_COLUMN_ENABLED, TRUE,
                           EV_DOCUMENT_LAYERS_COLUMN_SHOWTOGGLE, TRUE, EV_DOCUMENT_LAYERS_COLUMN_RBGROUP, 0, -1);
        g_object_unref(item);
    }
    return GTK_TREE_MODEL(store);
}

std::string layerName(EvLayer* layer) {
    const auto* name = static_cast<const char*>(g_object_get_data(G_OBJECT(layer), "note-layer"));
    return name ? name : "";
}

void setLayerHidden(EvDocumentLayers* document, EvLayer* layer, bool hide) {
    NoteState& state = stateOf(document);
    std::lock_guard<std::mutex> lock(state.mutex);
    if (hide)
        state.hidden.insert(layerName(layer));
    else
        state.hidden.erase(layerName(layer));
}

void showLayer(EvDocumentLayers* document, EvLayer* layer) { setLayerHidden(document, layer, false); }
void hideLayer(EvDocumentLayers* document, EvLayer* layer) { setLayerHidden(document, layer, true); }
gboolean layerVisible(EvDocumentLayers* document, EvLayer* layer) {
    return !stateOf(document).hiddenLayers().count(layerName(layer));
}

// ---- Printing ----

void exportBegin(EvFileExporter* exporter, EvFileExporterContext* fc) {
    NoteState& state = stateOf(exporter);
    state.printer = std::make_unique<notebackend::NotePrinter>(*state.note, fc->filename, fc->format == EV_FILE_FORMAT_PS);
}

void exportPage(EvFileExporter* exporter, EvRenderContext* rc) {
    NoteState& state = stateOf(exporter);
    if (state.printer) state.printer->print(rc->page->index, state.hiddenLayers());
}

void exportEnd(EvFileExporter* exporter) { stateOf(exporter).printer.reset(); }

EvFileExporterCapabilities exportCapabilities(EvFileExporter*) {
    return EvFileExporterCapabilities(EV_FILE_EXPORTER_CAN_PAGE_SET | EV_FILE_EXPORTER_CAN_COPIES |
                                      EV_FILE_EXPORTER_CAN_COLLATE | EV_FILE_EXPORTER_CAN_REVERSE |
                                      EV_FILE_EXPORTER_CAN_GENERATE_PDF | EV_FILE_EXPORTER_CAN_GENERATE_PS);
}

void finalize(GObject* object) {
    delete reinterpret_cast<NoteDocument*>(object)->state;
    G_OBJECT_CLASS(note_document_parent_class)->finalize(object);
}

}  // namespace

static void note_document_init(NoteDocument* document) { document->state = new NoteState; }

static void note_document_class_init(NoteDocumentClass* klass) {
    G_OBJECT_CLASS(klass)->finalize = finalize;
    EvDocumentClass* document = EV_DOCUMENT_CLASS(klass);
    document->load = loadNote;
    document->get_n_pages = pageCount;
    document->get_page_size = pageSize;
    document->get_page_label = pageLabel;
    document->render = renderPage;
    document->get_thumbnail = thumbnail;
    document->get_info = documentInfo;
    document->get_backend_info = backendInfo;
}

static void note_document_layers_iface_init(EvDocumentLayersInterface* iface) {
    iface->has_layers = hasLayers;
    iface->get_layers = layerList;
    iface->show_layer = showLayer;
    iface->hide_layer = hideLayer;
    iface->layer_is_visible = layerVisible;
}

static void note_document_file_exporter_iface_init(EvFileExporterInterface* iface) {
    iface->begin = exportBegin;
    iface->do_page = exportPage;
    iface->end = exportEnd;
    iface->get_capabilities = exportCapabilities;
}
