#ifndef NOTETOOL_TOOL_ERROR_H
#define NOTETOOL_TOOL_ERROR_H

#include <stdexcept>

namespace notetool {

// A failure of one input or output, worded as the rest of the error line after "notetool: ",
// e.g. "a.note: page 3: layer MAINLAYER cannot be read (code 27)".
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace notetool

#endif
