#ifndef NOTETOOL_TOOL_ERROR_H
#define NOTETOOL_TOOL_ERROR_H

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace notetool {

// Why an input or an output failed, as data that a host acts on: notetool prints only the
// words, the Python package raises NoteError with the status code or OSError with the errno.
struct Cause {
    std::optional<int> status;  // libNote's status code, when libNote refused the note
    int error = 0;              // the system's errno, when an output cannot be written
    std::string file;           // the output that cannot be written, when it is one
};

// A failure of one input or output, worded as the rest of the error line after "notetool: ",
// e.g. "a.note: page 3: layer MAINLAYER: the layer is missing or cannot be read (code 27)";
// the code is in the cause as well, so that no host reads it back out of the words.
struct ToolError : std::runtime_error {
    explicit ToolError(const std::string& message, Cause cause = {})
        : std::runtime_error(message), cause(std::move(cause)) {}
    Cause cause;
};

// A failure as the page pipeline reports it (page_pipeline.h).
struct Failure {
    std::string message;  // as ToolError's
    Cause cause;
};

// A request that no note could satisfy, worded as the rest of an error line: a mistake of
// the host's caller (notetool exits with 2, the Python package raises ValueError).
struct RequestError : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

}  // namespace notetool

#endif
