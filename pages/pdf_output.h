#ifndef NOTETOOL_PDF_OUTPUT_H
#define NOTETOOL_PDF_OUTPUT_H

// PDF output of composited pages (palette.h), written with qpdf. By default each page is the
// picture itself, losslessly: one image of the page's palette data (palette_picture.h, the
// very bytes of the PNG's image data) drawn over the whole page without smoothing. With
// DrawingOptions::vector each page is traced into filled outlines instead (page_tracer.h).

#include <memory>
#include <string>

#include "page_writer.h"

namespace notetool {

// All pages as one PDF, its pages their size on paper (document_info.h), with the note's
// name as its title. Finished pages wait in a temporary file, not in memory, until the
// document is written, so that a note of any length takes the same memory. A writer
// destroyed before finish() writes nothing.
std::unique_ptr<PageWriter> openPdf(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info);

// "D:YYYYMMDDHHmmSSZ", a PDF date, of an ISO 8601 date in UTC (document_info.h); empty for
// an empty one.
std::string pdfDate(const std::string& iso8601);

}  // namespace notetool

#endif
