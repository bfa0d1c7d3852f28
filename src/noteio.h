#ifndef LIBNOTE_SRC_NOTEIO_H
#define LIBNOTE_SRC_NOTEIO_H

// Opening, seeking and closing a note file the same way in every reader of the library.

#include <cerrno>
#include <cstdio>
#include <string>

#include "config.h"
#include "log.h"

namespace noteio {

// How a reader reports a failed open or seek. The page and index readers give the error
// number and the system's text for it; the layer readers give the number alone.
enum class Detail { Number, NumberAndText };

// "<text><errno>", or "<text><errno><separator><system text>".
inline void logFailure(const char* text, Detail detail, const char* separator) {
    if (detail == Detail::Number)
        kwlog::errnoOnly(text, errno);
    else
        kwlog::errnoWithText(text, errno, separator);
}

// Seek failures carry "errmsg:" without the comma that the open and read failures have.
inline void logSeekFailure(Detail detail) { logFailure("fseek failed-----errno:", detail, "errmsg:"); }

// Opens the note file for binary reading; null (and the message) when that fails.
inline FILE* openForReading(const std::string& path, Detail detail) {
    FILE* fp = std::fopen(path.c_str(), "rb");
    if (!fp) logFailure("open file failed-----errno:", detail, ",errmsg:");
    return fp;
}

// Closes the stream if it is still open. A stream is unusable after fclose whatever that
// returned, so the pointer is dropped even on failure: it must never be closed twice.
inline bool close(FILE*& fp, bool doFlush = false) {
    if (flushfsyncfclose(fp, doFlush, false, true)) return true;
    kwlog::text("fclose error.");
    fp = nullptr;
    return false;
}

// Positions the stream at an absolute site.
inline bool seekTo(FILE* fp, unsigned long site, Detail detail) {
    if (std::fseek(fp, static_cast<long>(site), SEEK_SET) == 0) return true;
    logSeekFailure(detail);
    return false;
}

// The size of the file behind an open stream, or false when seeking to its end fails.
inline bool fileSize(FILE* fp, unsigned long& size, Detail detail) {
    if (std::fseek(fp, 0, SEEK_END) != 0) {
        logSeekFailure(detail);
        return false;
    }
    const long end = std::ftell(fp);
    if (end < 0) {
        logSeekFailure(detail);
        return false;
    }
    size = static_cast<unsigned long>(end);
    return true;
}

// Closes, silently, a stream still open when an exception (a bad number in a metadata
// value, a stroke record asking for an impossible size) leaves a reader: the readers
// close their streams themselves on every ordinary way out.
class StreamGuard {
public:
    explicit StreamGuard(FILE*& fp) : fp_(fp) {}
    ~StreamGuard() {
        if (fp_) std::fclose(fp_);
    }
    StreamGuard(const StreamGuard&) = delete;
    StreamGuard& operator=(const StreamGuard&) = delete;

private:
    FILE*& fp_;
};

}  // namespace noteio

#endif
