#ifndef NOTETOOL_COMMANDS_H
#define NOTETOOL_COMMANDS_H

// The subcommands. Each add...Command declares its options on the application and, when it
// is the one chosen, leaves in `run` the function that does the work and returns the exit
// code (console.h).

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "page_reader.h"

namespace notetool {

class Progress;

using Runner = std::function<int()>;

void addInfoCommand(CLI::App& app, Runner& run);
void addRenderCommand(CLI::App& app, Runner& run);
void addStrokesCommand(CLI::App& app, Runner& run);
void addConvertCommand(CLI::App& app, Runner& run);

// What render and convert share: how pages are drawn and written.
struct RenderOptions {
    std::string format = "png";  // png, pdf or svg
    double scale = 1.0;
    bool transparent = false;
    bool raster = false;
    LayerSelection layers;
};

// The options both render and convert take, bound to options.
void addDrawingOptions(CLI::App& command, RenderOptions& options, std::vector<std::string>& layerList);
// Checks the layer names and fills options.layers; throws UsageError.
void takeLayerList(const std::vector<std::string>& layerList, RenderOptions& options);

// One note's pages and where they go: a PDF goes to `file`; PNG and SVG pages go to `file`
// when it is set (a single page), otherwise to `dir` as <note>-p<N>.<ext>.
struct NoteJob {
    std::string note;
    std::vector<int> pages;
    int largestPage = 0;
    std::string file;
    std::string dir;
};

// Renders the job's pages on up to `workers` threads, reporting each failure as one error
// line. Returns the number of pages that failed (for a PDF, all of them when any fails,
// since no partial document is written).
int renderNote(const NoteJob& job, const RenderOptions& options, int workers, Progress* progress);

// The number of workers to use when none is given: one per core.
int defaultWorkers();

// Runs body(i) for i in [0, count) on up to `workers` threads.
void parallelFor(int count, int workers, const std::function<void(int)>& body);

}  // namespace notetool

#endif
