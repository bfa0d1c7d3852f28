// notetool info: what a note holds, as text or JSON.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "config.h"
#include "console.h"
#include "kwdatafile.h"
#include "kwfilefeaturemodule.h"
#include "layers.h"
#include "status.h"

namespace notetool {

namespace {

using nlohmann::ordered_json;

// The header's fields by file key, each value the file's own text (the header is the note's
// metadata, which a number would rewrite: "0226" is not 226), or the library's default text
// where the file has no such item; null for a note without a header. A repeated key counts
// by its last item, and "APP_VERTION" counts as "APP_VERSION", as the library reads them.
ordered_json headerJson(const std::string& path) {
    const std::optional<std::vector<ModuleItem>> items = readNoteHeaderItems(path);
    if (!items) return nullptr;
    std::vector<ModuleItem> defaults;
    KwFileFeatureModule().produceVecMI(defaults);
    ordered_json header = ordered_json::object();
    for (const ModuleItem& field : defaults) {
        header[field.key] = field.value;
        for (const ModuleItem& item : *items)
            if (item.key == field.key || (field.key == "APP_VERSION" && item.key == "APP_VERTION"))
                header[field.key] = item.value;
    }
    return header;
}

// One page: the layers present (top first, as the page lists them), the stroke count from
// the stroke block's head (the strokes themselves are not decoded) and the page style.
ordered_json readPage(KwFileProcess& file, int number) {
    PageFeatureReadFlag flags;
    noteformat::selectAllLayers(flags);
    flags.layerSeq = flags.pageStyle = true;
    flags.totalPath = flags.totalPathHead = true;
    KwPageFeatureModule page;
    const int status = file.fetchPageFeature(page, number, flags);
    if (status != status::Ok) throw statusError(file.filePath + ": page " + std::to_string(number), status);
    std::vector<std::string> layers = drawingOrder(page, LayerSelection());
    std::reverse(layers.begin(), layers.end());
    return ordered_json{{"number", number},
                        {"layers", layers},
                        {"layerSeq", page.layerSeq},
                        {"strokes", page.trailCount},
                        {"style", page.pageStyle}};
}

ordered_json describeNote(const std::string& path, bool& failed) {
    KwFileProcess file;
    KwFileIndexModule index;
    readIndex(file, index, path);
    ordered_json note{{"file", path}, {"header", headerJson(path)}, {"pageCount", index.getTotalPageNum()}};
    ordered_json styles = ordered_json::array();
    for (const ModuleKwIndexItem& entry : index.vecModuleIndex)
        if (entry.name.compare(0, 6, "STYLE_") == 0) styles.push_back(entry.name.substr(6));
    note["styles"] = styles;
    ordered_json pages = ordered_json::array();
    for (int number : notePages(path)) {
        try {
            pages.push_back(readPage(file, number));
        } catch (const ToolError& e) {
            reportError(e.what());
            failed = true;
        }
    }
    note["pages"] = pages;
    return note;
}

std::string text(const ordered_json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); }

std::string noteText(const ordered_json& note) {
    std::string out = note["file"].get<std::string>() + "\n  pages: " + text(note["pageCount"]) + "\n";
    if (note["header"].is_null()) {
        out += "  header: none\n";
    } else {
        out += "  header:\n";
        for (const auto& field : note["header"].items()) out += "    " + field.key() + ": " + text(field.value()) + "\n";
    }
    std::string styles;
    for (const auto& style : note["styles"]) styles += (styles.empty() ? "" : ", ") + style.get<std::string>();
    out += "  styles: " + (styles.empty() ? std::string("none") : styles) + "\n";
    for (const auto& page : note["pages"]) {
        std::string layers;
        for (const auto& layer : page["layers"]) layers += (layers.empty() ? "" : " ") + layer.get<std::string>();
        out += "  page " + std::to_string(page["number"].get<int>()) + ": layers " + (layers.empty() ? "none" : layers) +
               "; strokes " + text(page["strokes"]) + "; style " + page["style"].get<std::string>() + "\n";
    }
    return out;
}

}  // namespace

CLI::App* addInfoOptions(CLI::App& app, InfoArgs& args) {
    CLI::App* command = app.add_subcommand("info", "Show a note's header, pages, layers, stroke counts and styles");
    command->footer(
        "Layers are listed top first, in drawing order (see render). With --json one document is printed, "
        "{\"notes\": [NOTE, ...]}, a note that cannot be read left out and reported on standard error. "
        "A NOTE has: \"file\" (the path given); \"header\" (null for a note without one, else the 15 header "
        "fields under their file keys, MODULE_LABEL to FILE_RECOGN_LANGUAGE, each the file's own text, or the "
        "library's default text where the file lacks it); \"pageCount\" (a number: the index's pages); \"styles\" (the index's STYLE_ "
        "names, without STYLE_); \"pages\", one for each page read: \"number\" (a number), \"layers\" (the "
        "layers drawn, top first), \"layerSeq\" (the page's LAYERSEQ text), \"strokes\" (a number: the stroke "
        "block's count) and \"style\" (the page's style name).");
    command->add_option("FILE", args.notes, "Note files")->required();
    command->add_flag("--json", args.json, "Print JSON instead of text");
    return command;
}

int runInfo(const InfoArgs& args) {
    bool failed = false;
    ordered_json notes = ordered_json::array();
    for (const std::string& path : args.notes) {
        try {
            notes.push_back(describeNote(path, failed));
        } catch (const ToolError& e) {
            reportError(e.what());
            failed = true;
        }
    }
    std::string out;
    if (args.json)
        out = ordered_json{{"notes", notes}}.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
    else
        for (const auto& note : notes) out += noteText(note);
    printOut(out);
    return failed ? kExitFailed : kExitOk;
}

}  // namespace notetool
