// A host's global locale does not reach the numbers of a note: every module writes plain
// decimal digits and reads them the same way, whatever locale the host has set.

#include <locale>
#include <sstream>

#include <gtest/gtest.h>

#include "kwfilefeaturemodule.h"
#include "kwfileindexmodule.h"
#include "kwlayerfeaturemodule.h"
#include "kwpagefeaturemodule.h"
#include "notefiles.h"

namespace {

// Digits grouped in threes with commas, as many hosts' locales write them; built here, so
// that no locale needs to be installed on the machine.
struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

class HostLocale : public ::testing::Test {
protected:
    void SetUp() override {
        previous_ = std::locale::global(std::locale(std::locale::classic(), new Grouping));
        std::ostringstream grouped;
        grouped << 1234567;
        ASSERT_EQ(grouped.str(), "1,234,567") << "the host's locale does not group digits";
    }
    void TearDown() override { std::locale::global(previous_); }

private:
    std::locale previous_;
};

// The value of the item with this key.
std::string valueOf(const std::vector<ModuleItem>& items, const std::string& key) {
    for (const ModuleItem& item : items)
        if (item.key == key) return item.value;
    return "(missing)";
}

TEST_F(HostLocale, NumbersAreWrittenAsPlainDigits) {
    KwFileFeatureModule header;
    header.appVersion = 1234567;
    KwFileIndexModule index;
    index.vecModuleIndex = {{"PAGE1", 1234567}};
    KwLayerFeatureModule layer;
    layer.layerBitmapSite = 1234567;
    std::vector<ModuleItem> headerItems, indexItems, other, pages, layerItems;
    header.produceVecMI(headerItems);
    index.produceVecMI(indexItems);
    index.assortVecMIByKEY(other, other, pages, other, other, other, other, other, other);
    layer.produceVecMIForLayerFeature(layerItems);
    EXPECT_EQ(valueOf(headerItems, "APP_VERSION"), "1234567");
    EXPECT_EQ(valueOf(indexItems, "PAGE1"), "1234567");
    EXPECT_EQ(valueOf(pages, "PAGE1"), "1234567");
    EXPECT_EQ(valueOf(layerItems, "LAYERBITMAP"), "1234567");
}

// A grouped number is read as a number in plain digits would be: up to the first comma.
TEST_F(HostLocale, GroupedDigitsEndANumber) {
    // One number of each module, so that no two share a module's stream.
    std::vector<ModuleItem> items = {{"APP_VERSION", "1,234,567"}, {"LAYERPATH", "1,234,567"},
                                     {"MAINLAYER", "1,234,567"}};
    KwFileFeatureModule header;
    header.setInfoOfModuleFile(items);
    KwLayerFeatureModule layer;
    EXPECT_EQ(layer.setInfoOfLayerFeature(items, ""), 0);
    KwPageFeatureModule page;
    PageFeatureReadFlag flags;
    flags.mainLayer = true;
    EXPECT_EQ(page.setInfoOfPageFeature(items, "", flags), 0);
    std::vector<ModuleItem> indexItems = {{"PAGE1", "1,234,567"}};
    KwFileIndexModule index;
    index.setInfoOfModuleIndex(indexItems);
    EXPECT_EQ(std::make_tuple(header.appVersion, layer.layerPathSite, page.mainLayerSite, index.vecModuleIndex[0].site),
              std::make_tuple(1ul, 1ul, 1, 1));
}

}  // namespace
