#include "harness.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace fuzzharness {

namespace {

// The library logs to standard output; thousands of runs a second must not pay for it.
// Sends file descriptor 1 to /dev/null once; libFuzzer reports on standard error.
void silenceLibraryLog() {
    std::fflush(stdout);
    const int null = open("/dev/null", O_WRONLY);
    if (null < 0 || dup2(null, STDOUT_FILENO) < 0) {
        std::perror("/dev/null");
        std::abort();
    }
    close(null);
}

std::string notePath() {
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir && *dir ? dir : "/tmp") + "/libnote-fuzz-" + std::to_string(getpid()) + ".note";
}

void removeNoteFile() { unlink(notePath().c_str()); }

}  // namespace

const std::string& writeNoteFile(const uint8_t* data, std::size_t size) {
    static const std::string path = [] {
        std::atexit(removeNoteFile);
        return notePath();
    }();
    FILE* out = std::fopen(path.c_str(), "wb");
    if (!out || std::fwrite(data, 1, size, out) != size || std::fclose(out) != 0) {
        std::perror(path.c_str());
        std::abort();
    }
    return path;
}

bool isDocumentedError(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const std::length_error&) {
        return true;
    } catch (const std::invalid_argument& e) {
        return std::string(e.what()) == "stoi";
    } catch (const std::out_of_range& e) {
        return std::string(e.what()) == "stoi";
    } catch (...) {
        return false;
    }
}

}  // namespace fuzzharness

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzzharness::silenceLibraryLog();
    return 0;
}

// AddressSanitizer keeps freed memory in quarantine (256 MB by default), which would count
// towards the resident-size bound of each input, and pictures are 2.6 MB to 10.5 MB a call.
// A small quarantine keeps the bound about the input, not about the history of the run.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=16"; }
