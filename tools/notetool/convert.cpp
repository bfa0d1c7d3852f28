// notetool convert: every note under the given files and folders, in parallel.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>

#include "atomic_file.h"
#include "commands.h"
#include "console.h"

namespace notetool {

namespace fs = std::filesystem;

namespace {

struct Found {
    std::string note;
    std::string relativeDir;  // where its output goes under DIR
};

// Notes under the inputs: a file is taken whatever its name, a folder is searched for
// *.note files and its structure is kept.
std::vector<Found> findNotes(const std::vector<std::string>& inputs, int& failed) {
    std::vector<Found> found;
    for (const std::string& input : inputs) {
        std::error_code error;
        if (fs::is_directory(input, error)) {
            std::vector<Found> inFolder;
            fs::recursive_directory_iterator it(input, fs::directory_options::skip_permission_denied, error), end;
            for (; !error && it != end; it.increment(error)) {
                if (!it->is_regular_file(error) || it->path().extension() != ".note") continue;
                const fs::path relative = it->path().lexically_relative(input);
                inFolder.push_back({it->path().string(), relative.parent_path().string()});
            }
            if (error) {
                reportError(input + ": " + error.message());
                ++failed;
            }
            std::sort(inFolder.begin(), inFolder.end(), [](const Found& a, const Found& b) { return a.note < b.note; });
            found.insert(found.end(), inFolder.begin(), inFolder.end());
        } else if (fs::exists(input, error)) {
            found.push_back({input, ""});
        } else {
            reportError(input + ": " + (error ? error.message() : std::string("No such file or directory")));
            ++failed;
        }
    }
    return found;
}

std::string outputDir(const std::string& root, const std::string& relativeDir) {
    return relativeDir.empty() ? root : (fs::path(root) / relativeDir).string();
}

}  // namespace

CLI::App* addConvertOptions(CLI::App& app, ConvertArgs& args) {
    CLI::App* command = app.add_subcommand("convert", "Convert every note in the given files and folders");
    command->footer(
        "Folders are searched recursively for *.note files and their structure is kept under DIR; files named on "
        "the command line go to DIR itself. A note becomes DIR/<sub>/<note>.pdf, or one file per page "
        "DIR/<sub>/<note>-p<N>.png (or .svg). A note that cannot be read is reported and skipped; the others are "
        "converted, and the exit code is then 1. A progress bar is drawn on standard error when it is a terminal; "
        "a one-line summary is printed at the end.");
    command->add_option("INPUT", args.inputs, "Note files and folders")->required();
    command->add_option("-o,--output", args.out, "Output folder (DIR)")->required();
    addDrawingOptions(*command, args.drawing, nameList(formatNames()) + " (default " + outputFormats().front().name + ")");
    return command;
}

int runConvert(const ConvertArgs& args) {
    const DrawingOptions options = drawingOptions(args.drawing);
    const OutputFormat& format = chosenFormat(args.drawing);
    const auto start = std::chrono::steady_clock::now();

    int failedNotes = 0;
    std::vector<NoteJob> jobs;
    std::map<std::string, std::string> claimed;  // output stem -> the note that has it
    int totalPages = 0;
    for (const Found& found : findNotes(args.inputs, failedNotes)) {
        NoteJob job;
        job.note = found.note;
        job.dir = outputDir(args.out, found.relativeDir);
        const std::string stem = (fs::path(job.dir) / noteStem(job.note)).string();
        try {
            const auto owner = claimed.emplace(stem, job.note);
            if (!owner.second) throw ToolError(job.note + ": skipped: its output " + stem + " is taken by " + owner.first->second);
            job.pages = notePages(job.note);
            if (job.pages.empty()) throw ToolError(job.note + ": the note has no pages");
            job.largestPage = job.pages.back();
            if (!format.filePerPage) job.file = stem + format.extension();
            makeDirectories(job.dir);
        } catch (const std::exception& e) {
            reportError(e.what());
            ++failedNotes;
            continue;
        }
        totalPages += static_cast<int>(job.pages.size());
        jobs.push_back(std::move(job));
    }

    // Notes are shared out among the workers; when there are fewer notes than workers,
    // each note's pages are split among the rest.
    const int noteWorkers = std::max(1, std::min(args.drawing.workers, static_cast<int>(jobs.size())));
    const int pageWorkers = std::max(1, args.drawing.workers / noteWorkers);
    std::atomic<int> failedPages{0};
    std::atomic<int> failedJobs{0};
    {
        Progress progress(totalPages);
        const PageEvents events{reportError, [&progress] { progress.pageDone(); }};
        parallelFor(static_cast<int>(jobs.size()), noteWorkers, [&](int i) {
            const int failed = renderNote(jobs[static_cast<std::size_t>(i)], format, options, pageWorkers, events);
            failedPages += failed;
            if (failed) ++failedJobs;
        });
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int pagesDone = totalPages - failedPages;
    const int notesFailed = failedNotes + failedJobs;
    std::fprintf(toolOut(), "notetool: converted %d pages of %d notes to %s in %.2f s (%.1f pages/s); %d failed\n",
                 pagesDone, static_cast<int>(jobs.size()) - failedJobs, format.name.c_str(), seconds,
                 seconds > 0 ? pagesDone / seconds : 0.0, notesFailed);
    return notesFailed == 0 ? kExitOk : kExitFailed;
}

}  // namespace notetool
