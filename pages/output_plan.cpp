#include "output_plan.h"

#include <cmath>
#include <cstdio>

namespace notetool {

namespace {

std::string shortNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

void checkNumber(const std::string& name, const Bounds& bounds, double value) {
    if (!bounds.holds(value)) throw RequestError(name + ": " + shortNumber(value) + " is not " + bounds.wanted());
}

}  // namespace

bool Bounds::holds(double value) const { return value >= min && value <= max && (!whole || value == std::floor(value)); }

std::string Bounds::range() const { return shortNumber(min) + " to " + shortNumber(max); }

std::string Bounds::wanted() const { return std::string(whole ? "a whole number" : "a number") + " from " + range(); }

std::string nameList(const std::vector<std::string>& names) {
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i) list += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return list;
}

OutputPlan planOutput(const OutputRequest& request, const ArgumentNames& names) {
    checkNumber(names.scale, kScaleBounds, request.scale);
    if (request.dpi != 0) checkNumber(names.dpi, kDpiBounds, request.dpi);
    checkNumber(names.workers, kWorkerBounds, request.workers);
    const OutputFormat& format =
        chooseFormat(outputFormats(), request.format, request.output, names, " (a folder's name ends in /)");
    return {format, request.output, request.output != kStandardOutput && isFolderPath(request.output)};
}

void placePages(const OutputPlan& plan, NoteJob& job, const ArgumentNames& names) {
    const OutputFormat& format = plan.format;
    if (plan.output == kStandardOutput && format.filePerPage && job.pages.size() > 1)
        throw RequestError(names.output + " -: " + format.name + " writes a file per page; choose one page with " + names.pages);
    if (!format.filePerPage && plan.folder)
        job.file = joinPath(plan.output, noteStem(job.note) + format.extension());
    else if ((!format.filePerPage || job.pages.size() == 1) && !plan.folder)
        job.file = plan.output;
    else
        job.dir = plan.output;
}

void makeOutputFolder(const NoteJob& job) {
    if (job.file == kStandardOutput) return;
    const std::size_t slash = job.file.rfind('/');
    makeDirectories(!job.dir.empty() ? job.dir : slash == std::string::npos ? "." : job.file.substr(0, slash + 1));
}

}  // namespace notetool
