#include "console.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sys/ioctl.h>
#include <unistd.h>

namespace notetool {

namespace {

std::mutex g_stderrLock;

// The bar's state; one bar at a time, guarded by g_stderrLock.
struct Bar {
    bool shown = false;
    bool enabled = false;
    int columns = 80;
    int total = 0;
    int done = 0;
    std::chrono::steady_clock::time_point start;
    std::chrono::steady_clock::time_point drawn;
};
Bar g_bar;

int terminalColumns() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

template <class... Values>
std::string format(const char* pattern, Values... values) {
    char text[128];
    std::snprintf(text, sizeof text, pattern, values...);
    return text;
}

// "[####......] 12/300 pages  5.1 pages/s  0:40 left" in fewer columns than the terminal has
// (a line that reaches the last column wraps on some terminals, and a wrapped bar is drawn
// anew on a line of its own each time). What does not fit is left out, the least needed
// first: the rate, then the bar (at least 10 wide, at most 30), then the time left; the count
// always stays.
std::string barText(const Bar& bar) {
    constexpr std::size_t kNarrowest = 10, kWidest = 30, kFrame = 3;  // "[", "] "
    const std::size_t room = static_cast<std::size_t>(std::max(1, bar.columns - 1));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - bar.start).count();
    const double rate = seconds > 0 ? bar.done / seconds : 0;
    std::string left = "  --:-- left";
    if (rate > 0) {
        const long remaining = static_cast<long>((bar.total - bar.done) / rate + 0.5);
        left = format("  %ld:%02ld left", remaining / 60, remaining % 60);
    }
    const std::string speed = format("  %.1f pages/s", rate);
    std::string count = format("%d/%d pages", bar.done, bar.total);
    if (count.size() > room) count = format("%d/%d", bar.done, bar.total);
    if (count.size() + left.size() > room) left.clear();
    const bool withBar = kFrame + kNarrowest + count.size() + left.size() <= room;
    const std::size_t frame = withBar ? kFrame + kNarrowest : 0;
    const std::string tail = count + (frame + count.size() + speed.size() + left.size() <= room ? speed : "") + left;
    if (!withBar) return tail.substr(0, room);
    const std::size_t width = std::min(kWidest, room - kFrame - tail.size());
    std::string filled(bar.total > 0 ? width * static_cast<std::size_t>(bar.done) / static_cast<std::size_t>(bar.total) : 0, '#');
    filled.resize(width, '.');
    return "[" + filled + "] " + tail;
}

void clearBarLocked() {
    if (g_bar.shown) std::fputs("\r\033[K", stderr);
    g_bar.shown = false;
}

void drawBarLocked() {
    if (!g_bar.enabled) return;
    std::fprintf(stderr, "\r\033[K%s", barText(g_bar).c_str());
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
    setStandardOutput(saved);
}

void printOut(const std::string& text) { OutputFile(kStandardOutput).write(text.data(), text.size()); }

void reportError(const std::string& message) {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    clearBarLocked();
    std::fprintf(stderr, "notetool: %s\n", message.c_str());
    drawBarLocked();
    std::fflush(stderr);
}

void reportFailure(const Failure& failure) { reportError(failure.message); }

Progress::Progress(int totalPages) {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    g_bar = Bar();
    g_bar.enabled = ::isatty(STDERR_FILENO) == 1;
    g_bar.columns = terminalColumns();
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

void terminalResized() {
    std::lock_guard<std::mutex> lock(g_stderrLock);
    if (!g_bar.enabled) return;
    g_bar.columns = terminalColumns();
    clearBarLocked();
    drawBarLocked();
}

void reportInterrupted(const std::string& signalName) {
    g_stderrLock.lock();  // never unlocked: the process exits holding it
    clearBarLocked();
    g_bar.enabled = false;
    std::fprintf(stderr, "notetool: interrupted (%s)\n", signalName.c_str());
    std::fflush(stderr);
}

}  // namespace notetool
