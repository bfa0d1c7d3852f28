#include "page_scaling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "palette.h"

namespace notetool {

int scaledLength(int pixels, double scale) { return std::max(1, static_cast<int>(std::lround(pixels * scale))); }

double fitScale(int width, int height) {
    return std::min({1.0, double(width) / kPageWidth, double(height) / kPageHeight});
}

void putGrey(std::string& rows, unsigned grey, unsigned alpha, bool withAlpha) {
    rows += static_cast<char>(grey);
    if (withAlpha) rows += static_cast<char>(alpha);
}

// ---- Reductions: each pixel the mean of the page pixels it covers ----

// The page is read once, a band of rows for each row of the image, and nothing of its size is
// made: scaling a full-size colour copy costs many times what averaging does, and a reduction
// (a thumbnail, a preview) is where speed matters most. Blocks have their edges on whole page
// pixels, so they differ in size by one pixel at most.
std::string reducedRows(const uint8_t* pixels, int width, int height, bool transparent) {
    std::array<uint32_t, 256> greyTimesAlpha{};  // so that a clear pixel adds no colour to the mean
    std::array<uint32_t, 256> alphaOf{};
    for (int value = 0; value < 256; ++value) {
        const uint32_t colour = pixelColour(static_cast<uint8_t>(value), transparent);
        alphaOf[std::size_t(value)] = colour >> 24;
        // All page colours are grey, so red stands for all.
        greyTimesAlpha[std::size_t(value)] = ((colour >> 16) & 0xFF) * (colour >> 24);
    }
    std::vector<int> blockLeft;  // page column where each block starts, and the page width last
    for (int x = 0; x <= width; ++x) blockLeft.push_back(static_cast<int>(int64_t(x) * kPageWidth / width));

    std::string rows;
    rows.reserve(std::size_t(height) * (1 + std::size_t(width) * (transparent ? 2 : 1)));
    for (int y = 0; y < height; ++y) {
        const int top = static_cast<int>(int64_t(y) * kPageHeight / height);
        const int bottom = static_cast<int>(int64_t(y + 1) * kPageHeight / height);
        rows += '\0';
        for (int x = 0; x < width; ++x) {
            const int left = blockLeft[std::size_t(x)];
            const int right = blockLeft[std::size_t(x) + 1];
            uint64_t colour = 0;
            uint64_t alpha = 0;
            for (int pageY = top; pageY < bottom; ++pageY) {
                const uint8_t* in = pixels + std::size_t(pageY) * kPageWidth;
                for (int pageX = left; pageX < right; ++pageX) {
                    colour += greyTimesAlpha[in[pageX]];
                    alpha += alphaOf[in[pageX]];
                }
            }
            const uint64_t count = uint64_t(bottom - top) * uint64_t(right - left);
            const auto grey = static_cast<unsigned>(alpha == 0 ? 0 : (colour + alpha / 2) / alpha);
            putGrey(rows, grey, static_cast<unsigned>((alpha + count / 2) / count), transparent);
        }
    }
    return rows;
}

// ---- Enlargements by whole numbers: each page pixel a block ----

std::string repeatedRows(const uint8_t* pixels, int factor, bool transparent) {
    const int width = kPageWidth * factor;
    std::string rows;
    rows.reserve(std::size_t(kPageHeight) * factor * (1 + std::size_t(width) * (transparent ? 2 : 1)));
    std::string row;
    for (int y = 0; y < kPageHeight; ++y) {
        row.assign(1, '\0');
        const uint8_t* in = pixels + std::size_t(y) * kPageWidth;
        for (int x = 0; x < kPageWidth; ++x) {
            const uint32_t colour = pixelColour(in[x], transparent);
            for (int copy = 0; copy < factor; ++copy) putGrey(row, (colour >> 16) & 0xFF, colour >> 24, transparent);
        }
        for (int copy = 0; copy < factor; ++copy) rows += row;
    }
    return rows;
}

}  // namespace notetool
