#ifndef LIBNOTE_KDE_PAGE_IMAGE_H
#define LIBNOTE_KDE_PAGE_IMAGE_H

// A composited page (palette.h) as the Qt image that KDE's plugins hand to Okular and KIO,
// drawn at the size asked by the page library (page_scaling.h), so that it is the picture
// notetool writes at that size.

#include <QImage>

#include <cstdint>

namespace notetool {

// The page's pixels drawn width x height pixels large, in grey.
QImage pageImage(const uint8_t* pixels, int width, int height);

}  // namespace notetool

#endif
