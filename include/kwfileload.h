#ifndef LIBNOTE_KWFILELOAD_H
#define LIBNOTE_KWFILELOAD_H

#include <string>

#include "kwfileindexmodule.h"
#include "kwlayerfeaturemodule.h"
#include "kwpagefeaturemodule.h"
#include "libnote_export.h"

// The reader of one note file. Every read opens the file by path and closes it again.
class LIBNOTE_API KwFileLoad {
public:
    KwFileLoad();

    std::string filePath;

    bool init_fileload(std::string path);
    int fetchIndex(KwFileIndexModule& index);
    int fetchPageFeature(KwPageFeatureModule& page, int pageNo, PageFeatureReadFlag& flags);
    int fetchLayerFeature(KwLayerFeatureModule& layer, KwPageFeatureModule& page, std::string sLayer);
};

#endif
