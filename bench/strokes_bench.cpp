// Strokes: a page of 2,000 synthetic strokes and a full handwritten page, each read from its
// note file, the record decoder alone, and the mapping of the points onto a picture.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "config.h"
#include "inputs.h"
#include "kwdataload.h"
#include "notewriter.h"

namespace {

int64_t recordBytes(bench::Strokes kind) {
    int64_t bytes = 0;
    for (const std::string& record : bench::strokeRecords(kind)) bytes += int64_t(record.size());
    return bytes;
}

void fetchStrokes(benchmark::State& state, bench::Strokes kind) {
    const bench::NotePage source = bench::strokesSource(kind);
    const std::size_t count = bench::strokes(kind).size();
    KwDataLoad loader;
    std::vector<TrailContainer> trails;
    int result = 0;
    {
        bench::QuietStdout quiet;
        for (auto _ : state) {
            result |= loader.fetchNotePathFromFile(trails, source.path, source.page);
            benchmark::DoNotOptimize(trails.data());
        }
    }
    if (result != 0 || trails.size() != count) state.SkipWithError("fetchNotePathFromFile failed");
    state.counters["strokes"] = benchmark::Counter(double(state.iterations()) * double(count),
                                                   benchmark::Counter::kIsRate);
    state.SetBytesProcessed(int64_t(state.iterations()) * recordBytes(kind));
}

// A record is decoded into a freshly constructed stroke, as the page reader does; making the
// strokes (their reserved room) is left out of the time, so that the decoder is measured alone.
void decodeRecords(benchmark::State& state, bench::Strokes kind) {
    std::vector<std::vector<char>> records;
    for (const std::string& record : bench::strokeRecords(kind)) {
        records.emplace_back(record.begin(), record.end());
        records.back().push_back('\0');
    }
    constexpr std::size_t kBatch = 200;
    std::size_t next = 0;
    int64_t bytes = 0, decoded = 0;
    int result = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<TrailContainer> trails(kBatch);
        state.ResumeTiming();
        for (TrailContainer& trail : trails) {
            std::vector<char>& record = records[next];
            next = (next + 1) % records.size();
            result |= data2Trail(record.data(), static_cast<int>(record.size() - 1), trail);
            bytes += int64_t(record.size() - 1);
        }
        decoded += kBatch;
        benchmark::DoNotOptimize(trails.data());
        state.PauseTiming();
        trails.clear();
        state.ResumeTiming();
    }
    if (result != 0) state.SkipWithError("data2Trail failed");
    state.counters["strokes"] = benchmark::Counter(double(decoded), benchmark::Counter::kIsRate);
    state.SetBytesProcessed(bytes);
}

void mapPoints(benchmark::State& state, bench::Strokes kind) {
    const std::vector<TrailContainer>& strokes = bench::strokes(kind);
    std::vector<MorvaPoint> out;
    int64_t points = 0;
    for (auto _ : state) {
        for (const TrailContainer& trail : strokes) {
            mappingTrailPoints2imageSize(trail, notewriter::kPictureWidth, notewriter::kPictureHeight, out, 1);
            benchmark::DoNotOptimize(out.data());
            points += int64_t(trail.m_points.size());
        }
    }
    state.counters["points"] = benchmark::Counter(double(points), benchmark::Counter::kIsRate);
}

const bool registered = [] {
    for (const bench::Strokes kind : {bench::Strokes::Synthetic, bench::Strokes::FullPage}) {
        const std::string name = bench::strokesName(kind);
        benchmark::RegisterBenchmark(("fetchNotePathFromFile/" + name).c_str(), fetchStrokes, kind)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("data2Trail/" + name).c_str(), decodeRecords, kind);
        benchmark::RegisterBenchmark(("mappingTrailPoints2imageSize/" + name).c_str(), mapPoints, kind);
    }
    return true;
}();

}  // namespace
