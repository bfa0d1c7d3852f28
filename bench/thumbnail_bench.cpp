// The thumbnail `notetool thumbnail` draws, of the first page of the note of full
// handwritten pages: the page composited from its layers, then reduced to fit 256 x 256 and
// written as PNG (to /dev/null, so that no disk is timed). A file manager runs this once for
// every note a folder shows.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "inputs.h"
#include "output_file.h"
#include "palette.h"
#include "png_output.h"

namespace {

using namespace notetool;

// The thumbnailer's default size, as its scale of the page.
const double kThumbnailScale = 256.0 / std::max(kPageWidth, kPageHeight);

void compose(benchmark::State& state) {
    const std::string& note = bench::handwrittenNote();
    std::vector<uint8_t> pixels(kPagePixels);
    bench::QuietStdout quiet;
    for (auto _ : state) {
        composePage(note, 1, LayerSelection{}, false, pixels.data());
        benchmark::DoNotOptimize(pixels.data());
    }
}
BENCHMARK(compose)->Name("thumbnail/compose");

void write(benchmark::State& state) {
    std::vector<uint8_t> pixels(kPagePixels);
    {
        bench::QuietStdout quiet;
        composePage(bench::handwrittenNote(), 1, LayerSelection{}, false, pixels.data());
    }
    DrawingOptions options;
    options.scale = kThumbnailScale;
    const DocumentInfo info;
    for (auto _ : state) {
        OutputFile file("/dev/null");
        openPng(file, options, info)->addPage(pixels.data());
        file.commit();
    }
}
BENCHMARK(write)->Name("thumbnail/write_png");

}  // namespace
