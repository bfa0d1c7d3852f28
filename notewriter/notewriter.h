#ifndef LIBNOTE_TESTS_NOTEWRITER_H
#define LIBNOTE_TESTS_NOTEWRITER_H

// The note writer: lays out note files byte by byte for tests, benchmarks, fuzz seeds and
// the bundled sample. It is not part of libNote (the library never writes a file); it uses
// the library only for its run-length encoder and its stroke record type.
//
// Two levels:
//  - NoteFile appends pieces (metadata blocks, bitmaps, stroke blocks, raw bytes) and
//    returns the site of each, so a test wires modules together by hand, malformed ones
//    included; finish() adds the footer.
//  - buildNote() turns a Note description (header, pages, layers, strokes) into a
//    well-formed file and reports where it put everything.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "picture.h"
#include "trailContainer.h"

namespace notewriter {

using noteformat::kPictureHeight;
using noteformat::kPictureSize;
using noteformat::kPictureWidth;
constexpr const char* kTag = "KW_FILE_VER_20220013";

// Key/value items of a metadata block, in order.
using Items = std::vector<std::pair<std::string, std::string>>;

// A growing little-endian byte string.
class Bytes {
public:
    Bytes& u8(uint8_t v);
    Bytes& u16(uint16_t v);
    Bytes& i32(int32_t v);
    Bytes& u32(uint32_t v);
    Bytes& u64(uint64_t v);
    Bytes& f32(float v);
    Bytes& f64(double v);
    Bytes& raw(const std::string& bytes);
    Bytes& zeros(std::size_t n);
    // A fixed-width text field: the text, then zero bytes up to width (the text is cut to
    // width - 1 bytes so that a terminator always follows).
    Bytes& text(const std::string& s, std::size_t width);

    std::size_t size() const { return data_.size(); }
    const std::string& str() const { return data_; }

private:
    std::string data_;
};

// "<K1:V1><K2:V2>..." for the items, unescaped.
std::string blockText(const Items& items);

// One stroke record in the layout the reader decodes: the 208-byte head, the counted
// sections, the fixed block with rectA in words 5-8 and rectB in words 9-12, the skipped
// section (skippedCount elements of 16 zero bytes) and the tail. With withTexts the two
// length-prefixed texts follow, as hosts' files may carry them; without them three zero
// bytes follow attrP, because the reader takes attrP only with four bytes of room.
std::string strokeRecord(const TrailContainer& trail, int32_t skippedCount = 0, bool withTexts = false);

// Where strokeRecord puts each field a test may cut at or overwrite: the offset of its first
// byte in the record ("...Count" is the count in front of a section).
struct StrokeFields {
    std::size_t typeName, subName, disableAreaCount, pointCount, pressureCount, angleCount, flagDrawCount,
        epaPointCount, epaGrayCount, fixedBlock, controlNumCount, attrM0, renderFlag, contourCount, skippedCount,
        attrI, attrD, attrE, extraControlNumCount, pageWidth, pageHeight, attrN, attrP;
};
StrokeFields strokeFields(const TrailContainer& trail, int32_t skippedCount = 0);

// The run-length code (pairs only, no length field) of a full picture, made by the
// library's own encoder. pixels must hold kPictureSize bytes.
std::string encodePicture(const std::vector<uint8_t>& pixels);

// A note file being laid out. Every append returns the site (absolute offset) of what it
// wrote.
class NoteFile {
public:
    // The first 4 bytes are `leading` (padded or cut to 4), then the tag as given (any
    // length, so a wrong or short tag can be written).
    explicit NoteFile(const std::string& tag = kTag, const std::string& leading = "NOTE");

    std::size_t size() const { return bytes_.size(); }

    uint64_t raw(const std::string& bytes);
    // A metadata block: 4-byte text length, then the text.
    uint64_t block(const Items& items);
    uint64_t rawBlock(const std::string& text);
    uint64_t rawBlock(const std::string& text, uint32_t claimedLength);
    // A layer bitmap: 4-byte length, then the code.
    uint64_t picture(const std::vector<uint8_t>& pixels);
    uint64_t codedPicture(const std::string& pairs);
    uint64_t codedPicture(const std::string& pairs, uint32_t claimedLength);
    // A TOTALPATH block: total length, stroke count, then each record behind its length.
    uint64_t strokeBlock(const std::vector<std::string>& records);
    uint64_t strokeBlock(const std::vector<std::string>& records, int32_t claimedCount);

    void patch32(uint64_t at, uint32_t value);

    // The file's bytes with the footer appended: the marker (4 bytes written as given,
    // cut or zero-padded) and the index site.
    std::string finish(uint64_t indexSite, const std::string& marker = "tail") const;

private:
    std::string bytes_;
};

// A whole note, described.
struct Layer {
    std::string name;             // "MAINLAYER", "LAYER1", "LAYER2", "LAYER3" or "BGLAYER"
    std::vector<uint8_t> pixels;  // kPictureSize bytes, or empty for a layer without bitmap
    Items extra;                  // further items of the layer block
};

struct Page {
    std::vector<Layer> layers;
    std::vector<TrailContainer> strokes;
    bool hasStrokeBlock = true;  // false: no TOTALPATH key at all
    Items extra;                 // further items of the page block (PAGESTYLE, LAYERSEQ, ...)
};

struct Note {
    Items header;  // the FILE_FEATURE block; none when empty
    std::vector<Page> pages;
    int firstPageNumber = 1;  // index names are "PAGE" + (firstPageNumber + i)
    Items extraIndex;         // further index items (STYLE_..., DIRTY, ...)
    std::string tag = kTag;
};

// Where buildNote put things.
struct PageSites {
    uint64_t block = 0;
    uint64_t totalPath = 0;
    std::map<std::string, uint64_t> layerBlocks;  // by layer name
    std::map<std::string, uint64_t> pictures;     // by layer name, layers with a bitmap
};

struct NoteSites {
    uint64_t index = 0;
    uint64_t header = 0;
    std::vector<PageSites> pages;
};

std::string buildNote(const Note& note, NoteSites* sites = nullptr);

// buildNote a page at a time, for notes too large to hold every page's pictures at once:
// the header goes first, each page is laid out as it is added, the index last.
class NoteBuilder {
public:
    explicit NoteBuilder(const Items& header = {}, const std::string& tag = kTag);
    void addPage(const Page& page);
    // The file: index names are "PAGE" + (firstPageNumber + i), extraIndex follows them.
    std::string finish(int firstPageNumber = 1, const Items& extraIndex = {}, NoteSites* sites = nullptr);

private:
    NoteFile file_;
    NoteSites sites_;
    bool hasHeader_;
};

// Writes bytes to path, replacing the file; throws std::runtime_error on failure.
void writeFile(const std::string& path, const std::string& bytes);

}  // namespace notewriter

#endif
