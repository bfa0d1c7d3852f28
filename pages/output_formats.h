#ifndef NOTETOOL_OUTPUT_FORMATS_H
#define NOTETOOL_OUTPUT_FORMATS_H

// The output formats, in one table that the option checks, the file names and the choice of
// writer all come from: a new format is a row here and a writer (page_writer.h).

#include <memory>
#include <string>
#include <vector>

#include "page_writer.h"

namespace notetool {

struct OutputFormat {
    std::string name;                     // as --format takes it
    std::vector<std::string> extensions;  // that choose it in a file name; the first names its files
    bool filePerPage;                     // each page a file of its own, or all pages one document
    std::unique_ptr<PageWriter> (*open)(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

    const std::string& extension() const { return extensions.front(); }
};

// Every format; the first is the default.
const std::vector<OutputFormat>& outputFormats();

// Their names, in the table's order.
std::vector<std::string> formatNames();

// The format of that name, or nullptr.
const OutputFormat* formatNamed(const std::string& name);

// The format whose extension ends the path, whatever its case ("out/NOTE.PDF"), or nullptr.
// An extension alone is no file name: ".pdf" chooses nothing.
const OutputFormat* formatOfPath(const std::string& path);

// The extension of the path's last name (".pdf" of "out/a.pdf"), or "" when it has none.
// A name that starts with its only dot (".config") has none.
std::string extensionOf(const std::string& path);

// Whether the two texts are equal whatever the case of their letters.
bool equalIgnoringCase(const std::string& a, const std::string& b);

// The file name without its folder and without its last extension: "a/b/x.note" -> "x".
std::string noteStem(const std::string& path);

// "<note>-p<N><extension>", N zero-padded to the width of the note's largest page number, so
// that the files sort in page order.
std::string pageFileName(const std::string& noteStem, int page, int largestPage, const OutputFormat& format);

// name in dir ("" for the current folder), with one slash between them.
std::string joinPath(const std::string& dir, const std::string& name);

}  // namespace notetool

#endif
