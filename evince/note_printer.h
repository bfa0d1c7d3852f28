#ifndef LIBNOTE_EVINCE_NOTE_PRINTER_H
#define LIBNOTE_EVINCE_NOTE_PRINTER_H

// A note's pages as the PDF or PostScript file the viewer's print dialog sends to the printer
// (or keeps, printing to a file). Each page has the note's size on paper, as in notetool's
// PDF, and holds the page's picture at full resolution, drawn unsmoothed: handwriting on a
// printer's grid stays as sharp as the tablet drew it.

#include <set>
#include <string>

#include "viewed_note.h"

namespace notebackend {

class NotePrinter {
public:
    // Starts the file; `postScript` chooses PostScript over PDF.
    NotePrinter(const ViewedNote& note, const std::string& file, bool postScript);
    ~NotePrinter();
    NotePrinter(const NotePrinter&) = delete;
    NotePrinter& operator=(const NotePrinter&) = delete;

    // Adds the page at `index` as the next page of the file.
    void print(int index, const std::set<std::string>& hidden);

private:
    const ViewedNote& note_;
    cairo_surface_t* file_;
};

}  // namespace notebackend

#endif
