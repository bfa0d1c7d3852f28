#ifndef NOTETOOL_CONSOLE_H
#define NOTETOOL_CONSOLE_H

// The tool's own output, its error lines and its progress bar, kept apart from the library's
// log. The library prints its diagnostics on file descriptor 1 from whatever thread calls it,
// so the tool moves its own standard output to a duplicate descriptor once, before any
// library call, and points descriptor 1 at the log file or at /dev/null.

#include <cstdio>
#include <stdexcept>
#include <string>

#include "tool_error.h"

namespace notetool {

// Exit codes, as --help documents them.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// A mistake on the command line (exit code 2), worded as the rest of the error line.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Sends the library's log to logPath (appended) or, when it is empty, to nowhere. Throws
// ToolError when the log file cannot be opened.
void redirectLibraryLog(const std::string& logPath);

// The tool's standard output (the original descriptor 1).
std::FILE* toolOut();

// Prints "notetool: <message>" as one line on standard error; safe from any thread, and
// keeps a progress bar intact below it.
void reportError(const std::string& message);

// A one-line progress bar on standard error, drawn only when standard error is a terminal.
class Progress {
public:
    explicit Progress(int totalPages);
    ~Progress();  // clears the bar
    void pageDone();
};

}  // namespace notetool

#endif
