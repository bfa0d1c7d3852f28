#ifndef NOTETOOL_PAGE_SELECTION_H
#define NOTETOOL_PAGE_SELECTION_H

// Which pages to render and what their files are called.

#include <stdexcept>
#include <string>
#include <vector>

namespace notetool {

// A mistake on the command line (exit code 2), worded as the rest of the error line.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Parses "1,3-5" against the note's page numbers (those of its index) and returns the chosen
// pages in ascending order, each once; an empty list chooses every page. A page the note
// does not have, or a list that cannot be read, is a UsageError.
std::vector<int> selectPages(const std::string& list, const std::vector<int>& notePages);

// "<note>-p<N>.<ext>", N zero-padded to the width of the note's largest page number, so that
// the files sort in page order.
std::string pageFileName(const std::string& noteStem, int page, int largestPage, const std::string& extension);

// The file name without its folder and without its last extension: "a/b/x.note" -> "x".
std::string noteStem(const std::string& path);

}  // namespace notetool

#endif
