// The document info of a note's written files: its name comes from the file name as the
// output formats give it, which is why this is part of the writers and not of the compositor.

#include "document_info.h"
#include "output_formats.h"

namespace notetool {

DocumentInfo documentInfo(const std::string& note, double requestedDpi, const std::string& creator) {
    DocumentInfo info;
    info.title = noteStem(note);
    info.creator = creator;
    info.created = creationDate();
    info.dpi = noteDpi(note, requestedDpi);
    return info;
}

}  // namespace notetool
