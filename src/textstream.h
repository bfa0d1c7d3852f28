#ifndef LIBNOTE_SRC_TEXTSTREAM_H
#define LIBNOTE_SRC_TEXTSTREAM_H

// Conversions between the text of metadata items and numbers. A note file must read the
// same whoever wrote it, so every stream here reads and writes in the "C" locale: a host
// whose global locale groups digits ("1,234,567") changes neither what the modules write
// nor what they read.

#include <locale>
#include <sstream>
#include <string>

namespace textstream {

// A text stream that ignores the global locale.
class ClassicStream : public std::stringstream {
public:
    ClassicStream() { imbue(std::locale::classic()); }
    explicit ClassicStream(const std::string& text) : std::stringstream(text) { imbue(std::locale::classic()); }
};

// What a formatted extraction takes from the start of text: a number up to its first
// non-digit (0 without one, the nearest limit when out of range), or a first word.
template <class T>
T firstOf(const std::string& text) {
    ClassicStream in(text);
    T value{};
    in >> value;
    return value;
}

// A number written to a call's shared stream and read back as a word. The stream is never
// emptied, so text an earlier conversion left unread comes first; each number reads back
// exactly the digits it wrote when nothing was left.
template <class Number>
std::string decimalWord(ClassicStream& stream, Number number) {
    std::string word;
    stream.clear();
    stream << number;
    stream >> word;
    return word;
}

}  // namespace textstream

#endif
