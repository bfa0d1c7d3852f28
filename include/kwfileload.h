#ifndef LIBNOTE_KWFILELOAD_H
#define LIBNOTE_KWFILELOAD_H

#include <string>

#include "kwfileindexmodule.h"
#include "kwlayerfeaturemodule.h"
#include "kwpagefeaturemodule.h"
#include "libnote_export.h"

// The reader of one note file. Every read opens the file by path ("rb") and closes it again
// before it returns, on every way out; nothing stays open between calls. A failed open
// prints "open file failed-----errno:<n>,errmsg:<text>" (the layer reader: the number alone).
//
// Status codes (0 is success):
//   1  the file cannot be opened            14  the index cannot be read
//   3  the footer marker is not "tail"      17  a read failed, or a block, site or name is bad
//   6  the page is not in the index         25  closing the file failed ("fclose error.")
//  34  the layer module cannot be filled    38  a seek failed ("fseek failed-----errno:...")
class LIBNOTE_API KwFileLoad {
public:
    KwFileLoad();

    std::string filePath;

    // init_fileload(): binds the reader to path, without looking at the file.
    // @return false for an empty path ("init_fileload error."), true otherwise.
    bool init_fileload(std::string path);

    // fetchIndex():
    //   Reads the index: the tag at offset 4, then the index site, which is the 4 bytes
    //   before the end of the file, or, in a file with our tag, the 4 bytes after the
    //   "tail" marker 8 bytes before the end. index receives its entries.
    //   @return 0, 1, 38, 3 ("file trail str error"), 17 (a short read: "read file tail
    //   failed-----errno:...", "site read file failed-----errno:..."; or the block:
    //   "readModuleItemFromFile error.") or 25.
    int fetchIndex(KwFileIndexModule& index);

    // fetchPageFeature():
    //   Reads the index again, then the first "PAGE<pageNo>" module (printing "page moudle
    //   much more:<n>" when there are several) into page, taking only the keys flags select
    //   (with totalPathHead or totalPathTrails, the stroke block too).
    //   @return 0, 14 (after "fetchIndex error."), 6 ("page moudle not exist:0"), 1, 17 (the
    //   block: "readModuleItemFromFile error"; or the page module failed:
    //   "setInfoOfPageFeature error") or 25.
    //   @throws what setInfoOfPageFeature throws; the file is closed first.
    int fetchPageFeature(KwPageFeatureModule& page, int pageNo, PageFeatureReadFlag& flags);

    // fetchLayerFeature():
    //   Prints "fetchLayerFeature" and a line end, then reads the module of layer sLayer
    //   ("MAINLAYER", "LAYER1", "LAYER2", "LAYER3" or "BGLAYER", compared whole) from the
    //   site page holds for it into layer, bitmap included.
    //   @return 0, with "fetchLayerFeature  ok" and a line end; 0 with layer untouched when
    //   page has no such layer (site 0); 17 for another name ("Unknown Layer Name.Please
    //   check para sLayer first. sLayer:<name>") or a bad block ("readModuleItemFromFile
    //   error"); 1; 34 when the layer's bitmap cannot be read ("setInfoOfLayerFeature
    //   error"); 25.
    int fetchLayerFeature(KwLayerFeatureModule& layer, KwPageFeatureModule& page, std::string sLayer);
};

#endif
