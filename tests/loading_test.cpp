// Finding pages and layers through the index, and the one-call loaders a host uses for
// pictures and strokes, end to end on notes made by the writer.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwdataload.h"
#include "kwfileload.h"
#include "notefiles.h"

using notetest::captureStdout;
using notewriter::kPictureSize;

namespace {

struct Loaded {
    int result;
    std::string log;
    std::vector<uint8_t> pixels;
};

Loaded loadLayer(const std::string& path, int page, const std::string& layer) {
    Loaded r{-1, "", std::vector<uint8_t>(kPictureSize, 0xFF)};
    r.log = captureStdout([&] {
        r.result = KwDataLoad().fetchNoteDataFromFileByLayer(path, page, layer, reinterpret_cast<char*>(r.pixels.data()));
    });
    return r;
}

// Two pages numbered from 3: the first with pictures on three layers, a LAYER3 module
// without a bitmap, no BGLAYER and three strokes; the second with a main layer only and
// no strokes.
class Loading : public ::testing::Test {
protected:
    void SetUp() override {
        notewriter::Page first;
        for (int i = 0; i < 3; ++i)
            first.layers.push_back({i == 0 ? "MAINLAYER" : "LAYER" + std::to_string(i), notetest::samplePicture(i), {}});
        first.layers.push_back({"LAYER3", {}, {}});
        first.strokes = {notetest::sampleStroke(1), notetest::sampleStroke(2), notetest::sampleStroke(3)};
        notewriter::Page second;
        second.layers.push_back({"MAINLAYER", notetest::samplePicture(4), {}});
        note.pages = {first, second};
        note.firstPageNumber = 3;
        path = dir.write("sample.note", notewriter::buildNote(note, &sites));
        pathLines = path.substr(0, path.rfind('/')) + "\nsample.note\n";
        file.init_fileload(path);
    }
    notetest::ScratchDir dir;
    notewriter::Note note;
    notewriter::NoteSites sites;
    std::string path, pathLines;
    KwFileLoad file;
};

}  // namespace

TEST_F(Loading, PagesAndLayersAreFoundByNumberAndExactName) {
    PageFeatureReadFlag layerFlags;
    layerFlags.mainLayer = layerFlags.layer1 = layerFlags.bgLayer = true;
    KwPageFeatureModule page;
    int result = -1;
    EXPECT_EQ(captureStdout([&] { result = file.fetchPageFeature(page, 3, layerFlags); }), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(page.layer2Site, 0);  // not selected
    EXPECT_EQ(captureStdout([&] { result = file.fetchPageFeature(page, 0, layerFlags); }), "page moudle not exist:0");
    EXPECT_EQ(result, 6);
    EXPECT_EQ(captureStdout([&] { result = KwFileLoad().fetchPageFeature(page, 3, layerFlags); }),
              "open file failed-----errno:" + std::to_string(ENOENT) + ",errmsg:" + std::strerror(ENOENT) +
                  "fetchIndex error.");
    EXPECT_EQ(result, 14);

    KwLayerFeatureModule layer;
    EXPECT_EQ(captureStdout([&] { result = file.fetchLayerFeature(layer, page, "LAYER1"); }),
              "fetchLayerFeature\nfetchLayerFeature  ok\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(layer.layerBitmapSite, sites.pages[0].pictures["LAYER1"]);
    EXPECT_EQ(captureStdout([&] { result = file.fetchLayerFeature(layer, page, "mainlayer"); }),
              "fetchLayerFeature\nUnknown Layer Name.Please check para sLayer first. sLayer:mainlayer");
    EXPECT_EQ(result, 17);
    KwLayerFeatureModule absent;
    EXPECT_EQ(captureStdout([&] { result = file.fetchLayerFeature(absent, page, "BGLAYER"); }), "fetchLayerFeature\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(absent.layerName, "none");
}

// The layer module's own 17 is not passed on.
TEST_F(Loading, LayerWhoseBitmapLiesPastTheFileGives34) {
    notewriter::NoteFile broken;
    KwPageFeatureModule page;
    page.mainLayerSite = static_cast<int>(broken.block({{"LAYERBITMAP", "100000"}}));
    file.init_fileload(dir.write("broken.note", broken.finish(0)));
    KwLayerFeatureModule layer;
    int result = -1;
    const std::string log = captureStdout([&] { result = file.fetchLayerFeature(layer, page, "MAINLAYER"); });
    EXPECT_EQ(result, 34);
    EXPECT_EQ(log.rfind("fetchLayerFeature\ncompress data m_siteCompressData error.", 0), 0u) << log;
    EXPECT_EQ(log.substr(log.size() - 27), "setInfoOfLayerFeature error");
}

TEST_F(Loading, EveryLayerDecodesToItsPicture) {
    for (std::size_t p = 0; p < note.pages.size(); ++p) {
        for (const notewriter::Layer& layer : note.pages[p].layers) {
            const Loaded r = loadLayer(path, note.firstPageNumber + static_cast<int>(p), layer.name);
            EXPECT_EQ(r.result, 0) << layer.name;
            EXPECT_TRUE(r.pixels == (layer.pixels.empty() ? std::vector<uint8_t>(kPictureSize, 0xFF) : layer.pixels))
                << "page " << p << " " << layer.name;
        }
    }
    EXPECT_EQ(loadLayer(path, 3, "MAINLAYER").log,
              pathLines + "fetchLayerFeature\nfetchLayerFeature  ok\nfetchCompressedData\n"
                          "fetchCompressedData memset\nfetchNoteDataFromFileByLayer\n");
    EXPECT_EQ(loadLayer(path, 3, "LAYER3").log,
              pathLines + "fetchLayerFeature\nfetchLayerFeature  ok\nelse\nfetchNoteDataFromFileByLayer\n");
}

TEST_F(Loading, PictureFailuresHaveTheirCodes) {
    const struct {
        int page;
        const char* layer;
        int result;
        std::string log;
    } cases[] = {
        {3, "BGLAYER", 27, pathLines + "bglayer have no data."},
        {3, "layer1", 27,
         pathLines + "fetchLayerFeature\nUnknown Layer Name.Please check para sLayer first. sLayer:layer1"
                     "fetchLayerFeature error."},
        {9, "MAINLAYER", 26, pathLines + "page moudle not exist:0fetchPageFeature error."},
    };
    for (const auto& c : cases) {
        const Loaded r = loadLayer(path, c.page, c.layer);
        EXPECT_EQ(r.result, c.result) << c.layer;
        EXPECT_EQ(r.log, c.log);
    }
    const Loaded r = loadLayer("missing.note", 3, "MAINLAYER");
    EXPECT_EQ(r.result, 2);
    EXPECT_EQ(r.log, "missing.note\nmissing.note\nfile not exist.");
    std::unique_ptr<uint32_t[]> colours;
    captureStdout([&] { colours.reset(KwDataLoad().loadImageData("missing.note", 3, "MAINLAYER")); });
    EXPECT_EQ(colours, nullptr);
}

// White is given as transparent on purpose; a layer without a bitmap is all transparent.
TEST_F(Loading, ColoursFollowTheColourTable) {
    std::unique_ptr<uint32_t[]> colours;
    captureStdout([&] { colours.reset(KwDataLoad().loadImageData(path, 3, "MAINLAYER")); });
    ASSERT_NE(colours, nullptr);
    const std::vector<uint8_t>& pixels = note.pages[0].layers[0].pixels;
    const std::map<uint8_t, uint32_t> expected = {{0x00, 0xFF010101u}, {0x01, 0xFF010101u}, {0x30, 0xFF9D9D9Du},
                                                  {0x31, 0xFF9D9D9Du}, {0x50, 0xFFC9C9C9u}, {0x51, 0xFFC9C9C9u},
                                                  {0xFE, 0u},          {0xFF, 0u}};
    for (const auto& value : expected)
        ASSERT_NE(std::find(pixels.begin(), pixels.end(), value.first), pixels.end()) << int(value.first);
    std::vector<uint32_t> want(kPictureSize);
    std::transform(pixels.begin(), pixels.end(), want.begin(), [&](uint8_t p) { return expected.at(p); });
    EXPECT_TRUE(std::equal(want.begin(), want.end(), colours.get()));

    captureStdout([&] { colours.reset(KwDataLoad().loadImageData(path, 3, "LAYER3")); });
    ASSERT_NE(colours, nullptr);
    EXPECT_EQ(std::count(colours.get(), colours.get() + kPictureSize, 0u), static_cast<long>(kPictureSize));
}

TEST_F(Loading, StrokesReplaceTheCallersListOnlyOnSuccess) {
    KwDataLoad loader;
    std::vector<TrailContainer> trails(1);
    int result = -1;
    EXPECT_EQ(captureStdout([&] { result = loader.fetchNotePathFromFile(trails, path, 3); }), "");
    EXPECT_EQ(result, 0);
    ASSERT_EQ(trails.size(), 3u);
    for (std::size_t i = 0; i < trails.size(); ++i)
        EXPECT_TRUE(notetest::sameStroke(trails[i], note.pages[0].strokes[i])) << i;

    // The first stroke's length claims 4 GiB.
    std::string bytes = notewriter::buildNote(note);
    bytes.replace(sites.pages[0].totalPath + 8, 4, std::string(4, '\xFF'));
    const std::string broken = dir.write("broken.note", bytes);
    const std::string log = captureStdout([&] { result = loader.fetchNotePathFromFile(trails, broken, 3); });
    EXPECT_EQ(result, 26);
    EXPECT_EQ(log.rfind("read trail data error-----errno:", 0), 0u) << log;
    EXPECT_EQ(log.substr(log.size() - 49), "setInfoOfPageFeature errorfetchPageFeature error.");
    EXPECT_EQ(trails.size(), 3u);

    const std::string missing = dir.path("missing.note");
    EXPECT_EQ(captureStdout([&] { result = loader.fetchNotePathFromFile(trails, missing, 3); }),
              "--file not exist.  " + missing);
    EXPECT_EQ(result, 2);
    EXPECT_EQ(trails.size(), 3u);

    captureStdout([&] { result = loader.fetchNotePathFromFile(trails, path, 4); });
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(trails.empty());
}

// Separate objects on separate threads share nothing but the file.
TEST_F(Loading, ParallelReadersAgree) {
    struct Result {
        std::vector<uint32_t> colours;
        std::vector<TrailContainer> trails;
    };
    auto readAll = [&](Result& out) {
        KwDataLoad loader;
        std::unique_ptr<uint32_t[]> colours(loader.loadImageData(path, 3, "LAYER2"));
        if (colours) out.colours.assign(colours.get(), colours.get() + kPictureSize);
        loader.fetchNotePathFromFile(out.trails, path, 3);
    };
    Result reference;
    std::vector<Result> results(8);
    captureStdout([&] {
        readAll(reference);
        std::vector<std::thread> threads;
        for (Result& r : results) threads.emplace_back(readAll, std::ref(r));
        for (std::thread& t : threads) t.join();
    });
    ASSERT_EQ(reference.colours.size(), kPictureSize);
    ASSERT_EQ(reference.trails.size(), 3u);
    for (const Result& r : results) {
        EXPECT_TRUE(r.colours == reference.colours);
        ASSERT_EQ(r.trails.size(), 3u);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_TRUE(notetest::sameStroke(r.trails[i], reference.trails[i]));
    }
}
