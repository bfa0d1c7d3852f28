// The options render and convert share: the output format and how pages are drawn.

#include <algorithm>

#include "commands.h"
#include "console.h"

namespace notetool {

std::string nameList(const std::vector<std::string>& names) {
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i) list += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return list;
}

void addDrawingOptions(CLI::App& command, DrawingArgs& args, const std::string& formatHelp) {
    command.add_option("--format", args.format, formatHelp)->check(CLI::IsMember(formatNames()));
    command.add_option("-j,--jobs", args.workers, "Number of workers (default: one per core)")->check(CLI::PositiveNumber);
    command.add_option("--layers", args.layers,
                       "Draw only these layers (comma-separated: MAINLAYER, LAYER1, LAYER2, LAYER3, BGLAYER), "
                       "still in the page's own order")
        ->delimiter(',');
    command.add_flag("--no-background", args.noBackground, "Leave out the background layer (BGLAYER)");
    command.add_option("--scale", args.scale, "Scale the page by this factor (default 1: 1404 x 1872 pixels)")
        ->check(CLI::PositiveNumber);
    command.add_flag("--transparent", args.transparent, "Leave out the white paper: only ink is opaque");
    command.add_flag("--raster", args.raster, "PDF and SVG: embed the page as a lossless image instead of tracing it");
}

DrawingOptions drawingOptions(const DrawingArgs& args) {
    DrawingOptions options;
    options.scale = args.scale;
    options.transparent = args.transparent;
    options.raster = args.raster;
    options.layers.background = !args.noBackground;
    for (const std::string& name : args.layers) {
        if (std::find(kDefaultLayerOrder.begin(), kDefaultLayerOrder.end(), name) == kDefaultLayerOrder.end())
            throw UsageError("--layers: unknown layer " + name + " (known: MAINLAYER, LAYER1, LAYER2, LAYER3, BGLAYER)");
        options.layers.only.insert(name);
    }
    return options;
}

const OutputFormat& chosenFormat(const DrawingArgs& args, const OutputFormat* fallback) {
    if (args.format.empty()) return fallback ? *fallback : outputFormats().front();
    const OutputFormat* named = formatNamed(args.format);
    if (!named) throw UsageError("--format: " + args.format + " is none of " + nameList(formatNames()));
    return *named;
}

}  // namespace notetool
