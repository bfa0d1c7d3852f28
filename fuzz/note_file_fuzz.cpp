// Proves that every whole-file reader survives any note file: the page count, the page
// reader with every flag set (strokes and five-star marks included), the layer reader for
// each layer name, the picture calls (bytes and colours) and the stroke call. None of them
// reads or writes outside its buffers, holds memory or a stream after it returns, or raises
// anything but the documented errors.
//
// The input is the file followed by two bytes that choose the page number (a signed byte,
// so page 0 and negative pages are tried) and the layer name (the five names and one that
// is refused); one target thereby covers every combination.

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "config.h"
#include "harness.h"
#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "layers.h"
#include "picture.h"
#include "status.h"

namespace {

// The five layer names, then one that is refused.
constexpr std::array<const char*, 6> kLayerNames = [] {
    std::array<const char*, 6> names{};
    for (std::size_t i = 0; i < 5; ++i) names[i] = noteformat::kLayers[i].name;
    names[5] = "mainlayer";
    return names;
}();

struct Choice {
    int page = 1;
    std::string layer = "MAINLAYER";
};

// Takes the two choice bytes off the end of the input.
Choice takeChoice(std::size_t& size, const uint8_t* data) {
    Choice choice;
    if (size < 2) return choice;
    choice.page = static_cast<int8_t>(data[size - 2]);
    choice.layer = kLayerNames[data[size - 1] % kLayerNames.size()];
    size -= 2;
    return choice;
}

PageFeatureReadFlag everyFlag() {
    PageFeatureReadFlag f;
    for (bool* flag : {&f.pageStyle, &f.pageStyleMd5, &f.mainLayer, &f.layer1, &f.layer2, &f.layer3, &f.bgLayer,
                       &f.totalPath, &f.totalPathHead, &f.totalPathTrails, &f.fiveStar, &f.layerInfo, &f.layerSeq,
                       &f.thumbnailType, &f.recognStatus, &f.recognText, &f.recognFile, &f.pageId, &f.recognType,
                       &f.recognFileStatus, &f.recognLanguage})
        *flag = true;
    return f;
}

// The module readers, as a host that edits notes drives them.
void readModules(const std::string& path, const Choice& choice, char* pixels) {
    KwFileProcess reader;
    if (!reader.init_datafile(path)) __builtin_trap();
    KwFileIndexModule index;
    fuzzharness::expectingDocumentedErrors([&] { reader.fetchIndex(index); });
    KwPageFeatureModule page;
    PageFeatureReadFlag flags = everyFlag();
    fuzzharness::expectingDocumentedErrors([&] { reader.fetchPageFeature(page, choice.page, flags); });
    for (const char* name : kLayerNames) {
        KwLayerFeatureModule layer;
        int result = -1;
        fuzzharness::expectingDocumentedErrors([&] { result = reader.fetchLayerFeature(layer, page, name); });
        unsigned long length = 0;
        if (result == status::Ok) layer.fetchCompressedData(pixels, length);
    }
}

// The public one-call entry points.
void readThroughFacade(const std::string& path, const Choice& choice, char* pixels) {
    KwDataOperationFile facade;
    fuzzharness::expectingDocumentedErrors([&] { facade.fetchTotalPageNumOfNote(path); });
    fuzzharness::expectingDocumentedErrors(
        [&] { facade.fetchNoteDataFromFileByLayer(path, choice.page, choice.layer, pixels); });
    fuzzharness::expectingDocumentedErrors(
        [&] { delete[] facade.loadImageData(path, choice.page, choice.layer); });
    std::vector<TrailContainer> trails;
    fuzzharness::expectingDocumentedErrors([&] { facade.fetchNotePathFromFile(trails, path, choice.page); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const Choice choice = takeChoice(size, data);
    const std::string& path = fuzzharness::writeNoteFile(data, size);
    // Exactly one picture, so that a write past its end is caught; kept from one input to
    // the next, as mapping fresh pages for every input would cost more than the reading.
    static const std::unique_ptr<char[]> pixels(new char[noteformat::kPictureSize]);
    readModules(path, choice, pixels.get());
    readThroughFacade(path, choice, pixels.get());
    return 0;
}
