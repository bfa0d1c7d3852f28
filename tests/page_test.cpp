// Filling a page module from its items, and reading the page's stroke block.

#include <cerrno>
#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwpagefeaturemodule.h"
#include "notefiles.h"

using notetest::captureStdout;
using notewriter::NoteFile;

namespace {

PageFeatureReadFlag allFlags() {
    PageFeatureReadFlag flags;
    bool* byte = reinterpret_cast<bool*>(&flags);
    for (std::size_t i = 0; i < sizeof flags; ++i) byte[i] = true;
    return flags;
}

PageFeatureReadFlag strokeFlags(bool records) {
    PageFeatureReadFlag flags;
    flags.totalPath = flags.totalPathHead = true;
    flags.totalPathTrails = records;
    return flags;
}

// The result and the log of one fill.
std::pair<int, std::string> fill(KwPageFeatureModule& page, std::vector<ModuleItem> items,
                                 const std::string& path, PageFeatureReadFlag flags) {
    int result = -1;
    std::string log = captureStdout([&] { result = page.setInfoOfPageFeature(items, path, flags); });
    return {result, log};
}

std::vector<ModuleItem> totalPath(uint64_t site) { return {{"TOTALPATH", std::to_string(site)}}; }

}  // namespace

TEST(PageItems, OnlySelectedKeysAreTakenEachInItsOwnWay) {
    KwPageFeatureModule page;
    EXPECT_EQ(fill(page, {{"PAGESTYLE", "grid"}, {"MAINLAYER", "5"}}, "", PageFeatureReadFlag{}).first, 0);
    EXPECT_EQ(page.pageStyle, "none");
    EXPECT_EQ(page.layerSeq, "nolayer");
    EXPECT_EQ(page.mainLayerSite, 0);

    const auto r = fill(page,
                        {{"PAGESTYLE", "style 1"}, {"LAYERSEQ", " A B"}, {"LAYERINFO", std::string("ab\0cd", 5)},
                         {"MAINLAYER", "12abc"}, {"LAYER1", "abc"}, {"LAYER2", " -7"}, {"LAYER3", "99999999999"},
                         {"BGLAYER", "3"}, {"BGLAYER", "4"}, {"UNKNOWN", "1"},
                         {"FIVESTAR", "1,2,3,4,5,6,7,8,9,10"}, {"FIVESTAR", "1,2,3,4,5,6,7,8,9,10,11,12"},
                         {"FIVESTAR", "1,2,3,4,5,6,7,8,9,10,-11 ignored"}},
                        "", allFlags());
    EXPECT_EQ(r, std::make_pair(0, std::string()));
    EXPECT_EQ(page.pageStyle, "style 1");
    EXPECT_EQ(page.layerSeq, "A");
    EXPECT_EQ(page.layerInfo, "ab");
    EXPECT_EQ(page.mainLayerSite, 12);
    EXPECT_EQ(page.layer1Site, 0);
    EXPECT_EQ(page.layer2Site, -7);
    EXPECT_EQ(page.layer3Site, INT_MAX);
    EXPECT_EQ(page.bgLayerSite, 4);  // the later item wins
    ASSERT_EQ(page.fiveStars.size(), 1u);
    EXPECT_EQ(page.fiveStars[0].values[10], -11);

    std::vector<ModuleItem> items{{"FIVESTAR", "1,2,3,4,5,x,7,8,9,10,11"}};
    PageFeatureReadFlag flags = allFlags();
    EXPECT_THROW(page.setInfoOfPageFeature(items, "", flags), std::invalid_argument);
}

// Without the block flags, or with site 0, the file is never opened: a missing file gives
// no message.
TEST(PageStrokes, BlockIsReadOnlyWhenAskedForAndPresent) {
    KwPageFeatureModule page;
    PageFeatureReadFlag siteOnly;
    siteOnly.totalPath = true;
    EXPECT_EQ(fill(page, totalPath(40), "/nonexistent", siteOnly), std::make_pair(0, std::string()));
    EXPECT_EQ(page.totalPathSite, 40);
    EXPECT_EQ(fill(page, totalPath(0), "/nonexistent", strokeFlags(true)), std::make_pair(0, std::string()));
    EXPECT_EQ(fill(page, totalPath(40), "/nonexistent", strokeFlags(true)),
              std::make_pair(1, "open file failed-----errno:" + std::to_string(ENOENT) + ",errmsg:" +
                                    std::strerror(ENOENT)));
}

TEST(PageStrokes, RecordsDecodeInOrderAndReplaceEarlierStrokes) {
    notetest::ScratchDir dir;
    const std::vector<std::string> records{notewriter::strokeRecord(notetest::sampleStroke(1)),
                                           notewriter::strokeRecord(notetest::sampleStroke(2))};
    NoteFile file;
    const uint64_t site = file.strokeBlock(records);
    const std::string path = dir.write("a.note", file.finish(0));

    KwPageFeatureModule page;
    page.trails.resize(3);
    EXPECT_EQ(fill(page, totalPath(site), path, strokeFlags(true)), std::make_pair(0, std::string()));
    EXPECT_EQ(page.trailCount, 2u);
    EXPECT_EQ(page.totalPathLength, 16 + records[0].size() + records[1].size());
    ASSERT_EQ(page.trails.size(), 2u);
    EXPECT_TRUE(notetest::sameStroke(page.trails[0], notetest::sampleStroke(1)));
    EXPECT_TRUE(notetest::sameStroke(page.trails[1], notetest::sampleStroke(2)));

    // The head alone: the count is taken and the list emptied, no record is read.
    EXPECT_EQ(fill(page, totalPath(site), path, strokeFlags(false)).first, 0);
    EXPECT_EQ(page.trailCount, 2u);
    EXPECT_TRUE(page.trails.empty());
}

TEST(PageStrokes, BrokenBlocksFailThePageKeepingWhatCameBefore) {
    notetest::ScratchDir dir;
    const std::string good = notewriter::strokeRecord(notetest::sampleStroke(1));
    // A disabled area in a record too short for it: the decoder refuses the record.
    const std::string overrun = notewriter::Bytes().zeros(188).i32(1).zeros(16).i32(1).str();
    KwPageFeatureModule page;

    // The second record claims 4 GiB in a small file and fails like its short read.
    NoteFile huge;
    uint64_t site = huge.strokeBlock({good, "tiny"});
    huge.patch32(site + 12 + good.size(), 0xFFFFFFFFu);
    auto r = fill(page, totalPath(site), dir.write("huge.note", huge.finish(0)), strokeFlags(true));
    EXPECT_EQ(r.first, 17);
    EXPECT_EQ(r.second.rfind("read trail data error-----errno:", 0), 0u) << r.second;
    EXPECT_NE(r.second.find(",errmsg:"), std::string::npos);
    EXPECT_EQ(page.trails.size(), 1u);

    // More strokes counted than the file holds: the block ends the file, so the next
    // length cannot be read.
    NoteFile many;
    site = many.strokeBlock({good}, 1000000);
    r = fill(page, totalPath(site), dir.write("many.note", many.finish(0).substr(0, many.size())), strokeFlags(true));
    EXPECT_EQ(r.first, 17);
    EXPECT_EQ(r.second.rfind("read trail len error-----errno:", 0), 0u) << r.second;

    NoteFile bad;
    site = bad.strokeBlock({overrun});
    const std::string path = dir.write("bad.note", bad.finish(0));
    EXPECT_EQ(fill(page, totalPath(site), path, strokeFlags(true)),
              std::make_pair(17, std::string("disableAreaListdata2Trail error.")));

    // The items after a failure are not taken.
    std::vector<ModuleItem> items = totalPath(site + 1000);
    items.push_back({"PAGEID", "later"});
    EXPECT_EQ(fill(page, items, path, allFlags()), std::make_pair(17, std::string("totalpath site error.")));
    EXPECT_EQ(page.pageId, "none");
}
