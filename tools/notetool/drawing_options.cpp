// The options render and convert share: the output format and how pages are drawn, and the
// checks of their values.

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "commands.h"
#include "completion.h"
#include "config.h"
#include "console.h"

namespace notetool {

namespace {

// The layer names, top first, as help texts and messages list them.
std::string layerNames() {
    const std::vector<std::string> topFirst(kDefaultLayerOrder.rbegin(), kDefaultLayerOrder.rend());
    std::string list;
    for (const std::string& name : topFirst) list += (list.empty() ? "" : ", ") + name;
    return list;
}

}  // namespace

const ArgumentNames kOptionNames{"--format", "--output", "--pages", "--scale", "--dpi", "--jobs"};

CLI::Validator numberFrom(const Bounds& bounds) {
    return CLI::Validator(
        [=](std::string& text) -> std::string {
            char* end = nullptr;
            errno = 0;
            const double value = std::strtod(text.c_str(), &end);
            const bool digits = std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
            const bool ok = !text.empty() && *end == '\0' && errno == 0 && bounds.holds(value) && (!bounds.whole || digits);
            return ok ? std::string() : text + " is not " + bounds.wanted();
        },
        bounds.range());
}

CLI::Option* addPathOption(CLI::App& command, const std::string& name, std::string& path, const std::string& help) {
    CLI::Option* option = command.add_option(name, path, help)->check(CLI::Validator(
        [](std::string& text) { return text.empty() ? std::string("the path is empty") : std::string(); }, "PATH"));
    // An option's path is any file; a positional one is a note, which the shell offers unasked.
    return option->get_positional() ? option : offerFiles(option);
}

void addDrawingOptions(CLI::App& command, DrawingArgs& args, const std::string& formatHelp) {
    offerWords(command.add_option("--format", args.format, formatHelp), namesOf(outputFormats()));
    command.add_option("-j,--jobs", args.workers, "Number of workers (default: one per core)")
        ->check(numberFrom(kWorkerBounds));
    offerWordList(command.add_option_function<std::string>(
                      "--layers", [&args](const std::string& list) { args.layers = list; },
                      "Draw only these layers, one comma-separated value (" + layerNames() +
                          "), still in the page's own order"),
                  kDefaultLayerOrder);
    command.add_flag("--no-background", args.noBackground, "Leave out the background layer (BGLAYER)");
    command.add_option("--scale", args.scale, "Scale the page by this factor (default 1: 1404 x 1872 pixels)")
        ->check(numberFrom(kScaleBounds));
    command.add_option("--dpi", args.dpi,
                       "Page pixels per inch on paper: the size of PDF and SVG pages, and a PNG's resolution (default: "
                       "the note's DEVICE_DPI, else 226)")
        ->check(numberFrom(kDpiBounds));
    command.add_flag("--transparent", args.transparent,
                     "Leave out the white paper, and the background layer's white with it: only ink is opaque");
    CLI::Option* raster = command.add_flag(
        "--raster", args.raster, "SVG: embed the page as a lossless image instead of tracing it (a PDF holds that image already)");
    command.add_flag("--vector", args.vector,
                     "PDF: trace the page into filled outlines instead of holding it as a lossless image (SVG's default)")
        ->excludes(raster);
    command.add_flag("--strict", args.strict,
                     "All or nothing: write no file of a note that has a page that cannot be read (by default such a "
                     "page is a blank page in a PDF and a missing file in a set, and the rest is written)");
}

DrawingOptions drawingOptions(const DrawingArgs& args) {
    DrawingOptions options;
    options.scale = args.scale;
    options.dpi = args.dpi;
    options.transparent = args.transparent;
    options.raster = args.raster;
    options.vector = args.vector;
    options.creator = kCreator;
    options.layers.background = !args.noBackground;
    if (!args.layers) return options;
    if (args.layers->empty()) throw UsageError("--layers: the list is empty");
    for (const std::string& name : split(*args.layers, ",")) {
        if (std::find(kDefaultLayerOrder.begin(), kDefaultLayerOrder.end(), name) == kDefaultLayerOrder.end())
            throw UsageError("--layers: unknown layer " + name + " (known: " + layerNames() + ")");
        options.layers.only.insert(name);
    }
    return options;
}

OutputRequest outputRequest(const std::string& out, const DrawingArgs& args) {
    return {out, args.format, args.scale, args.dpi, args.workers};
}

}  // namespace notetool
