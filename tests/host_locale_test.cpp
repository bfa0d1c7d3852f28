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

// The value of the item with this key.
std::string valueOf(const std::vector<ModuleItem>& items, const std::string& key) {
    for (const ModuleItem& item : items)
        if (item.key == key) return item.value;
    return "(missing)";
}

// Numbers are written as plain digits, and a grouped number is read as a number in plain
// digits would be: up to the first comma. One number of each module is read, so that no
// two share a module's stream.
TEST(HostLocale, NumbersAreWrittenAndReadAsPlainDigits) {
    const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    std::ostringstream grouped;
    grouped << 1234567;
    EXPECT_EQ(grouped.str(), "1,234,567") << "the host's locale does not group digits";

    KwFileFeatureModule header;
    KwFileIndexModule index;
    KwLayerFeatureModule layer;
    KwPageFeatureModule page;
    header.appVersion = layer.layerBitmapSite = 1234567;
    index.vecModuleIndex = {{"PAGE1", 1234567}};
    std::vector<ModuleItem> headerItems, indexItems, other, pages, layerItems;
    header.produceVecMI(headerItems);
    index.produceVecMI(indexItems);
    index.assortVecMIByKEY(other, other, pages, other, other, other, other, other, other);
    layer.produceVecMIForLayerFeature(layerItems);
    EXPECT_EQ(valueOf(headerItems, "APP_VERSION") + valueOf(indexItems, "PAGE1") + valueOf(pages, "PAGE1") +
                  valueOf(layerItems, "LAYERBITMAP"), "1234567123456712345671234567");

    std::vector<ModuleItem> items = {{"APP_VERSION", "1,234,567"}, {"LAYERPATH", "1,234,567"},
                                     {"MAINLAYER", "1,234,567"}}, indexItem = {{"PAGE1", "1,234,567"}};
    header.setInfoOfModuleFile(items);
    PageFeatureReadFlag flags;
    flags.mainLayer = true;
    const int results = layer.setInfoOfLayerFeature(items, "") | page.setInfoOfPageFeature(items, "", flags);
    index.setInfoOfModuleIndex(indexItem);
    std::locale::global(previous);
    EXPECT_EQ(std::make_tuple(results, header.appVersion, layer.layerPathSite, page.mainLayerSite,
                              index.vecModuleIndex[0].site), std::make_tuple(0, 1ul, 1ul, 1, 1));
}

}  // namespace
