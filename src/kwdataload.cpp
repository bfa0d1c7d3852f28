#include "kwdataload.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <unistd.h>

#include "config.h"
#include "kwdatafile.h"
#include "kwlayerfeaturemodule.h"
#include "kwpagefeaturemodule.h"
#include "layers.h"
#include "log.h"
#include "picture.h"
#include "status.h"

namespace {

bool fileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

// Prints the folder and the file name of the path, a line each; a path without "/" prints
// itself twice.
void logPath(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    kwlog::line(path.substr(0, slash).c_str());
    kwlog::line(path.substr(slash == std::string::npos ? 0 : slash + 1).c_str());
}

// The line for a page that holds no module for a known layer; null for other names,
// which fetchLayerFeature refuses itself.
const char* missingLayerMessage(const KwPageFeatureModule& page, const std::string& layer) {
    const noteformat::Layer* known = noteformat::findLayer(layer);
    return known && page.*known->site == 0 ? known->noDataText : nullptr;
}

// Colours by pixel byte. The colour table is indexed with the byte taken as signed, so
// bytes from 0x80 on (white 0xFE, transparent 0xFF) fall before the table and come out as
// 0; they are given that result here without reading outside the table.
struct ColourTable {
    uint32_t colour[256];
    ColourTable() {
        for (int byte = 0; byte < 256; ++byte)
            colour[byte] = byte < 0x80 ? static_cast<uint32_t>(NOTE_COLOR_CONVERT_INDEX[byte]) : 0;
    }
};

// Pictures are mostly blocks of 8 pixels of one value (transparent ground, white paper, the
// inside of ink lines), with blocks of mixed pixels along the writing in between, which
// alternate too irregularly for a branch on each block to be predicted. So the colours are
// made for 64 blocks at a time: every block is first filled with the colour of its first
// pixel, without a branch, and the blocks that are not of one value are noted in a bit
// mask; then only those are looked up pixel by pixel.
void convertToColours(const unsigned char* bytes, uint32_t* colours) {
    static const ColourTable table;
    static_assert(noteformat::kPictureSize % 8 == 0, "a picture is a whole number of 8-byte blocks");
    constexpr std::size_t kBlocks = noteformat::kPictureSize / 8;
    constexpr uint64_t kEveryByte = 0x0101010101010101ULL;
    for (std::size_t group = 0; group < kBlocks; group += 64) {
        const std::size_t blocks = std::min<std::size_t>(64, kBlocks - group);
        uint64_t mixed = 0;
        for (std::size_t b = 0; b < blocks; ++b) {
            const std::size_t at = 8 * (group + b);
            uint64_t block;
            std::memcpy(&block, bytes + at, 8);
            const uint32_t c = table.colour[bytes[at]];
            for (std::size_t k = at; k < at + 8; ++k) colours[k] = c;
            mixed |= uint64_t{block != bytes[at] * kEveryByte} << b;
        }
        for (; mixed != 0; mixed &= mixed - 1) {
            const std::size_t at = 8 * (group + static_cast<std::size_t>(__builtin_ctzll(mixed)));
            for (std::size_t k = at; k < at + 8; ++k) colours[k] = table.colour[bytes[k]];
        }
    }
}

}  // namespace

KwDataLoad::KwDataLoad() = default;

int KwDataLoad::fetchNoteDataFromFileByLayer(std::string path, int page, std::string layer, char* pixels) {
    logPath(path);
    if (!fileExists(path)) {
        kwlog::text("file not exist.");
        return status::FileMissing;
    }
    KwFileProcess file;
    if (!file.init_datafile(path)) {
        kwlog::text("init_datafile error.");
        return status::ReaderNotBound;
    }
    // Only the layer sites: no strokes are read for a picture.
    KwPageFeatureModule pageModule;
    PageFeatureReadFlag flags;
    noteformat::selectAllLayers(flags);
    if (file.fetchPageFeature(pageModule, page, flags) != status::Ok) {
        kwlog::text("fetchPageFeature error.");
        return status::PageUnreadable;
    }
    if (const char* missing = missingLayerMessage(pageModule, layer)) {
        kwlog::line(missing);
        return status::LayerUnavailable;
    }
    KwLayerFeatureModule layerModule;
    if (file.fetchLayerFeature(layerModule, pageModule, layer) != status::Ok) {
        kwlog::text("fetchLayerFeature error.");
        return status::LayerUnavailable;
    }
    if (layerModule.layerBitmapSite == 0) {
        // The layer exists but has no picture: success, and pixels stay as they were.
        kwlog::line("else");
    } else {
        unsigned long length = 0;
        if (layerModule.fetchCompressedData(pixels, length) != status::Ok) {
            kwlog::text("fetchCompressedData error.");
            return status::BitmapNotExpanded;
        }
    }
    kwlog::line("fetchNoteDataFromFileByLayer");
    return status::Ok;
}

uint32_t* KwDataLoad::loadImageData(std::string path, int page, std::string layer) {
    // Pre-filled with transparent, so every pixel the layer does not draw stays so.
    std::unique_ptr<char[]> bytes(new (std::nothrow) char[noteformat::kPictureSize + 1]);
    if (!bytes) return nullptr;
    std::memset(bytes.get(), noteformat::kTransparent, noteformat::kPictureSize);
    if (fetchNoteDataFromFileByLayer(path, page, layer, bytes.get()) != status::Ok) return nullptr;

    uint32_t* colours = new (std::nothrow) uint32_t[noteformat::kPictureSize];
    if (!colours) return nullptr;
    convertToColours(reinterpret_cast<const unsigned char*>(bytes.get()), colours);
    return colours;
}

int KwDataLoad::fetchNotePathFromFile(std::vector<TrailContainer>& trails, std::string path, int page) {
    if (!fileExists(path)) {
        kwlog::text("--file not exist.  ");
        kwlog::text(path);
        return status::FileMissing;
    }
    KwFileProcess file;
    if (!file.init_datafile(path)) {
        kwlog::text("wrong sNotePath.");
        return status::FileMissing;
    }
    // Only the stroke block: its site, its head and its records.
    KwPageFeatureModule pageModule;
    PageFeatureReadFlag flags;
    flags.totalPath = flags.totalPathHead = flags.totalPathTrails = true;
    if (file.fetchPageFeature(pageModule, page, flags) != status::Ok) {
        kwlog::text("fetchPageFeature error.");
        return status::PageUnreadable;
    }
    trails = std::move(pageModule.trails);
    return status::Ok;
}
