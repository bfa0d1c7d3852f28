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

// The header's fields by file key, values numbers or text as the header module types them;
// null when the note has none.
ordered_json headerJson(const std::string& path) {
    const std::optional<KwFileFeatureModule> header = readNoteHeader(path);
    if (!header) return nullptr;
    return ordered_json{{"MODULE_LABEL", header->moduleLabel},
                        {"FILE_TYPE", header->fileType},
                        {"APPLY_EQUIPMENT", header->applyEquipment},
                        {"FINALOPERATION_PAGE", header->finalOperationPage},
                        {"FINALOPERATION_LAYER", header->finalOperationLayer},
                        {"ORIGINAL_STYLE", header->originalStyle},
                        {"ORIGINAL_STYLEMD5", header->originalStyleMd5},
                        {"DEVICE_DPI", header->deviceDpi},
                        {"SOFT_DPI", header->softDpi},
                        {"FILE_PARSE_TYPE", header->fileParseType},
                        {"MORVA_ETMD", header->etmd},
                        {"APP_VERSION", header->appVersion},
                        {"FILE_ID", header->fileId},
                        {"FILE_RECOGN_TYPE", header->fileRecognType},
                        {"FILE_RECOGN_LANGUAGE", header->fileRecognLanguage}};
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
        "Layers are listed top first, in drawing order (see render). With --json one document is printed: "
        "{\"notes\": [{\"file\", \"header\" (the 15 header fields under their file keys, or null), \"pageCount\", "
        "\"styles\" (the index's STYLE_ names), \"pages\": [{\"number\", \"layers\", \"layerSeq\", \"strokes\", "
        "\"style\"}]}]}; a note that cannot be read is left out and reported on standard error.");
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
