// Finding pages and layers through the index, and the one-call loaders a host uses for
// pictures and strokes.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwdataload.h"
#include "kwfileload.h"
#include "notefiles.h"
#include "notewriter.h"

using notetest::captureStdout;
using notewriter::kPictureSize;

namespace {

const char* const kLayerNames[] = {"MAINLAYER", "LAYER1", "LAYER2", "LAYER3", "BGLAYER"};

// Two pages numbered from 3: the first with a picture on every layer but BGLAYER (LAYER3
// has a module without a bitmap), the second with a main layer only and no strokes.
notewriter::Note sampleNote() {
    notewriter::Note note;
    note.firstPageNumber = 3;
    notewriter::Page first;
    for (int i = 0; i < 3; ++i) first.layers.push_back({kLayerNames[i], notetest::samplePicture(i), {}});
    first.layers.push_back({"LAYER3", {}, {}});
    first.strokes = {notetest::sampleStroke(1), notetest::sampleStroke(2), notetest::sampleStroke(3)};
    notewriter::Page second;
    second.layers.push_back({"MAINLAYER", notetest::samplePicture(4), {}});
    note.pages = {first, second};
    return note;
}

struct Loaded {
    int result;
    std::string log;
    std::vector<uint8_t> pixels;
};

Loaded loadLayer(const std::string& path, int page, const std::string& layer) {
    Loaded r{-1, "", std::vector<uint8_t>(kPictureSize, 0xFF)};
    KwDataLoad loader;
    r.log = captureStdout([&] {
        r.result = loader.fetchNoteDataFromFileByLayer(path, page, layer, reinterpret_cast<char*>(r.pixels.data()));
    });
    return r;
}

class Loading : public ::testing::Test {
protected:
    void SetUp() override {
        note = sampleNote();
        path = dir.write("sample.note", notewriter::buildNote(note, &sites));
        file.init_fileload(path);
    }
    notetest::ScratchDir dir;
    notewriter::Note note;
    notewriter::NoteSites sites;
    std::string path;
    KwFileLoad file;
};

}  // namespace

TEST_F(Loading, PagesAreFoundByTheirIndexNumber) {
    PageFeatureReadFlag layersOnly;
    layersOnly.mainLayer = layersOnly.bgLayer = true;
    KwPageFeatureModule page;
    int result = -1;
    EXPECT_EQ(captureStdout([&] { result = file.fetchPageFeature(page, 3, layersOnly); }), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(page.mainLayerSite, static_cast<int>(sites.pages[0].layerBlocks["MAINLAYER"]));
    EXPECT_EQ(page.layer1Site, 0);  // not selected
    EXPECT_EQ(page.totalPathSite, 0);

    for (int missing : {0, 1, 5}) {
        EXPECT_EQ(captureStdout([&] { result = file.fetchPageFeature(page, missing, layersOnly); }),
                  "page moudle not exist:0");
        EXPECT_EQ(result, 6);
    }
    KwFileLoad unbound;
    EXPECT_EQ(captureStdout([&] { result = unbound.fetchPageFeature(page, 3, layersOnly); }),
              "open file failed-----errno:" + std::to_string(ENOENT) + ",errmsg:" + std::strerror(ENOENT) +
                  "fetchIndex error.");
    EXPECT_EQ(result, 14);
}

TEST_F(Loading, LayersAreFoundByTheirExactName) {
    PageFeatureReadFlag layerFlags;
    layerFlags.mainLayer = layerFlags.layer1 = layerFlags.layer2 = layerFlags.layer3 = layerFlags.bgLayer = true;
    KwPageFeatureModule page;
    captureStdout([&] { file.fetchPageFeature(page, 3, layerFlags); });

    KwLayerFeatureModule layer;
    int result = -1;
    EXPECT_EQ(captureStdout([&] { result = file.fetchLayerFeature(layer, page, "LAYER1"); }),
              "fetchLayerFeature\nfetchLayerFeature  ok\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(layer.layerName, "LAYER1");
    EXPECT_EQ(layer.layerBitmapSite, sites.pages[0].pictures["LAYER1"]);

    EXPECT_EQ(captureStdout([&] { result = file.fetchLayerFeature(layer, page, "mainlayer"); }),
              "fetchLayerFeature\nUnknown Layer Name.Please check para sLayer first. sLayer:mainlayer");
    EXPECT_EQ(result, 17);

    KwLayerFeatureModule absent;
    EXPECT_EQ(captureStdout([&] { result = file.fetchLayerFeature(absent, page, "BGLAYER"); }),
              "fetchLayerFeature\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(absent.layerName, "none");
    EXPECT_EQ(absent.layerBitmapSite, 0u);
}

// The layer module's own 17 is not passed on.
TEST_F(Loading, LayerWhoseBitmapLiesPastTheFileGives34) {
    notewriter::NoteFile broken;
    const uint64_t layerBlock = broken.block({{"LAYERNAME", "MAINLAYER"}, {"LAYERBITMAP", "100000"}});
    file.init_fileload(dir.write("broken.note", broken.finish(0)));
    KwPageFeatureModule page;
    page.mainLayerSite = static_cast<int>(layerBlock);
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
            const std::vector<uint8_t> expected =
                layer.pixels.empty() ? std::vector<uint8_t>(kPictureSize, 0xFF) : layer.pixels;
            EXPECT_TRUE(r.pixels == expected) << "page " << p << " " << layer.name;
        }
    }
    const std::string folderAndName = path.substr(0, path.rfind('/')) + "\nsample.note\n";
    EXPECT_EQ(loadLayer(path, 3, "MAINLAYER").log,
              folderAndName + "fetchLayerFeature\nfetchLayerFeature  ok\nfetchCompressedData\n"
                              "fetchCompressedData memset\nfetchNoteDataFromFileByLayer\n");
    EXPECT_EQ(loadLayer(path, 3, "LAYER3").log,
              folderAndName + "fetchLayerFeature\nfetchLayerFeature  ok\nelse\nfetchNoteDataFromFileByLayer\n");
}

TEST_F(Loading, PictureFailuresHaveTheirCodes) {
    const std::string folderAndName = path.substr(0, path.rfind('/')) + "\nsample.note\n";
    Loaded r = loadLayer(path, 3, "BGLAYER");
    EXPECT_EQ(r.result, 27);
    EXPECT_EQ(r.log, folderAndName + "bglayer have no data.");
    r = loadLayer(path, 3, "layer1");
    EXPECT_EQ(r.result, 27);
    EXPECT_EQ(r.log, folderAndName +
                         "fetchLayerFeature\nUnknown Layer Name.Please check para sLayer first. "
                         "sLayer:layer1fetchLayerFeature error.");
    r = loadLayer(path, 9, "MAINLAYER");
    EXPECT_EQ(r.result, 26);
    EXPECT_EQ(r.log, folderAndName + "page moudle not exist:0fetchPageFeature error.");
    r = loadLayer("missing.note", 3, "MAINLAYER");
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
    const std::pair<uint8_t, uint32_t> expected[] = {{0x00, 0xFF010101u}, {0x01, 0xFF010101u},
                                                     {0x30, 0xFF9D9D9Du}, {0x31, 0xFF9D9D9Du},
                                                     {0x50, 0xFFC9C9C9u}, {0x51, 0xFFC9C9C9u},
                                                     {0xFE, 0u},          {0xFF, 0u}};
    for (const auto& [pixel, colour] : expected) {
        std::size_t seen = 0;
        for (std::size_t i = 0; i < kPictureSize; ++i) {
            if (pixels[i] != pixel) continue;
            ++seen;
            ASSERT_EQ(colours[i], colour) << "pixel value " << int(pixel) << " at " << i;
        }
        EXPECT_GT(seen, 0u) << int(pixel);
    }

    captureStdout([&] { colours.reset(KwDataLoad().loadImageData(path, 3, "LAYER3")); });
    ASSERT_NE(colours, nullptr);
    EXPECT_EQ(std::count(colours.get(), colours.get() + kPictureSize, 0u), static_cast<long>(kPictureSize));
}

TEST_F(Loading, StrokesComeBackAsWrittenAndReplaceTheCallersList) {
    KwDataLoad loader;
    std::vector<TrailContainer> trails(1);
    int result = -1;
    EXPECT_EQ(captureStdout([&] { result = loader.fetchNotePathFromFile(trails, path, 3); }), "");
    EXPECT_EQ(result, 0);
    ASSERT_EQ(trails.size(), 3u);
    for (std::size_t i = 0; i < trails.size(); ++i) notetest::expectSameStroke(trails[i], note.pages[0].strokes[i]);

    captureStdout([&] { result = loader.fetchNotePathFromFile(trails, path, 4); });
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(trails.empty());
}

TEST_F(Loading, StrokeFailuresLeaveTheCallersList) {
    // The first stroke's length claims 4 GiB.
    std::string bytes = notewriter::buildNote(note, &sites);
    const std::size_t lengthAt = sites.pages[0].totalPath + 8;
    bytes.replace(lengthAt, 4, std::string(4, '\xFF'));
    const std::string broken = dir.write("broken.note", bytes);

    KwDataLoad loader;
    std::vector<TrailContainer> trails(2);
    trails[1].maxX = 77;
    int result = -1;
    std::string log = captureStdout([&] { result = loader.fetchNotePathFromFile(trails, broken, 3); });
    EXPECT_EQ(result, 26);
    EXPECT_EQ(log.rfind("read trail data error-----errno:", 0), 0u) << log;
    EXPECT_EQ(log.substr(log.size() - 49), "setInfoOfPageFeature errorfetchPageFeature error.");
    ASSERT_EQ(trails.size(), 2u);
    EXPECT_EQ(trails[1].maxX, 77);

    const std::string missing = dir.path("missing.note");
    EXPECT_EQ(captureStdout([&] { result = loader.fetchNotePathFromFile(trails, missing, 3); }),
              "--file not exist.  " + missing);
    EXPECT_EQ(result, 2);
    EXPECT_EQ(trails.size(), 2u);
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
        for (std::size_t i = 0; i < 3; ++i) notetest::expectSameStroke(r.trails[i], reference.trails[i]);
    }
}
