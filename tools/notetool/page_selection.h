#ifndef NOTETOOL_PAGE_SELECTION_H
#define NOTETOOL_PAGE_SELECTION_H

// Which pages to render, as --pages chooses them.

#include <string>
#include <vector>

namespace notetool {

// Parses "1,3-5" against the note's page numbers (those of its index) and returns the chosen
// pages in ascending order, each once; an empty list chooses every page. A page the note
// does not have, or a list that cannot be read, is a UsageError.
std::vector<int> selectPages(const std::string& list, const std::vector<int>& notePages);

}  // namespace notetool

#endif
