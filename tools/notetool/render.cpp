// notetool render: one note's pages, as files of one format.

#include <sys/stat.h>

#include "atomic_file.h"
#include "commands.h"
#include "console.h"
#include "page_selection.h"

namespace notetool {

namespace {

bool isDirectory(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

CLI::App* addRenderOptions(CLI::App& app, RenderArgs& args) {
    CLI::App* command = app.add_subcommand("render", "Draw pages as the tablet shows them, as PNG, PDF or SVG");
    command->footer(
        "Pages are composited on white paper from the bottom up: BGLAYER, LAYER3, LAYER2, LAYER1, MAINLAYER. "
        "A page whose LAYERSEQ lists layers (comma-separated, top first, e.g. MAINLAYER,LAYER1,BGLAYER) is drawn "
        "in that order, and layers it does not list are left out; LAYERSEQ \"nolayer\" means the default order.\n"
        "OUT is a file for a PDF or for a single page, a folder otherwise, where pages are named "
        "<note>-p<N>.<ext>, N zero-padded to the width of the largest page number. Without --format the format "
        "is taken from OUT's extension (.png, .pdf, .svg), else PNG.");
    command->add_option("FILE", args.note, "The note file")->required();
    command->add_option("-o,--output", args.out, "Output file or folder (OUT)")->required();
    command->add_option("--pages", args.pages, "Pages to draw, by the index's numbers, e.g. 1,3-5 (default: all)");
    addDrawingOptions(*command, args.drawing, nameList(formatNames()));
    return command;
}

int runRender(const RenderArgs& args) {
    const DrawingOptions options = drawingOptions(args.drawing);
    const OutputFormat& format = chosenFormat(args.drawing, formatOfPath(args.out));

    NoteJob job;
    job.note = args.note;
    const std::vector<int> notePageList = notePages(job.note);
    if (notePageList.empty()) throw ToolError(job.note + ": the note has no pages");
    job.pages = selectPages(args.pages, notePageList);
    job.largestPage = notePageList.back();

    const bool outIsFolder = isDirectory(args.out) || args.out.back() == '/';
    if (!format.filePerPage && outIsFolder)
        job.file = joinPath(args.out, noteStem(job.note) + format.extension());
    else if ((!format.filePerPage || job.pages.size() == 1) && !outIsFolder)
        job.file = args.out;
    else
        job.dir = args.out;
    const std::size_t slash = job.file.rfind('/');
    makeDirectories(!job.dir.empty() ? job.dir : slash == std::string::npos ? "." : job.file.substr(0, slash + 1));
    return renderNote(job, format, options, args.drawing.workers, {reportError, {}}) == 0 ? kExitOk : kExitFailed;
}

}  // namespace notetool
