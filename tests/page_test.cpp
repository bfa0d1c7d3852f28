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
#include "notewriter.h"

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

struct PageRead {
    int result;
    std::string log;
};

PageRead fill(KwPageFeatureModule& page, std::vector<ModuleItem> items, const std::string& path,
              PageFeatureReadFlag flags) {
    PageRead r{-1, ""};
    r.log = captureStdout([&] { r.result = page.setInfoOfPageFeature(items, path, flags); });
    return r;
}

// A file ending with a stroke block; its site goes into the TOTALPATH item.
std::string strokeFile(const notetest::ScratchDir& dir, const std::vector<std::string>& records,
                       uint64_t& site, int32_t count) {
    NoteFile file;
    site = file.strokeBlock(records, count);
    return dir.write("strokes.note", file.finish(0).substr(0, file.size()));
}

}  // namespace

TEST(PageItems, DefaultsStayWithoutSelectedItems) {
    KwPageFeatureModule page;
    EXPECT_EQ(fill(page, {}, "", allFlags()).result, 0);
    EXPECT_EQ(fill(page, {{"PAGESTYLE", "grid"}, {"MAINLAYER", "5"}, {"TOTALPATH", "9"}}, "",
                   PageFeatureReadFlag{})
                  .result,
              0);
    EXPECT_EQ(page.pageStyle, "none");
    EXPECT_EQ(page.pageStyleMd5, "0");
    EXPECT_EQ(page.layerSeq, "nolayer");
    EXPECT_EQ(page.pageId, "none");
    EXPECT_EQ(page.mainLayerSite, 0);
    EXPECT_EQ(page.totalPathSite, 0);
    EXPECT_TRUE(page.trails.empty());
    EXPECT_TRUE(page.fiveStars.empty());
}

TEST(PageItems, ValuesAreConvertedPerKey) {
    KwPageFeatureModule page;
    const PageRead r = fill(page,
                            {{"PAGESTYLE", "style 1"},
                             {"LAYERSEQ", " A B"},
                             {"LAYERINFO", std::string("ab\0cd", 5)},
                             {"MAINLAYER", "12abc"},
                             {"LAYER1", "abc"},
                             {"LAYER2", " -7"},
                             {"LAYER3", "99999999999"},
                             {"BGLAYER", "3"},
                             {"BGLAYER", "4"},
                             {"RECOGNLANGUAGE", "en_US"},
                             {"UNKNOWN", "1"}},
                            "", allFlags());
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(page.pageStyle, "style 1");
    EXPECT_EQ(page.layerSeq, "A");
    EXPECT_EQ(page.layerInfo, "ab");
    EXPECT_EQ(page.mainLayerSite, 12);
    EXPECT_EQ(page.layer1Site, 0);
    EXPECT_EQ(page.layer2Site, -7);
    EXPECT_EQ(page.layer3Site, INT_MAX);
    EXPECT_EQ(page.bgLayerSite, 4);  // the later item wins
    EXPECT_EQ(page.recognLanguage, "en_US");
}

TEST(PageItems, FiveStarNeedsExactlyElevenNumbers) {
    KwPageFeatureModule page;
    fill(page,
         {{"FIVESTAR", "1,2,3,4,5,6,7,8,9,10"},
          {"FIVESTAR", "1,2,3,4,5,6,7,8,9,10,11,12"},
          {"FIVESTAR", "1,2,3,4,5,6,7,8,9,10,-11 ignored"}},
         "", allFlags());
    ASSERT_EQ(page.fiveStars.size(), 1u);
    EXPECT_EQ(page.fiveStars[0].values[0], 1);
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
    PageRead r = fill(page, {{"TOTALPATH", "40"}}, "/nonexistent/a.note", siteOnly);
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(page.totalPathSite, 40);

    r = fill(page, {{"TOTALPATH", "0"}}, "/nonexistent/a.note", strokeFlags(true));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.log, "");

    r = fill(page, {{"TOTALPATH", "40"}}, "/nonexistent/a.note", strokeFlags(true));
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.log, "open file failed-----errno:" + std::to_string(ENOENT) + ",errmsg:" +
                         std::strerror(ENOENT));
}

TEST(PageStrokes, RecordsDecodeInOrderAndReplaceEarlierStrokes) {
    notetest::ScratchDir dir;
    const std::vector<TrailContainer> written{notetest::sampleStroke(1), notetest::sampleStroke(2)};
    uint64_t site = 0;
    const std::string path = strokeFile(
        dir, {notewriter::strokeRecord(written[0]), notewriter::strokeRecord(written[1])}, site, 2);

    KwPageFeatureModule page;
    page.trails.resize(3);
    const std::vector<ModuleItem> items{{"TOTALPATH", std::to_string(site)}};
    PageRead r = fill(page, items, path, strokeFlags(true));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(page.trailCount, 2u);
    EXPECT_EQ(page.totalPathLength, 8 + 8 + notewriter::strokeRecord(written[0]).size() +
                                        notewriter::strokeRecord(written[1]).size());
    ASSERT_EQ(page.trails.size(), 2u);
    notetest::expectSameStroke(page.trails[0], written[0]);
    notetest::expectSameStroke(page.trails[1], written[1]);

    // The head alone: the count is taken, the list emptied, no record read.
    r = fill(page, items, path, strokeFlags(false));
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(page.trailCount, 2u);
    EXPECT_TRUE(page.trails.empty());
}

TEST(PageStrokes, BrokenBlocksFailThePage) {
    notetest::ScratchDir dir;
    const std::string good = notewriter::strokeRecord(notetest::sampleStroke(1));
    uint64_t site = 0;
    KwPageFeatureModule page;

    // A record claiming 4 GiB in a small file fails like the short read, keeping what came before.
    NoteFile file;
    site = file.strokeBlock({good, "tiny"});
    file.patch32(site + 8 + 4 + good.size(), 0xFFFFFFFFu);
    std::string path = dir.write("huge.note", file.finish(0));
    PageRead r = fill(page, {{"TOTALPATH", std::to_string(site)}}, path, strokeFlags(true));
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(r.log.rfind("read trail data error-----errno:", 0), 0u) << r.log;
    EXPECT_NE(r.log.find(",errmsg:"), std::string::npos);
    EXPECT_EQ(page.trails.size(), 1u);

    // More strokes counted than the file holds: the next length cannot be read.
    path = strokeFile(dir, {good}, site, 1000000);
    r = fill(page, {{"TOTALPATH", std::to_string(site)}}, path, strokeFlags(true));
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(r.log.rfind("read trail len error-----errno:", 0), 0u) << r.log;

    // A record that overruns its own frame: a disabled area needs 236 bytes.
    const std::string overrun =
        notewriter::Bytes().zeros(188).i32(1).zeros(16).i32(1).str();
    path = strokeFile(dir, {overrun}, site, 1);
    r = fill(page, {{"TOTALPATH", std::to_string(site)}}, path, strokeFlags(true));
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(r.log, "disableAreaListdata2Trail error.");

    r = fill(page, {{"TOTALPATH", std::to_string(site + 1000)}}, path, strokeFlags(true));
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(r.log, "totalpath site error.");

    // The items after a failure are not taken.
    r = fill(page, {{"TOTALPATH", std::to_string(site + 1000)}, {"PAGEID", "later"}}, path, allFlags());
    EXPECT_EQ(r.result, 17);
    EXPECT_EQ(page.pageId, "none");
}
