#ifndef LIBNOTE_TESTS_RUN_TOOL_H
#define LIBNOTE_TESTS_RUN_TOOL_H

// Runs a program as a user runs it, as a child process, and collects its exit code, its
// output and how much memory it took.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace notetest {

struct ToolRun {
    int code = -1;  // the exit code, or 128 + the signal that ended the program
    std::string out;
    std::string err;
    // The child's peak resident size. It counts the pages of this process that the child
    // held between fork and exec, so it bounds the program only when the caller is small.
    long peakKb = 0;
};

// Limits for the child alone; 0 leaves a limit as it is.
struct ToolLimits {
    rlim_t fileSizeBytes = 0;  // writes beyond this fail, as on a full disk
    rlim_t cpuSeconds = 0;     // a program that spins is stopped by a signal
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
// threads, so a lock one of them held could never be released in the child.
[[noreturn]] inline void execChild(char* const* argv, const char* outPath, const char* errPath, const ToolLimits& limits) {
    const int out = ::open(outPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    const int err = ::open(errPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (out < 0 || err < 0 || ::dup2(out, STDOUT_FILENO) < 0 || ::dup2(err, STDERR_FILENO) < 0) ::_exit(127);
    limitChild(RLIMIT_FSIZE, limits.fileSizeBytes);
    limitChild(RLIMIT_CPU, limits.cpuSeconds);
    ::execv(argv[0], argv);
    ::_exit(127);
}

}  // namespace detail

// Runs argv[0] with the arguments that follow, standard output and error going to
// stdout.txt and stderr.txt in dir.
inline ToolRun runTool(const std::string& dir, std::vector<std::string> argv, ToolLimits limits = {}) {
    const std::string outPath = (std::filesystem::path(dir) / "stdout.txt").string();
    const std::string errPath = (std::filesystem::path(dir) / "stderr.txt").string();
    std::vector<char*> args;
    for (std::string& a : argv) args.push_back(a.data());
    args.push_back(nullptr);

    ToolRun run;
    const pid_t pid = ::fork();
    if (pid < 0) return run;
    if (pid == 0) detail::execChild(args.data(), outPath.c_str(), errPath.c_str(), limits);
    int status = 0;
    rusage usage{};
    if (::wait4(pid, &status, 0, &usage) != pid) return run;
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.peakKb = usage.ru_maxrss;
    run.out = readWholeFile(outPath);
    run.err = readWholeFile(errPath);
    return run;
}

}  // namespace notetest

#endif
