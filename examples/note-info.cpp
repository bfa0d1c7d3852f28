// Prints what a note file holds: its page count, its index entries, and for each page the
// layers present and the number of strokes.
//
// Usage: note-info <file.note>
//
// The library writes its own log to standard output while it reads; this program collects
// its answers first and prints them afterwards, each line led by "note-info: ".

#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "kwdatafile.h"
#include "kwdataoperationfile.h"

namespace {

struct PageInfo {
    int number = 0;
    int status = 0;
    std::string layers;
    std::string strokes;
};

std::string layersPresent(const KwPageFeatureModule& page) {
    const std::pair<const char*, int> sites[] = {{"MAINLAYER", page.mainLayerSite}, {"LAYER1", page.layer1Site},
                                                 {"LAYER2", page.layer2Site},       {"LAYER3", page.layer3Site},
                                                 {"BGLAYER", page.bgLayerSite}};
    std::string names;
    for (const auto& site : sites)
        if (site.second != 0) names += std::string(names.empty() ? "" : " ") + site.first;
    return names.empty() ? "none" : names;
}

// Reads the layer sites and only the head of the stroke block, which carries the count.
PageInfo readPage(KwFileProcess& file, int number) {
    PageFeatureReadFlag flags;
    flags.mainLayer = flags.layer1 = flags.layer2 = flags.layer3 = flags.bgLayer = true;
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
    if (pageCount < 0 || !file.init_datafile(path) || file.fetchIndex(index) != 0) {
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
        if (page.status != 0) {
            std::printf("note-info: page %d unreadable (status %d)\n", page.number, page.status);
            ++failures;
            continue;
        }
        std::printf("note-info: page %d layers %s; strokes %s\n", page.number, page.layers.c_str(),
                    page.strokes.c_str());
    }
    return failures == 0 ? 0 : 1;
}
