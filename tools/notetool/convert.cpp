// notetool convert: every note under the given files and folders, in parallel.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>

#include "commands.h"
#include "console.h"
#include "output_file.h"

namespace notetool {

namespace fs = std::filesystem;

namespace {

struct Found {
    std::string note;
    std::string relativeDir;  // where its output goes under DIR
};

// The extension that marks a note in a folder, whatever its case (sync tools and other
// systems write "NOTE").
bool isNoteName(const fs::path& path) { return equalIgnoringCase(path.extension().string(), ".note"); }

// Notes under the inputs: a file is taken whatever its name, a folder is searched for notes
// and its structure is kept.
std::vector<Found> findNotes(const std::vector<std::string>& inputs, int& failed) {
    std::vector<Found> found;
    for (const std::string& input : inputs) {
        std::error_code error;
        if (fs::is_directory(input, error)) {
            std::vector<Found> inFolder;
            fs::recursive_directory_iterator it(input, fs::directory_options::skip_permission_denied, error), end;
            for (; !error && it != end; it.increment(error)) {
                if (!it->is_regular_file(error) || !isNoteName(it->path())) continue;
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

// Whether every output of the job exists and was written after the note last changed.
bool upToDate(const NoteJob& job, const OutputFormat& format) {
    std::error_code error;
    const fs::file_time_type changed = fs::last_write_time(job.note, error);
    if (error) return false;
    for (const std::string& output : jobOutputs(job, format)) {
        const fs::file_time_type written = fs::last_write_time(output, error);
        if (error || written <= changed) return false;
    }
    return true;
}

}  // namespace

CLI::App* addConvertOptions(CLI::App& app, ConvertArgs& args) {
    CLI::App* command = app.add_subcommand("convert", "Convert every note in the given files and folders");
    command->footer(
        "Folders are searched recursively for *.note files (the extension in any case) and their structure is kept "
        "under DIR; files named on the command line go to DIR itself. A note becomes DIR/<sub>/<note>.pdf, or one "
        "file per page DIR/<sub>/<note>-p<N>.png (or .svg). A note that cannot be read is reported and skipped; the "
        "others are converted, and the exit code is then 1. When the disk is full, no further note is started and "
        "one line says so. A progress bar is drawn on standard error when it is a terminal; a one-line summary is "
        "printed at the end.");
    command->add_option("INPUT", args.inputs, "Note files and folders")->required();
    addPathOption(*command, "-o,--output", args.out, "Output folder (DIR)")->required();
    command->add_flag("--update", args.update,
                      "Skip a note whose outputs all exist and are newer than it (counted as up to date), as for a "
                      "folder that is synced and converted again and again");
    addDrawingOptions(*command, args.drawing,
                      nameList(namesOf(outputFormats())) + " (default " + outputFormats().front().name + ")");
    return command;
}

int runConvert(const ConvertArgs& args) {
    const DrawingOptions options = drawingOptions(args.drawing);
    if (args.out == kStandardOutput || (!isFolderPath(args.out) && formatByExtension(outputFormats(), extensionOf(args.out))))
        throw UsageError("--output " + args.out + ": convert writes a folder (a folder's name ends in /)");
    // Whatever its name, the output is a folder: each note's output goes into a folder of its
    // own under it.
    const OutputPlan plan = planOutput(outputRequest(joinPath(args.out, ""), args.drawing), kOptionNames);
    const OutputFormat& format = plan.format;
    const auto start = std::chrono::steady_clock::now();

    int failedNotes = 0;
    int upToDateNotes = 0;
    std::vector<NoteJob> jobs;
    std::map<std::string, std::string> claimed;  // output stem -> the note that has it
    int totalPages = 0;
    const std::vector<Found> found = findNotes(args.inputs, failedNotes);
    for (const Found& note : found) {
        NoteJob job;
        job.note = note.note;
        job.strict = args.drawing.strict;
        const std::string dir = outputDir(args.out, note.relativeDir);
        const std::string stem = joinPath(dir, noteStem(job.note));
        try {
            const auto owner = claimed.emplace(stem, job.note);
            if (!owner.second) throw ToolError(job.note + ": skipped: its output " + stem + " is taken by " + owner.first->second);
            job.pages = notePages(job.note);
            if (job.pages.empty()) throw ToolError(job.note + ": the note has no pages");
            job.largestPage = job.pages.back();
            placePages({format, dir, true}, job, kOptionNames);
            if (args.update && upToDate(job, format)) {
                ++upToDateNotes;
                continue;
            }
            makeOutputFolder(job);
        } catch (const std::exception& e) {
            reportError(e.what());
            ++failedNotes;
            continue;
        }
        totalPages += static_cast<int>(job.pages.size());
        jobs.push_back(std::move(job));
    }
    if (found.empty()) {
        std::string inputs;
        for (const std::string& input : args.inputs) inputs += (inputs.empty() ? "" : ", ") + input;
        printOut("notetool: found no notes in " + inputs + "\n");
        return failedNotes == 0 ? kExitOk : kExitFailed;
    }

    // Notes are shared out among the workers; when there are fewer notes than workers,
    // each note's pages are split among the rest.
    const int noteWorkers = std::max(1, std::min(args.drawing.workers, static_cast<int>(jobs.size())));
    const int pageWorkers = std::max(1, args.drawing.workers / noteWorkers);
    std::atomic<int> pagesWritten{0};
    std::atomic<int> notesWritten{0};
    std::atomic<int> notesFailed{0};
    std::atomic<bool> outOfSpace{false};
    {
        Progress progress(totalPages);
        const PageEvents events{reportFailure, [&progress] { progress.pageDone(); }, &outOfSpace};
        parallelFor(static_cast<int>(jobs.size()), noteWorkers, [&](int i) {
            const NoteJob& job = jobs[static_cast<std::size_t>(i)];
            const NoteResult result = renderNote(job, format, options, pageWorkers, events);
            pagesWritten += result.written;
            if (result.failed > 0) ++notesFailed;
            else if (result.written == static_cast<int>(job.pages.size())) ++notesWritten;
        });
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int notStarted = static_cast<int>(jobs.size()) - notesWritten - notesFailed;
    std::string summary = "notetool: converted " + std::to_string(pagesWritten) + " pages of " +
                          std::to_string(notesWritten) + " notes to " + format.name + " in ";
    char timing[64];
    std::snprintf(timing, sizeof timing, "%.2f s (%.1f pages/s)", seconds, seconds > 0 ? pagesWritten / seconds : 0.0);
    summary += timing;
    summary += "; " + std::to_string(upToDateNotes) + " up to date; " + std::to_string(failedNotes + notesFailed) + " failed";
    if (notStarted > 0) summary += "; " + std::to_string(notStarted) + " not converted: the disk is full";
    printOut(summary + "\n");
    return failedNotes + notesFailed + notStarted == 0 ? kExitOk : kExitFailed;
}

}  // namespace notetool
