// Filling a layer module, loading and expanding its bitmap, replacing it, and turning the
// module back into items.

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwlayerfeaturemodule.h"
#include "notefiles.h"

using notetest::captureStdout;
using notewriter::NoteFile;
using notewriter::kPictureSize;

namespace {

// The result and the log of one fill.
std::pair<int, std::string> fill(KwLayerFeatureModule& layer, std::vector<ModuleItem> items, const std::string& path) {
    int result = -1;
    std::string log = captureStdout([&] { result = layer.setInfoOfLayerFeature(items, path); });
    return {result, log};
}

// The layer's picture expanded over a transparent buffer.
std::vector<uint8_t> expand(KwLayerFeatureModule& layer, std::string* log = nullptr) {
    std::vector<uint8_t> pixels(kPictureSize, 0xFF);
    unsigned long length = 0;
    int result = -1;
    const std::string out = captureStdout(
        [&] { result = layer.fetchCompressedData(reinterpret_cast<char*>(pixels.data()), length); });
    EXPECT_EQ(result, 0);
    if (log) *log = out;
    return pixels;
}

}  // namespace

TEST(LayerItems, BitmapIsLoadedWithTheItemsAndExpands) {
    notetest::ScratchDir dir;
    const std::vector<uint8_t> picture = notetest::samplePicture(2);
    NoteFile file;
    const uint64_t site = file.picture(picture);
    const std::string path = dir.write("a.note", file.finish(0));

    KwLayerFeatureModule layer;
    EXPECT_EQ(fill(layer,
                   {{"LAYERNAME", "MAIN LAYER"}, {"LAYERPATH", " 12x"}, {"LAYERBITMAP", std::to_string(site)},
                    {"LAYERRECOGN", "-1"}},
                   path),
              std::make_pair(0, std::string()));
    EXPECT_EQ(layer.layerType, "none");
    EXPECT_EQ(layer.layerName, "MAIN LAYER");
    EXPECT_EQ(layer.layerPathSite, 12u);
    EXPECT_EQ(layer.layerBitmapSite, site);
    EXPECT_EQ(layer.m_siteCompressData, site);
    EXPECT_EQ(layer.layerRecognSite, ~0UL);  // as a stream reads a negative unsigned number
    const std::string code = notewriter::encodePicture(picture);
    ASSERT_EQ(layer.m_lenCompressData, code.size());
    EXPECT_EQ(layer.m_compressData[code.size()], '\0');

    std::string log;
    EXPECT_EQ(expand(layer, &log), picture);
    EXPECT_EQ(log, "fetchCompressedData\nfetchCompressedData memset\n");

    // Without a bitmap the file is not opened and the pixels are not touched.
    KwLayerFeatureModule bare;
    EXPECT_EQ(fill(bare, {{"LAYERBITMAP", "0"}}, "/nonexistent"), std::make_pair(0, std::string()));
    EXPECT_EQ(bare.m_compressData, nullptr);
    EXPECT_EQ(expand(bare), std::vector<uint8_t>(kPictureSize, 0xFF));
}

TEST(LayerItems, BitmapOutsideTheFileIsRefused) {
    notetest::ScratchDir dir;
    NoteFile file;
    const uint64_t site = file.raw("0123456789");
    const std::string bytes = file.finish(0);
    const std::string size = std::to_string(bytes.size());
    KwLayerFeatureModule layer;

    const std::string lastButThree = std::to_string(bytes.size() - 3);
    EXPECT_EQ(fill(layer, {{"LAYERBITMAP", lastButThree}}, dir.write("a.note", bytes)),
              std::make_pair(17, "compress data m_siteCompressData error.fileSize:" + size +
                                     "m_siteCompressData:" + lastButThree));

    file.patch32(site, 100);
    EXPECT_EQ(fill(layer, {{"LAYERBITMAP", std::to_string(site)}, {"LAYERNAME", "later"}},
                   dir.write("long.note", file.finish(0))),
              std::make_pair(17, "compress data m_siteCompressData error. fileSize:" + size +
                                     " m_lenCompressData:100 m_siteCompressData:" + std::to_string(site)));
    EXPECT_EQ(layer.layerName, "none");

    // The length field is not counted: a bitmap ending 4 bytes past the end passes that
    // check and fails at its read.
    file.patch32(site, static_cast<uint32_t>(bytes.size() - site));
    const auto r = fill(layer, {{"LAYERBITMAP", std::to_string(site)}}, dir.write("over.note", file.finish(0)));
    EXPECT_EQ(r.first, 17);
    EXPECT_EQ(r.second.rfind("compress data read file failed-----errno:", 0), 0u) << r.second;

    EXPECT_EQ(fill(layer, {{"LAYERBITMAP", "30"}}, dir.path("missing.note")),
              std::make_pair(1, "open file failed-----errno:" + std::to_string(ENOENT) + ",errmsg:" +
                                    std::strerror(ENOENT)));
}

TEST(LayerBitmap, ReplacedBitmapExpandsToItsPixelsAndCopiesAreDeep) {
    const std::vector<uint8_t> picture = notetest::samplePicture(5);
    std::vector<uint8_t> source(picture);
    char* pixels = reinterpret_cast<char*>(source.data());
    KwLayerFeatureModule layer;
    EXPECT_EQ(layer.setCompressedData(pixels, kPictureSize), 0);
    const unsigned long length = layer.m_lenCompressData;
    int result = 0;
    EXPECT_EQ(captureStdout([&] { result = layer.setCompressedData(pixels, kPictureSize - 1); }),
              "compress data size is not 1872*1404");
    EXPECT_EQ(result, 7);
    EXPECT_EQ(layer.m_lenCompressData, length);

    layer.m_siteCompressData = 1;  // as if written into a file: only then is it expanded
    KwLayerFeatureModule copy(layer);
    KwLayerFeatureModule assigned;
    assigned = layer;
    // Recolour the first run as ink in the copies only.
    copy.m_compressData[0] = 0x61;
    assigned.m_compressData[0] = 0x61;
    EXPECT_EQ(expand(layer), picture);
    EXPECT_NE(expand(copy), picture);
    EXPECT_NE(expand(assigned), picture);
}

TEST(LayerSites, ChangingSkipsZerosAndTakesTheBitmapFirst) {
    KwLayerFeatureModule layer;
    layer.changeDataSiteForPageFeature(1, 2, 3, 4);
    layer.changeDataSiteForPageFeature(0, 0, 0, 0);
    EXPECT_EQ(layer.layerBitmapSite, 1u);
    EXPECT_EQ(layer.layerPathSite, 2u);
    EXPECT_EQ(layer.layerVectorGraphSite, 3u);
    EXPECT_EQ(layer.layerRecognSite, 4u);
    EXPECT_EQ(layer.m_siteCompressData, 0u);
}

TEST(LayerItemsOut, SevenItemsInOrderThroughOneStream) {
    KwLayerFeatureModule layer;
    std::vector<ModuleItem> items{{"OLD", "1"}};
    layer.layerName = " MAINLAYER";
    layer.layerBitmapSite = ~0UL;
    layer.produceVecMIForLayerFeature(items);
    std::vector<std::string> keysAndValues;
    for (const ModuleItem& item : items) keysAndValues.insert(keysAndValues.end(), {item.key, item.value});
    EXPECT_EQ(keysAndValues, (std::vector<std::string>{"LAYERTYPE", "none", "LAYERPROTOCOL", "none", "LAYERNAME",
                                                       "MAINLAYER", "LAYERPATH", "0", "LAYERBITMAP",
                                                       "18446744073709551615", "LAYERVECTORGRAPH", "0",
                                                       "LAYERRECOGN", "0"}));

    // What the name leaves after its first word is read ahead of the first number.
    layer.layerName = "A B";
    layer.layerPathSite = 5;
    layer.produceVecMIForLayerFeature(items);
    EXPECT_EQ(items[2].value, "A");
    EXPECT_EQ(items[3].value, "B5");
    EXPECT_EQ(items[4].value, "18446744073709551615");

    layer.layerName = "";
    layer.produceVecMIForLayerFeature(items);
    EXPECT_EQ(items[2].value, "");
    EXPECT_EQ(items[3].value, "5");
}
