// Writes a note of PAGES pages (default 60) as a handwritten notebook looks: every page a
// ruled background layer, a main layer of dense handwriting and its 2,000 strokes, made by
// the benchmarks' inputs. For the benchmarks that time whole notes (bench/python_bench.py).
//
// Usage: make_bench_note FILE [PAGES]

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "inputs.h"
#include "notewriter.h"

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: make_bench_note FILE [PAGES]\n");
        return 2;
    }
    const int pages = argc == 3 ? std::atoi(argv[2]) : 60;
    try {
        notewriter::Page page;
        page.layers = {{"BGLAYER", bench::pixels(bench::Picture::Ruled), {}},
                       {"MAINLAYER", bench::pixels(bench::Picture::Handwriting), {}}};
        page.strokes = bench::strokes();
        notewriter::Note note;
        note.pages.assign(static_cast<std::size_t>(pages), page);
        notewriter::writeFile(argv[1], notewriter::buildNote(note));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make_bench_note: %s\n", e.what());
        return 1;
    }
    return 0;
}
