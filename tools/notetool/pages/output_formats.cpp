#include "output_formats.h"

#include <algorithm>
#include <cctype>

#include "png_output.h"
#include "vector_output.h"

namespace notetool {

namespace {

bool endsWithIgnoringCase(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           std::equal(end.begin(), end.end(), text.end() - static_cast<std::ptrdiff_t>(end.size()),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
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
    for (const OutputFormat& format : outputFormats())
        for (const std::string& extension : format.extensions)
            if (path.size() > extension.size() && endsWithIgnoringCase(path, extension)) return &format;
    return nullptr;
}

std::string noteStem(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos && dot > 0) name.erase(dot);
    return name;
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
