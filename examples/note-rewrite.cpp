// A host's edit cycle over a note: read every module, change sites and one bitmap, turn the
// modules back into items and run-length code, write a new note, and read it back.
//
// Usage: note-rewrite <in.note> <out.note>
//
// The rewritten note stores the pages in reverse order (so every page moves and its index
// entry must follow it) and replaces page 1's MAINLAYER picture with the old one framed by
// a black border. Reading it back must give the same page count and header fields, the
// same strokes, the same pictures everywhere else and the new picture on page 1. Index
// entries other than pages and the header (styles, for example) point at data this
// program does not copy, so they are left out and named.
//
// The library only reads; the file is laid out by the project's note writer. The library
// writes its own log to standard output; this program's lines are led by "note-rewrite: ".

#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "kwdatafile.h"
#include "kwdataload.h"
#include "kwdataoperationfile.h"
#include "kwfilefeaturemodule.h"
#include "layers.h"
#include "notewriter.h"
#include "picture.h"
#include "status.h"

namespace {

using noteformat::kPictureSize;

void report(const std::string& line) { std::printf("\nnote-rewrite: %s", line.c_str()); }

void check(bool ok, const std::string& what) {
    if (!ok) throw std::runtime_error(what);
}

notewriter::Items toItems(const std::vector<ModuleItem>& items) {
    notewriter::Items out;
    for (const ModuleItem& item : items) out.emplace_back(item.key, item.value);
    return out;
}

std::string readBytes(const std::string& path, unsigned long site, unsigned long length) {
    std::ifstream in(path, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(site));
    std::string bytes(length, '\0');
    check(static_cast<bool>(in.read(&bytes[0], static_cast<std::streamsize>(length))), "cannot read " + path);
    return bytes;
}

// One page as read: the page module with everything selected, and its layers by name.
struct PageData {
    int number = 0;
    KwPageFeatureModule page;
    std::map<std::string, KwLayerFeatureModule> layers;
};

KwFileFeatureModule readHeader(const std::string& path, KwFileIndexModule& index) {
    KwFileFeatureModule header;
    const std::vector<unsigned long> site = index.fetchModuleSite("FILE_FEATURE");
    if (site.empty()) return header;
    FILE* fp = std::fopen(path.c_str(), "rb");
    std::vector<ModuleItem> items;
    check(fp && readModuleItemFromFile(fp, items, site[0]), "cannot read the header of " + path);
    flushfsyncfclose(fp, false, false, true);
    header.setInfoOfModuleFile(items);
    return header;
}

// Every flag set: flag i is byte i of the record.
PageFeatureReadFlag everything() {
    PageFeatureReadFlag flags;
    std::memset(static_cast<void*>(&flags), 1, sizeof flags);
    return flags;
}

std::vector<PageData> readPages(KwFileProcess& file, KwFileIndexModule& index) {
    std::vector<PageData> pages;
    for (int number : index.fetchPagesNum()) {
        PageData data;
        data.number = number;
        PageFeatureReadFlag flags = everything();
        check(file.fetchPageFeature(data.page, number, flags) == status::Ok, "cannot read page " + std::to_string(number));
        for (const noteformat::Layer& known : noteformat::kLayers) {
            const char* name = known.name;
            KwLayerFeatureModule layer;
            check(file.fetchLayerFeature(layer, data.page, name) == status::Ok, std::string("cannot read layer ") + name);
            if (layer.layerBitmapSite != 0 || layer.layerName != "none") data.layers.emplace(name, std::move(layer));
        }
        pages.push_back(std::move(data));
    }
    return pages;
}

std::vector<char> decode(KwLayerFeatureModule& layer) {
    std::vector<char> pixels(kPictureSize, static_cast<char>(noteformat::kTransparent));
    unsigned long unused = 0;
    check(layer.fetchCompressedData(pixels.data(), unused) == status::Ok, "cannot expand a picture");
    return pixels;
}

// The edit: a black border, 8 pixels wide, round the picture.
std::vector<char> framed(std::vector<char> pixels) {
    const int width = noteformat::kPictureWidth, height = noteformat::kPictureHeight, border = 8;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (x < border || y < border || x >= width - border || y >= height - border) pixels[y * width + x] = 0;
    return pixels;
}

// The page block's items, written from the page module's fields with the new sites.
notewriter::Items pageItems(const KwPageFeatureModule& page, const std::map<std::string, uint64_t>& layerSites,
                            uint64_t totalPathSite) {
    notewriter::Items items = {{"PAGESTYLE", page.pageStyle}, {"PAGESTYLEMD5", page.pageStyleMd5},
                               {"LAYERINFO", page.layerInfo}, {"LAYERSEQ", page.layerSeq}};
    for (const auto& layer : layerSites) items.emplace_back(layer.first, std::to_string(layer.second));
    if (totalPathSite != 0) items.emplace_back("TOTALPATH", std::to_string(totalPathSite));
    for (const fiveStarDB& star : page.fiveStars) {
        std::string values;
        for (int v : star.values) values += (values.empty() ? "" : ",") + std::to_string(v);
        items.emplace_back("FIVESTAR", values);
    }
    const std::pair<const char*, int> numbers[] = {
        {"THUMBNAILTYPE", page.thumbnailType}, {"RECOGNSTATUS", page.recognStatus},
        {"RECOGNTEXT", page.recognText},       {"RECOGNFILE", page.recognFile},
        {"RECOGNTYPE", page.recognType},       {"RECOGNFILESTATUS", page.recognFileStatus}};
    for (const auto& number : numbers) items.emplace_back(number.first, std::to_string(number.second));
    items.emplace_back("PAGEID", page.pageId);
    items.emplace_back("RECOGNLANGUAGE", page.recognLanguage);
    return items;
}

// Writes one page: each layer's bitmap (the run-length code as held), the layer block with
// its bitmap site changed, the stroke block copied whole, then the page block.
uint64_t writePage(notewriter::NoteFile& out, PageData& data, const std::string& source) {
    std::map<std::string, uint64_t> layerSites;
    for (auto& entry : data.layers) {
        KwLayerFeatureModule& layer = entry.second;
        if (layer.m_compressData != nullptr) {
            const std::string code(layer.m_compressData.get(), layer.m_lenCompressData);
            layer.changeDataSiteForPageFeature(out.codedPicture(code), 0, 0, 0);
        }
        std::vector<ModuleItem> items;
        layer.produceVecMIForLayerFeature(items);
        layerSites[entry.first] = out.block(toItems(items));
    }
    uint64_t totalPath = 0;
    if (data.page.totalPathSite != 0)
        totalPath = out.raw(readBytes(source, static_cast<unsigned long>(data.page.totalPathSite),
                                      data.page.totalPathLength));
    return out.block(pageItems(data.page, layerSites, totalPath));
}

// Everything but pages and the header is left out: it points at data not copied here.
void dropUncopiedEntries(KwFileIndexModule& index) {
    std::vector<ModuleKwIndexItem> kept, headers, others;
    index.assortVecMSII(kept, "PAGE");
    index.assortVecMSII(headers, "FILE_FEATURE");
    index.assortVecMSIINotIn(others, "PAGE");
    for (const ModuleKwIndexItem& entry : others)
        if (entry.name != "FILE_FEATURE") report("left out index entry " + entry.name);
    kept.insert(kept.end(), headers.begin(), headers.end());
    index.vecModuleIndex = kept;
}

std::string rewrite(const std::string& source, KwFileIndexModule& index, const KwFileFeatureModule& header,
                    std::vector<PageData>& pages) {
    notewriter::NoteFile out;
    dropUncopiedEntries(index);
    std::vector<ModuleItem> headerItems;
    KwFileFeatureModule(header).produceVecMI(headerItems);
    if (!index.fetchModuleSite("FILE_FEATURE").empty())
        check(index.changeModuleSiteForIndexItem("FILE_FEATURE", static_cast<int>(out.block(toItems(headerItems)))) == status::Ok,
              "cannot move the header");

    for (auto it = pages.rbegin(); it != pages.rend(); ++it) {
        const uint64_t site = writePage(out, *it, source);
        check(index.changeModuleSiteForPage("PAGE", it->number, static_cast<int>(site)) == status::Ok, "cannot move a page");
    }
    std::vector<ModuleItem> indexItems;
    index.produceVecMI(indexItems);
    return out.finish(out.block(toItems(indexItems)));
}

// ---- reading the result back ----

std::vector<char> picture(const std::string& path, int page, const char* layer) {
    std::vector<char> pixels(kPictureSize, static_cast<char>(noteformat::kTransparent));
    const int result = KwDataLoad().fetchNoteDataFromFileByLayer(path, page, layer, pixels.data());
    return result == status::Ok ? pixels : std::vector<char>();
}

// Points and pressures of every stroke; the records are copied whole, so these stand for all.
bool sameStrokes(const std::vector<TrailContainer>& a, const std::vector<TrailContainer>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto& p = a[i].m_points;
        const auto& q = b[i].m_points;
        if (p.size() != q.size() || a[i].pressures != b[i].pressures ||
            (!p.empty() && std::memcmp(p.data(), q.data(), p.size() * sizeof p[0]) != 0))
            return false;
    }
    return true;
}

int compare(const std::string& before, const std::string& after, const std::vector<PageData>& pages,
            const KwFileFeatureModule& header, const std::vector<char>& newPicture) {
    int faults = 0;
    auto expect = [&](bool ok, const std::string& what) {
        report(what + (ok ? ": equal" : ": DIFFERENT"));
        if (!ok) ++faults;
    };
    KwDataOperationFile counter;
    expect(counter.fetchTotalPageNumOfNote(before) == counter.fetchTotalPageNumOfNote(after), "page count");

    KwFileProcess file;
    KwFileIndexModule index;
    check(file.init_datafile(after) && file.fetchIndex(index) == status::Ok, "cannot read the index of " + after);
    std::vector<ModuleItem> was, now;
    KwFileFeatureModule(header).produceVecMI(was);
    readHeader(after, index).produceVecMI(now);
    bool same = was.size() == now.size();
    for (std::size_t i = 0; same && i < was.size(); ++i) same = was[i].key == now[i].key && was[i].value == now[i].value;
    expect(same, "header fields");

    for (const PageData& data : pages) {
        const std::string page = "page " + std::to_string(data.number);
        std::vector<TrailContainer> a, b;
        KwDataLoad loader;
        const bool read = loader.fetchNotePathFromFile(a, before, data.number) == status::Ok &&
                          loader.fetchNotePathFromFile(b, after, data.number) == status::Ok;
        expect(read && sameStrokes(a, b), page + " strokes (" + std::to_string(a.size()) + ")");
        for (const auto& layer : data.layers) {
            const bool replaced = data.number == pages.front().number && layer.first == "MAINLAYER";
            const std::vector<char> expected = replaced ? newPicture : picture(before, data.number, layer.first.c_str());
            const std::vector<char> got = picture(after, data.number, layer.first.c_str());
            expect(!got.empty() && got == expected, page + " " + layer.first + (replaced ? " (replaced)" : ""));
        }
    }
    return faults;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: note-rewrite <in.note> <out.note>\n");
        return 2;
    }
    const std::string source = argv[1], target = argv[2];
    try {
        KwFileProcess file;
        KwFileIndexModule index;
        check(file.init_datafile(source) && file.fetchIndex(index) == status::Ok, "cannot read the index of " + source);
        const KwFileFeatureModule header = readHeader(source, index);
        std::vector<PageData> pages = readPages(file, index);
        check(!pages.empty() && pages.front().layers.count("MAINLAYER"), "page 1 has no MAINLAYER to replace");

        KwLayerFeatureModule& main = pages.front().layers.at("MAINLAYER");
        const std::vector<char> newPicture = framed(decode(main));
        std::vector<char> input = newPicture;
        check(main.setCompressedData(input.data(), kPictureSize) == status::Ok, "cannot compress the new picture");

        notewriter::writeFile(target, rewrite(source, index, header, pages));
        const int faults = compare(source, target, pages, header, newPicture);
        report(faults == 0 ? "the cycle closes\n" : std::to_string(faults) + " differences\n");
        return faults == 0 ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "\nnote-rewrite: %s\n", e.what());
        return 1;
    }
}
