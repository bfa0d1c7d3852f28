#include "log_sink.h"

#include <Python.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <system_error>
#include <unistd.h>

namespace libnote_python {

namespace {

thread_local int t_libraryWork = 0;
std::atomic<int> g_pipelines{0};

// The log file, or -1 to discard the log. Guarded by g_sinkLock, so that set_log cannot
// close a descriptor that a write is using (its number could be reused by another file).
std::mutex g_sinkLock;
int g_sinkFd = -1;

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// A thread the interpreter has no state for was started by native code; while the page
// pipeline runs, those are its workers. Reading the thread's state needs no GIL.
bool isLibraryWrite() {
    if (t_libraryWork > 0) return true;
    return g_pipelines.load(std::memory_order_acquire) > 0 && PyGILState_GetThisThreadState() == nullptr;
}

ssize_t routeWrite(void*, const char* data, size_t size) {
    if (isLibraryWrite()) {
        std::lock_guard<std::mutex> lock(g_sinkLock);
        // A log that cannot be written must not fail the library's call: the bytes are dropped.
        if (g_sinkFd >= 0) writeAll(g_sinkFd, data, size);
        return static_cast<ssize_t>(size);
    }
    return writeAll(STDOUT_FILENO, data, size) ? static_cast<ssize_t>(size) : -1;
}

}  // namespace

void installLogSink() {
    static std::once_flag once;
    std::call_once(once, [] {
        cookie_io_functions_t functions{};
        functions.write = routeWrite;
        FILE* routed = ::fopencookie(nullptr, "w", functions);
        if (!routed) throw std::system_error(errno, std::generic_category(), "cannot set up the library's log");
        std::setvbuf(routed, nullptr, _IONBF, 0);
        std::fflush(stdout);
        stdout = routed;
    });
}

void setLog(const std::string& path) {
    int fd = -1;
    if (!path.empty()) {
        fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
        if (fd < 0) throw std::system_error(errno, std::generic_category(), path);
    }
    std::lock_guard<std::mutex> lock(g_sinkLock);
    if (g_sinkFd >= 0) ::close(g_sinkFd);
    g_sinkFd = fd;
}

LibraryWork::LibraryWork() { ++t_libraryWork; }
LibraryWork::~LibraryWork() { --t_libraryWork; }

PipelineWork::PipelineWork() { g_pipelines.fetch_add(1, std::memory_order_release); }
PipelineWork::~PipelineWork() { g_pipelines.fetch_sub(1, std::memory_order_release); }

}  // namespace libnote_python
