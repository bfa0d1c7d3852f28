#include "console.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace notetool {

namespace {

std::FILE* g_out = stdout;
std::mutex g_stderrLock;

// The bar's state; one bar at a time, guarded by g_stderrLock.
struct Bar {
    bool shown = false;
    bool enabled = false;
    int total = 0;
    int done = 0;
    std::chrono::steady_clock::time_point start;
    std::chrono::steady_clock::time_point drawn;
};
Bar g_bar;

void clearBarLocked() {
    if (g_bar.shown) std::fputs("\r\033[K", stderr);
    g_bar.shown = false;
}

void drawBarLocked() {
    if (!g_bar.enabled) return;
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - g_bar.start).count();
    const double rate = seconds > 0 ? g_bar.done / seconds : 0;
    const int width = 30;
    const int filled = g_bar.total > 0 ? width * g_bar.done / g_bar.total : 0;
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.resize(width, '.');
    char eta[32] = "--:--";
    if (rate > 0) {
        const long left = static_cast<long>((g_bar.total - g_bar.done) / rate + 0.5);
        std::snprintf(eta, sizeof eta, "%ld:%02ld", left / 60, left % 60);
    }
    std::fprintf(stderr, "\r\033[K[%s] %d/%d pages  %.1f pages/s  %s left", bar.c_str(), g_bar.done,
                 g_bar.total, rate, eta);
    std::fflush(stderr);
    g_bar.shown = true;
}

}  // namespace

void redirectLibraryLog(const std::string& logPath) {
    std::fflush(stdout);
    const int saved = ::dup(STDOUT_FILENO);
    if (saved < 0) throw ToolError(std::string("cannot keep standard output: ") + std::strerror(errno));
    ::fcntl(saved, F_SETFD, FD_CLOEXEC);
    const int sink = logPath.empty() ? ::open("/dev/null", O_WRONLY | O_CLOEXEC)
                                     : ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (sink < 0) {
        ::close(saved);
        throw ToolError(logPath + ": cannot open the log: " + std::strerror(errno));
    }
    ::dup2(sink, STDOUT_FILENO);
    ::close(sink);
    g_out = ::fdopen(saved, "w");
}

std::FILE* toolOut() { return g_out; }

void reportError(const std::string& message) {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    clearBarLocked();
    std::fprintf(stderr, "notetool: %s\n", message.c_str());
    drawBarLocked();
    std::fflush(stderr);
}

Progress::Progress(int totalPages) {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    g_bar = Bar();
    g_bar.enabled = ::isatty(STDERR_FILENO) == 1;
    g_bar.total = totalPages;
    g_bar.start = std::chrono::steady_clock::now();
    drawBarLocked();
}

Progress::~Progress() {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    clearBarLocked();
    g_bar.enabled = false;
    std::fflush(stderr);
}

void Progress::pageDone() {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    ++g_bar.done;
    // A terminal needs no more than ten updates a second.
    const auto now = std::chrono::steady_clock::now();
    if (now - g_bar.drawn < std::chrono::milliseconds(100) && g_bar.done < g_bar.total) return;
    g_bar.drawn = now;
    drawBarLocked();
}

}  // namespace notetool
