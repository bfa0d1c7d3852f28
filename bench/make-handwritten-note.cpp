// Writes the note of full handwritten pages that the benchmarks read, for timing notetool
// on it (bench/notetool_times.py).
//
// Usage: make-handwritten-note <output.note> [pages, default 60]

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "handwriting.h"
#include "inputs.h"
#include "notewriter.h"

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: make-handwritten-note <output.note> [pages]\n");
        return 2;
    }
    const int pages = argc == 3 ? std::atoi(argv[2]) : bench::kHandwrittenPages;
    if (pages < 1) {
        std::fprintf(stderr, "make-handwritten-note: %s: not a page count\n", argv[2]);
        return 2;
    }
    try {
        notewriter::writeFile(argv[1], handwriting::fullNoteFile(pages));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make-handwritten-note: %s\n", e.what());
        return 1;
    }
    return 0;
}
