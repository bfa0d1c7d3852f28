#ifndef NOTETOOL_ATOMIC_FILE_H
#define NOTETOOL_ATOMIC_FILE_H

// An output file that appears under its name only once it is complete: everything is written
// to a temporary name in the same folder (so that the final rename cannot cross file systems)
// and renamed on commit(). A file that is never committed is removed, so a failure, an
// exception or a killed worker never leaves a half-written page behind under the real name.

#include <cstddef>
#include <string>

namespace notetool {

class AtomicFile {
public:
    // Creates the temporary file next to path; throws std::runtime_error when it cannot.
    explicit AtomicFile(const std::string& path);
    ~AtomicFile();  // removes the temporary file unless committed
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Appends bytes to the temporary file; throws std::runtime_error on a write error.
    void write(const void* data, std::size_t length);

    // Flushes, closes and renames the temporary file to path; throws std::runtime_error.
    void commit();

    // For C writers (cairo, libpng) that take a function and a closure: closure is the
    // AtomicFile; returns false instead of throwing.
    static bool writeCallback(void* closure, const unsigned char* data, unsigned int length);

private:
    void closeTemp();

    std::string path_;
    std::string tempPath_;
    int fd_ = -1;
    bool committed_ = false;
};

// Creates the folder and its parents when missing; throws std::runtime_error.
void makeDirectories(const std::string& dir);

}  // namespace notetool

#endif
