// Proves that the metadata block reader survives any stream at any site: it never reads
// outside the stream or the block, never allocates more than the stream could hold, and
// either returns items or fails, closing the stream, without an exception.
//
// The input is the whole stream; its last 4 bytes are the site, as a footer holds the index
// site. The site is widened with its sign, so that sites near 2^64 (which items of layer
// blocks can name in decimal) meet the reader's bounds checks too.

#include <cstdio>
#include <cstring>
#include <vector>

#include "config.h"
#include "harness.h"

namespace {

unsigned long siteOf(const uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    int32_t site;
    std::memcpy(&site, data + size - 4, 4);
    return static_cast<unsigned long>(static_cast<long>(site));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    FILE* fp = std::fopen(fuzzharness::writeNoteFile(data, size).c_str(), "rb");
    if (!fp) __builtin_trap();
    std::vector<ModuleItem> items;
    const bool read = readModuleItemFromFile(fp, items, siteOf(data, size));
    // On success the stream stays open for the caller; on failure the reader has closed it.
    if (read != (fp != nullptr) || read == items.empty()) __builtin_trap();
    if (fp) std::fclose(fp);
    return 0;
}
