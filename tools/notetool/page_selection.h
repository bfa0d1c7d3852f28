#ifndef NOTETOOL_PAGE_SELECTION_H
#define NOTETOOL_PAGE_SELECTION_H

// Which pages to render, as --pages chooses them.

#include <string>
#include <vector>

namespace notetool {

// Parses "1,3-5" against the note's page numbers (those of its index) and returns the chosen
// pages in ascending order, each once. A page the note does not have, an empty list, or a
// list that cannot be read, is a UsageError that names the option as it was given ("--page",
// "--pages").
std::vector<int> selectPages(const std::string& list, const std::vector<int>& notePages, const std::string& option);

}  // namespace notetool

#endif
