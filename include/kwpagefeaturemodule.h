#ifndef LIBNOTE_KWPAGEFEATUREMODULE_H
#define LIBNOTE_KWPAGEFEATUREMODULE_H

#include <string>
#include <type_traits>
#include <vector>

#include "config.h"
#include "libnote_export.h"
#include "trailContainer.h"

// One five-star mark of a page: eleven numbers carried unchanged.
struct fiveStarDB {
    int values[11];
};

// Which keys of a page block are taken; flag i is byte i of the record.
struct PageFeatureReadFlag {
    bool pageStyle = false;
    bool pageStyleMd5 = false;
    bool mainLayer = false;
    bool layer1 = false;
    bool layer2 = false;
    bool layer3 = false;
    bool bgLayer = false;
    bool totalPath = false;
    bool totalPathHead = false;
    bool totalPathTrails = false;
    bool fiveStar = false;
    bool layerInfo = false;
    bool layerSeq = false;
    bool thumbnailType = false;
    bool recognStatus = false;
    bool recognText = false;
    bool recognFile = false;
    bool pageId = false;
    bool recognType = false;
    bool recognFileStatus = false;
    bool recognLanguage = false;
};
// Hosts may address the flags by position.
static_assert(sizeof(PageFeatureReadFlag) == 21 && std::is_standard_layout<PageFeatureReadFlag>::value,
              "PageFeatureReadFlag holds flag i in byte i");

// What one page's metadata block says, and its strokes when asked for.
class LIBNOTE_API KwPageFeatureModule {
public:
    KwPageFeatureModule();

    std::string pageStyle;
    std::string pageStyleMd5;
    std::string layerInfo;
    std::string layerSeq;
    int mainLayerSite;
    int layer1Site;
    int layer2Site;
    int layer3Site;
    int bgLayerSite;
    int totalPathSite;
    int thumbnailType;
    int recognStatus;
    int recognText;
    int recognFile;
    std::string pageId;
    int recognType;
    int recognFileStatus;
    std::string recognLanguage;
    std::vector<TrailContainer> trails;
    unsigned long trailCount;
    std::vector<fiveStarDB> fiveStars;
    unsigned long totalPathLength;

    // setInfoOfPageFeature():
    //   Takes the keys of items that flags select, in the items' order; numbers are read
    //   as a stream reads an int (0 without a leading number). With totalPath and
    //   totalPathHead or totalPathTrails, a non-zero TOTALPATH site reads the stroke block
    //   from the file at path: its total length and stroke count, and with totalPathTrails
    //   each record (see data2Trail). Five-star marks are kept when they hold exactly eleven
    //   comma-separated numbers.
    //   @return 0; or, for the stroke block, stopping there with what was taken so far: 1
    //   (cannot open), 38 (a seek), 17 (the site reaches past the file's end: "totalpath
    //   site error."; a short read: "read totalpath length error-----errno:<n>", "read
    //   totalpath trailsize error-----errno:<n>", "read trail len error-----errno:<n>",
    //   "read trail data error-----errno:<n>,errmsg:<text>", a record longer than the file
    //   included; or a record data2Trail refuses: "data2Trail error.") or 25 (closing).
    //   @throws std::invalid_argument or std::out_of_range from "stoi" for a five-star
    //   piece that is not a number, std::length_error for a stroke record with a negative
    //   section count. The file is closed first.
    int setInfoOfPageFeature(std::vector<ModuleItem>& items, std::string path, PageFeatureReadFlag& flags);
};

#endif
