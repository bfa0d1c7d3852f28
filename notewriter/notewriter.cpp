#include "notewriter.h"

#include <cstring>
#include <fstream>
#include <stdexcept>

#include "config.h"

namespace notewriter {

// ---- Bytes ----

namespace {

template <class T>
void appendLittleEndian(std::string& out, T v) {
    char b[sizeof(T)];
    std::memcpy(b, &v, sizeof(T));  // the host is little-endian, as the file is
    out.append(b, sizeof(T));
}

}  // namespace

Bytes& Bytes::u8(uint8_t v) { data_.push_back(static_cast<char>(v)); return *this; }
Bytes& Bytes::u16(uint16_t v) { appendLittleEndian(data_, v); return *this; }
Bytes& Bytes::i32(int32_t v) { appendLittleEndian(data_, v); return *this; }
Bytes& Bytes::u32(uint32_t v) { appendLittleEndian(data_, v); return *this; }
Bytes& Bytes::u64(uint64_t v) { appendLittleEndian(data_, v); return *this; }
Bytes& Bytes::f32(float v) { appendLittleEndian(data_, v); return *this; }
Bytes& Bytes::f64(double v) { appendLittleEndian(data_, v); return *this; }
Bytes& Bytes::raw(const std::string& bytes) { data_ += bytes; return *this; }
Bytes& Bytes::zeros(std::size_t n) { data_.append(n, '\0'); return *this; }

Bytes& Bytes::text(const std::string& s, std::size_t width) {
    if (width == 0) return *this;
    const std::string cut = s.substr(0, width - 1);
    data_ += cut;
    return zeros(width - cut.size());
}

std::string blockText(const Items& items) {
    std::string text;
    for (const auto& item : items) text += "<" + item.first + ":" + item.second + ">";
    return text;
}

// ---- Stroke record ----

namespace {

// A counted section: the i32 count, then each element as put writes it.
template <class List, class Put>
void section(Bytes& b, const List& list, Put put) {
    b.i32(static_cast<int32_t>(list.size()));
    for (const auto& element : list) put(b, element);
}

void putPoint(Bytes& b, const MorvaPoint& p) { b.i32(p.x).i32(p.y); }
void putInt(Bytes& b, int v) { b.i32(v); }

// Each writer notes in `at` where the fields it writes begin.
void writeHead(Bytes& b, const TrailContainer& t, StrokeFields& at) {
    for (int v : {t.attrA0, t.attrA1, t.attrA2, t.attrA3, t.attrA4, t.attrA5, t.attrA6, t.attrA7,
                  t.attrA8, t.attrA9, t.attrA10, t.attrA11})
        b.i32(v);
    at.typeName = b.size();
    b.text(t.typeName, 50).zeros(2);
    b.i32(t.attrB0).i32(t.attrB1).i32(t.attrB2).i32(t.attrB3).u64(t.attrB4);
    b.i32(t.attrC).i32(t.maxX).i32(t.maxY);
    at.subName = b.size();
    b.text(t.subName, 50).zeros(2);
    b.i32(t.m_emrPointAxis).i32(t.attrF0).i32(t.attrF1).i32(t.attrF2).i32(t.attrG);
}

void writePointSections(Bytes& b, const TrailContainer& t, StrokeFields& at) {
    at.disableAreaCount = b.size();
    section(b, t.disableAreaList, [](Bytes& o, const FlagRect& r) {
        for (uint32_t w : r.words) o.u32(w);
    });
    at.pointCount = b.size();
    section(b, t.m_points, putPoint);
    at.pressureCount = b.size();
    section(b, t.pressures, [](Bytes& o, uint16_t p) { o.u16(p); });
    at.angleCount = b.size();
    section(b, t.angles, [](Bytes& o, const MorvaPointS& a) {
        o.u16(static_cast<uint16_t>(a.x)).u16(static_cast<uint16_t>(a.y));
    });
    at.flagDrawCount = b.size();
    section(b, t.flagDraw, [](Bytes& o, bool f) { o.u8(f ? 1 : 0); });
    at.epaPointCount = b.size();
    section(b, t.epaPoints, putPoint);
    at.epaGrayCount = b.size();
    section(b, t.epaGrays, putInt);
}

// Unlike the library's encoder, words 5-8 carry rectA, so that a test can tell the two
// rectangles apart after decoding.
void writeFixedBlock(Bytes& b, const TrailContainer& t, StrokeFields& at) {
    at.fixedBlock = b.size();
    b.i32(t.attrJ0).i32(t.attrJ1).i32(t.attrH).i32(t.attrK).i32(t.attrL);
    for (int v : t.rectA) b.i32(v);
    for (int v : t.rectB) b.i32(v);
    at.controlNumCount = b.size();
    section(b, t.m_controlNums, putInt);
    at.attrM0 = b.size();
    b.i32(t.attrM0).i32(t.attrM1).u8(t.attrO);
}

void writeContours(Bytes& b, const TrailContainer& t, StrokeFields& at) {
    at.renderFlag = b.size();
    b.u8(t.renderFlag);
    at.contourCount = b.size();
    section(b, t.PointContour, [](Bytes& o, const std::vector<MorvaPointF>& contour) {
        section(o, contour, [](Bytes& p, const MorvaPointF& f) { p.f32(f.x).f32(f.y); });
    });
}

void writeTail(Bytes& b, const TrailContainer& t, StrokeFields& at) {
    at.attrI = b.size();
    b.i32(t.attrI).f64(t.ratioB);
    at.attrD = b.size();
    b.u8(t.attrD);
    at.attrE = b.size();
    b.i32(t.attrE);
    at.extraControlNumCount = b.size();
    section(b, t.extraControlNums, putInt);
    at.pageWidth = b.size();
    b.i32(t.pageWidth);
    at.pageHeight = b.size();
    b.i32(t.pageHeight);
    at.attrN = b.size();
    b.i32(t.attrN);
    at.attrP = b.size();
    b.u8(t.attrP);
}

std::string layOutStroke(const TrailContainer& trail, int32_t skippedCount, bool withTexts, StrokeFields& at) {
    Bytes b;
    writeHead(b, trail, at);
    writePointSections(b, trail, at);
    writeFixedBlock(b, trail, at);
    writeContours(b, trail, at);
    at.skippedCount = b.size();
    b.i32(skippedCount).zeros(16 * static_cast<std::size_t>(skippedCount > 0 ? skippedCount : 0));
    writeTail(b, trail, at);
    if (withTexts) {
        b.u32(static_cast<uint32_t>(trail.textA.size())).raw(trail.textA);
        b.u32(static_cast<uint32_t>(trail.textB.size())).raw(trail.textB);
    } else {
        b.zeros(3);
    }
    return b.str();
}

}  // namespace

std::string strokeRecord(const TrailContainer& trail, int32_t skippedCount, bool withTexts) {
    StrokeFields at{};
    return layOutStroke(trail, skippedCount, withTexts, at);
}

StrokeFields strokeFields(const TrailContainer& trail, int32_t skippedCount) {
    StrokeFields at{};
    layOutStroke(trail, skippedCount, false, at);
    return at;
}

// ---- Pictures ----

std::string encodePicture(const std::vector<uint8_t>& pixels) {
    if (pixels.size() != kPictureSize)
        throw std::invalid_argument("encodePicture: a picture has 1404 x 1872 pixels");
    // Two bytes a pixel at worst, plus the spare byte the library's own callers give.
    std::vector<unsigned char> code(2 * kPictureSize + 1);
    unsigned long length = 0;
    std::vector<uint8_t> source(pixels);  // the encoder takes a mutable pointer
    if (!compresseDataByRLE(reinterpret_cast<char*>(source.data()), source.size(), code.data(), length))
        throw std::runtime_error("encodePicture: the encoder failed");
    return std::string(reinterpret_cast<const char*>(code.data()), length);
}

// ---- NoteFile ----

NoteFile::NoteFile(const std::string& tag, const std::string& leading) {
    bytes_ = leading.substr(0, 4);
    bytes_.resize(4, '\0');
    bytes_ += tag;
}

uint64_t NoteFile::raw(const std::string& bytes) {
    const uint64_t site = bytes_.size();
    bytes_ += bytes;
    return site;
}

uint64_t NoteFile::block(const Items& items) { return rawBlock(blockText(items)); }

uint64_t NoteFile::rawBlock(const std::string& text) {
    return rawBlock(text, static_cast<uint32_t>(text.size()));
}

uint64_t NoteFile::rawBlock(const std::string& text, uint32_t claimedLength) {
    return raw(Bytes().u32(claimedLength).raw(text).str());
}

uint64_t NoteFile::picture(const std::vector<uint8_t>& pixels) { return codedPicture(encodePicture(pixels)); }

uint64_t NoteFile::codedPicture(const std::string& pairs) {
    return codedPicture(pairs, static_cast<uint32_t>(pairs.size()));
}

uint64_t NoteFile::codedPicture(const std::string& pairs, uint32_t claimedLength) {
    return raw(Bytes().u32(claimedLength).raw(pairs).str());
}

uint64_t NoteFile::strokeBlock(const std::vector<std::string>& records) {
    return strokeBlock(records, static_cast<int32_t>(records.size()));
}

uint64_t NoteFile::strokeBlock(const std::vector<std::string>& records, int32_t claimedCount) {
    uint32_t total = 8;
    for (const auto& r : records) total += 4 + static_cast<uint32_t>(r.size());
    Bytes b;
    b.u32(total).i32(claimedCount);
    for (const auto& r : records) b.u32(static_cast<uint32_t>(r.size())).raw(r);
    return raw(b.str());
}

void NoteFile::patch32(uint64_t at, uint32_t value) {
    if (at + 4 > bytes_.size()) throw std::out_of_range("patch32: beyond the end of the file");
    bytes_.replace(at, 4, Bytes().u32(value).str());
}

std::string NoteFile::finish(uint64_t indexSite, const std::string& marker) const {
    std::string footer = marker.substr(0, 4);
    footer.resize(4, '\0');
    return bytes_ + footer + Bytes().u32(static_cast<uint32_t>(indexSite)).str();
}

// ---- buildNote ----

namespace {

Items layerItems(const Layer& layer, uint64_t pictureSite) {
    Items items = {{"LAYERTYPE", "NOTE"},
                   {"LAYERPROTOCOL", "RLE"},
                   {"LAYERNAME", layer.name},
                   {"LAYERPATH", "0"},
                   {"LAYERBITMAP", std::to_string(pictureSite)},
                   {"LAYERVECTORGRAPH", "0"},
                   {"LAYERRECOGN", "0"}};
    items.insert(items.end(), layer.extra.begin(), layer.extra.end());
    return items;
}

uint64_t writeStrokes(NoteFile& file, const std::vector<TrailContainer>& strokes) {
    std::vector<std::string> records;
    for (const auto& trail : strokes) records.push_back(strokeRecord(trail));
    return file.strokeBlock(records);
}

PageSites writePage(NoteFile& file, const Page& page) {
    PageSites sites;
    for (const auto& layer : page.layers)
        if (!layer.pixels.empty()) sites.pictures[layer.name] = file.picture(layer.pixels);
    for (const auto& layer : page.layers) {
        const auto picture = sites.pictures.find(layer.name);
        const uint64_t pictureSite = picture == sites.pictures.end() ? 0 : picture->second;
        sites.layerBlocks[layer.name] = file.block(layerItems(layer, pictureSite));
    }
    if (page.hasStrokeBlock) sites.totalPath = writeStrokes(file, page.strokes);

    Items items = page.extra;
    for (const auto& layer : page.layers)
        items.emplace_back(layer.name, std::to_string(sites.layerBlocks[layer.name]));
    if (page.hasStrokeBlock) items.emplace_back("TOTALPATH", std::to_string(sites.totalPath));
    sites.block = file.block(items);
    return sites;
}

}  // namespace

NoteBuilder::NoteBuilder(const Items& header, const std::string& tag) : file_(tag), hasHeader_(!header.empty()) {
    if (hasHeader_) sites_.header = file_.block(header);
}

void NoteBuilder::addPage(const Page& page) { sites_.pages.push_back(writePage(file_, page)); }

std::string NoteBuilder::finish(int firstPageNumber, const Items& extraIndex, NoteSites* sites) {
    Items index;
    if (hasHeader_) index.emplace_back("FILE_FEATURE", std::to_string(sites_.header));
    for (std::size_t i = 0; i < sites_.pages.size(); ++i)
        index.emplace_back("PAGE" + std::to_string(firstPageNumber + static_cast<int>(i)),
                           std::to_string(sites_.pages[i].block));
    index.insert(index.end(), extraIndex.begin(), extraIndex.end());
    sites_.index = file_.block(index);

    if (sites) *sites = sites_;
    return file_.finish(sites_.index);
}

std::string buildNote(const Note& note, NoteSites* sites) {
    NoteBuilder builder(note.header, note.tag);
    for (const auto& page : note.pages) builder.addPage(page);
    return builder.finish(note.firstPageNumber, note.extraIndex, sites);
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    if (!f.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) || !f.flush())
        throw std::runtime_error("cannot write " + path);
}

}  // namespace notewriter
