#include "page_selection.h"

#include <algorithm>
#include <cctype>

#include "console.h"

namespace notetool {

namespace {

int parseNumber(const std::string& text, const std::string& given) {
    if (text.empty() || text.size() > 9 || !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); }))
        throw UsageError(given + ": \"" + text + "\" is not a page number");
    return std::stoi(text);
}

}  // namespace

std::vector<int> selectPages(const std::string& list, const std::vector<int>& notePages, const std::string& option) {
    if (list.empty()) throw UsageError(option + ": the list is empty");
    const std::string given = option + " " + list;
    std::vector<int> chosen;
    std::size_t start = 0;
    while (start <= list.size()) {
        const std::size_t comma = std::min(list.find(',', start), list.size());
        const std::string item = list.substr(start, comma - start);
        const std::size_t dash = item.find('-');
        const int first = parseNumber(item.substr(0, dash), given);
        const int last = dash == std::string::npos ? first : parseNumber(item.substr(dash + 1), given);
        if (last < first) throw UsageError(given + ": the range " + item + " runs backwards");
        for (int page = first; page <= last; ++page) {
            if (!std::binary_search(notePages.begin(), notePages.end(), page))
                throw UsageError(given + ": the note has no page " + std::to_string(page) + " (it has " +
                                 std::to_string(notePages.size()) + ")");
            chosen.push_back(page);
        }
        start = comma + 1;
    }
    std::sort(chosen.begin(), chosen.end());
    chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
    return chosen;
}

}  // namespace notetool
