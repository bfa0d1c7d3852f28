// Strokes: a page of 2,000 strokes read from its note file, the record decoder alone, and
// the mapping of the points onto a picture.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "config.h"
#include "inputs.h"
#include "kwdataload.h"
#include "notewriter.h"

namespace {

int64_t recordBytes() {
    int64_t bytes = 0;
    for (const std::string& record : bench::strokeRecords()) bytes += int64_t(record.size());
    return bytes;
}

void fetchStrokes(benchmark::State& state) {
    const std::string& path = bench::strokesNote();
    KwDataLoad loader;
    std::vector<TrailContainer> trails;
    int result = 0;
    {
        bench::QuietStdout quiet;
        for (auto _ : state) {
            result |= loader.fetchNotePathFromFile(trails, path, 1);
            benchmark::DoNotOptimize(trails.data());
        }
    }
    if (result != 0 || trails.size() != bench::kStrokes) state.SkipWithError("fetchNotePathFromFile failed");
    state.counters["strokes"] = benchmark::Counter(double(state.iterations()) * bench::kStrokes,
                                                   benchmark::Counter::kIsRate);
    state.SetBytesProcessed(int64_t(state.iterations()) * recordBytes());
}
BENCHMARK(fetchStrokes)->Name("fetchNotePathFromFile/2000_strokes")->Unit(benchmark::kMillisecond);

// A record is decoded into a freshly constructed stroke, as the page reader does; making the
// strokes (their reserved room) is left out of the time, so that the decoder is measured alone.
void decodeRecords(benchmark::State& state) {
    std::vector<std::vector<char>> records;
    for (const std::string& record : bench::strokeRecords()) {
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
BENCHMARK(decodeRecords)->Name("data2Trail/200_records");

void mapPoints(benchmark::State& state) {
    const std::vector<TrailContainer>& strokes = bench::strokes();
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
BENCHMARK(mapPoints)->Name("mappingTrailPoints2imageSize/2000_strokes");

}  // namespace
