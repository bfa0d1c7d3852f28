#ifndef NOTETOOL_OUTPUT_PLAN_H
#define NOTETOOL_OUTPUT_PLAN_H

// What a host asks of the page writers, checked and planned the same way for every host, so
// that notetool and the Python package take and refuse the same requests in the same words:
// the bounds of the numbers, the format (by its name, else by the output's extension, else
// the first of the table), and whether the output is a file or a folder.

#include <string>
#include <vector>

#include "document_info.h"
#include "file_names.h"
#include "output_file.h"
#include "output_formats.h"
#include "page_pipeline.h"
#include "tool_error.h"

namespace notetool {

// How a host names what its caller asks for, in the messages of RequestError: notetool by
// its options ("--format"), the Python package by its parameters ("format").
struct ArgumentNames {
    std::string format;
    std::string output;
    std::string pages;
    std::string scale;
    std::string dpi;
    std::string workers;
};

// The numbers an argument may be.
struct Bounds {
    double min;
    double max;
    bool whole;

    bool holds(double value) const;
    std::string range() const;   // "1 to 256"
    std::string wanted() const;  // "a whole number from 1 to 256"
};

// What a page can be: from a thumbnail to a poster. A larger scale would ask for an image of
// gigabytes, a smaller one for a page of a few pixels.
constexpr Bounds kScaleBounds{0.05, 16, false};
constexpr Bounds kDpiBounds{kMinDpi, kMaxDpi, false};
// More workers than this gain nothing on any machine and only hold pages in memory.
constexpr Bounds kWorkerBounds{1, 256, true};

// "png, pdf or svg": names as help texts and messages list them.
std::string nameList(const std::vector<std::string>& names);

// The names of a table of formats (each with a `name`), in its order.
template <class Format>
std::vector<std::string> namesOf(const std::vector<Format>& formats) {
    std::vector<std::string> names;
    for (const Format& format : formats) names.push_back(format.name);
    return names;
}

// The row of a table of formats (each with a `name` and `extensions`) that has the name, or
// the extension whatever its case; nullptr when none has.
template <class Format>
const Format* formatByName(const std::vector<Format>& formats, const std::string& name) {
    for (const Format& format : formats)
        if (format.name == name) return &format;
    return nullptr;
}
template <class Format>
const Format* formatByExtension(const std::vector<Format>& formats, const std::string& extension) {
    for (const Format& format : formats)
        for (const std::string& known : format.extensions)
            if (equalIgnoringCase(extension, known)) return &format;
    return nullptr;
}

// The format an output is written in: the one `named` names (may be empty), else the one the
// output's extension chooses, else the first. The two must agree, and an extension that no
// format has is refused, so that "x.jpg" is not taken for a folder and "a.pdf" with the
// format png does not get PNG bytes. folderHint ends the message about an unknown extension.
template <class Format>
const Format& chooseFormat(const std::vector<Format>& formats, const std::string& named, const std::string& output,
                           const ArgumentNames& names, const std::string& folderHint) {
    const std::string extension = output == kStandardOutput || isFolderPath(output) ? "" : extensionOf(output);
    const Format* byName = formatByName(formats, named);
    const Format* byExtension = formatByExtension(formats, extension);
    if (!named.empty() && !byName) throw RequestError(names.format + ": " + named + " is none of " + nameList(namesOf(formats)));
    const std::string onOutput = names.output + " " + output + ": ";
    if (!extension.empty() && !byExtension)
        throw RequestError(onOutput + extension + " is not the extension of " + nameList(namesOf(formats)) + folderHint);
    if (byName && byExtension && byName != byExtension)
        throw RequestError(onOutput + "the extension says " + byExtension->name + ", " + names.format + " says " + byName->name);
    return byName ? *byName : byExtension ? *byExtension : formats.front();
}

// What a host asks for.
struct OutputRequest {
    std::string output;  // a file, a folder (one that exists, or a name that ends in "/"), or "-"
    std::string format;  // a format's name; empty: the one the output's extension chooses, else the first
    double scale = 1;
    double dpi = 0;  // 0: the note's own
    int workers = 1;
};

struct OutputPlan {
    const OutputFormat& format;
    std::string output;
    bool folder;  // the output is a folder
};

// Checks the request and chooses its format; throws RequestError, worded with the host's
// names for its arguments.
OutputPlan planOutput(const OutputRequest& request, const ArgumentNames& names);

// Where the plan puts a note's pages (job.note, job.pages): job.file for a document or a
// single page, <folder>/<note><extension> for a document in a folder, else job.dir for a
// file per page. Throws RequestError when the standard output would take more than one file.
void placePages(const OutputPlan& plan, NoteJob& job, const ArgumentNames& names);

// Makes the folder that the job's files go into, with its parents; throws OutputError.
void makeOutputFolder(const NoteJob& job);

}  // namespace notetool

#endif
