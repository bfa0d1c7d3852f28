// The public reading calls end to end, from the note file on disk (in the page cache) to the
// caller's buffer. Every one of them logs, so standard output goes to /dev/null meanwhile.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "inputs.h"
#include "kwdataload.h"
#include "kwdataoperationfile.h"
#include "notewriter.h"

namespace {

using notewriter::kPictureSize;

void fetchLayer(benchmark::State& state, bench::Picture picture) {
    const bench::NotePage source = bench::pictureSource(picture);
    std::vector<char> pixels(kPictureSize, '\xFF');
    KwDataLoad loader;
    int result = 0;
    {
        bench::QuietStdout quiet;
        for (auto _ : state) {
            result |= loader.fetchNoteDataFromFileByLayer(source.path, source.page, "MAINLAYER", pixels.data());
            benchmark::DoNotOptimize(pixels.data());
            benchmark::ClobberMemory();
        }
    }
    if (result != 0) state.SkipWithError("fetchNoteDataFromFileByLayer failed");
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPictureSize));
}

void loadImage(benchmark::State& state, bench::Picture picture) {
    const bench::NotePage source = bench::pictureSource(picture);
    KwDataLoad loader;
    bool failed = false;
    {
        bench::QuietStdout quiet;
        for (auto _ : state) {
            uint32_t* colours = loader.loadImageData(source.path, source.page, "MAINLAYER");
            benchmark::DoNotOptimize(colours);
            failed |= colours == nullptr;
            delete[] colours;
        }
    }
    if (failed) state.SkipWithError("loadImageData failed");
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPictureSize));
}

void pageCount(benchmark::State& state) {
    const int pages = static_cast<int>(state.range(0));
    const std::string& path = bench::pagesNote(pages);
    KwDataOperationFile file;
    int counted = 0;
    {
        bench::QuietStdout quiet;
        for (auto _ : state) {
            counted = file.fetchTotalPageNumOfNote(path);
            benchmark::DoNotOptimize(counted);
        }
    }
    if (counted != pages) state.SkipWithError("fetchTotalPageNumOfNote miscounted");
    state.SetItemsProcessed(int64_t(state.iterations()));
}
BENCHMARK(pageCount)->Name("fetchTotalPageNumOfNote")->Arg(1)->Arg(100);

const bool registered = [] {
    for (int kind = 0; kind < bench::kPictureKinds; ++kind) {
        const auto picture = static_cast<bench::Picture>(kind);
        const std::string name = bench::pictureName(picture);
        benchmark::RegisterBenchmark(("fetchNoteDataFromFileByLayer/" + name).c_str(), fetchLayer, picture);
        benchmark::RegisterBenchmark(("loadImageData/" + name).c_str(), loadImage, picture);
    }
    return true;
}();

}  // namespace
