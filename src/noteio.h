#ifndef LIBNOTE_SRC_NOTEIO_H
#define LIBNOTE_SRC_NOTEIO_H

// Opening, seeking and closing a note file the same way in every reader of the library.

#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

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

// The stream a reader opens on the note file, owned so that it is closed exactly once on
// every way out: by close() where the reader reports how closing went, otherwise (an early
// return, an exception from a bad number in a metadata value or an impossible stroke size)
// when the owner goes. Both close through flushfsyncfclose.
class Stream {
public:
    // Opens the file for binary reading; on failure the stream is null and the message given.
    Stream(const std::string& path, Detail detail) : fp_(std::fopen(path.c_str(), "rb")) {
        if (!fp_) logFailure("open file failed-----errno:", detail, ",errmsg:");
    }
    ~Stream() { flushfsyncfclose(fp_, false, false, true); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    explicit operator bool() const { return fp_ != nullptr; }
    FILE* get() const { return fp_; }

    // Closes the stream if it is still open; false (and "fclose error.") when that fails. A
    // stream is unusable after fclose whatever that returned, so it is dropped either way.
    bool close(bool doFlush = false) {
        if (flushfsyncfclose(fp_, doFlush, false, true)) return true;
        kwlog::text("fclose error.");
        fp_ = nullptr;
        return false;
    }

    // The metadata block at site. The block reader closes the stream itself when it fails,
    // so the stream is dropped then: closing it once more would touch a released stream.
    bool readBlock(std::vector<ModuleItem>& items, unsigned long site) {
        if (readModuleItemFromFile(fp_, items, site)) return true;
        fp_ = nullptr;
        return false;
    }

private:
    FILE* fp_;
};

}  // namespace noteio

#endif
