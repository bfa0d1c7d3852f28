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

    int setInfoOfLayerFeature(std::vector<ModuleItem>& items, std::string path);
    int fetchCompressedData(char* pixels, unsigned long& length);
    int setCompressedData(char* pixels, unsigned long length);
    void changeDataSiteForPageFeature(unsigned long bitmapSite, unsigned long pathSite,
                                      unsigned long vectorGraphSite, unsigned long recognSite);
    void produceVecMIForLayerFeature(std::vector<ModuleItem>& items);
};

#endif
