#include "page_strokes.h"

#include <stdexcept>

#include "kwdataload.h"
#include "page_reader.h"
#include "status.h"
#include "tool_error.h"
#include "trailContainer.h"

namespace notetool {

std::vector<MappedStroke> pageStrokes(const std::string& path, int page, int width, int height) {
    const std::string where = path + ": page " + std::to_string(page) + ": ";
    std::vector<TrailContainer> trails;
    int status = status::Ok;
    try {
        status = KwDataLoad().fetchNotePathFromFile(trails, path, page);
    } catch (const std::length_error&) {
        // libNote's documented answer to a stroke section with a negative count.
        throw ToolError(where + "strokes cannot be read (a stroke has a negative count)");
    }
    if (status != status::Ok) throw statusError(where + "strokes", status);
    std::vector<MappedStroke> strokes;
    for (const TrailContainer& trail : trails) {
        MappedStroke stroke{{}, trail.pressures};
        // Onto the last pixel index, so that a point at the digitizer's edge stays on the image.
        mappingTrailPoints2imageSize(trail, width, height, stroke.points, 1);
        strokes.push_back(std::move(stroke));
    }
    return strokes;
}

}  // namespace notetool
