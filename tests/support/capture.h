#ifndef LIBNOTE_TESTS_CAPTURE_H
#define LIBNOTE_TESTS_CAPTURE_H

// Captures what is written to standard output at the file-descriptor level, so that the
// library's log is seen exactly as a host would see it.

#include <cstdio>
#include <string>
#include <unistd.h>

namespace notetest {

class StdoutCapture {
public:
    StdoutCapture() {
        std::fflush(stdout);
        file_ = std::tmpfile();
        saved_ = ::dup(STDOUT_FILENO);
        ::dup2(::fileno(file_), STDOUT_FILENO);
    }
    ~StdoutCapture() { restore(); if (file_) std::fclose(file_); }
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    // Stops capturing and returns everything written since construction.
    std::string finish() {
        restore();
        std::string out;
        std::rewind(file_);
        char buf[4096];
        std::size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, file_)) > 0) out.append(buf, n);
        return out;
    }

private:
    void restore() {
        if (saved_ < 0) return;
        std::fflush(stdout);
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
        saved_ = -1;
    }
    std::FILE* file_ = nullptr;
    int saved_ = -1;
};

// Runs f with standard output captured and returns the output.
template <class F>
std::string captureStdout(F&& f) {
    StdoutCapture capture;
    f();
    return capture.finish();
}

}  // namespace notetest

#endif
