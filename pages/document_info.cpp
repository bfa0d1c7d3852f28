#include "document_info.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "file_names.h"
#include "page_reader.h"
#include "tool_error.h"

namespace notetool {

const char* const kCreator = "notetool " NOTETOOL_VERSION;

namespace {

// The whole text as a finite number, or NaN.
double number(const std::string& text) {
    if (text.empty()) return NAN;
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    return *end == '\0' && errno == 0 && std::isfinite(value) ? value : NAN;
}

}  // namespace

double pageDpi(double requested, const std::string& deviceDpi) {
    if (requested != 0) return requested;
    const double dpi = number(deviceDpi);
    return dpi >= kMinDpi && dpi <= kMaxDpi ? dpi : kDefaultDpi;
}

double noteDpi(const std::string& note, double requested) {
    std::string deviceDpi;
    try {
        if (const auto header = readNoteHeader(note)) deviceDpi = header->deviceDpi;
    } catch (const ToolError&) {
        // A header that cannot be read gives the usual resolution; the pages say what is wrong.
    }
    return pageDpi(requested, deviceDpi);
}

double pagePoints(int pixels, double dpi, double scale) { return pixels * scale * 72.0 / dpi; }

std::string creationDate() {
    const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
    const double seconds = number(epoch ? epoch : "");
    if (!(seconds >= 0) || seconds != std::floor(seconds)) return "";
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm utc{};
    char text[32];
    if (!::gmtime_r(&time, &utc) || std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc) == 0) return "";
    return text;
}

DocumentInfo documentInfo(const std::string& note, double requestedDpi, const std::string& creator) {
    DocumentInfo info;
    info.title = noteStem(note);
    info.creator = creator;
    info.created = creationDate();
    info.dpi = noteDpi(note, requestedDpi);
    return info;
}

}  // namespace notetool
