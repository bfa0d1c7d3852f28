#ifndef NOTETOOL_COMMANDS_H
#define NOTETOOL_COMMANDS_H

// notetool's commands. Each command's options are a plain struct: add<Command>Options declares
// the command on the application with its options bound to the struct's fields, and
// run<Command> does the work from the struct alone and returns the exit code (console.h), so
// that the work can be run, and tested, without the parser. A run function throws UsageError
// for a mistake on the command line and ToolError for an input that cannot be read at all;
// it writes to toolOut(), so a caller sends the library's log away first (console.h).

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "page_pipeline.h"

namespace notetool {

// What render and convert share: the output format and how pages are drawn.
struct DrawingArgs {
    std::string format;  // an OutputFormat's name; empty for the command's default
    int workers = defaultWorkers();
    std::vector<std::string> layers;  // empty: all
    bool noBackground = false;
    double scale = 1.0;
    bool transparent = false;
    bool raster = false;
};

// Declares --format (described by formatHelp), -j and the drawing options.
void addDrawingOptions(CLI::App& command, DrawingArgs& args, const std::string& formatHelp);
// The drawing options the arguments ask for; throws UsageError for an unknown layer.
DrawingOptions drawingOptions(const DrawingArgs& args);
// The format the arguments name, else `fallback` when there is one, else the default format;
// throws UsageError for an unknown name.
const OutputFormat& chosenFormat(const DrawingArgs& args, const OutputFormat* fallback = nullptr);
// "png, pdf or svg": names as help texts and messages list them.
std::string nameList(const std::vector<std::string>& names);

struct InfoArgs {
    std::vector<std::string> notes;
    bool json = false;
};
CLI::App* addInfoOptions(CLI::App& app, InfoArgs& args);
int runInfo(const InfoArgs& args);

struct RenderArgs {
    std::string note;
    std::string out;
    std::string pages;  // "1,3-5"; empty for all
    DrawingArgs drawing;
};
CLI::App* addRenderOptions(CLI::App& app, RenderArgs& args);
int runRender(const RenderArgs& args);

struct StrokesArgs {
    std::string note;
    int page = 0;
    std::string size = "1404x1872";
    std::string format;  // json or svg; empty for the default, json
    std::string out;  // empty for standard output
};
CLI::App* addStrokesOptions(CLI::App& app, StrokesArgs& args);
int runStrokes(const StrokesArgs& args);

struct ConvertArgs {
    std::vector<std::string> inputs;
    std::string out;
    DrawingArgs drawing;
};
CLI::App* addConvertOptions(CLI::App& app, ConvertArgs& args);
int runConvert(const ConvertArgs& args);

}  // namespace notetool

#endif
