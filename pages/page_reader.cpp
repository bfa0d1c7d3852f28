#include "page_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <sys/stat.h>

#include "config.h"
#include "kwdatafile.h"
#include "kwdataload.h"
#include "layers.h"
#include "palette.h"
#include "status.h"

namespace notetool {

// Bottom first: the format lists the layers top first.
const std::vector<std::string> kDefaultLayerOrder = [] {
    std::vector<std::string> order;
    for (const noteformat::Layer& layer : noteformat::kLayers) order.insert(order.begin(), layer.name);
    return order;
}();

bool LayerSelection::allows(const std::string& layer) const {
    if (!background && layer == "BGLAYER") return false;
    return only.empty() || only.count(layer) > 0;
}

namespace {

int layerSite(const KwPageFeatureModule& page, const std::string& layer) {
    return page.*noteformat::findLayer(layer)->site;
}

std::string pageName(const std::string& path, int page) { return path + ": page " + std::to_string(page); }

// Binds the library's reader to the note. Notes are read out of order, so only a regular
// file will do: a FIFO would make the reader wait forever. The system's reason is given
// only when the failing call set one.
void openNote(KwFileProcess& file, const std::string& path) {
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) throw ToolError(path + ": " + std::strerror(errno));
    if (S_ISDIR(st.st_mode)) throw ToolError(path + ": " + std::strerror(EISDIR));
    if (!S_ISREG(st.st_mode)) throw ToolError(path + ": not a regular file, which a note must be");
    errno = 0;
    if (!file.init_datafile(path)) throw ToolError(path + ": " + (errno ? std::strerror(errno) : "the note cannot be opened"));
}

// Decodes the layer over the page as composePage describes. The background, drawn without
// paper, goes to a page of its own first, which then takes all but its white.
void drawLayer(KwDataLoad& loader, const std::string& path, int page, const std::string& layer, bool withoutPaper,
               uint8_t* pixels) {
    const bool paperLeftOut = withoutPaper && layer == "BGLAYER";
    thread_local std::vector<uint8_t> background;
    if (paperLeftOut) background.assign(kPagePixels, kNothing);
    uint8_t* target = paperLeftOut ? background.data() : pixels;
    const int status = loader.fetchNoteDataFromFileByLayer(path, page, layer, reinterpret_cast<char*>(target));
    if (status != status::Ok) throw statusError(pageName(path, page) + ": layer " + layer, status);
    if (!paperLeftOut) return;
    for (std::size_t i = 0; i < kPagePixels; ++i)
        if (background[i] != kNothing && background[i] != kWhiteInk) pixels[i] = background[i];
}

}  // namespace

ToolError statusError(const std::string& what, int code) {
    const char* text = status::statusText(code);
    return ToolError(what + ": " + (text ? text : "an unknown failure") + " (code " + std::to_string(code) + ")", {code, 0, {}});
}

void readIndex(KwFileProcess& file, KwFileIndexModule& index, const std::string& path) {
    openNote(file, path);
    const int status = file.fetchIndex(index);
    if (status != status::Ok) throw statusError(path + ": not a readable note", status);
}

std::vector<int> notePages(const std::string& path) {
    KwFileProcess file;
    KwFileIndexModule index;
    readIndex(file, index, path);
    std::vector<int> pages;
    try {
        pages = index.fetchPagesNum();
    } catch (const std::exception&) {  // an index entry "PAGE..." without a number
        throw ToolError(path + ": the index names a page without a number");
    }
    // The library sorts only lists of three or more; duplicates would render a page twice.
    std::sort(pages.begin(), pages.end());
    pages.erase(std::unique(pages.begin(), pages.end()), pages.end());
    return pages;
}

std::optional<KwFileFeatureModule> readNoteHeader(const std::string& path) {
    KwFileProcess file;
    KwFileIndexModule index;
    readIndex(file, index, path);
    const std::vector<unsigned long> sites = index.fetchModuleSiteForFileIndex("FILE_FEATURE");
    if (sites.empty()) return std::nullopt;
    FILE* fp = std::fopen(path.c_str(), "rb");
    if (!fp) throw ToolError(path + ": " + std::strerror(errno));
    std::vector<ModuleItem> items;
    const bool read = readModuleItemFromFile(fp, items, sites.front());
    flushfsyncfclose(fp, false, false, true);
    if (!read) throw ToolError(path + ": the header module cannot be read");
    KwFileFeatureModule header;
    header.setInfoOfModuleFile(items);
    return header;
}

KwPageFeatureModule readPageLayers(const std::string& path, int page) {
    PageFeatureReadFlag flags;
    noteformat::selectAllLayers(flags);
    flags.layerSeq = flags.pageStyle = true;
    KwFileProcess file;
    KwPageFeatureModule module;
    openNote(file, path);
    const int status = file.fetchPageFeature(module, page, flags);
    if (status != status::Ok) throw statusError(pageName(path, page), status);
    return module;
}

std::vector<std::string> drawingOrder(const KwPageFeatureModule& page, const LayerSelection& selection) {
    std::vector<std::string> order;
    for (const std::string& name : split(page.layerSeq, ",")) {
        const bool known = std::find(kDefaultLayerOrder.begin(), kDefaultLayerOrder.end(), name) != kDefaultLayerOrder.end();
        if (known && std::find(order.begin(), order.end(), name) == order.end()) order.insert(order.begin(), name);
    }
    if (order.empty()) order = kDefaultLayerOrder;
    order.erase(std::remove_if(order.begin(), order.end(),
                               [&](const std::string& name) {
                                   return layerSite(page, name) == 0 || !selection.allows(name);
                               }),
                order.end());
    return order;
}

void composePage(const std::string& path, int page, const LayerSelection& selection, bool withoutPaper, uint8_t* pixels) {
    const std::vector<std::string> order = drawingOrder(readPageLayers(path, page), selection);
    std::memset(pixels, kNothing, kPagePixels);
    KwDataLoad loader;
    for (const std::string& layer : order) drawLayer(loader, path, page, layer, withoutPaper, pixels);
}

}  // namespace notetool
