#include "kwlayerfeaturemodule.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "log.h"
#include "noteio.h"
#include "picture.h"
#include "status.h"
#include "textstream.h"

namespace {

// Read as a formatted stream extraction reads an unsigned 64-bit number; 0 without a
// leading number.
unsigned long toSite(const std::string& value) { return textstream::firstOf<unsigned long>(value); }

// A zeroed buffer, or null when there is no room: the callers report that themselves.
std::unique_ptr<char[]> allocateZeroed(unsigned long size) {
    return std::unique_ptr<char[]>(new (std::nothrow) char[size]());
}

// The compressed bitmap at `site`: a 4-byte length, then that many bytes of code.
int readCompressedData(FILE* fp, KwLayerFeatureModule& layer, unsigned long site) {
    unsigned long size = 0;
    if (!noteio::fileSize(fp, size, noteio::Detail::Number)) return status::SeekFailed;
    // Unsigned arithmetic, as in the block reader: the last four sites wrap past this check
    // and fail at the seek.
    if (site + 4 > size) {
        kwlog::text("compress data m_siteCompressData error.");
        kwlog::text("fileSize:");
        kwlog::unsignedNumber(size);
        kwlog::text("m_siteCompressData:");
        kwlog::unsignedNumber(site);
        return status::SiteOutsideFile;
    }
    if (!noteio::seekTo(fp, site, noteio::Detail::Number)) return status::SeekFailed;
    uint32_t length = 0;
    if (std::fread(&length, 4, 1, fp) != 1) {
        kwlog::errnoOnly("compress data len read file failed-----errno:", errno);
        return status::ReadFailed;
    }
    layer.m_lenCompressData = length;
    // The length field itself is not counted here, so a bitmap may overrun the file by up
    // to 4 bytes and fail at the read instead.
    if (size < site + length) {
        kwlog::text("compress data m_siteCompressData error.");
        kwlog::text(" fileSize:");
        kwlog::unsignedNumber(size);
        kwlog::text(" m_lenCompressData:");
        kwlog::unsignedNumber(length);
        kwlog::text(" m_siteCompressData:");
        kwlog::unsignedNumber(site);
        return status::SiteOutsideFile;
    }
    layer.m_compressData.reset();
    // The spare zero byte lets the decoder read one byte past an odd-length code.
    layer.m_compressData = allocateZeroed(length + 1UL);
    if (!layer.m_compressData) {
        kwlog::text("malloc failed.");
        return status::AllocationFailed;
    }
    if (std::fread(layer.m_compressData.get(), 1, length, fp) != length) {
        kwlog::errnoOnly("compress data read file failed-----errno:", errno);
        return status::ReadFailed;
    }
    return status::Ok;
}

// Opens the note file for one bitmap and closes it again on every way out.
int loadCompressedData(KwLayerFeatureModule& layer, const std::string& path, unsigned long site) {
    noteio::Stream in(path, noteio::Detail::Number);
    if (!in) return status::OpenFailed;
    int result = readCompressedData(in.get(), layer, site);
    if (!in.close()) result = status::CloseFailed;
    return result;
}

}  // namespace

KwLayerFeatureModule::KwLayerFeatureModule()
    : layerType("none"),
      layerProtocol("none"),
      layerName("none"),
      layerPathSite(0),
      layerBitmapSite(0),
      layerVectorGraphSite(0),
      layerRecognSite(0),
      m_siteCompressData(0),
      m_lenCompressData(0) {}

KwLayerFeatureModule::KwLayerFeatureModule(const KwLayerFeatureModule& other)
    : layerType(other.layerType),
      layerProtocol(other.layerProtocol),
      layerName(other.layerName),
      layerPathSite(other.layerPathSite),
      layerBitmapSite(other.layerBitmapSite),
      layerVectorGraphSite(other.layerVectorGraphSite),
      layerRecognSite(other.layerRecognSite),
      m_siteCompressData(other.m_siteCompressData),
      m_lenCompressData(other.m_lenCompressData) {
    if (other.m_compressData) {
        m_compressData.reset(new char[m_lenCompressData + 1]);
        std::memcpy(m_compressData.get(), other.m_compressData.get(), m_lenCompressData + 1);
    }
}

KwLayerFeatureModule& KwLayerFeatureModule::operator=(const KwLayerFeatureModule& other) {
    if (this != &other) *this = KwLayerFeatureModule(other);
    return *this;
}

int KwLayerFeatureModule::setInfoOfLayerFeature(std::vector<ModuleItem>& items, std::string path) {
    for (const ModuleItem& item : items) {
        const std::string& key = item.key;
        if (key == "LAYERTYPE") {
            layerType = item.value;
        } else if (key == "LAYERPROTOCOL") {
            layerProtocol = item.value;
        } else if (key == "LAYERNAME") {
            layerName = item.value;
        } else if (key == "LAYERPATH") {
            layerPathSite = toSite(item.value);
        } else if (key == "LAYERBITMAP") {
            layerBitmapSite = toSite(item.value);
            m_siteCompressData = layerBitmapSite;
            if (m_siteCompressData != 0) {
                const int result = loadCompressedData(*this, path, m_siteCompressData);
                if (result != status::Ok) return result;
            }
        } else if (key == "LAYERVECTORGRAPH") {
            layerVectorGraphSite = toSite(item.value);
        } else if (key == "LAYERRECOGN") {
            layerRecognSite = toSite(item.value);
        }
    }
    return status::Ok;
}

int KwLayerFeatureModule::fetchCompressedData(char* pixels, unsigned long& /*length*/) {
    kwlog::line("fetchCompressedData");
    // The buffer is deliberately not cleared: where the bitmap is transparent the caller's
    // own content stays.
    kwlog::line("fetchCompressedData memset");
    if (!m_compressData || m_siteCompressData == 0) return status::Ok;
    if (uncompresseDataByRLE(pixels, 0, m_compressData.get(), m_lenCompressData)) return status::Ok;
    kwlog::text(" uncompress error");
    return status::BitmapNotExpanded;
}

int KwLayerFeatureModule::setCompressedData(char* pixels, unsigned long length) {
    if (length != noteformat::kPictureSize) {
        kwlog::text("compress data size is not 1872*1404");
        return status::BitmapSizeWrong;
    }
    // Room for the worst case, two bytes a pixel, and the spare byte.
    std::unique_ptr<char[]> scratch(new (std::nothrow) char[2 * noteformat::kPictureSize + 1]);
    if (!scratch) {
        kwlog::text(" malloc failed");
        return status::AllocationFailed;
    }
    if (!compresseDataByRLE(pixels, noteformat::kPictureSize, reinterpret_cast<unsigned char*>(scratch.get()),
                            m_lenCompressData)) {
        kwlog::text("uncompress error.");
        return status::BitmapNotCompressed;
    }
    m_compressData.reset();
    m_compressData = allocateZeroed(m_lenCompressData + 1);
    if (!m_compressData) {
        kwlog::text(" malloc failed");
        return status::AllocationFailed;
    }
    std::memcpy(m_compressData.get(), scratch.get(), m_lenCompressData);
    return status::Ok;
}

void KwLayerFeatureModule::changeDataSiteForPageFeature(unsigned long bitmapSite, unsigned long pathSite,
                                                        unsigned long vectorGraphSite,
                                                        unsigned long recognSite) {
    // 0 means "keep": a host changes only the sites it has moved.
    if (bitmapSite != 0) layerBitmapSite = bitmapSite;
    if (pathSite != 0) layerPathSite = pathSite;
    if (vectorGraphSite != 0) layerVectorGraphSite = vectorGraphSite;
    if (recognSite != 0) layerRecognSite = recognSite;
}

void KwLayerFeatureModule::produceVecMIForLayerFeature(std::vector<ModuleItem>& items) {
    std::vector<ModuleItem>().swap(items);
    // One stream for every conversion of the call, never emptied: what the name leaves
    // unread after its first word is read ahead of the first number.
    textstream::ClassicStream stream;
    std::string name;
    stream.clear();
    stream << layerName;
    stream >> name;

    const unsigned long sites[] = {layerPathSite, layerBitmapSite, layerVectorGraphSite, layerRecognSite};
    std::string siteTexts[4];
    for (int i = 0; i < 4; ++i) siteTexts[i] = textstream::decimalWord(stream, sites[i]);

    items.push_back({"LAYERTYPE", layerType});
    items.push_back({"LAYERPROTOCOL", layerProtocol});
    items.push_back({"LAYERNAME", name});
    items.push_back({"LAYERPATH", siteTexts[0]});
    items.push_back({"LAYERBITMAP", siteTexts[1]});
    items.push_back({"LAYERVECTORGRAPH", siteTexts[2]});
    items.push_back({"LAYERRECOGN", siteTexts[3]});
}
