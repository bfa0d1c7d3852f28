// Proves that the Document Viewer's backend survives any file it is asked to open: the note is
// loaded as the viewer loads it, its layers listed, and each of its first pages drawn small
// and turned, as the page sidebar draws them. A note that cannot be opened must say why with
// a ToolError; anything else that escapes, or any fault, fails the run.

#include <algorithm>
#include <set>
#include <string>

#include "harness.h"
#include "tool_error.h"
#include "viewed_note.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string& path = fuzzharness::writeNoteFile(data, size);
    try {
        const notebackend::ViewedNote note(path);
        const std::vector<notebackend::LayerTitle> layers = note.layers();
        const std::set<std::string> hidden = layers.empty() ? std::set<std::string>{} : std::set<std::string>{layers.front().name};
        // A few pages: a note may name thousands, each as costly to draw as the first.
        for (int index = 0; index < std::min(note.pageCount(), 3); ++index) note.draw(index, 70, 94, 90 * index, hidden);
    } catch (const notetool::ToolError&) {
        // The viewer's error message: a note that cannot be read.
    }
    return 0;
}
