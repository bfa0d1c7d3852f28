#include "kwpagefeaturemodule.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "layers.h"
#include "log.h"
#include "noteio.h"
#include "status.h"
#include "textstream.h"

namespace {

// Read as a formatted stream extraction reads an int: leading whitespace, a sign, digits
// up to the first non-digit; 0 without a leading number, the nearest limit when out of range.
int toInt(const std::string& value) { return textstream::firstOf<int>(value); }

// The first whitespace-delimited word, or an empty text when there is none.
std::string firstWord(const std::string& value) { return textstream::firstOf<std::string>(value); }

// One mark is exactly eleven comma-separated numbers; anything else is passed over. A piece
// that is not a number throws from stoi: such a page is refused as a whole.
void addFiveStar(std::vector<fiveStarDB>& stars, const std::string& value) {
    const std::vector<std::string> pieces = split(firstWord(value), ",");
    if (pieces.size() != 11) return;
    fiveStarDB star;
    for (std::size_t i = 0; i < pieces.size(); ++i) star.values[i] = std::stoi(pieces[i]);
    stars.push_back(star);
}

// Reads `count` length-prefixed stroke records; `left` is the number of file bytes after
// the stream's position.
int readStrokes(FILE* fp, std::vector<TrailContainer>& trails, int32_t count, unsigned long left) {
    std::vector<char> record;  // grows to the longest record and is reused for all of them
    for (int32_t i = 0; i < count; ++i) {
        uint32_t length = 0;
        if (std::fread(&length, 4, 1, fp) != 1) {
            kwlog::errnoOnly("read trail len error-----errno:", errno);
            return status::ReadFailed;
        }
        left -= 4;
        // A length beyond the end of the file fails as its short read would, before any
        // room is made for it: a small file must not be able to claim gigabytes.
        if (length > left) {
            kwlog::errnoWithText("read trail data error-----errno:", errno, ",errmsg:");
            return status::ReadFailed;
        }
        if (record.size() < length + 1UL) record.resize(length + 1UL);
        if (std::fread(record.data(), 1, length, fp) != length) {
            kwlog::errnoWithText("read trail data error-----errno:", errno, ",errmsg:");
            return status::ReadFailed;
        }
        left -= length;
        record[length] = '\0';
        TrailContainer trail;
        if (data2Trail(record.data(), static_cast<int>(length), trail) != status::Ok) {
            kwlog::text("data2Trail error.");
            return status::StrokeUnreadable;
        }
        // A copy, not a move: the fresh record reserves room for 5000 points and flags,
        // which a move would keep for every stroke of the page (over 100 KB each).
        trails.push_back(trail);
    }
    return status::Ok;
}

// The TOTALPATH block: total length, stroke count, then the records when they are asked for.
int readStrokeBlock(FILE* fp, KwPageFeatureModule& page, bool withTrails) {
    unsigned long size = 0;
    if (!noteio::fileSize(fp, size, noteio::Detail::NumberAndText)) return status::SeekFailed;
    // The site is signed: a negative one passes this check and the seek refuses it. The sum
    // is formed in 64 bits, so that a site near the 32-bit limit cannot overflow it.
    const long site = page.totalPathSite;
    if (site + 4 > static_cast<long>(size)) {
        kwlog::text("totalpath site error.");
        return status::SiteOutsideFile;
    }
    if (!noteio::seekTo(fp, static_cast<unsigned long>(site), noteio::Detail::NumberAndText)) return status::SeekFailed;
    uint32_t totalLength = 0;
    if (std::fread(&totalLength, 4, 1, fp) != 1) {
        kwlog::errnoOnly("read totalpath length error-----errno:", errno);
        return status::ReadFailed;
    }
    page.totalPathLength = totalLength;
    int32_t count = 0;
    if (std::fread(&count, 4, 1, fp) != 1) {
        kwlog::errnoOnly("read totalpath trailsize error-----errno:", errno);
        return status::ReadFailed;
    }
    // The count fills the low half of the member only, as the block stores 4 bytes of it.
    page.trailCount = (page.trailCount & ~0xFFFFFFFFUL) | static_cast<uint32_t>(count);
    page.trails.clear();
    if (!withTrails) return status::Ok;
    return readStrokes(fp, page.trails, count, size - site - 8);
}

int readTotalPath(KwPageFeatureModule& page, const std::string& path, bool withTrails) {
    noteio::Stream in(path, noteio::Detail::NumberAndText);
    if (!in) return status::OpenFailed;
    int result = readStrokeBlock(in.get(), page, withTrails);
    if (!in.close(true)) result = status::CloseFailed;
    return result;
}

// Takes one item when its key is known and selected; only the stroke block can fail.
int applyItem(KwPageFeatureModule& page, const ModuleItem& item, const std::string& path,
              const PageFeatureReadFlag& flags) {
    const std::string& key = item.key;
    const std::string& value = item.value;
    if (key == "PAGESTYLE") {
        if (flags.pageStyle) page.pageStyle = value;
    } else if (key == "PAGESTYLEMD5") {
        if (flags.pageStyleMd5) page.pageStyleMd5 = value;
    } else if (const noteformat::Layer* layer = noteformat::findLayer(key)) {
        if (flags.*layer->readFlag) page.*layer->site = toInt(value);
    } else if (key == "TOTALPATH") {
        if (!flags.totalPath) return status::Ok;
        page.totalPathSite = toInt(value);
        // Site 0: the page has no strokes.
        if ((flags.totalPathHead || flags.totalPathTrails) && page.totalPathSite != 0)
            return readTotalPath(page, path, flags.totalPathTrails);
    } else if (key == "FIVESTAR") {
        if (flags.fiveStar) addFiveStar(page.fiveStars, value);
    } else if (key == "LAYERINFO") {
        if (flags.layerInfo) page.layerInfo = value.c_str();
    } else if (key == "LAYERSEQ") {
        if (flags.layerSeq) page.layerSeq = firstWord(value);
    } else if (key == "THUMBNAILTYPE") {
        if (flags.thumbnailType) page.thumbnailType = toInt(value);
    } else if (key == "RECOGNSTATUS") {
        if (flags.recognStatus) page.recognStatus = toInt(value);
    } else if (key == "RECOGNTEXT") {
        if (flags.recognText) page.recognText = toInt(value);
    } else if (key == "RECOGNFILE") {
        if (flags.recognFile) page.recognFile = toInt(value);
    } else if (key == "PAGEID") {
        if (flags.pageId) page.pageId = value;
    } else if (key == "RECOGNTYPE") {
        if (flags.recognType) page.recognType = toInt(value);
    } else if (key == "RECOGNFILESTATUS") {
        if (flags.recognFileStatus) page.recognFileStatus = toInt(value);
    } else if (key == "RECOGNLANGUAGE") {
        if (flags.recognLanguage) page.recognLanguage = value;
    }
    return status::Ok;
}

}  // namespace

KwPageFeatureModule::KwPageFeatureModule()
    : pageStyle("none"),
      pageStyleMd5("0"),
      layerInfo("none"),
      layerSeq("nolayer"),
      mainLayerSite(0),
      layer1Site(0),
      layer2Site(0),
      layer3Site(0),
      bgLayerSite(0),
      totalPathSite(0),
      thumbnailType(0),
      recognStatus(0),
      recognText(0),
      recognFile(0),
      pageId("none"),
      recognType(0),
      recognFileStatus(0),
      recognLanguage("none"),
      trailCount(0),
      totalPathLength(0) {}

int KwPageFeatureModule::setInfoOfPageFeature(std::vector<ModuleItem>& items, std::string path,
                                              PageFeatureReadFlag& flags) {
    for (const ModuleItem& item : items) {
        // What was taken before a failure stays; the items after it are not taken.
        const int result = applyItem(*this, item, path, flags);
        if (result != status::Ok) return result;
    }
    return status::Ok;
}
