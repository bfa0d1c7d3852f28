#ifndef LIBNOTE_TESTS_RUN_TOOL_H
#define LIBNOTE_TESTS_RUN_TOOL_H

// Runs a program as a user runs it, as a child process, and collects its exit code, its
// output and how much memory it took. A child can be left running, to be signalled, and its
// standard error can be a terminal of a given width, as in an interactive shell.

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace notetest {

struct ToolRun {
    int code = -1;  // the exit code, or 128 + the signal that ended the program
    std::string out;
    std::string err;  // what it wrote on standard error, or on its terminal
    // The child's peak resident size. It counts the pages of this process that the child
    // held between fork and exec, so it bounds the program only when the caller is small.
    long peakKb = 0;
};

// Limits for the child alone; 0 leaves a limit as it is.
struct ToolLimits {
    rlim_t fileSizeBytes = 0;  // writes beyond this fail, as on a full disk
    rlim_t cpuSeconds = 0;     // a program that spins is stopped by a signal
};

// Where the child's output goes, beyond its arguments.
struct ToolSetup {
    ToolLimits limits;
    std::string stdoutPath;   // standard output goes to this file (or device) instead of stdout.txt
    int terminalColumns = 0;  // > 0: standard error is a terminal this many columns wide
    bool stdoutOnTerminal = false;  // with terminalColumns: standard output is that terminal too
};

inline std::string readWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The names in dir, sorted. A missing directory throws: a test that asks has made it.
inline std::vector<std::string> filesIn(const std::string& dir) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

namespace detail {

inline void limitChild(int resource, rlim_t value) {
    if (value == 0) return;
    const rlimit limit{value, value};
    ::setrlimit(resource, &limit);
}

// Between fork and exec the child only makes system calls: the parent may have other
// threads, so a lock one of them held could never be released in the child. A terminal
// becomes the child's controlling terminal, so that it is sent the terminal's signals.
[[noreturn]] inline void execChild(char* const* argv, const char* outPath, const char* errPath, const char* terminal,
                                   const ToolLimits& limits) {
    const int out = ::open(outPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (terminal && (::setsid() < 0)) ::_exit(127);
    const int err = terminal ? ::open(terminal, O_RDWR | O_CLOEXEC) : ::open(errPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (terminal && err >= 0) ::ioctl(err, TIOCSCTTY, 0);
    if (out < 0 || err < 0 || ::dup2(out, STDOUT_FILENO) < 0 || ::dup2(err, STDERR_FILENO) < 0) ::_exit(127);
    limitChild(RLIMIT_FSIZE, limits.fileSizeBytes);
    limitChild(RLIMIT_CPU, limits.cpuSeconds);
    ::execv(argv[0], argv);
    ::_exit(127);
}

// The parent's side of a pseudo-terminal: what the child writes on it is read on a thread
// of its own, so that the child never waits for a full terminal buffer.
class Terminal {
public:
    explicit Terminal(int columns) : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        char name[128];
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 || ::ptsname_r(master_, name, sizeof name) != 0)
            throw std::runtime_error("no pseudo-terminal");
        slave_ = name;
        resize(columns);
    }
    ~Terminal() {
        if (reader_.joinable()) reader_.join();
        ::close(master_);
    }
    const char* slavePath() const { return slave_.c_str(); }
    void startReading() {
        reader_ = std::thread([this] {
            char buffer[4096];
            for (ssize_t n; (n = ::read(master_, buffer, sizeof buffer)) != 0;) {
                if (n < 0 && errno == EINTR) continue;
                if (n < 0) break;  // EIO: the child closed the terminal
                std::lock_guard<std::mutex> hold(lock_);
                text_.append(buffer, static_cast<std::size_t>(n));
            }
        });
    }
    void resize(int columns) {
        const winsize size{24, static_cast<unsigned short>(columns), 0, 0};
        ::ioctl(master_, TIOCSWINSZ, &size);
    }
    std::string text() {
        std::lock_guard<std::mutex> hold(lock_);
        return text_;
    }
    std::string finish() {
        if (reader_.joinable()) reader_.join();
        return text();
    }

private:
    int master_;
    std::string slave_;
    std::thread reader_;
    std::mutex lock_;
    std::string text_;
};

}  // namespace detail

// A child that runs until finish() waits for it.
class RunningTool {
public:
    RunningTool(const std::string& dir, std::vector<std::string> argv, const ToolSetup& setup)
        : outPath_(setup.stdoutPath.empty() ? (std::filesystem::path(dir) / "stdout.txt").string() : setup.stdoutPath),
          errPath_((std::filesystem::path(dir) / "stderr.txt").string()) {
        if (setup.terminalColumns > 0) terminal_ = std::make_unique<detail::Terminal>(setup.terminalColumns);
        if (terminal_ && setup.stdoutOnTerminal) outPath_ = terminal_->slavePath();
        std::vector<char*> args;
        for (std::string& a : argv) args.push_back(a.data());
        args.push_back(nullptr);
        pid_ = ::fork();
        if (pid_ == 0)
            detail::execChild(args.data(), outPath_.c_str(), errPath_.c_str(), terminal_ ? terminal_->slavePath() : nullptr,
                              setup.limits);
        if (terminal_) terminal_->startReading();
    }
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;
    ~RunningTool() {
        if (pid_ > 0 && !finished_) {
            ::kill(pid_, SIGKILL);
            finish();
        }
    }

    void signal(int sig) const { ::kill(pid_, sig); }
    // Tells the child its terminal changed size, as a window manager does (SIGWINCH).
    void resizeTerminal(int columns) { terminal_->resize(columns); }
    // What the child has written on its terminal so far.
    std::string terminalText() { return terminal_ ? terminal_->text() : std::string(); }

    ToolRun finish() {
        ToolRun run;
        finished_ = true;
        int status = 0;
        rusage usage{};
        if (pid_ < 0 || ::wait4(pid_, &status, 0, &usage) != pid_) return run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        run.peakKb = usage.ru_maxrss;
        run.out = std::filesystem::is_regular_file(outPath_) ? readWholeFile(outPath_) : "";  // never a device's endless bytes
        run.err = terminal_ ? terminal_->finish() : readWholeFile(errPath_);
        return run;
    }

private:
    std::string outPath_;
    std::string errPath_;
    std::unique_ptr<detail::Terminal> terminal_;
    pid_t pid_ = -1;
    bool finished_ = false;
};

// Runs argv[0] with the arguments that follow, standard output and error going to
// stdout.txt and stderr.txt in dir, and waits for it.
inline ToolRun runTool(const std::string& dir, std::vector<std::string> argv, ToolLimits limits = {}) {
    ToolSetup setup;
    setup.limits = limits;
    return RunningTool(dir, std::move(argv), setup).finish();
}

}  // namespace notetest

#endif
