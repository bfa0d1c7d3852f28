// What KDE's plugins do for each picture they hand over, on the first page of the note of
// full handwritten pages: Okular's generator composes the page and draws it at the size the
// page view asks for; Dolphin's thumbnailer composes it and fits it in the thumbnail's size.
// Okular at 100 % shows a page at its size on paper in screen pixels: 1404 page pixels at
// 226 dpi on a 96-dpi screen are 596 pixels. The page's own 1404 x 1872 pixels and the
// thumbnail sizes Dolphin asks for are measured beside it.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "document_info.h"
#include "inputs.h"
#include "page_image.h"
#include "page_reader.h"
#include "page_scaling.h"
#include "palette.h"

namespace {

using namespace notetool;

constexpr double kScreenDpi = 96;

QImage drawPage(int width, int height) {
    std::vector<uint8_t> pixels(kPagePixels);
    composePage(bench::handwrittenNote(), 1, LayerSelection{}, false, pixels.data());
    return pageImage(pixels.data(), width, height);
}

void okularPage(benchmark::State& state) {
    const double scale = state.range(0) == 0 ? kScreenDpi / kDefaultDpi : 1.0;
    const int width = scaledLength(kPageWidth, scale), height = scaledLength(kPageHeight, scale);
    bench::QuietStdout quiet;
    for (auto _ : state) benchmark::DoNotOptimize(drawPage(width, height));
    state.SetLabel(std::to_string(width) + "x" + std::to_string(height));
}
BENCHMARK(okularPage)->Name("okular/page")->ArgName("full")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void kioThumbnail(benchmark::State& state) {
    const double scale = fitScale(int(state.range(0)), int(state.range(0)));
    bench::QuietStdout quiet;
    for (auto _ : state)
        benchmark::DoNotOptimize(drawPage(scaledLength(kPageWidth, scale), scaledLength(kPageHeight, scale)));
}
BENCHMARK(kioThumbnail)->Name("kio/thumbnail")->ArgName("size")->Arg(128)->Arg(256)->Unit(benchmark::kMillisecond);

}  // namespace
