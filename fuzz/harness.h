#ifndef LIBNOTE_FUZZ_HARNESS_H
#define LIBNOTE_FUZZ_HARNESS_H

// What the fuzz targets share: one initialiser for them all (harness.cpp), which sends the
// library's log away, the input as a note file on disk, and the line between the exceptions
// the library is documented to raise and real faults. A target defines only
// LLVMFuzzerTestOneInput.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

namespace fuzzharness {

// A note file of this process (in $TMPDIR or /tmp) holding exactly the given bytes, so that
// the library reads the input through its own path-based calls. Removed at exit.
const std::string& writeNoteFile(const uint8_t* data, std::size_t size);

// The standard length error (a stroke section with a negative count asks for an impossible
// size) and the "stoi" errors (page numbers in the index, five-star values).
bool isDocumentedError(const std::exception_ptr& error);

// Runs one library call. The documented exceptions are outcomes of hostile input and end
// only that call; anything else escapes and fails the run.
template <class F>
void expectingDocumentedErrors(F&& call) {
    try {
        call();
    } catch (...) {
        if (!isDocumentedError(std::current_exception())) throw;
    }
}

}  // namespace fuzzharness

// Run once before the first input, by libFuzzer and by the replay.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

#endif
