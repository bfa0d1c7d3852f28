#ifndef NOTETOOL_COMMANDS_H
#define NOTETOOL_COMMANDS_H

// notetool's commands. Each command's options are a plain struct: add<Command>Options declares
// the command on the application with its options bound to the struct's fields, and
// run<Command> does the work from the struct alone and returns the exit code (console.h): the
// parser's part ends with the filled struct. A run function throws UsageError
// for a mistake on the command line and ToolError for an input that cannot be read at all;
// it writes with printOut(), so a caller sends the library's log away first (console.h).

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "console.h"
#include "page_pipeline.h"

namespace notetool {

// What render and convert share: the output format and how pages are drawn.
struct DrawingArgs {
    std::string format;  // an OutputFormat's name; empty for the command's default
    int workers = defaultWorkers();
    std::optional<std::string> layers;  // comma-separated; none: all
    bool noBackground = false;
    double scale = 1.0;
    double dpi = 0;  // 0: the note's own
    bool transparent = false;
    bool raster = false;
    bool vector = false;
    bool strict = false;
};

// Declares --format (described by formatHelp), -j, --strict and the drawing options.
void addDrawingOptions(CLI::App& command, DrawingArgs& args, const std::string& formatHelp);
// The drawing options the arguments ask for; throws UsageError for an unknown layer.
DrawingOptions drawingOptions(const DrawingArgs& args);
// "png, pdf or svg": names as help texts and messages list them.
std::string nameList(const std::vector<std::string>& names);

// Checks that an option's value is the whole text of a number from min to max (a whole
// number when `whole`): "nan", "inf", "2x" and the like are refused, with a message that
// says what is wanted.
CLI::Validator numberFrom(double min, double max, bool whole);

// Declares an option that takes a path, which may not be empty.
CLI::Option* addPathOption(CLI::App& command, const std::string& name, std::string& path, const std::string& help);
// Whether the output path names a folder: one that exists, or a name that ends in "/".
bool isFolderPath(const std::string& path);

// The format an output is written in: the one --format names (`named`, may be empty), else
// the one the output path's extension chooses, whatever its case, else the first. The two
// must agree, and an extension that no format has is a UsageError, so that "-o x.jpg" is not
// taken for a folder and "-o a.pdf --format png" does not put PNG bytes into a.pdf. Formats
// are the rows of a table with a `name` and `extensions`; folderHint ends the message about
// an unknown extension.
template <class Format>
const Format& chooseFormat(const std::vector<Format>& formats, const std::string& named, const std::string& out,
                           const std::string& folderHint) {
    std::vector<std::string> names;
    for (const Format& format : formats) names.push_back(format.name);
    const Format* byName = nullptr;
    const Format* byExtension = nullptr;
    const std::string extension = out == kStandardOutput || isFolderPath(out) ? "" : extensionOf(out);
    for (const Format& format : formats) {
        if (format.name == named) byName = &format;
        for (const std::string& known : format.extensions)
            if (equalIgnoringCase(extension, known)) byExtension = &format;
    }
    if (!named.empty() && !byName) throw UsageError("--format: " + named + " is none of " + nameList(names));
    if (!extension.empty() && !byExtension)
        throw UsageError("--output " + out + ": " + extension + " is not the extension of " + nameList(names) + folderHint);
    if (byName && byExtension && byName != byExtension)
        throw UsageError("--output " + out + ": the extension says " + byExtension->name + ", --format says " + byName->name);
    return byName ? *byName : byExtension ? *byExtension : formats.front();
}

struct InfoArgs {
    std::vector<std::string> notes;
    bool json = false;
};
CLI::App* addInfoOptions(CLI::App& app, InfoArgs& args);
int runInfo(const InfoArgs& args);

struct RenderArgs {
    std::string note;
    std::string out;
    std::optional<std::string> pages;  // "1,3-5"; none: all
    DrawingArgs drawing;
};
CLI::App* addRenderOptions(CLI::App& app, RenderArgs& args);
int runRender(const RenderArgs& args);

struct StrokesArgs {
    std::string note;
    int page = 0;
    std::string size = "1404x1872";
    std::string format;  // json or svg; empty for the default, json
    std::string out = kStandardOutput;
};
CLI::App* addStrokesOptions(CLI::App& app, StrokesArgs& args);
int runStrokes(const StrokesArgs& args);

struct ConvertArgs {
    std::vector<std::string> inputs;
    std::string out;
    DrawingArgs drawing;
    bool update = false;  // skip notes whose outputs are all there and newer than the note
};
CLI::App* addConvertOptions(CLI::App& app, ConvertArgs& args);
int runConvert(const ConvertArgs& args);

struct ThumbnailArgs {
    std::string note;
    std::string out;
    int size = 256;  // the page is fitted inside size x size pixels
};
CLI::App* addThumbnailOptions(CLI::App& app, ThumbnailArgs& args);
int runThumbnail(const ThumbnailArgs& args);

}  // namespace notetool

#endif
