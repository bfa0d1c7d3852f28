// Times the C++ call that Page.layer() of the Python package makes, as a C++ host makes it:
// the picture buffer set to transparent (the call writes only ink), then
// fetchNoteDataFromFileByLayer. Prints the CPU time of each call in nanoseconds, one a line,
// for bench/python_bench.py to compare with the Python call on the same note.
//
// Usage: layer_call NOTE PAGE LAYER REPETITIONS

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "inputs.h"
#include "kwdataload.h"
#include "notewriter.h"

namespace {

long long threadCpuNanoseconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: layer_call NOTE PAGE LAYER REPETITIONS\n");
        return 2;
    }
    const std::string note = argv[1], layer = argv[3];
    const int page = std::atoi(argv[2]), repetitions = std::atoi(argv[4]);
    std::vector<char> pixels(notewriter::kPictureSize);
    std::vector<long long> times;
    int status = 0;
    KwDataLoad loader;
    {
        bench::QuietStdout quiet;
        for (int i = 0; i < repetitions && status == 0; ++i) {
            const long long start = threadCpuNanoseconds();
            std::memset(pixels.data(), 0xFF, pixels.size());
            status = loader.fetchNoteDataFromFileByLayer(note, page, layer, pixels.data());
            times.push_back(threadCpuNanoseconds() - start);
        }
    }
    if (status != 0) {
        std::fprintf(stderr, "layer_call: the call failed with code %d\n", status);
        return 1;
    }
    for (long long t : times) std::printf("%lld\n", t);
    return 0;
}
