#ifndef LIBNOTE_KWLAYERFEATUREMODULE_H
#define LIBNOTE_KWLAYERFEATUREMODULE_H

#include <memory>
#include <string>
#include <vector>

#include "config.h"
#include "libnote_export.h"

// One layer module of a page, with the layer's run-length coded bitmap once it is read.
class LIBNOTE_API KwLayerFeatureModule {
public:
    KwLayerFeatureModule();
    KwLayerFeatureModule(const KwLayerFeatureModule& other);
    KwLayerFeatureModule& operator=(const KwLayerFeatureModule& other);
    KwLayerFeatureModule(KwLayerFeatureModule&&) noexcept = default;
    KwLayerFeatureModule& operator=(KwLayerFeatureModule&&) noexcept = default;
    ~KwLayerFeatureModule() = default;

    std::string layerType;
    std::string layerProtocol;
    std::string layerName;
    unsigned long layerPathSite;
    unsigned long layerBitmapSite;
    unsigned long layerVectorGraphSite;
    unsigned long layerRecognSite;
    unsigned long m_siteCompressData;
    unsigned long m_lenCompressData;
    // m_lenCompressData + 1 bytes when present; the spare byte is zero for a bitmap read
    // from a file.
    std::unique_ptr<char[]> m_compressData;

    // setInfoOfLayerFeature():
    //   Takes the layer keys of items (LAYERTYPE, LAYERPROTOCOL, LAYERNAME, LAYERPATH,
    //   LAYERBITMAP, LAYERVECTORGRAPH, LAYERRECOGN); sites are read as unsigned numbers. A
    //   non-zero LAYERBITMAP site loads the coded bitmap from the file at path: a 4-byte
    //   length, then the code, kept with a spare zero byte.
    //   @return 0; or, for the bitmap, stopping there: 1 (cannot open), 38 (a seek), 17 (the
    //   site or the length reaches past the file's end: "compress data m_siteCompressData
    //   error." with the sizes; or a short read: "compress data len read file
    //   failed-----errno:<n>", "compress data read file failed-----errno:<n>"), 11 (no memory
    //   for the code: "malloc failed.") or 25 (closing failed).
    int setInfoOfLayerFeature(std::vector<ModuleItem>& items, std::string path);

    // fetchCompressedData():
    //   Expands the bitmap into pixels, which must hold 2628288 bytes; transparent pixels
    //   keep what the caller put there. Without a bitmap, pixels is left untouched. Prints
    //   "fetchCompressedData" and "fetchCompressedData memset", a line each. length is not
    //   used.
    //   @return 0, or 9 when the decoder refuses the code (" uncompress error").
    int fetchCompressedData(char* pixels, unsigned long& length);

    // setCompressedData():
    //   Codes a picture of length bytes, which must be 2628288, as the layer's bitmap
    //   (m_compressData, m_lenCompressData); the sites are not changed.
    //   @return 0, or 7 for another length ("compress data size is not 1872*1404"), 11 when
    //   memory cannot be had (" malloc failed"), 10 when the encoder fails ("uncompress
    //   error.").
    int setCompressedData(char* pixels, unsigned long length);

    // changeDataSiteForPageFeature(): sets each site that is not 0; 0 keeps a site.
    void changeDataSiteForPageFeature(unsigned long bitmapSite, unsigned long pathSite,
                                      unsigned long vectorGraphSite, unsigned long recognSite);

    // produceVecMIForLayerFeature():
    //   Replaces items with the seven layer keys in the order above; LAYERNAME is the first
    //   word of layerName, and the sites are decimal words taken through one text stream,
    //   so what the name leaves after its first word comes before the first site.
    void produceVecMIForLayerFeature(std::vector<ModuleItem>& items);
};

#endif
