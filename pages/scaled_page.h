#ifndef NOTETOOL_SCALED_PAGE_H
#define NOTETOOL_SCALED_PAGE_H

// A composited page drawn at any size: reduced or repeated by page_scaling.h, and enlarged by
// other fractions with cairo's filter, which is why this lives beside the writers rather than
// in the compositor.

#include <cstdint>
#include <string>

namespace notetool {

// The page drawn width x height pixels large, as page_scaling.h's rows.
std::string scaledGreyRows(const uint8_t* pixels, int width, int height, bool transparent);

}  // namespace notetool

#endif
