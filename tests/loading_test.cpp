// Reading a note file: binding a reader, the index through the footer and the page count,
// page and layer modules filled from their blocks, and the one-call loaders a host uses for
// pictures and strokes, end to end on notes made by the writer.

#include <cerrno>
#include <cstring>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "kwdataload.h"
#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "kwfileload.h"
#include "notefiles.h"

using notetest::Logged;
using notetest::logged;
using notewriter::kPictureSize;
using notewriter::NoteFile;
using Pixels = std::vector<uint8_t>;

namespace {

const std::string kNoFile = std::to_string(ENOENT) + ",errmsg:" + std::strerror(ENOENT);
const std::string kNegativeSeek = "fseek failed-----errno:" + std::to_string(EINVAL) + "errmsg:" + std::strerror(EINVAL);

// Whether a log is the expected text. An expected text that ends in "errno:" stands for that
// text and an error number alone, which differs between failed reads at the end of a file.
bool logIs(const std::string& log, const std::string& expected) {
    const std::size_t n = expected.size();
    if (n < 6 || expected.compare(n - 6, 6, "errno:") != 0) return log == expected;
    return log.size() > n && log.compare(0, n, expected) == 0 && log.find_first_not_of("0123456789", n) == std::string::npos;
}

TEST(FileBinding, IndexAndPageCount) {
    notetest::ScratchDir dir;
    KwFileProcess file;
    EXPECT_EQ(logged([&] { return file.init_fileload(""); }), Logged(0, "init_fileload error."));
    EXPECT_EQ(logged([&] { return file.init_datafile(dir.path("none")); }),
              Logged(0, "ERROR file is note exists.errno:" + kNoFile));
    KwFileIndexModule index;
    EXPECT_EQ(logged([&] { return KwFileLoad().fetchIndex(index); }), Logged(1, "open file failed-----errno:" + kNoFile));
    EXPECT_EQ(logged([&] { return KwDataOperationFile().fetchTotalPageNumOfNote(""); }),
              Logged(-1, "ERROR path is nullinit_datafile failed"));

    // fetchIndex gives a code and leaves the index alone on failure; the page count is -1 then.
    auto twoPages = [](const std::string& tag, const std::string& marker) {
        NoteFile note(tag);
        return note.finish(note.block({{"PAGE1", "100"}, {"PAGE2", "200"}, {"STYLE_x", "300"}}), marker);
    };
    const struct { std::string bytes; int code; std::string log; } rows[] = {
        {twoPages(notewriter::kTag, "tail"), 0, ""},
        {twoPages("KW_FILE_VER_20190001", "tAil"), 0, ""},  // another tag: the marker is not looked at
        {twoPages(notewriter::kTag, "tAil"), 3, "file trail str error"},
    };  // sites past the end and truncated notes: the catalogue of hostile files
    for (const auto& row : rows) {
        const std::string path = dir.write("a.note", row.bytes);
        ASSERT_TRUE(file.init_datafile(path));
        index.vecModuleIndex = {{"OLD", 1}};
        const Logged r = logged([&] { return file.fetchIndex(index); });
        EXPECT_EQ(notetest::headOf(r, row.log.size()), Logged(row.code, row.log));  // the system's text may follow
        EXPECT_EQ(index.vecModuleIndex.size(), row.code == 0 ? 3u : 1u);
        EXPECT_EQ(logged([&] { return KwDataOperationFile().fetchTotalPageNumOfNote(path); }),
                  row.code == 0 ? Logged(2, "Num:2") : Logged(-1, r.second + "fetchIndex error."));
    }
}

PageFeatureReadFlag flagsFrom(int first, int last) {
    PageFeatureReadFlag flags;
    for (int i = first; i <= last; ++i) reinterpret_cast<bool*>(&flags)[i] = true;  // flag i is byte i
    return flags;
}

Logged fillPage(KwPageFeatureModule& page, const notewriter::Items& items, const std::string& path, int lastFlag,
                int firstFlag = 0) {
    std::vector<ModuleItem> list = notetest::itemsOf(items);
    PageFeatureReadFlag flags = flagsFrom(firstFlag, lastFlag);
    return logged([&] { return page.setInfoOfPageFeature(list, path, flags); });
}

// Flags 0-7 select the style, the layers and the stroke block's site, not LAYERSEQ: the
// block's head and records are not read, so the missing file is never opened. Each layer's
// site goes to its own member, and only with its own flag (flag 4: LAYER2).
TEST(PageModule, EachLayerSiteGoesToItsOwnMemberUnderItsOwnFlag) {
    const notewriter::Items layers = {{"MAINLAYER", "12abc"}, {"LAYER1", "1"}, {"LAYER2", "2"}, {"LAYER3", "3"},
                                      {"BGLAYER", "4"}, {"LAYERSEQ", " A B"}, {"TOTALPATH", "40"}};
    KwPageFeatureModule page, layer2;
    EXPECT_EQ(fillPage(page, layers, "/nonexistent", 7), Logged(0, ""));
    EXPECT_EQ(fillPage(layer2, layers, "", 4, 4), Logged(0, ""));
    const auto sitesOf = [](const KwPageFeatureModule& p) {
        return std::make_tuple(p.mainLayerSite, p.layer1Site, p.layer2Site, p.layer3Site, p.bgLayerSite, p.totalPathSite);
    };
    EXPECT_EQ(std::make_pair(sitesOf(page), sitesOf(layer2)),
              std::make_pair(std::make_tuple(12, 1, 2, 3, 4, 40), std::make_tuple(0, 0, 2, 0, 0, 0)));
    EXPECT_EQ(page.layerSeq, "nolayer");
}

// A star list takes exactly 11 values; LAYERSEQ keeps its first word.
TEST(PageModule, StarListsAndTheLayerOrder) {
    KwPageFeatureModule page;
    const std::string ten = "1,2,3,4,5,6,7,8,9,10";
    EXPECT_EQ(fillPage(page, {{"LAYERSEQ", " A B"}, {"FIVESTAR", ten}, {"FIVESTAR", ten + ",11,12"},
                              {"FIVESTAR", ten + ",-11 x"}}, "", 20).first, 0);
    ASSERT_EQ(std::make_pair(page.layerSeq, page.fiveStars.size()), std::make_pair(std::string("A"), 1ul));
    EXPECT_EQ(page.fiveStars[0].values[10], -11);
}

// Records decode in order and replace earlier strokes; a broken block fails the page, and
// the items after a failure are not taken.
TEST(PageModule, TheStrokeBlockAndItsFailures) {
    KwPageFeatureModule page;
    EXPECT_EQ(fillPage(page, {{"TOTALPATH", "40"}}, "/nonexistent", 9), Logged(1, "open file failed-----errno:" + kNoFile));
    notetest::ScratchDir dir;
    const std::string one = notewriter::strokeRecord(notetest::sampleStroke(1));
    const std::string two = notewriter::strokeRecord(notetest::sampleStroke(2));
    NoteFile note;
    const std::string site = std::to_string(note.strokeBlock({one, two}));
    const uint64_t bad = note.strokeBlock({notewriter::Bytes().zeros(188).i32(1).zeros(16).i32(1).str()});
    const std::string bytes = note.finish(0), path = dir.write("a.note", bytes);
    page.trails.resize(3);
    EXPECT_EQ(fillPage(page, {{"TOTALPATH", site}}, path, 9, 7), Logged(0, ""));
    EXPECT_EQ(std::make_tuple(page.trailCount, page.totalPathLength, page.trails.size()),
              std::make_tuple(2ul, 16 + one.size() + two.size(), 2ul));
    EXPECT_TRUE(notetest::sameStroke(page.trails[1], notetest::sampleStroke(2)));

    const struct { std::string site; int code; std::string log; } rows[] = {
        {std::to_string(bytes.size() - 4), 17, "read totalpath trailsize error-----errno:"},
        {std::to_string(bad), 17, "disableAreaListdata2Trail error."},  // too short for its area
        {std::to_string(bad + 1000), 17, "totalpath site error."},
        {"2147483647", 17, "totalpath site error."},
        {"-5", 38, kNegativeSeek},  // a negative site plus 4 does not exceed the size; the seek refuses it
    };
    for (const auto& row : rows) {
        const Logged r = fillPage(page, {{"TOTALPATH", row.site}, {"PAGEID", "later"}}, path, 20);
        EXPECT_TRUE(r.first == row.code && logIs(r.second, row.log)) << row.site << ": " << r.first << " " << r.second;
        EXPECT_EQ(page.pageId, "none");
    }
}

// The layer's picture expanded over a transparent buffer.
Pixels expand(KwLayerFeatureModule& layer) {
    Pixels pixels(kPictureSize, 0xFF);
    unsigned long length = 0;
    EXPECT_EQ(logged([&] { return layer.fetchCompressedData(reinterpret_cast<char*>(pixels.data()), length); }).first, 0);
    return pixels;
}

TEST(LayerModule, BitmapItemsAndSites) {
    notetest::ScratchDir dir;
    Pixels picture = notetest::samplePicture(2);
    NoteFile note;
    const uint64_t site = note.picture(picture);
    const std::string bytes = note.finish(0), size = std::to_string(bytes.size()), at = std::to_string(site);
    KwLayerFeatureModule layer, bare;
    auto fill = [&](KwLayerFeatureModule& module, const notewriter::Items& items, const std::string& path) {
        std::vector<ModuleItem> list = notetest::itemsOf(items);
        return logged([&] { return module.setInfoOfLayerFeature(list, path); });
    };
    EXPECT_EQ(fill(layer, {{"LAYERNAME", "MAIN LAYER"}, {"LAYERPATH", " 12x"}, {"LAYERBITMAP", at}},
                   dir.write("a.note", bytes)), Logged(0, ""));
    EXPECT_EQ(std::make_tuple(layer.layerPathSite, layer.m_lenCompressData),
              std::make_tuple(12ul, notewriter::encodePicture(picture).size()));
    EXPECT_EQ(expand(layer), picture);
    EXPECT_EQ(logged([&] { return layer.setCompressedData(reinterpret_cast<char*>(picture.data()), kPictureSize - 1); }),
              Logged(7, "compress data size is not 1872*1404"));
    EXPECT_EQ(expand(layer), picture);  // the old bitmap is kept

    // Bitmaps outside the file. The length field is not counted, so a bitmap that overruns
    // by those 4 bytes passes the size check and fails at the read.
    const std::string last3 = std::to_string(bytes.size() - 3), over = std::to_string(bytes.size() - site + 1);
    EXPECT_EQ(fill(layer, {{"LAYERBITMAP", last3}}, dir.path("a.note")),
              Logged(17, "compress data m_siteCompressData error.fileSize:" + size + "m_siteCompressData:" + last3));
    NoteFile longer = note;
    longer.patch32(site, uint32_t(bytes.size() - site + 1));
    EXPECT_EQ(fill(layer, {{"LAYERBITMAP", at}, {"LAYERNAME", "later"}}, dir.write("b.note", longer.finish(0))),
              Logged(17, "compress data m_siteCompressData error. fileSize:" + size + " m_lenCompressData:" + over +
                             " m_siteCompressData:" + at));
    EXPECT_EQ(layer.layerName, "MAIN LAYER");  // the items after the failure are not taken
    longer.patch32(site, uint32_t(bytes.size() - site));
    const Logged shortRead = fill(layer, {{"LAYERBITMAP", at}}, dir.write("b.note", longer.finish(0)));
    EXPECT_TRUE(shortRead.first == 17 && logIs(shortRead.second, "compress data read file failed-----errno:"))
        << shortRead.second;

    // Without a bitmap the file is not opened and the pixels are not touched; with one, a
    // file that cannot be opened is reported with the error number alone.
    EXPECT_EQ(fill(bare, {{"LAYERBITMAP", "0"}}, "/nonexistent"), Logged(0, ""));
    EXPECT_EQ(fill(layer, {{"LAYERBITMAP", at}}, "/nonexistent"), Logged(1, "open file failed-----errno:" + std::to_string(ENOENT)));
    EXPECT_EQ(expand(bare), Pixels(kPictureSize, 0xFF));
    bare.changeDataSiteForPageFeature(1, 2, 3, 4);
    bare.changeDataSiteForPageFeature(0, 0, 0, 0);  // zeros change nothing
    // The conversions share one stream: what the name leaves after its first word is read
    // ahead of the first number.
    bare.layerName = " A B";
    std::vector<ModuleItem> items{{"OLD", "1"}};
    bare.produceVecMIForLayerFeature(items);
    EXPECT_EQ(notetest::pairsOf(items), (notewriter::Items{{"LAYERTYPE", "none"}, {"LAYERPROTOCOL", "none"},
                                                           {"LAYERNAME", "A"}, {"LAYERPATH", "B2"},
                                                           {"LAYERBITMAP", "1"}, {"LAYERVECTORGRAPH", "3"},
                                                           {"LAYERRECOGN", "4"}}));
}

// Two pages numbered from 3: the first with pictures on three layers, a LAYER3 module
// without a bitmap, no BGLAYER and three strokes; the second with a main layer only.
class Loading : public ::testing::Test {
protected:
    void SetUp() override {
        notewriter::Page first, second;
        for (int i = 0; i < 3; ++i)
            first.layers.push_back({i == 0 ? "MAINLAYER" : "LAYER" + std::to_string(i), notetest::samplePicture(i), {}});
        first.layers.push_back({"LAYER3", {}, {}});
        first.strokes = {notetest::sampleStroke(1), notetest::sampleStroke(2), notetest::sampleStroke(3)};
        second.layers.push_back({"MAINLAYER", notetest::samplePicture(4), {}});
        note.pages = {first, second};
        note.firstPageNumber = 3;
        path = dir.write("sample.note", notewriter::buildNote(note, &sites));
        pathLines = path.substr(0, path.rfind('/')) + "\nsample.note\n";
    }
    std::pair<Logged, Pixels> load(int page, const std::string& layer, const std::string& file = "") {
        Pixels pixels(kPictureSize, 0xFF);
        const Logged r = logged([&] {
            return KwDataLoad().fetchNoteDataFromFileByLayer(file.empty() ? path : file, page, layer,
                                                             reinterpret_cast<char*>(pixels.data()));
        });
        return {r, pixels};
    }
    notetest::ScratchDir dir;
    notewriter::Note note;
    notewriter::NoteSites sites;
    std::string path, pathLines;
};

TEST_F(Loading, PagesAndLayersAreFoundByNumberAndExactName) {
    KwFileLoad file;
    KwPageFeatureModule page;
    PageFeatureReadFlag flags = flagsFrom(2, 6);  // the five layers
    EXPECT_EQ(logged([&] { return file.fetchPageFeature(page, 3, flags); }),
              Logged(14, "open file failed-----errno:" + kNoFile + "fetchIndex error."));
    file.init_fileload(path);
    EXPECT_EQ(logged([&] { return file.fetchPageFeature(page, 3, flags); }), Logged(0, ""));
    KwLayerFeatureModule layer, absent;
    EXPECT_EQ(logged([&] { return file.fetchLayerFeature(layer, page, "LAYER1"); }),
              Logged(0, "fetchLayerFeature\nfetchLayerFeature  ok\n"));
    EXPECT_EQ(layer.layerBitmapSite, sites.pages[0].pictures["LAYER1"]);
    EXPECT_EQ(logged([&] { return file.fetchLayerFeature(absent, page, "BGLAYER"); }), Logged(0, "fetchLayerFeature\n"));
    KwFileLoad unopenable;
    unopenable.init_fileload(dir.path("missing.note"));
    EXPECT_EQ(logged([&] { return unopenable.fetchLayerFeature(layer, page, "LAYER1"); }),
              Logged(1, "fetchLayerFeature\nopen file failed-----errno:" + std::to_string(ENOENT)));

    // A bitmap past the file: the layer module's own 17 is replaced.
    NoteFile broken;
    page.mainLayerSite = int(broken.block({{"LAYERBITMAP", "100000"}}));
    file.init_fileload(dir.write("broken.note", broken.finish(0)));
    const Logged r = logged([&] { return file.fetchLayerFeature(layer, page, "MAINLAYER"); });
    EXPECT_EQ(Logged(r.first, r.second.substr(0, 18) + r.second.substr(r.second.size() - 27)),
              Logged(34, "fetchLayerFeature\nsetInfoOfLayerFeature error"));
}

TEST_F(Loading, PicturesAndTheirFailures) {
    for (std::size_t p = 0; p < note.pages.size(); ++p)
        for (const notewriter::Layer& layer : note.pages[p].layers)
            EXPECT_TRUE(load(3 + int(p), layer.name).second == (layer.pixels.empty() ? Pixels(kPictureSize, 0xFF)
                                                                                    : layer.pixels)) << layer.name;
    const std::string found = pathLines + "fetchLayerFeature\nfetchLayerFeature  ok\n";
    const struct { int page; std::string layer; Logged expected; } rows[] = {
        {3, "MAINLAYER", {0, found + "fetchCompressedData\nfetchCompressedData memset\nfetchNoteDataFromFileByLayer\n"}},
        {3, "LAYER3", {0, found + "else\nfetchNoteDataFromFileByLayer\n"}},
        // A layer the page does not have: a line naming it.
        {3, "BGLAYER", {27, pathLines + "bglayer have no data.\n"}},
        {4, "LAYER1", {27, pathLines + "layer1 have no data.\n"}},
        {4, "LAYER2", {27, pathLines + "layer2 have no data.\n"}},
        {4, "LAYER3", {27, pathLines + "layer3 have no data.\n"}},
        {3, "layer1", {27, pathLines + "fetchLayerFeature\nUnknown Layer Name.Please check para sLayer first. "
                                       "sLayer:layer1fetchLayerFeature error."}},
        {9, "MAINLAYER", {26, pathLines + "page moudle not exist:0fetchPageFeature error."}},
    };
    for (const auto& row : rows) EXPECT_EQ(load(row.page, row.layer).first, row.expected);
    EXPECT_EQ(load(3, "MAINLAYER", "missing.note").first, Logged(2, "missing.note\nmissing.note\nfile not exist."));

    // Colours follow the table, but white is given as transparent; a layer without a bitmap
    // is all transparent, and a missing file gives no colours.
    auto colours = [&](const std::string& file, const std::string& layer) {
        std::unique_ptr<uint32_t[]> out;
        notetest::captureStdout([&] { out.reset(KwDataLoad().loadImageData(file, 3, layer)); });
        return out;
    };
    EXPECT_TRUE(colours("missing.note", "MAINLAYER") == nullptr);
    for (const notewriter::Layer& layer : {note.pages[0].layers[0], note.pages[0].layers[3]}) {
        const std::unique_ptr<uint32_t[]> got = colours(path, layer.name);
        ASSERT_TRUE(got != nullptr);
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < kPictureSize; ++i) {
            const uint8_t p = layer.pixels.empty() ? 0xFF : layer.pixels[i];
            wrong += got[i] != (p == 0xFE ? 0u : uint32_t(NOTE_COLOR_CONVERT_INDEX[p]));
        }
        EXPECT_EQ(wrong, 0u) << layer.name;
    }
}

// The caller's list is replaced on success only; broken stroke blocks are in the catalogue
// of hostile files.
TEST_F(Loading, StrokesReplaceTheCallersListOnlyOnSuccess) {
    KwDataLoad loader;
    std::vector<TrailContainer> trails(1);
    EXPECT_EQ(logged([&] { return loader.fetchNotePathFromFile(trails, path, 3); }), Logged(0, ""));
    ASSERT_EQ(trails.size(), 3u);
    for (std::size_t i = 0; i < trails.size(); ++i) EXPECT_TRUE(notetest::sameStroke(trails[i], note.pages[0].strokes[i]));
    const std::string missing = dir.path("missing.note");
    EXPECT_EQ(logged([&] { return loader.fetchNotePathFromFile(trails, missing, 3); }),
              Logged(2, "--file not exist.  " + missing));
    EXPECT_EQ(trails.size(), 3u);
    EXPECT_EQ(logged([&] { return loader.fetchNotePathFromFile(trails, path, 4); }), Logged(0, ""));
    EXPECT_TRUE(trails.empty());
}

// Separate objects on separate threads share nothing but the file.
TEST_F(Loading, ParallelReadersAgree) {
    // What one reader sees: the colours of a layer, then the records of the page's strokes.
    auto readAll = [&](std::string& out) {
        KwDataLoad loader;
        std::unique_ptr<uint32_t[]> colours(loader.loadImageData(path, 3, "LAYER2"));
        std::vector<TrailContainer> trails;
        loader.fetchNotePathFromFile(trails, path, 3);
        if (colours) out.assign(reinterpret_cast<const char*>(colours.get()), 4 * kPictureSize);
        for (const TrailContainer& t : trails) out += notewriter::strokeRecord(t);
    };
    std::string reference;
    std::vector<std::string> results(8);
    std::vector<std::thread> threads;
    notetest::captureStdout([&] {
        readAll(reference);
        for (std::string& r : results) threads.emplace_back(readAll, std::ref(r));
        for (std::thread& t : threads) t.join();
    });
    ASSERT_GT(reference.size(), 4 * kPictureSize);
    for (const std::string& r : results) EXPECT_TRUE(r == reference);
}

}  // namespace
