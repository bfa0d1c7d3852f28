#ifndef NOTETOOL_PAGE_READER_H
#define NOTETOOL_PAGE_READER_H

// Reading a note through libNote: its page numbers, a page's layers in drawing order, and
// the composited page picture. Failures throw ToolError, worded for the error line.

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kwdatafile.h"
#include "kwfilefeaturemodule.h"
#include "kwpagefeaturemodule.h"
#include "tool_error.h"

namespace notetool {

// The layer names, bottom to top: the order the tablet draws them in when the page does not
// say otherwise.
extern const std::vector<std::string> kDefaultLayerOrder;

// Which layers may be drawn; empty means all.
struct LayerSelection {
    std::set<std::string> only;
    bool background = true;
    bool allows(const std::string& layer) const;
};

// libNote's refusal, worded "<what>: <the code's reason> (code N)" ("a.note: not a readable
// note: the index cannot be read (code 14)"), with the code in its cause.
ToolError statusError(const std::string& what, int code);

// Binds the library's reader to the note and reads its index.
void readIndex(KwFileProcess& file, KwFileIndexModule& index, const std::string& path);

// The page numbers of the index ("PAGE1" is page 1), ascending.
std::vector<int> notePages(const std::string& path);

// The note's header module, found through the index's "FILE_FEATURE" entry; none when the
// note has no header.
std::optional<KwFileFeatureModule> readNoteHeader(const std::string& path);

// The page module's layer sites, page style and layer sequence (no strokes).
KwPageFeatureModule readPageLayers(const std::string& path, int page);

// The layers of a page that exist (site not 0), bottom to top. The page's "LAYERSEQ" names
// them top to bottom, comma-separated, and leaves out those not drawn; "nolayer", or a list
// naming no known layer, stands for the default order.
std::vector<std::string> drawingOrder(const KwPageFeatureModule& page, const LayerSelection& selection);

// Fills pixels (kPagePixels bytes) with the composited page: 0xFF everywhere, then each
// layer decoded over it from the bottom up. The decoder writes only ink and white, so what a
// layer leaves transparent keeps what lies below, and no separate blending pass is needed.
// Without paper (transparent pages), the background layer's white is the paper's own and is
// left out too; white on the layers above it is white ink, which covers what lies below.
void composePage(const std::string& path, int page, const LayerSelection& selection, bool withoutPaper, uint8_t* pixels);

}  // namespace notetool

#endif
