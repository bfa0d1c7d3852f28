// The Document Viewer's backend on the note of 60 full handwritten pages, as the viewer asks
// for it: the note opened, the first page drawn at 100 % zoom on a 96 dpi screen (what the
// viewer shows first), that page drawn again (any page later), and the Layers panel's list.
// Targets: a page at 100 % in 10 ms of CPU, the first page on screen 50 ms after the load.

#include <benchmark/benchmark.h>

#include <cmath>
#include <set>
#include <string>

#include "inputs.h"
#include "viewed_note.h"

namespace {

using notebackend::ViewedNote;

// The viewer's 100 %: a point of the page is a 72nd of an inch on a 96 dpi screen.
constexpr double kScreenDpi = 96;

void drawAtFullZoom(const ViewedNote& note, int index) {
    const int width = static_cast<int>(std::lround(note.widthPoints() * kScreenDpi / 72));
    const int height = static_cast<int>(std::lround(note.heightPoints() * kScreenDpi / 72));
    const notebackend::Surface page = note.draw(index, width, height, 0, {});
    benchmark::DoNotOptimize(page.get());
}

void load(benchmark::State& state) {
    bench::QuietStdout quiet;
    for (auto _ : state) {
        const ViewedNote note(bench::handwrittenNote());
        benchmark::DoNotOptimize(note.pageCount());
    }
}
BENCHMARK(load)->Name("evince/load_60_pages")->Unit(benchmark::kMillisecond);

// The note is loaded afresh for every page, so that nothing the load read is warm twice.
void firstPage(benchmark::State& state) {
    bench::QuietStdout quiet;
    for (auto _ : state) {
        state.PauseTiming();
        const ViewedNote note(bench::handwrittenNote());
        state.ResumeTiming();
        drawAtFullZoom(note, 0);
    }
}
BENCHMARK(firstPage)->Name("evince/first_page_after_load")->Unit(benchmark::kMillisecond);

void pageAtFullZoom(benchmark::State& state) {
    bench::QuietStdout quiet;
    const ViewedNote note(bench::handwrittenNote());
    for (auto _ : state) drawAtFullZoom(note, 0);
}
BENCHMARK(pageAtFullZoom)->Name("evince/page_at_100_percent")->Unit(benchmark::kMillisecond);

void layerList(benchmark::State& state) {
    bench::QuietStdout quiet;
    const ViewedNote note(bench::handwrittenNote());
    for (auto _ : state) benchmark::DoNotOptimize(note.layers().size());
}
BENCHMARK(layerList)->Name("evince/layers_panel_60_pages")->Unit(benchmark::kMillisecond);

}  // namespace
