// The run-length codec against the physical references: filling and copying a picture's
// worth of memory, measured in the same run so that the ratios do not depend on the machine.

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "config.h"
#include "inputs.h"
#include "notewriter.h"

namespace {

using notewriter::kPictureSize;

void memsetPicture(benchmark::State& state) {
    std::vector<char> buffer(kPictureSize);
    for (auto _ : state) {
        std::memset(buffer.data(), 0xFF, buffer.size());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPictureSize));
}
BENCHMARK(memsetPicture)->Name("reference/memset");

// bytes: one picture of pixel bytes, or one of 32-bit colours (the result of loadImageData).
void memcpyPicture(benchmark::State& state) {
    const std::size_t bytes = kPictureSize * std::size_t(state.range(0));
    std::vector<char> from(bytes, 1), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}
BENCHMARK(memcpyPicture)->Name("reference/memcpy")->Arg(1)->Arg(4);

void decode(benchmark::State& state, bench::Picture picture) {
    std::vector<char> code = bench::code(picture);
    std::vector<char> pixels(kPictureSize, '\xFF');
    for (auto _ : state) {
        uncompresseDataByRLE(pixels.data(), pixels.size(), code.data(), code.size() - 1);
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPictureSize));
    state.counters["code_bytes"] = double(code.size() - 1);
}

void encode(benchmark::State& state, bench::Picture picture) {
    std::vector<uint8_t> pixels = bench::pixels(picture);
    // Two bytes a pixel at worst, as the layer module provides.
    std::vector<unsigned char> code(2 * kPictureSize + 1);
    unsigned long length = 0;
    for (auto _ : state) {
        compresseDataByRLE(reinterpret_cast<char*>(pixels.data()), pixels.size(), code.data(), length);
        benchmark::DoNotOptimize(code.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPictureSize));
    state.counters["code_bytes"] = double(length);
}

const bool registered = [] {
    for (int kind = 0; kind < bench::kPictureKinds; ++kind) {
        const auto picture = static_cast<bench::Picture>(kind);
        const std::string name = bench::pictureName(picture);
        benchmark::RegisterBenchmark(("uncompresseDataByRLE/" + name).c_str(), decode, picture);
        benchmark::RegisterBenchmark(("compresseDataByRLE/" + name).c_str(), encode, picture);
    }
    return true;
}();

}  // namespace
