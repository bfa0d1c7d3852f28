#include "note_info.h"

#include <cmath>
#include <string>

namespace notebackend {

namespace {

std::string joined(const std::string& a, const std::string& b) { return a.empty() || b.empty() ? a + b : a + " " + b; }

// "Handwritten note, 226 dpi": the one place the Properties show what kind of file it is, and
// the resolution that fixes the paper size.
std::string formatOf(const ViewedNote& note) {
    char dpi[32];
    std::snprintf(dpi, sizeof dpi, "%g dpi", note.dpi());
    const std::string type = note.header() ? note.header()->fileType : "";
    return "Handwritten note" + (type.empty() ? "" : " (" + type + ")") + ", " + dpi;
}

}  // namespace

EvDocumentInfo* documentInfo(const ViewedNote& note) {
    EvDocumentInfo* info = ev_document_info_new();
    info->title = g_strdup(note.title().c_str());
    info->format = g_strdup(formatOf(note).c_str());
    info->producer = g_strdup("libNote " LIBNOTE_VERSION);
    info->n_pages = note.pageCount();
    // The viewer shows paper sizes in millimetres.
    info->paper_width = note.widthPoints() * 25.4 / 72;
    info->paper_height = note.heightPoints() * 25.4 / 72;
    info->fields_mask |= EV_DOCUMENT_INFO_TITLE | EV_DOCUMENT_INFO_FORMAT | EV_DOCUMENT_INFO_PRODUCER |
                        EV_DOCUMENT_INFO_N_PAGES | EV_DOCUMENT_INFO_PAPER_SIZE;
    if (note.header()) {
        // The tablet and its software: what made the note, as a PDF's creator is what made it.
        const unsigned long version = note.header()->appVersion;
        const std::string creator =
            joined(note.header()->applyEquipment, version ? "(software " + std::to_string(version) + ")" : "");
        if (!creator.empty()) {
            info->creator = g_strdup(creator.c_str());
            info->fields_mask |= EV_DOCUMENT_INFO_CREATOR;
        }
    }
    return info;
}

}  // namespace notebackend
