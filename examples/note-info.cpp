// Prints what a note file holds: its page count, its index entries, and for each page the
// layers present and the number of strokes.
//
// Usage: note-info <file.note>
//
// A host program: it includes only the library's installed headers, as a program built
// against an installed libNote does. The library writes its own log to standard output while
// it reads; this program collects its answers first and prints them afterwards, each line led
// by "note-info: ".

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "kwpagefeaturemodule.h"

namespace {

// The five layers of a page, top first: the page key, where the page keeps the layer's site,
// and the flag that makes a page read take it.
struct Layer {
    const char* name;
    int KwPageFeatureModule::*site;
    bool PageFeatureReadFlag::*readFlag;
};
const Layer kLayers[] = {
    {"MAINLAYER", &KwPageFeatureModule::mainLayerSite, &PageFeatureReadFlag::mainLayer},
    {"LAYER1", &KwPageFeatureModule::layer1Site, &PageFeatureReadFlag::layer1},
    {"LAYER2", &KwPageFeatureModule::layer2Site, &PageFeatureReadFlag::layer2},
    {"LAYER3", &KwPageFeatureModule::layer3Site, &PageFeatureReadFlag::layer3},
    {"BGLAYER", &KwPageFeatureModule::bgLayerSite, &PageFeatureReadFlag::bgLayer},
};

// The calls' status for success.
constexpr int kOk = 0;

struct PageInfo {
    int number = 0;
    int status = 0;
    std::string layers;
    std::string strokes;
};

std::string layersPresent(const KwPageFeatureModule& page) {
    std::string names;
    for (const Layer& layer : kLayers)
        if (page.*layer.site != 0) names += std::string(names.empty() ? "" : " ") + layer.name;
    return names.empty() ? "none" : names;
}

// Reads the layer sites and only the head of the stroke block, which carries the count.
PageInfo readPage(KwFileProcess& file, int number) {
    PageFeatureReadFlag flags;
    for (const Layer& layer : kLayers) flags.*layer.readFlag = true;
    flags.totalPath = flags.totalPathHead = true;
    KwPageFeatureModule page;
    PageInfo info;
    info.number = number;
    info.status = file.fetchPageFeature(page, number, flags);
    info.layers = layersPresent(page);
    info.strokes = page.totalPathSite == 0 ? "no stroke block" : std::to_string(page.trailCount);
    return info;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: note-info <file.note>\n");
        return 2;
    }
    const std::string path = argv[1];

    const int pageCount = KwDataOperationFile().fetchTotalPageNumOfNote(path);
    KwFileProcess file;
    KwFileIndexModule index;
    if (pageCount < 0 || !file.init_datafile(path) || file.fetchIndex(index) != kOk) {
        std::fprintf(stderr, "\nnote-info: cannot read %s\n", path.c_str());
        return 1;
    }
    std::vector<PageInfo> pages;
    try {
        for (int number : index.fetchPagesNum()) pages.push_back(readPage(file, number));
    } catch (const std::exception& e) {  // a page name without a number
        std::fprintf(stderr, "\nnote-info: bad page entry in the index: %s\n", e.what());
        return 1;
    }

    std::printf("\nnote-info: file %s\n", path.c_str());
    std::printf("note-info: pages %d\n", pageCount);
    for (const ModuleKwIndexItem& entry : index.vecModuleIndex)
        std::printf("note-info: index %s at %d\n", entry.name.c_str(), entry.site);
    int failures = 0;
    for (const PageInfo& page : pages) {
        if (page.status != kOk) {
            std::printf("note-info: page %d unreadable (status %d)\n", page.number, page.status);
            ++failures;
            continue;
        }
        std::printf("note-info: page %d layers %s; strokes %s\n", page.number, page.layers.c_str(),
                    page.strokes.c_str());
    }
    return failures == 0 ? 0 : 1;
}
