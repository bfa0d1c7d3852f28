#include "page_reader.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "config.h"
#include "kwdatafile.h"
#include "kwdataload.h"
#include "palette.h"
#include "tool_error.h"

namespace notetool {

const std::vector<std::string> kDefaultLayerOrder = {"BGLAYER", "LAYER3", "LAYER2", "LAYER1", "MAINLAYER"};

bool LayerSelection::allows(const std::string& layer) const {
    if (!background && layer == "BGLAYER") return false;
    return only.empty() || only.count(layer) > 0;
}

namespace {

int layerSite(const KwPageFeatureModule& page, const std::string& layer) {
    if (layer == "MAINLAYER") return page.mainLayerSite;
    if (layer == "LAYER1") return page.layer1Site;
    if (layer == "LAYER2") return page.layer2Site;
    if (layer == "LAYER3") return page.layer3Site;
    return page.bgLayerSite;
}

std::string pageError(const std::string& path, int page, const std::string& what) {
    return path + ": page " + std::to_string(page) + ": " + what;
}

}  // namespace

std::vector<int> notePages(const std::string& path) {
    KwFileProcess file;
    KwFileIndexModule index;
    if (!file.init_datafile(path)) throw ToolError(path + ": " + std::strerror(errno));
    const int status = file.fetchIndex(index);
    if (status != 0) throw ToolError(path + ": not a readable note: the index cannot be read (code " + std::to_string(status) + ")");
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

KwPageFeatureModule readPageLayers(const std::string& path, int page) {
    PageFeatureReadFlag flags;
    flags.mainLayer = flags.layer1 = flags.layer2 = flags.layer3 = flags.bgLayer = true;
    flags.layerSeq = flags.pageStyle = true;
    KwFileProcess file;
    KwPageFeatureModule module;
    if (!file.init_datafile(path)) throw ToolError(path + ": " + std::strerror(errno));
    const int status = file.fetchPageFeature(module, page, flags);
    if (status != 0) throw ToolError(pageError(path, page, "cannot be read (code " + std::to_string(status) + ")"));
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

void composePage(const std::string& path, int page, const LayerSelection& selection, uint8_t* pixels) {
    const std::vector<std::string> order = drawingOrder(readPageLayers(path, page), selection);
    std::memset(pixels, kNothing, kPagePixels);
    KwDataLoad loader;
    for (const std::string& layer : order) {
        const int status = loader.fetchNoteDataFromFileByLayer(path, page, layer, reinterpret_cast<char*>(pixels));
        if (status != 0)
            throw ToolError(pageError(path, page, "layer " + layer + " cannot be read (code " + std::to_string(status) + ")"));
    }
}

}  // namespace notetool
