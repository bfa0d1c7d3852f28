#ifndef LIBNOTE_EVINCE_NOTE_INFO_H
#define LIBNOTE_EVINCE_NOTE_INFO_H

// The viewer's Properties of a note: its name, pages and paper size, what wrote it, and the
// resolution its pages are printed at.

#include <evince-document.h>

#include "viewed_note.h"

namespace notebackend {

// A new EvDocumentInfo, which the viewer frees.
EvDocumentInfo* documentInfo(const ViewedNote& note);

}  // namespace notebackend

#endif
