#include "config.h"

#include <cerrno>

#include "log.h"
#include "text_pieces.h"

std::string kwFileIdenificationTag = "KW_FILE_VER_20220013";

std::vector<std::string> split(std::string text, std::string delimiters) {
    std::vector<std::string> pieces;
    kwtext::forEachPiece(text, delimiters,
                         [&](std::size_t at, std::size_t n) { pieces.push_back(text.substr(at, n)); });
    return pieces;
}

bool myStartsWith(std::string text, std::string prefix) {
    if (text.empty() || prefix.empty()) return false;
    return text.compare(0, prefix.size(), prefix) == 0;
}

// The not-found value of the search and the wrapped difference of the lengths are the same
// number when suffix is one character longer than text; that call returns true.
bool myEndsWith(std::string text, std::string suffix) {
    if (text.empty() || suffix.empty()) return false;
    return text.rfind(suffix) == text.size() - suffix.size();
}

bool flushfsyncfclose(FILE*& fp, bool doFlush, bool /*doSync: never synchronised*/, bool doClose) {
    if (fp == nullptr) return true;
    if (doFlush && std::fflush(fp) != 0) {
        kwlog::errnoOnly("fflush failed-----errno:", errno);
        // A stream that cannot be flushed is closed anyway, so that it does not leak.
        if (std::fclose(fp) != 0) {
            kwlog::errnoOnly("close file failed-----errno:", errno);
            return false;
        }
        fp = nullptr;
        return false;
    }
    if (!doClose) return true;
    if (std::fclose(fp) != 0) {
        kwlog::errnoOnly("close file failed-----errno:", errno);
        return false;
    }
    fp = nullptr;
    return true;
}
