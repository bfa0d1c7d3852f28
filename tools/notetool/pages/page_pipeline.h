#ifndef NOTETOOL_PAGE_PIPELINE_H
#define NOTETOOL_PAGE_PIPELINE_H

// A note's pages from the file to the output: each page read and composited (page_reader.h)
// and handed to the format's writer (output_formats.h), on several threads.

#include <functional>
#include <string>
#include <vector>

#include "output_formats.h"

namespace notetool {

// One note's pages and where they go: a document goes to `file`; pages of a format with a
// file per page go to `file` when it is set (a single page), otherwise to `dir` as
// <note>-p<N><extension>.
struct NoteJob {
    std::string note;
    std::vector<int> pages;
    int largestPage = 0;
    std::string file;
    std::string dir;
};

// What a run tells its host as it goes, from any of its threads: each failure, worded as an
// error line after "notetool: ", and each page done (may be left empty).
struct PageEvents {
    std::function<void(const std::string& message)> failed;
    std::function<void()> pageDone;
};

// Renders the job's pages in the format on up to `workers` threads. Returns the number of
// pages that failed (for a document, all of them when any fails, since no partial document
// is written).
int renderNote(const NoteJob& job, const OutputFormat& format, const DrawingOptions& options, int workers,
               const PageEvents& events);

// The number of workers to use when none is given: one per core.
int defaultWorkers();

// Runs body(i) for i in [0, count) on up to `workers` threads.
void parallelFor(int count, int workers, const std::function<void(int)>& body);

}  // namespace notetool

#endif
