#include "output_formats.h"

#include "pdf_output.h"
#include "png_output.h"
#include "svg_output.h"

namespace notetool {

const std::vector<OutputFormat>& outputFormats() {
    static const std::vector<OutputFormat> formats = {
        // name  extensions  file per page  writer
        {"png", {".png"}, true, &openPng},
        {"pdf", {".pdf"}, false, &openPdf},
        {"svg", {".svg"}, true, &openSvg},
    };
    return formats;
}

std::string pageFileName(const std::string& noteStem, int page, int largestPage, const OutputFormat& format) {
    std::string number = std::to_string(page);
    const std::size_t width = std::to_string(largestPage).size();
    if (number.size() < width) number.insert(0, width - number.size(), '0');
    return noteStem + "-p" + number + format.extension();
}

}  // namespace notetool
