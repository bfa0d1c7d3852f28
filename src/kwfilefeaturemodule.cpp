#include "kwfilefeaturemodule.h"

#include <string>

#include "textstream.h"

namespace {

using textstream::ClassicStream;
using textstream::decimalWord;

// Appends a value to the call's shared stream and extracts the next number or word from it.
// The stream is never emptied, so whatever an earlier value left unread is read first; a
// failed extraction only fails this item, because the error state is cleared before each use.
template <class Field>
void extractShared(ClassicStream& stream, const std::string& value, Field& field) {
    stream.clear();
    stream << value;
    stream >> field;
}

}  // namespace

// The style checksum defaults to "0" while every other text defaults to "none"; a header
// produced from a fresh module carries exactly these values, so the asymmetry is kept.
KwFileFeatureModule::KwFileFeatureModule()
    : moduleLabel("none"),
      fileType("none"),
      applyEquipment("none"),
      finalOperationPage(0),
      finalOperationLayer("none"),
      originalStyle("none"),
      originalStyleMd5("0"),
      deviceDpi("none"),
      softDpi("none"),
      fileParseType(0),
      etmd("none"),
      appVersion(0),
      fileId("none"),
      fileRecognType(0),
      fileRecognLanguage("none") {}

// Keys are compared in the order of the fields; unknown keys are skipped, and a repeated
// key overwrites the earlier one. The misspelt "APP_VERTION" is accepted as a full alias of
// "APP_VERSION" on reading only; produceVecMI never writes it.
void KwFileFeatureModule::setInfoOfModuleFile(std::vector<ModuleItem>& items) {
    ClassicStream stream;
    for (const ModuleItem& item : items) {
        const std::string& key = item.key;
        const std::string& value = item.value;
        if (key == "MODULE_LABEL") moduleLabel = value;
        else if (key == "FILE_TYPE") fileType = value;
        else if (key == "APPLY_EQUIPMENT") applyEquipment = value;
        else if (key == "FINALOPERATION_PAGE") extractShared(stream, value, finalOperationPage);
        else if (key == "FINALOPERATION_LAYER") extractShared(stream, value, finalOperationLayer);
        else if (key == "ORIGINAL_STYLE") originalStyle = value;
        else if (key == "ORIGINAL_STYLEMD5") originalStyleMd5 = value;
        else if (key == "DEVICE_DPI") deviceDpi = value;
        else if (key == "SOFT_DPI") softDpi = value;
        else if (key == "FILE_PARSE_TYPE") extractShared(stream, value, fileParseType);
        else if (key == "MORVA_ETMD") etmd = value;
        else if (key == "APP_VERSION" || key == "APP_VERTION") extractShared(stream, value, appVersion);
        else if (key == "FILE_ID") fileId = value;
        else if (key == "FILE_RECOGN_TYPE") extractShared(stream, value, fileRecognType);
        else if (key == "FILE_RECOGN_LANGUAGE") fileRecognLanguage = value;
    }
}

// Always all fifteen items in field order; the version goes out under "APP_VERSION" only.
void KwFileFeatureModule::produceVecMI(std::vector<ModuleItem>& items) {
    std::vector<ModuleItem>().swap(items);
    ClassicStream stream;
    items.reserve(15);
    items.push_back({"MODULE_LABEL", moduleLabel});
    items.push_back({"FILE_TYPE", fileType});
    items.push_back({"APPLY_EQUIPMENT", applyEquipment});
    items.push_back({"FINALOPERATION_PAGE", decimalWord(stream, finalOperationPage)});
    items.push_back({"FINALOPERATION_LAYER", finalOperationLayer});
    items.push_back({"ORIGINAL_STYLE", originalStyle});
    items.push_back({"ORIGINAL_STYLEMD5", originalStyleMd5});
    items.push_back({"DEVICE_DPI", deviceDpi});
    items.push_back({"SOFT_DPI", softDpi});
    items.push_back({"FILE_PARSE_TYPE", decimalWord(stream, fileParseType)});
    items.push_back({"MORVA_ETMD", etmd});
    items.push_back({"APP_VERSION", decimalWord(stream, appVersion)});
    items.push_back({"FILE_ID", fileId});
    items.push_back({"FILE_RECOGN_TYPE", decimalWord(stream, fileRecognType)});
    items.push_back({"FILE_RECOGN_LANGUAGE", fileRecognLanguage});
}
