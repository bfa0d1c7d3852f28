// Metadata blocks: the <KEY:VALUE> items at a site of a note file.

#include <cerrno>
#include <memory>
#include <string_view>

#include "config.h"
#include "log.h"
#include "noteio.h"
#include "text_pieces.h"

namespace {

void closeAfterFailure(FILE*& fp) {
    if (!flushfsyncfclose(fp, false, false, true)) kwlog::text("fclose error.");
}

bool failSeek(FILE*& fp) {
    noteio::logSeekFailure(noteio::Detail::NumberAndText);
    closeAfterFailure(fp);
    return false;
}

// Appends an item for each ">"-piece that divides into exactly two ":"-pieces. The first
// character of the key is dropped whatever it is: it is the "<" of a well-formed item.
void parseItems(std::string_view text, std::vector<ModuleItem>& items) {
    kwtext::forEachPiece(text, ">", [&](std::size_t at, std::size_t n) {
        const std::string_view piece = text.substr(at, n);
        std::size_t parts = 0;
        std::string_view key, value;
        kwtext::forEachPiece(piece, ":", [&](std::size_t pAt, std::size_t pLen) {
            if (parts == 0) key = piece.substr(pAt + 1, pLen - 1);
            if (parts == 1) value = piece.substr(pAt, pLen);
            ++parts;
        });
        if (parts == 2) items.push_back({std::string(key), std::string(value)});
    });
}

}  // namespace

bool readModuleItemFromFile(FILE*& fp, std::vector<ModuleItem>& items, unsigned long site) {
    if (fp == nullptr) {
        kwlog::text("ERROR para fp is null");
        return false;
    }
    items.clear();

    if (std::fseek(fp, 0, SEEK_END) != 0) return failSeek(fp);
    const long end = std::ftell(fp);
    if (end < 0) return failSeek(fp);
    const unsigned long size = static_cast<unsigned long>(end);
    // Unsigned arithmetic: the last four sites wrap to below 4 and pass, and the seek then
    // refuses them as negative offsets, so no site gets past both.
    if (size < site + 4) {
        kwlog::text("nSite is error");
        closeAfterFailure(fp);
        return false;
    }
    if (std::fseek(fp, static_cast<long>(site), SEEK_SET) != 0) return failSeek(fp);

    uint32_t length = 0;
    if (std::fread(&length, 4, 1, fp) != 1) {
        kwlog::errnoWithText("content size read file failed-----errno:", errno, ",errmsg:");
        closeAfterFailure(fp);
        return false;
    }
    // The length field is not counted here, so a block may overrun the file by up to 4
    // bytes and fail at the read instead. The seek above has placed site inside the file, so
    // this sum cannot wrap.
    if (size < site + length) {
        kwlog::text("content size is bigger than file size");
        closeAfterFailure(fp);
        return false;
    }

    std::unique_ptr<char[]> buffer(new char[length + 1ul]());
    // One unit of N bytes: a block with N = 0 delivers no unit and fails here.
    if (std::fread(buffer.get(), length, 1, fp) != 1) {
        kwlog::errnoOnly("content read file failed-----errno:", errno);
        kwlog::text(",errmsg:");
        closeAfterFailure(fp);
        return false;
    }
    parseItems(std::string_view(buffer.get()), items);  // up to the first zero byte
    buffer.reset();
    if (items.empty()) {
        kwlog::line("readModuleItemFromFile failed.");
        std::fflush(stdout);
        closeAfterFailure(fp);
        return false;
    }
    return true;
}
