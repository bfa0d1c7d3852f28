#include "kwfileload.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "config.h"
#include "log.h"
#include "noteio.h"

namespace {

const char* const kFooterMarker = "tail";

// The tag and the footer marker share one message, with the comma-less separator.
void logTailReadFailure() {
    kwlog::errnoWithText("read file tail failed-----errno:", errno, "errmsg:");
}

// readModuleItemFromFile closes the stream itself when it fails, so the pointer is dropped
// here: closing it once more would touch a released stream.
bool readBlock(FILE*& fp, std::vector<ModuleItem>& items, unsigned long site) {
    if (readModuleItemFromFile(fp, items, site)) return true;
    fp = nullptr;
    return false;
}

// Reads the tag at offset 4 and tells whether it is ours.
int readTag(FILE* fp, bool& tagMatches) {
    if (!noteio::seekTo(fp, 4, noteio::Detail::NumberAndText)) return 38;
    std::vector<char> tag(kwFileIdenificationTag.size() + 1, '\0');
    if (std::fread(tag.data(), kwFileIdenificationTag.size(), 1, fp) != 1) {
        logTailReadFailure();
        return 17;
    }
    tagMatches = std::string(tag.data()) == kwFileIdenificationTag;
    return 0;
}

// Leaves the stream on the index site: after the "tail" marker for a file with our tag,
// 4 bytes before the end for any other file, whose marker is not looked at.
int seekToIndexSite(FILE* fp, bool tagMatches) {
    if (!tagMatches) {
        if (std::fseek(fp, -4, SEEK_END) != 0) {
            noteio::logSeekFailure(noteio::Detail::NumberAndText);
            return 38;
        }
        return 0;
    }
    if (std::fseek(fp, -8, SEEK_END) != 0) {
        noteio::logSeekFailure(noteio::Detail::NumberAndText);
        return 38;
    }
    char marker[5] = {};
    if (std::fread(marker, 4, 1, fp) != 1) {
        logTailReadFailure();
        return 17;
    }
    if (std::string(marker) != kFooterMarker) {
        kwlog::text("file trail str error");
        return 3;
    }
    return 0;
}

// Everything of fetchIndex between opening and the final close.
int readIndex(FILE*& fp, KwFileIndexModule& index) {
    bool tagMatches = false;
    int result = readTag(fp, tagMatches);
    if (result != 0) return result;
    result = seekToIndexSite(fp, tagMatches);
    if (result != 0) return result;

    uint32_t site = 0;
    if (std::fread(&site, 4, 1, fp) != 1) {
        kwlog::errnoWithText("site read file failed-----errno:", errno, ",errmsg:");
        return 17;
    }
    std::vector<ModuleItem> items;
    if (!readBlock(fp, items, site)) {
        kwlog::text("readModuleItemFromFile error.");
        return 17;
    }
    index.setInfoOfModuleIndex(items);
    return noteio::close(fp) ? 0 : 25;
}

// The page member that holds the site of a layer's module; null for an unknown name.
const int* layerSite(const KwPageFeatureModule& page, const std::string& name) {
    if (name == "MAINLAYER") return &page.mainLayerSite;
    if (name == "LAYER1") return &page.layer1Site;
    if (name == "LAYER2") return &page.layer2Site;
    if (name == "LAYER3") return &page.layer3Site;
    if (name == "BGLAYER") return &page.bgLayerSite;
    return nullptr;
}

}  // namespace

KwFileLoad::KwFileLoad() = default;

bool KwFileLoad::init_fileload(std::string path) {
    if (path.empty()) {
        kwlog::text("init_fileload error.");
        return false;
    }
    filePath = path;
    return true;
}

int KwFileLoad::fetchIndex(KwFileIndexModule& index) {
    FILE* fp = noteio::openForReading(filePath, noteio::Detail::NumberAndText);
    if (!fp) return 1;
    int result = readIndex(fp, index);
    // Every way out of readIndex that leaves the stream open ends here.
    if (!noteio::close(fp)) result = 25;
    return result;
}

int KwFileLoad::fetchPageFeature(KwPageFeatureModule& page, int pageNo, PageFeatureReadFlag& flags) {
    KwFileIndexModule index;
    if (fetchIndex(index) != 0) {
        kwlog::text("fetchIndex error.");
        return 14;
    }
    const std::vector<unsigned long> sites = index.fetchModuleSiteForPage("PAGE", pageNo);
    if (sites.empty()) {
        kwlog::text("page moudle not exist:");
        kwlog::number(0);
        return 6;
    }
    if (sites.size() > 1) {
        kwlog::text("page moudle much more:");
        kwlog::number(static_cast<long long>(sites.size()));
    }

    FILE* fp = noteio::openForReading(filePath, noteio::Detail::NumberAndText);
    if (!fp) return 1;
    noteio::StreamGuard guard(fp);
    int result = 0;
    std::vector<ModuleItem> items;
    if (!readBlock(fp, items, sites[0])) {
        kwlog::text("readModuleItemFromFile error");
        result = 17;
    } else if (page.setInfoOfPageFeature(items, filePath, flags) != 0) {
        // The page module's own code stays inside: callers only learn that the page failed.
        kwlog::text("setInfoOfPageFeature error");
        result = 17;
    }
    if (!noteio::close(fp)) result = 25;
    return result;
}

int KwFileLoad::fetchLayerFeature(KwLayerFeatureModule& layer, KwPageFeatureModule& page, std::string sLayer) {
    kwlog::line("fetchLayerFeature");
    const int* site = layerSite(page, sLayer);
    if (!site) {
        kwlog::text("Unknown Layer Name.Please check para sLayer first. sLayer:");
        kwlog::text(sLayer);
        return 17;
    }
    // A page without this layer is not an error: the layer keeps its defaults.
    if (*site == 0) return 0;

    FILE* fp = noteio::openForReading(filePath, noteio::Detail::Number);
    if (!fp) return 1;
    noteio::StreamGuard guard(fp);
    std::vector<ModuleItem> items;
    // The page holds signed sites, widened with their sign: -1 is the largest site, which
    // the block reader's seek refuses.
    if (!readBlock(fp, items, static_cast<unsigned long>(static_cast<long>(*site)))) {
        kwlog::text("readModuleItemFromFile error");
        return 17;
    }
    int result = 0;
    if (layer.setInfoOfLayerFeature(items, filePath) != 0) {
        kwlog::text("setInfoOfLayerFeature error");
        result = 34;
    }
    if (!noteio::close(fp)) return 25;
    if (result == 0) kwlog::line("fetchLayerFeature  ok");
    return result;
}
