// notetool render: one note's pages, as files of one format.

#include "commands.h"
#include "console.h"
#include "output_file.h"
#include "page_selection.h"

namespace notetool {

CLI::App* addRenderOptions(CLI::App& app, RenderArgs& args) {
    CLI::App* command = app.add_subcommand("render", "Draw pages as the tablet shows them, as PNG, PDF or SVG");
    command->footer(
        "Pages are composited on white paper from the bottom up: BGLAYER, LAYER3, LAYER2, LAYER1, MAINLAYER. "
        "A page whose LAYERSEQ lists layers (comma-separated, top first, e.g. MAINLAYER,LAYER1,BGLAYER) is drawn "
        "in that order, and layers it does not list are left out; LAYERSEQ \"nolayer\" means the default order.\n"
        "OUT is a file for a PDF or for a single page, a folder otherwise, where pages are named "
        "<note>-p<N>.<ext>, N zero-padded to the width of the largest page number. A folder is one that exists or "
        "a name that ends in /. Without --format the format is taken from OUT's extension (.png, .pdf, .svg, in "
        "any case), else PNG; an extension that is none of these, or that --format contradicts, is a usage error. "
        "-o - writes a PDF, or a single page, to standard output.\n"
        "PDF pages have their size on paper: 1404 x 1872 pixels at the note's DEVICE_DPI when it is a number from "
        "50 to 2400, else at 226 dpi (about 6.2 x 8.3 inches), or at --dpi, times --scale. SVG pages get the same "
        "size in millimetres. The same note and options give the same bytes; a PDF carries a creation date only "
        "when SOURCE_DATE_EPOCH is set.\n"
        "A PDF page is the page's picture, losslessly, as the PNG holds it; --vector traces it into outlines. SVG "
        "pages are traced; --raster embeds the picture instead.");
    addPathOption(*command, "FILE", args.note, "The note file")->required();
    addPathOption(*command, "-o,--output", args.out, "Output file or folder (OUT), or - for standard output")->required();
    command->add_option_function<std::string>(
        "--pages", [&args](const std::string& list) { args.pages = list; },
        "Pages to draw, by the index's numbers, e.g. 1,3-5 (default: all)");
    addDrawingOptions(*command, args.drawing, nameList(namesOf(outputFormats())));
    return command;
}

int runRender(const RenderArgs& args) {
    const DrawingOptions options = drawingOptions(args.drawing);
    const OutputPlan plan = planOutput(outputRequest(args.out, args.drawing), kOptionNames);

    NoteJob job;
    job.note = args.note;
    job.strict = args.drawing.strict;
    const std::vector<int> notePageList = notePages(job.note);
    if (notePageList.empty()) throw ToolError(job.note + ": the note has no pages");
    job.pages = args.pages ? selectPages(*args.pages, notePageList, "--pages") : notePageList;
    job.largestPage = notePageList.back();
    placePages(plan, job, kOptionNames);
    makeOutputFolder(job);
    const NoteResult result = renderNote(job, plan.format, options, args.drawing.workers, {reportFailure, {}, nullptr});
    return result.failed == 0 && result.written == static_cast<int>(job.pages.size()) ? kExitOk : kExitFailed;
}

}  // namespace notetool
