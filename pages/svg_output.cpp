#include "svg_output.h"

#include <cstdio>

#include "output_file.h"
#include "page_tracer.h"
#include "palette.h"
#include "png_output.h"

namespace notetool {

namespace {

std::string hexColour(uint32_t argb) {
    char text[8];
    std::snprintf(text, sizeof text, "#%06x", argb & 0xFFFFFFu);
    return text;
}

std::string base64(const std::string& bytes) {
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t left = bytes.size() - i;
        uint32_t group = uint32_t(uint8_t(bytes[i])) << 16;
        if (left > 1) group |= uint32_t(uint8_t(bytes[i + 1])) << 8;
        if (left > 2) group |= uint8_t(bytes[i + 2]);
        for (int k = 0; k < 4; ++k) out += k <= int(left) ? kDigits[group >> (18 - 6 * k) & 0x3F] : '=';
    }
    return out;
}

class SvgWriter : public PageFileWriter {
public:
    SvgWriter(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info)
        : PageFileWriter(file), options_(options), info_(info) {}

    EncodedPage encodePage(const uint8_t* pixels) const override {
        const std::string width = std::to_string(kPageWidth), height = std::to_string(kPageHeight);
        std::string svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"" +
                          millimetres(kPageWidth) + "\" height=\"" + millimetres(kPageHeight) + "\" viewBox=\"0 0 " + width +
                          " " + height + "\">\n";
        if (options_.raster) {
            // The page's own PNG at one pixel a unit; what paper there is, it holds.
            DrawingOptions png = options_;
            png.scale = 1;
            const std::string image = encodePng(pixels, png, info_);
            svg += "<image width=\"" + width + "\" height=\"" + height +
                   "\" style=\"image-rendering:pixelated\" xlink:href=\"data:image/png;base64," + base64(image) + "\"/>\n";
        } else {
            if (!options_.transparent)
                svg += "<rect width=\"" + width + "\" height=\"" + height + "\" fill=\"" + hexColour(kPaper) + "\"/>\n";
            // Outlines are in whole units of a fraction of a pixel.
            char scale[32];
            std::snprintf(scale, sizeof scale, "%g", 1.0 / kOutlineUnitsPerPixel);
            svg += "<g transform=\"scale(" + std::string(scale) + ")\">\n";
            for (const ColourOutlines& colour : tracePage(pixels, !options_.transparent, PathSyntax::Svg))
                svg += "<path fill=\"" + hexColour(colour.argb) + "\" d=\"" + colour.path + "\"/>\n";
            svg += "</g>\n";
        }
        return {svg + "</svg>\n", {}};
    }

private:
    std::string millimetres(int pixels) const {
        char text[32];
        std::snprintf(text, sizeof text, "%.2fmm", pagePoints(pixels, info_.dpi, options_.scale) * 25.4 / 72);
        return text;
    }

    DrawingOptions options_;
    DocumentInfo info_;
};

}  // namespace

std::unique_ptr<PageWriter> openSvg(OutputFile& file, const DrawingOptions& options, const DocumentInfo& info) {
    return std::make_unique<SvgWriter>(file, options, info);
}

}  // namespace notetool
