#ifndef NOTETOOL_OUTPUT_FORMATS_H
#define NOTETOOL_OUTPUT_FORMATS_H

// The output formats, in one table that the choice of format (output_plan.h), the file names
// and the choice of writer all come from: a new format is a row here and a writer
// (page_writer.h).

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

// "<note>-p<N><extension>", N zero-padded to the width of the note's largest page number, so
// that the files sort in page order.
std::string pageFileName(const std::string& noteStem, int page, int largestPage, const OutputFormat& format);

}  // namespace notetool

#endif
