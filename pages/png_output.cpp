#include "png_output.h"

#include <libdeflate.h>

#include <cmath>
#include <memory>

#include "output_file.h"
#include "palette.h"
#include "page_scaling.h"
#include "scaled_page.h"
#include "palette_picture.h"
#include "tool_error.h"

namespace notetool {

namespace {

constexpr char kSignature[] = "\x89PNG\r\n\x1a\n";
constexpr uint8_t kGrey = 0, kPaletteColour = 3, kGreyAlpha = 4;  // PNG's colour types

void appendBigEndian(std::string& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift);
}

// A PNG chunk: its length, type, data and the CRC of type and data.
void appendChunk(std::string& out, const char (&type)[5], const std::string& data) {
    appendBigEndian(out, static_cast<uint32_t>(data.size()));
    const std::size_t typeAt = out.size();
    out.append(type, 4);
    out += data;
    appendBigEndian(out, libdeflate_crc32(0, out.data() + typeAt, out.size() - typeAt));
}

struct ImageHeader {
    int width;
    int height;
    uint8_t bitDepth;
    uint8_t colourType;
    uint32_t pixelsPerMetre;  // on paper, for pHYs
};

// The whole file around image data compressed as palette_picture.h lays it out. The data is
// written as it comes, whatever its compressor: libpng compresses only what it filters
// itself, and a page is compressed once for PNG and PDF alike.
std::string pngFile(const ImageHeader& header, const Palette* palette, const DocumentInfo& info,
                    const std::string& imageData) {
    std::string out(kSignature, sizeof kSignature - 1);
    std::string ihdr;
    appendBigEndian(ihdr, static_cast<uint32_t>(header.width));
    appendBigEndian(ihdr, static_cast<uint32_t>(header.height));
    ihdr += {static_cast<char>(header.bitDepth), static_cast<char>(header.colourType), 0, 0, 0};  // deflate, no interlace
    appendChunk(out, "IHDR", ihdr);
    std::string phys;
    appendBigEndian(phys, header.pixelsPerMetre);
    appendBigEndian(phys, header.pixelsPerMetre);
    phys += '\1';  // per metre
    appendChunk(out, "pHYs", phys);
    // Before the image data, where readers that stop at the pixels (thumbnail caches) look.
    for (const auto& [key, text] : info.attributes) appendChunk(out, "tEXt", key + '\0' + text);
    if (palette) {
        std::string plte, trns;
        for (uint32_t colour : palette->colours) {
            plte += {static_cast<char>(colour >> 16), static_cast<char>(colour >> 8), static_cast<char>(colour)};
            trns += static_cast<char>(colour >> 24);
        }
        appendChunk(out, "PLTE", plte);
        // tRNS may stop at the last entry that is not opaque, and is left out when all are.
        trns.erase(trns.find_last_not_of('\xFF') + 1);
        if (!trns.empty()) appendChunk(out, "tRNS", trns);
    }
    appendChunk(out, "IDAT", imageData);
    appendChunk(out, "IEND", "");
    return out;
}

class PngWriter : public PageFileWriter {
public:
    PngWriter(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info)
        : PageFileWriter(file), options_(options), info_(info) {}

    EncodedPage encodePage(const uint8_t* pixels) const override { return {encodePng(pixels, options_, info_), {}}; }

private:
    DrawingOptions options_;
    DocumentInfo info_;
};

}  // namespace

std::unique_ptr<PageWriter> openPng(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info) {
    return std::make_unique<PngWriter>(file, options, info);
}

std::string encodePng(const uint8_t* pixels, const DrawingOptions& options, const DocumentInfo& info) {
    const auto pixelsPerMetre = static_cast<uint32_t>(std::lround(info.dpi * options.scale / 0.0254));
    const double whole = std::round(options.scale);
    if (whole >= 1 && std::fabs(options.scale - whole) < 1e-9) {
        const Palette palette = pagePalette(pixels, options.transparent);
        const PalettePicture picture = compressPicture(pixels, static_cast<int>(whole), palette);
        return pngFile({picture.width, picture.height, static_cast<uint8_t>(palette.bitDepth), kPaletteColour, pixelsPerMetre},
                       &palette, info, picture.data);
    }
    const int width = scaledLength(kPageWidth, options.scale);
    const int height = scaledLength(kPageHeight, options.scale);
    const std::string rows = scaledGreyRows(pixels, width, height, options.transparent);
    return pngFile({width, height, 8, options.transparent ? kGreyAlpha : kGrey, pixelsPerMetre}, nullptr, info,
                   compressZlib(rows.data(), rows.size()));
}

}  // namespace notetool
