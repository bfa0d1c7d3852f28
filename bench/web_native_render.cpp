// What the WebAssembly module's render() does, natively: a page composed and made RGBA,
// timed, so that bench/web_bench.mjs compares the two builds on the same work in one run.
//
// Usage: web-native-render NOTE PAGE SCALE REPEATS
// Prints one line per repeat to standard error (standard output is the library's log): the
// wall time and the process's CPU time, in milliseconds.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <vector>

#include "page_reader.h"
#include "page_rgba.h"
#include "palette.h"

namespace {

double cpuMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: web-native-render NOTE PAGE SCALE REPEATS\n");
        return 2;
    }
    const int page = std::atoi(argv[2]);
    const double scale = std::atof(argv[3]);
    const int repeats = std::atoi(argv[4]);
    if (!libnoteweb::drawableScale(scale)) {
        std::fprintf(stderr, "web-native-render: scale %s cannot be drawn\n", argv[3]);
        return 2;
    }
    try {
        // The composed page is kept from one render to the next, as the module keeps it. The
        // image is a fresh buffer each time, as render() hands out a new array of its own.
        std::vector<uint8_t> pixels(notetool::kPagePixels);
        for (int i = 0; i < repeats; ++i) {
            const auto start = std::chrono::steady_clock::now();
            const double cpuStart = cpuMilliseconds();
            libnoteweb::RgbaImage image;
            notetool::composePage(argv[1], page, {}, false, pixels.data());
            libnoteweb::pageRgba(pixels.data(), scale, false, image);
            const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
            std::fprintf(stderr, "%.3f %.3f\n", wall.count(), cpuMilliseconds() - cpuStart);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "web-native-render: %s\n", e.what());
        return 1;
    }
    return 0;
}
