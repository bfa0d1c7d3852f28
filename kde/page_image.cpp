#include "page_image.h"

#include <cstring>
#include <string>

#include "scaled_page.h"

namespace notetool {

QImage pageImage(const uint8_t* pixels, int width, int height) {
    const std::string rows = scaledGreyRows(pixels, width, height, false);
    QImage image(width, height, QImage::Format_Grayscale8);
    // Each of the library's rows is led by its PNG filter byte.
    for (int y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), rows.data() + std::size_t(y) * (std::size_t(width) + 1) + 1, std::size_t(width));
    return image;
}

}  // namespace notetool
