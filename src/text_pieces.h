#ifndef LIBNOTE_SRC_TEXT_PIECES_H
#define LIBNOTE_SRC_TEXT_PIECES_H

// Splitting text without copying it, for split() and the metadata block's items alike.

#include <cstddef>
#include <string_view>

namespace kwtext {

// Calls f(begin, length) for each non-empty piece of text between characters of delimiters.
// A single delimiter, the common case (">", ":", ","), is searched for as one character:
// the search for any of a set tests the set once per character of the text.
template <class F>
void forEachPiece(std::string_view text, std::string_view delimiters, F&& f) {
    if (delimiters.empty()) return;
    const auto next = [&](std::size_t from) {
        return delimiters.size() == 1 ? text.find(delimiters[0], from) : text.find_first_of(delimiters, from);
    };
    std::size_t start = 0;
    for (std::size_t at = next(0); at != std::string_view::npos; at = next(start)) {
        if (at > start) f(start, at - start);
        start = at + 1;
    }
    if (start < text.size()) f(start, text.size() - start);
}

}  // namespace kwtext

#endif
