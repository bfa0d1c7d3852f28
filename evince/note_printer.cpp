#include "note_printer.h"

#include <cairo-pdf.h>
#include <cairo-ps.h>
#include <glib.h>

#include "palette.h"

namespace notebackend {

NotePrinter::NotePrinter(const ViewedNote& note, const std::string& file, bool postScript)
    : note_(note),
      file_(postScript ? cairo_ps_surface_create(file.c_str(), note.widthPoints(), note.heightPoints())
                       : cairo_pdf_surface_create(file.c_str(), note.widthPoints(), note.heightPoints())) {
    if (!postScript) {
        cairo_pdf_surface_set_metadata(file_, CAIRO_PDF_METADATA_TITLE, note.title().c_str());
        cairo_pdf_surface_set_metadata(file_, CAIRO_PDF_METADATA_CREATOR, "libNote " LIBNOTE_VERSION);
    }
}

NotePrinter::~NotePrinter() {
    cairo_surface_finish(file_);
    if (cairo_surface_status(file_) != CAIRO_STATUS_SUCCESS)
        g_warning("%s: printing failed: %s", note_.path().c_str(), cairo_status_to_string(cairo_surface_status(file_)));
    cairo_surface_destroy(file_);
}

void NotePrinter::print(int index, const std::set<std::string>& hidden) {
    const Surface page = note_.drawFull(index, hidden);
    cairo_t* cr = cairo_create(file_);
    cairo_scale(cr, note_.widthPoints() / notetool::kPageWidth, note_.heightPoints() / notetool::kPageHeight);
    cairo_set_source_surface(cr, page.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    cairo_paint(cr);
    cairo_show_page(cr);
    cairo_destroy(cr);
}

}  // namespace notebackend
