#ifndef NOTETOOL_PAGE_PIPELINE_H
#define NOTETOOL_PAGE_PIPELINE_H

// A note's pages from the file to the output: each page read and composited (page_reader.h)
// and handed to the format's writer (output_formats.h), on several threads.

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "output_formats.h"
#include "tool_error.h"

namespace notetool {

// One note's pages and where they go: a document goes to `file`; pages of a format with a
// file per page go to `file` when it is set (a single page), otherwise to `dir` as
// <note>-p<N><extension>. "-" as the file is the standard output.
struct NoteJob {
    std::string note;
    std::vector<int> pages;
    int largestPage = 0;
    std::string file;
    std::string dir;
    // All or nothing: a page that cannot be read keeps the note from being written at all.
    // Otherwise it is a blank page in a document and a missing file in a set, and the rest
    // of the note is written.
    bool strict = false;
};

// What a run shares with its host, from any of its threads.
struct PageEvents {
    // Each failure, its message worded as an error line after "notetool: ", the note named
    // first.
    std::function<void(const Failure& failure)> failed;
    // Each page done (may be left empty).
    std::function<void()> pageDone;
    // Set once an output cannot be written for want of space (ENOSPC, EDQUOT), shared by the
    // notes of a batch (may be null: then by the note's pages alone). Once it is set, no page
    // is started, what is in flight is dropped, and only the first such failure is reported:
    // on a full disk nothing more will fit, and a line for each page left says nothing new.
    std::atomic<bool>* outOfSpace = nullptr;
};

// How a note went. Pages neither written nor failed were not started: the disk was full.
struct NoteResult {
    int written = 0;  // pages in files that were written, blank stand-ins not counted
    int failed = 0;   // pages that could not be read or written
};

// Renders the job's pages in the format on up to `workers` threads.
NoteResult renderNote(const NoteJob& job, const OutputFormat& format, const DrawingOptions& options, int workers,
                      const PageEvents& events);

// The files the job writes: its document or single page, or a file per page.
std::vector<std::string> jobOutputs(const NoteJob& job, const OutputFormat& format);

// The number of workers to use when none is given: one per core, within kWorkerBounds.
int defaultWorkers();

// Runs body(i) for i in [0, count) on up to `workers` threads.
void parallelFor(int count, int workers, const std::function<void(int)>& body);

}  // namespace notetool

#endif
