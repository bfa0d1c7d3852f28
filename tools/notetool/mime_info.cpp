#include "mime_info.h"

#include "config.h"

namespace notetool {

namespace {

// The text as XML character data or attribute value.
std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '&') out += "&amp;";
        else if (c == '<') out += "&lt;";
        else if (c == '>') out += "&gt;";
        else if (c == '"') out += "&quot;";
        else out += c;
    }
    return out;
}

}  // namespace

std::string mimeInfo() {
    // The tag is the library's own: a note whose tag differs is not one libNote recognises
    // as such either.
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
                       "  <mime-type type=\"") +
           escaped(NOTETOOL_MIME_TYPE) +
           "\">\n"
           "    <comment>Handwritten note</comment>\n"
           "    <generic-icon name=\"x-office-document\"/>\n"
           "    <glob pattern=\"*.note\"/>\n"
           "    <magic>\n"
           "      <match type=\"string\" offset=\"4\" value=\"" +
           escaped(kwFileIdenificationTag) +
           "\"/>\n"
           "    </magic>\n"
           "  </mime-type>\n"
           "</mime-info>\n";
}

}  // namespace notetool
