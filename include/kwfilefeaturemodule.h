#ifndef LIBNOTE_KWFILEFEATUREMODULE_H
#define LIBNOTE_KWFILEFEATUREMODULE_H

#include <string>
#include <vector>

#include "config.h"
#include "libnote_export.h"

// The header module of a note: properties of the whole file.
class LIBNOTE_API KwFileFeatureModule {
public:
    KwFileFeatureModule();

    std::string moduleLabel;
    std::string fileType;
    std::string applyEquipment;
    unsigned long finalOperationPage;
    std::string finalOperationLayer;
    std::string originalStyle;
    std::string originalStyleMd5;
    std::string deviceDpi;
    std::string softDpi;
    unsigned long fileParseType;
    std::string etmd;
    unsigned long appVersion;
    std::string fileId;
    unsigned long fileRecognType;
    std::string fileRecognLanguage;

    // setInfoOfModuleFile(): takes the header keys of items (a repeated key overwrites,
    // "APP_VERTION" is read as "APP_VERSION"); an absent key keeps its default. Numbers are
    // read through one text stream shared by the call. Prints nothing.
    void setInfoOfModuleFile(std::vector<ModuleItem>& items);
    // produceVecMI(): replaces items with the fifteen header keys, in file order.
    void produceVecMI(std::vector<ModuleItem>& items);
};

#endif
