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
#include "output_plan.h"

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

// The options' names in the page library's messages (output_plan.h).
extern const ArgumentNames kOptionNames;

// Declares --format (described by formatHelp), -j, --strict and the drawing options.
void addDrawingOptions(CLI::App& command, DrawingArgs& args, const std::string& formatHelp);
// The drawing options the arguments ask for; throws UsageError for an unknown layer.
DrawingOptions drawingOptions(const DrawingArgs& args);
// What the arguments ask of the output (checked by planOutput).
OutputRequest outputRequest(const std::string& out, const DrawingArgs& args);

// Checks that an option's value is the whole text of a number within the bounds: "nan",
// "inf", "2x" and the like are refused, with a message that says what is wanted.
CLI::Validator numberFrom(const Bounds& bounds);

// Declares an option that takes a path, which may not be empty.
CLI::Option* addPathOption(CLI::App& command, const std::string& name, std::string& path, const std::string& help);

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
