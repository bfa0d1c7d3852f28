#include "kwfileload.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "config.h"
#include "layers.h"
#include "log.h"
#include "noteio.h"
#include "status.h"

namespace {

const char* const kFooterMarker = "tail";

// The tag and the footer marker share one message, with the comma-less separator.
void logTailReadFailure() {
    kwlog::errnoWithText("read file tail failed-----errno:", errno, "errmsg:");
}

// Reads the tag at offset 4 and tells whether it is ours.
int readTag(FILE* fp, bool& tagMatches) {
    if (!noteio::seekTo(fp, 4, noteio::Detail::NumberAndText)) return status::SeekFailed;
    std::vector<char> tag(kwFileIdenificationTag.size() + 1, '\0');
    if (std::fread(tag.data(), kwFileIdenificationTag.size(), 1, fp) != 1) {
        logTailReadFailure();
        return status::ReadFailed;
    }
    tagMatches = std::string(tag.data()) == kwFileIdenificationTag;
    return status::Ok;
}

// Leaves the stream on the index site: after the "tail" marker for a file with our tag,
// 4 bytes before the end for any other file, whose marker is not looked at.
int seekToIndexSite(FILE* fp, bool tagMatches) {
    if (!tagMatches) {
        if (std::fseek(fp, -4, SEEK_END) != 0) {
            noteio::logSeekFailure(noteio::Detail::NumberAndText);
            return status::SeekFailed;
        }
        return status::Ok;
    }
    if (std::fseek(fp, -8, SEEK_END) != 0) {
        noteio::logSeekFailure(noteio::Detail::NumberAndText);
        return status::SeekFailed;
    }
    char marker[5] = {};
    if (std::fread(marker, 4, 1, fp) != 1) {
        logTailReadFailure();
        return status::ReadFailed;
    }
    if (std::string(marker) != kFooterMarker) {
        kwlog::text("file trail str error");
        return status::FooterMarkerWrong;
    }
    return status::Ok;
}

// Everything of fetchIndex between opening and the final close.
int readIndex(noteio::Stream& in, KwFileIndexModule& index) {
    bool tagMatches = false;
    int result = readTag(in.get(), tagMatches);
    if (result != status::Ok) return result;
    result = seekToIndexSite(in.get(), tagMatches);
    if (result != status::Ok) return result;

    uint32_t site = 0;
    if (std::fread(&site, 4, 1, in.get()) != 1) {
        kwlog::errnoWithText("site read file failed-----errno:", errno, ",errmsg:");
        return status::ReadFailed;
    }
    std::vector<ModuleItem> items;
    if (!in.readBlock(items, site)) {
        kwlog::text("readModuleItemFromFile error.");
        return status::BlockUnreadable;
    }
    index.setInfoOfModuleIndex(items);
    return in.close() ? status::Ok : status::CloseFailed;
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
    noteio::Stream in(filePath, noteio::Detail::NumberAndText);
    if (!in) return status::OpenFailed;
    int result = readIndex(in, index);
    // Every way out of readIndex that leaves the stream open ends here.
    if (!in.close()) result = status::CloseFailed;
    return result;
}

int KwFileLoad::fetchPageFeature(KwPageFeatureModule& page, int pageNo, PageFeatureReadFlag& flags) {
    KwFileIndexModule index;
    if (fetchIndex(index) != status::Ok) {
        kwlog::text("fetchIndex error.");
        return status::IndexUnreadable;
    }
    const std::vector<unsigned long> sites = index.fetchModuleSiteForPage("PAGE", pageNo);
    if (sites.empty()) {
        kwlog::text("page moudle not exist:");
        kwlog::number(0);
        return status::PageNotInIndex;
    }
    if (sites.size() > 1) {
        kwlog::text("page moudle much more:");
        kwlog::number(static_cast<long long>(sites.size()));
    }

    noteio::Stream in(filePath, noteio::Detail::NumberAndText);
    if (!in) return status::OpenFailed;
    int result = status::Ok;
    std::vector<ModuleItem> items;
    if (!in.readBlock(items, sites[0])) {
        kwlog::text("readModuleItemFromFile error");
        result = status::BlockUnreadable;
    } else if (page.setInfoOfPageFeature(items, filePath, flags) != status::Ok) {
        // The page module's own code stays inside: callers only learn that the page failed.
        kwlog::text("setInfoOfPageFeature error");
        result = status::PageNotFilled;
    }
    if (!in.close()) result = status::CloseFailed;
    return result;
}

int KwFileLoad::fetchLayerFeature(KwLayerFeatureModule& layer, KwPageFeatureModule& page, std::string sLayer) {
    kwlog::line("fetchLayerFeature");
    const noteformat::Layer* known = noteformat::findLayer(sLayer);
    if (!known) {
        kwlog::text("Unknown Layer Name.Please check para sLayer first. sLayer:");
        kwlog::text(sLayer);
        return status::LayerNameUnknown;
    }
    // A page without this layer is not an error: the layer keeps its defaults.
    const int site = page.*known->site;
    if (site == 0) return status::Ok;

    noteio::Stream in(filePath, noteio::Detail::Number);
    if (!in) return status::OpenFailed;
    std::vector<ModuleItem> items;
    // The page holds signed sites, widened with their sign: -1 is the largest site, which
    // the block reader's seek refuses.
    if (!in.readBlock(items, static_cast<unsigned long>(static_cast<long>(site)))) {
        kwlog::text("readModuleItemFromFile error");
        return status::BlockUnreadable;
    }
    int result = status::Ok;
    if (layer.setInfoOfLayerFeature(items, filePath) != status::Ok) {
        kwlog::text("setInfoOfLayerFeature error");
        result = status::LayerNotFilled;
    }
    if (!in.close()) return status::CloseFailed;
    if (result == status::Ok) kwlog::line("fetchLayerFeature  ok");
    return result;
}
