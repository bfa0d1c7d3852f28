#ifndef NOTETOOL_PAGE_STROKES_H
#define NOTETOOL_PAGE_STROKES_H

// A page's pen strokes with their points mapped onto an image of a given size, as notetool
// strokes prints them and the WebAssembly module hands them out.

#include <cstdint>
#include <string>
#include <vector>

#include "config.h"

namespace notetool {

struct MappedStroke {
    std::vector<MorvaPoint> points;  // pixel positions on the image, one per sampled point
    std::vector<uint16_t> pressures;
};

// The strokes of the page on a width x height image. Throws ToolError when they cannot be read.
std::vector<MappedStroke> pageStrokes(const std::string& path, int page, int width, int height);

}  // namespace notetool

#endif
