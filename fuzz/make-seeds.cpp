// Writes the seed inputs of the fuzz targets, all laid out by the note writer, so that
// fuzzing starts from well-formed notes, blocks, stroke records and pictures and from the
// edge cases of their syntax.
//
// Usage: make-seeds <folder>   (writes <folder>/<target>/seed-*)

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "config.h"
#include "notewriter.h"

namespace {

using notewriter::Bytes;
using notewriter::Items;
using notewriter::kPictureWidth;
using Pixels = std::vector<uint8_t>;
using namespace std::string_literals;

class SeedFolder {
public:
    SeedFolder(const std::string& root, const std::string& target) : dir_(root + "/" + target) {
        std::filesystem::create_directories(dir_);
    }
    void add(const std::string& name, const std::string& bytes) {
        notewriter::writeFile(dir_ + "/seed-" + name, bytes);
    }

private:
    std::string dir_;
};

// A mostly transparent picture with a few short strokes of ink, so that its code stays
// small enough for the fuzzer's input length.
Pixels smallPicture(int seed) {
    Pixels pixels(notewriter::kPictureSize, 0xFF);
    const uint8_t values[] = {0x00, 0x01, 0x30, 0x31, 0x50, 0x51, 0xFE};
    for (int i = 0; i < 7; ++i) {
        const std::size_t row = 100 + 37 * i + seed;
        for (int x = 20 * i; x < 20 * i + 5 + seed; ++x) pixels[row * kPictureWidth + x] = values[(i + seed) % 7];
    }
    return pixels;
}

TrailContainer smallStroke(int seed) {
    TrailContainer t;
    t.typeName = "pen";
    t.subName = "s";
    t.maxX = 15725;
    t.maxY = 20967;
    t.m_emrPointAxis = seed % 4;
    for (int i = 0; i < 3 + seed; ++i) {
        t.m_points.push_back({1000 * i, 800 * i + seed});
        t.pressures.push_back(static_cast<uint16_t>(200 + i));
        t.angles.push_back({static_cast<int16_t>(i), 1});
        t.flagDraw.push_back(i % 2 == 0);
    }
    if (seed % 2) {
        t.disableAreaList.push_back(FlagRect{{1, 2, 3, 4, 5, 6}});
        t.epaPoints = {{seed, 2}};
        t.epaGrays = {7};
        t.m_controlNums = {1, 2};
        t.PointContour = {{{1.5f, 2.5f}}, {}};
        t.extraControlNums = {3};
    }
    return t;
}

// The two bytes the whole-file target takes off the end: page number and layer name.
std::string choice(int8_t page, uint8_t layer) {
    return Bytes().u8(static_cast<uint8_t>(page)).u8(layer).str();
}

std::vector<std::pair<std::string, std::string>> notes() {
    using notewriter::Layer;
    using notewriter::Note;
    using notewriter::Page;
    std::vector<std::pair<std::string, std::string>> out;

    Note plain;
    plain.header = {{"FILE_TYPE", "NOTE"}, {"APP_VERTION", "1"}};
    Page first;
    first.layers = {Layer{"MAINLAYER", smallPicture(0), {{"LAYERTYPE", "NOTE"}}}};
    first.strokes = {smallStroke(0), smallStroke(1)};
    first.extra = {{"PAGESTYLE", "style_8mm"}, {"LAYERSEQ", "MAINLAYER"}, {"FIVESTAR", "1,2,3,4,5,6,7,8,9,10,11"}};
    plain.pages = {first};
    out.emplace_back("note-one-page", notewriter::buildNote(plain));

    Note layered;
    layered.firstPageNumber = 0;
    Page all;
    all.layers = {Layer{"MAINLAYER", smallPicture(1), {}}, Layer{"LAYER1", smallPicture(2), {}},
                  Layer{"LAYER2", {}, {}}, Layer{"LAYER3", smallPicture(3), {}}, Layer{"BGLAYER", smallPicture(4), {}}};
    all.strokes = {smallStroke(2)};
    Page bare;
    bare.hasStrokeBlock = false;
    bare.layers = {Layer{"BGLAYER", {}, {}}};
    layered.pages = {all, bare};
    layered.extraIndex = {{"STYLE_style_8mm", "24"}, {"DIRTY", "0"}};
    out.emplace_back("note-five-layers", notewriter::buildNote(layered));

    Note otherTag = plain;
    otherTag.tag = "KW_FILE_VER_20200001";
    out.emplace_back("note-other-tag", notewriter::buildNote(otherTag));
    return out;
}

void noteSeeds(SeedFolder& folder, const std::vector<std::pair<std::string, std::string>>& files) {
    int n = 0;
    for (const auto& [name, bytes] : files) {
        for (int layer = 0; layer < 6; ++layer)
            folder.add(name + "-" + std::to_string(n++), bytes + choice(static_cast<int8_t>(layer % 3), layer));
    }
}

// Blocks whose site is the last 4 bytes, as the block target reads them.
void blockSeeds(SeedFolder& folder, const std::vector<std::pair<std::string, std::string>>& files) {
    for (const auto& [name, bytes] : files) folder.add(name, bytes);
    const std::string texts[] = {"<A:1><B:2>", "<A::1>",  "<A:1:2><B:3>", "<:V>",
                                 "\n<A:1>",    "<A:1>\0<B:2>"s, "<PAGE1:24><PAGE2:99><STYLE_x:5>"};
    int n = 0;
    for (const std::string& text : texts) {
        notewriter::NoteFile file;
        const uint64_t site = file.rawBlock(text);
        folder.add("block-" + std::to_string(n++), file.finish(site));
    }
    notewriter::NoteFile empty;
    folder.add("block-empty", empty.finish(empty.rawBlock("")));
    notewriter::NoteFile overlong;
    folder.add("block-overlong", overlong.finish(overlong.rawBlock("<A:1>", 9)));
}

void strokeSeeds(SeedFolder& folder) {
    for (int seed = 0; seed < 4; ++seed) {
        folder.add("stroke-" + std::to_string(seed), notewriter::strokeRecord(smallStroke(seed), seed % 2, seed > 1));
        const TrailContainer t = smallStroke(seed);
        std::string encoded(trail2dataSize(t), '\0');
        trail2data(t, encoded.data());
        folder.add("stroke-encoded-" + std::to_string(seed), encoded);
    }
}

void pictureSeeds(SeedFolder& folder) {
    for (int seed = 0; seed < 4; ++seed)
        folder.add("picture-" + std::to_string(seed), notewriter::encodePicture(smallPicture(seed)));
    folder.add("picture-partial", "\x61\x00\x62\xff\x65\x80\xe1\x7f"s);
}

// Pairs of (value and scale, length), as the round-trip target builds its pictures.
void runSeeds(SeedFolder& folder) {
    folder.add("runs", "\x07\x10\x00\x05\x3e\xff\x11\x20\x26\x01\x7f\xff"s);
    folder.add("runs-long", "\x3f\xff\x38\xff\x06\x00"s);
    folder.add("bytes", "\xff\xff\x00\x00\x30\x12\xfe\xfe\xfe\xfe\xfe\xfe\xfe\xfe\x51"s);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-seeds <folder>\n");
        return 2;
    }
    try {
        const auto files = notes();
        SeedFolder blocks(argv[1], "metadata_block_fuzz");
        blockSeeds(blocks, files);
        SeedFolder wholeFiles(argv[1], "note_file_fuzz");
        noteSeeds(wholeFiles, files);
        SeedFolder viewedFiles(argv[1], "evince_note_fuzz");
        for (const auto& [name, bytes] : files) viewedFiles.add(name, bytes);
        SeedFolder strokes(argv[1], "stroke_record_fuzz");
        strokeSeeds(strokes);
        SeedFolder pictures(argv[1], "rle_decode_fuzz");
        pictureSeeds(pictures);
        SeedFolder runs(argv[1], "rle_roundtrip_fuzz");
        runSeeds(runs);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make-seeds: %s\n", e.what());
        return 1;
    }
    return 0;
}
