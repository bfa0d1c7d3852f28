#include "output_formats.h"

#include <algorithm>
#include <cctype>

#include "pdf_output.h"
#include "png_output.h"
#include "svg_output.h"

namespace notetool {

namespace {

std::string lastName(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

const std::vector<OutputFormat>& outputFormats() {
    static const std::vector<OutputFormat> formats = {
        // name  extensions  file per page  writer
        {"png", {".png"}, true, &openPng},
        {"pdf", {".pdf"}, false, &openPdf},
        {"svg", {".svg"}, true, &openSvg},
    };
    return formats;
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (const OutputFormat& format : outputFormats()) names.push_back(format.name);
    return names;
}

const OutputFormat* formatNamed(const std::string& name) {
    for (const OutputFormat& format : outputFormats())
        if (format.name == name) return &format;
    return nullptr;
}

const OutputFormat* formatOfPath(const std::string& path) {
    const std::string extension = extensionOf(path);
    for (const OutputFormat& format : outputFormats())
        for (const std::string& known : format.extensions)
            if (equalIgnoringCase(extension, known)) return &format;
    return nullptr;
}

std::string extensionOf(const std::string& path) {
    const std::string name = lastName(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot);
}

bool equalIgnoringCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

std::string noteStem(const std::string& path) {
    const std::string name = lastName(path);
    return name.substr(0, name.size() - extensionOf(name).size());
}

std::string pageFileName(const std::string& noteStem, int page, int largestPage, const OutputFormat& format) {
    std::string number = std::to_string(page);
    const std::size_t width = std::to_string(largestPage).size();
    if (number.size() < width) number.insert(0, width - number.size(), '0');
    return noteStem + "-p" + number + format.extension();
}

std::string joinPath(const std::string& dir, const std::string& name) {
    if (dir.empty()) return name;
    return dir.back() == '/' ? dir + name : dir + "/" + name;
}

}  // namespace notetool
