// The header module of a note: its defaults, reading from items and producing them back.

#include <climits>
#include <tuple>

#include <gtest/gtest.h>

#include "kwfilefeaturemodule.h"
#include "notefiles.h"

using notewriter::Items;

namespace {

// Every field in declaration order, as one tuple of references to compare or assign.
auto fieldsOf(KwFileFeatureModule& m) {
    return std::tie(m.moduleLabel, m.fileType, m.applyEquipment, m.finalOperationPage, m.finalOperationLayer,
                    m.originalStyle, m.originalStyleMd5, m.deviceDpi, m.softDpi, m.fileParseType, m.etmd,
                    m.appVersion, m.fileId, m.fileRecognType, m.fileRecognLanguage);
}

KwFileFeatureModule readFrom(const Items& pairs) {
    std::vector<ModuleItem> items = notetest::itemsOf(pairs);
    KwFileFeatureModule module;
    module.setInfoOfModuleFile(items);
    return module;
}

Items produced(KwFileFeatureModule module) {
    std::vector<ModuleItem> items{{"old", "1"}};
    module.produceVecMI(items);
    return notetest::pairsOf(items);
}

TEST(FileFeature, DefaultsAliasAndTheProduceReadCycle) {
    EXPECT_EQ(produced(KwFileFeatureModule()),
              (Items{{"MODULE_LABEL", "none"}, {"FILE_TYPE", "none"}, {"APPLY_EQUIPMENT", "none"},
                     {"FINALOPERATION_PAGE", "0"}, {"FINALOPERATION_LAYER", "none"}, {"ORIGINAL_STYLE", "none"},
                     {"ORIGINAL_STYLEMD5", "0"}, {"DEVICE_DPI", "none"}, {"SOFT_DPI", "none"},
                     {"FILE_PARSE_TYPE", "0"}, {"MORVA_ETMD", "none"}, {"APP_VERSION", "0"}, {"FILE_ID", "none"},
                     {"FILE_RECOGN_TYPE", "0"}, {"FILE_RECOGN_LANGUAGE", "none"}}));
    KwFileFeatureModule original;
    fieldsOf(original) = std::make_tuple("label", "note", "A5X", 12ul, "LAYER2", "grid", "d41d8", "226 x 226",
                                         "300", 3ul, "etmd", ULONG_MAX, "F1", 1ul, "en");
    KwFileFeatureModule back = readFrom(produced(original));
    EXPECT_EQ(fieldsOf(back), fieldsOf(original));
    // "APP_VERTION" is an alias on reading only; the two spellings overwrite each other.
    EXPECT_EQ(readFrom({{"APP_VERSION", "2"}, {"APP_VERTION", "1"}}).appVersion, 1u);
}

// Number and layer conversions of one call share a stream that is never emptied: a layer
// name of two words keeps only the first, and the second is read by the next conversion;
// left-over white space is skipped, nothing left keeps the field, text fields are whole.
TEST(FileFeature, ConversionsShareOneStream) {
    EXPECT_EQ(readFrom({{"FINALOPERATION_LAYER", "LAYER1 LAYER2"}, {"FINALOPERATION_LAYER", "LAYER3"}})
                  .finalOperationLayer, "LAYER2LAYER3");
    KwFileFeatureModule twoWords;
    twoWords.finalOperationLayer = "LAYER1 extra";
    twoWords.finalOperationPage = twoWords.fileParseType = twoWords.appVersion = 5;
    KwFileFeatureModule copy = readFrom(produced(twoWords)), kept = readFrom(
        {{"FILE_PARSE_TYPE", "4 "}, {"APP_VERSION", "6"}, {"FILE_PARSE_TYPE", ""}, {"DEVICE_DPI", " 1 2 "}});
    EXPECT_EQ(std::tie(copy.finalOperationPage, copy.finalOperationLayer, copy.fileParseType, copy.appVersion,
                       kept.fileParseType, kept.appVersion, kept.deviceDpi),
              std::make_tuple(5ul, std::string("LAYER1"), 0ul, 0ul, 4ul, 6ul, std::string(" 1 2 ")));
}

}  // namespace
