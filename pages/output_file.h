#ifndef NOTETOOL_OUTPUT_FILE_H
#define NOTETOOL_OUTPUT_FILE_H

// Where a writer's bytes go, so that an output never destroys what it should write to, and
// never appears half-written:
//  - a new name or a regular file is written under a temporary name in the same folder (so
//    that the final rename cannot cross file systems) and renamed over the path on commit();
//    one that is never committed is removed;
//  - a path that exists as something else (a device such as /dev/null, a FIFO) is opened and
//    written in place: renaming over it would replace the device instead of writing to it;
//  - a symbolic link is followed, and its target is what gets written or replaced;
//  - "-" is the standard output.
// Every failure throws OutputError with the system's reason.

#include <cstddef>
#include <string>

#include "tool_error.h"

namespace notetool {

// An output that cannot be written, worded "<output>: <the system's reason>", the errno and
// the output in its cause.
struct OutputError : ToolError {
    OutputError(const std::string& output, int error);
    // The disk or the user's quota is full: nothing else will fit either.
    bool outOfSpace() const;
};

// The path that stands for the standard output.
constexpr const char* kStandardOutput = "-";

// The output at path as error lines name it: the path, or "standard output".
std::string outputName(const std::string& path);

class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();  // removes the temporary file unless committed
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // The output as error lines name it: its path, or "standard output".
    const std::string& name() const { return name_; }

    void write(const void* data, std::size_t length);

    // Ends the writing: the temporary file is complete but keeps its temporary name.
    void close();
    // Closes, and renames the temporary file over the path.
    void commit();

private:
    std::string name_;
    std::string path_;      // the file the output ends up in, links followed
    std::string tempPath_;  // empty when written in place
    int fd_ = -1;
    bool ownsFd_ = true;
    bool committed_ = false;
};

// The descriptor "-" writes to (standard output unless the host moved it); its final close
// is checked by closeStandardOutput().
void setStandardOutput(int fd);
// Closes the standard output; throws OutputError when the system reports that data written
// earlier could not be stored.
void closeStandardOutput();

// For a process about to exit on a signal: removes every temporary file it has open, and
// keeps others from being created or renamed into place from then on. Takes locks, so it is
// called from a thread that waits for signals, not from a signal handler.
void removeTemporaryFiles();

// Creates the folder and its parents when missing; throws OutputError.
void makeDirectories(const std::string& dir);

}  // namespace notetool

#endif
