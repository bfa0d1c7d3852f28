#ifndef NOTETOOL_CONSOLE_H
#define NOTETOOL_CONSOLE_H

// The tool's own output, its error lines and its progress bar, kept apart from the library's
// log. The library prints its diagnostics on file descriptor 1 from whatever thread calls it,
// so the tool moves its own standard output to a duplicate descriptor once, before any
// library call, and points descriptor 1 at the log file or at /dev/null.

#include <string>

#include "output_file.h"
#include "tool_error.h"

namespace notetool {

// Exit codes, as --help documents them.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// A mistake on the command line (exit code 2), worded as the rest of the error line: the
// page library's checks of a request throw the same.
using UsageError = RequestError;

// Sends the library's log to logPath (appended) or, when it is empty, to nowhere; the tool's
// standard output, OutputFile's "-", is then the original descriptor 1. Throws ToolError
// when the log file cannot be opened.
void redirectLibraryLog(const std::string& logPath);

// Writes the text on the tool's standard output; throws OutputError when it cannot.
void printOut(const std::string& text);

// Prints "notetool: <message>" as one line on standard error; safe from any thread, and
// keeps a progress bar intact below it.
void reportError(const std::string& message);
// The same for a failure of the page pipeline: its message is the line.
void reportFailure(const Failure& failure);

// A one-line progress bar on standard error, drawn only when standard error is a terminal,
// and never wider than the terminal: parts that do not fit are left out.
class Progress {
public:
    explicit Progress(int totalPages);
    ~Progress();  // clears the bar
    void pageDone();
};

// The terminal changed its size (SIGWINCH): the bar is fitted to it and drawn again.
void terminalResized();

// The run is ending on a signal: the bar is cleared and one line says so. Returns holding the
// lock of standard error, so that nothing is drawn after it while the process exits.
void reportInterrupted(const std::string& signalName);

}  // namespace notetool

#endif
