#ifndef LIBNOTE_SRC_LOG_H
#define LIBNOTE_SRC_LOG_H

// The library's log is standard output, written through stdio so that a host can send it
// elsewhere by redirecting file descriptor 1. Texts are printed exactly as given: most have
// no line end of their own.

#include <cstdio>
#include <cstring>
#include <string>

namespace kwlog {

inline void text(const char* s) { std::fputs(s, stdout); }
inline void text(const std::string& s) { std::fwrite(s.data(), 1, s.size(), stdout); }

// A text followed by a line end.
inline void line(const char* s) {
    std::fputs(s, stdout);
    std::fputc('\n', stdout);
}

inline void number(long long v) { std::fprintf(stdout, "%lld", v); }
inline void unsignedNumber(unsigned long long v) { std::fprintf(stdout, "%llu", v); }

// What strerror_r gives: glibc's returns the text, POSIX's (musl's, in WebAssembly builds)
// fills the buffer and returns a status.
inline const char* strerrorResult(const char* text, const char*) { return text; }
inline const char* strerrorResult(int, const char* buf) { return buf; }

// The system's text for an error number, safe to call from several threads.
inline std::string errorText(int err) {
    char buf[256] = "";
    return strerrorResult(strerror_r(err, buf, sizeof buf), buf);
}

// "<text><errno>": the form of the close and flush failures.
inline void errnoOnly(const char* s, int err) {
    std::fprintf(stdout, "%s%d", s, err);
}

// "<text><errno><separator><system text>": separator is ",errmsg:" or "errmsg:".
inline void errnoWithText(const char* s, int err, const char* separator) {
    std::fprintf(stdout, "%s%d%s%s", s, err, separator, errorText(err).c_str());
}

}  // namespace kwlog

#endif
