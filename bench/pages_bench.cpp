// notetool's page work on a full handwritten page, beside a copy of the page's memory in the
// same run: composing the page, compressing its palette rows with each candidate compressor
// (zlib's levels and strategies, libdeflate's levels; the counter "bytes" is the size each
// makes), and each writer's encoding of the page.

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <zlib.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "inputs.h"
#include "output_file.h"
#include "output_formats.h"
#include "output_plan.h"
#include "page_reader.h"
#include "palette.h"
#include "palette_picture.h"

namespace {

using namespace notetool;

const std::vector<uint8_t>& fullPage() {
    static const std::vector<uint8_t> pixels = [] {
        std::vector<uint8_t> page(kPagePixels);
        bench::QuietStdout quiet;
        composePage(bench::handwrittenNote(), 1, {}, false, page.data());
        return page;
    }();
    return pixels;
}

// The page's palette rows as the writers compress them, recovered from their zlib stream.
const std::vector<uint8_t>& paletteRows() {
    static const std::vector<uint8_t> rows = [] {
        const std::string data = compressPicture(fullPage().data(), 1, pagePalette(fullPage().data(), false)).data;
        std::vector<uint8_t> out(kPagePixels);  // more than the rows take at four bits a pixel
        std::size_t size = 0;
        std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> inflater(
            libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
        libdeflate_zlib_decompress(inflater.get(), data.data(), data.size(), out.data(), out.size(), &size);
        out.resize(size);
        return out;
    }();
    return rows;
}

void copyPage(benchmark::State& state) {
    const std::vector<uint8_t>& page = fullPage();
    std::vector<uint8_t> to(kPagePixels);
    for (auto _ : state) {
        std::memcpy(to.data(), page.data(), kPagePixels);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPagePixels));
}
BENCHMARK(copyPage)->Name("reference/memcpy/page");

void compose(benchmark::State& state) {
    std::vector<uint8_t> page(kPagePixels);
    const std::string& note = bench::handwrittenNote();
    bench::QuietStdout quiet;
    for (auto _ : state) {
        composePage(note, 1, {}, false, page.data());
        benchmark::DoNotOptimize(page.data());
    }
}
BENCHMARK(compose)->Name("composePage/full_page");

void zlibRows(benchmark::State& state) {
    const int level = int(state.range(0)), strategy = int(state.range(1));
    const std::vector<uint8_t>& rows = paletteRows();
    std::vector<Bytef> out(compressBound(uLong(rows.size())));
    uLong size = 0;
    for (auto _ : state) {
        z_stream z{};
        deflateInit2(&z, level, Z_DEFLATED, 15, 8, strategy);
        z.next_in = const_cast<Bytef*>(rows.data());
        z.avail_in = uInt(rows.size());
        z.next_out = out.data();
        z.avail_out = uInt(out.size());
        deflate(&z, Z_FINISH);
        size = z.total_out;
        deflateEnd(&z);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["bytes"] = double(size);
}
BENCHMARK(zlibRows)->Name("compress/zlib")->ArgNames({"level", "strategy"})
    ->Args({1, Z_DEFAULT_STRATEGY})->Args({6, Z_DEFAULT_STRATEGY})->Args({1, Z_RLE})->Args({6, Z_RLE})
    ->Args({1, Z_FILTERED})->Args({1, Z_HUFFMAN_ONLY});

void libdeflateRows(benchmark::State& state) {
    const std::vector<uint8_t>& rows = paletteRows();
    std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(int(state.range(0))), &libdeflate_free_compressor);
    std::vector<uint8_t> out(libdeflate_zlib_compress_bound(compressor.get(), rows.size()));
    std::size_t size = 0;
    for (auto _ : state) {
        size = libdeflate_zlib_compress(compressor.get(), rows.data(), rows.size(), out.data(), out.size());
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["bytes"] = double(size);
}
BENCHMARK(libdeflateRows)->Name("compress/libdeflate")->ArgName("level")->Arg(1)->Arg(2)->Arg(4)->Arg(6);

// A writer's whole work on the page: palette, packing and compressing, or tracing.
void encode(benchmark::State& state, const char* format, bool vector) {
    DrawingOptions options;
    options.vector = vector;
    OutputFile sink("/dev/null");  // encoding writes nothing
    const std::unique_ptr<PageWriter> writer = formatByName(outputFormats(), format)->open(sink, options, DocumentInfo{});
    const std::vector<uint8_t>& pixels = fullPage();
    std::size_t size = 0;
    for (auto _ : state) {
        EncodedPage page = writer->encodePage(pixels.data());
        size = page.bytes.size();
        benchmark::DoNotOptimize(page.bytes.data());
    }
    state.counters["bytes"] = double(size);
}
BENCHMARK_CAPTURE(encode, png, "png", false)->Name("encodePage/png");
BENCHMARK_CAPTURE(encode, pdf, "pdf", false)->Name("encodePage/pdf");
BENCHMARK_CAPTURE(encode, pdf_vector, "pdf", true)->Name("encodePage/pdf_vector")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(encode, svg, "svg", false)->Name("encodePage/svg")->Unit(benchmark::kMillisecond);

}  // namespace
