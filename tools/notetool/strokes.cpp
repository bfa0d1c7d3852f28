// notetool strokes: a page's pen strokes, mapped onto an image of a given size.

#include <cstring>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "commands.h"
#include "completion.h"
#include "config.h"
#include "console.h"
#include "output_file.h"
#include "page_selection.h"
#include "page_strokes.h"

namespace notetool {

namespace {

// A page's strokes on an image of width x height.
struct MappedPage {
    const std::string& note;
    int page;
    int width;
    int height;
    std::vector<MappedStroke> strokes;
};

std::string strokesJson(const MappedPage& mapped) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const MappedStroke& stroke : mapped.strokes) {
        nlohmann::ordered_json points = nlohmann::ordered_json::array();
        for (const MorvaPoint& p : stroke.points) points.push_back({p.x, p.y});
        list.push_back({{"points", points}, {"pressures", stroke.pressures}});
    }
    const nlohmann::ordered_json doc{{"file", mapped.note}, {"page", mapped.page}, {"width", mapped.width},
                                     {"height", mapped.height}, {"strokes", list}};
    return doc.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

// Each stroke is a polyline; its pressures ride along in a data attribute so that the
// drawing stays plain SVG for any viewer.
std::string strokesSvg(const MappedPage& mapped) {
    const int width = mapped.width;
    const int height = mapped.height;
    std::ostringstream svg;
    svg << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
        << "\" viewBox=\"0 0 " << width << ' ' << height << "\">\n"
        << "<g fill=\"none\" stroke=\"#e00000\" stroke-width=\"" << std::max(1.0, width / 702.0)
        << "\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
    for (const MappedStroke& stroke : mapped.strokes) {
        svg << "<polyline points=\"";
        for (std::size_t i = 0; i < stroke.points.size(); ++i)
            svg << (i ? " " : "") << stroke.points[i].x << ',' << stroke.points[i].y;
        svg << "\" data-pressures=\"";
        for (std::size_t i = 0; i < stroke.pressures.size(); ++i) svg << (i ? " " : "") << stroke.pressures[i];
        svg << "\"/>\n";
    }
    svg << "</g>\n</svg>\n";
    return svg.str();
}

// The formats strokes are written in; the first is the default.
struct StrokeFormat {
    std::string name;
    std::vector<std::string> extensions;  // that choose it in an output's name
    std::string (*text)(const MappedPage& mapped);
};
const std::vector<StrokeFormat> kStrokeFormats = {{"json", {".json"}, &strokesJson}, {"svg", {".svg"}, &strokesSvg}};

void parseSize(const std::string& size, int& width, int& height) {
    char x = 0;
    char rest = 0;
    if (std::sscanf(size.c_str(), "%d%c%d%c", &width, &x, &height, &rest) != 3 || (x != 'x' && x != 'X') || width < 1 ||
        height < 1)
        throw UsageError("--size " + size + ": expected WIDTHxHEIGHT, e.g. 1404x1872");
}

}  // namespace

CLI::App* addStrokesOptions(CLI::App& app, StrokesArgs& args) {
    CLI::App* command = app.add_subcommand("strokes", "Print a page's pen strokes mapped onto an image, with their pressures");
    command->footer(
        "Points are pixel positions on an image of the given size (the page picture is 1404x1872), one per sampled "
        "point, with the pen pressure of each. JSON: {\"file\", \"page\", \"width\", \"height\", \"strokes\": "
        "[{\"points\": [[x, y], ...], \"pressures\": [...]}]}. SVG: one polyline per stroke, its pressures in "
        "data-pressures.");
    addPathOption(*command, "FILE", args.note, "The note file")->required();
    command->add_option("--page", args.page, "The page, by the index's number")->required();
    command->add_option("--size", args.size, "Image size WIDTHxHEIGHT (default 1404x1872)");
    offerWords(command->add_option("--format", args.format,
                                   nameList(namesOf(kStrokeFormats)) + " (default: by the extension of the output, else " +
                                       kStrokeFormats.front().name + ")"),
               namesOf(kStrokeFormats));
    addPathOption(*command, "-o,--output", args.out, "Write to this file (default -: standard output)");
    return command;
}

int runStrokes(const StrokesArgs& args) {
    const StrokeFormat& format = chooseFormat(kStrokeFormats, args.format, args.out, kOptionNames, "");
    MappedPage mapped{args.note, args.page, 0, 0, {}};
    parseSize(args.size, mapped.width, mapped.height);
    selectPages(std::to_string(args.page), notePages(args.note), "--page");  // a page not in the note is a usage error

    mapped.strokes = pageStrokes(args.note, args.page, mapped.width, mapped.height);
    const std::string text = format.text(mapped);
    try {
        OutputFile file(args.out);
        file.write(text.data(), text.size());
        file.commit();
    } catch (const OutputError& e) {
        throw ToolError(args.note + ": " + e.what());
    }
    return kExitOk;
}

}  // namespace notetool
