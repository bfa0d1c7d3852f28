#include "help_format.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <vector>

namespace notetool {

namespace {

// Option names and the descriptions beside them: descriptions start in this column.
constexpr std::size_t kNameColumn = 26;

// Breaks at the last space that fits, keeping the line's own spacing ("  17  reason").
std::string wrapLine(std::string line, std::size_t width, std::size_t indent) {
    const std::size_t lead = line.find_first_not_of(' ');
    if (lead == std::string::npos) return "";
    const std::string continued(lead > 0 ? std::max(indent, lead) : 0, ' ');
    std::string out;
    while (line.size() > width) {
        const std::size_t start = line.find_first_not_of(' ');
        std::size_t cut = line.rfind(' ', width);
        if (cut == std::string::npos || cut < start) cut = line.find(' ', start);  // a long word stays whole
        const std::size_t next = cut == std::string::npos ? cut : line.find_first_not_of(' ', cut);
        if (next == std::string::npos) break;
        out += line.substr(0, line.find_last_not_of(' ', cut) + 1) + "\n";
        line = continued + line.substr(next);
    }
    return out + line;
}

// "--a", "--a and --b", "--a, --b and --c".
std::string optionList(const std::set<CLI::Option*>& options) {
    std::vector<std::string> names;
    for (const CLI::Option* option : options) names.push_back(option->get_name());
    std::sort(names.begin(), names.end());
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i)
        list += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    return list;
}

// CLI11's names of the value types, which say less than the option's own name does.
bool isTypeName(const std::string& name) {
    return name == "TEXT" || name == "INT" || name == "UINT" || name == "FLOAT" || name == "NUMBER" || name.empty();
}

// The description goes beside a short name, under a long one, and wraps in its column.
std::string twoColumns(const std::string& name, const std::string& description) {
    const std::string column(kNameColumn, ' ');
    const std::string text = name.size() + 1 < kNameColumn ? name + std::string(kNameColumn - name.size(), ' ')
                                                            : name + "\n" + column;
    return text + wrapText(column + description, kHelpWidth, kNameColumn).substr(kNameColumn);
}

}  // namespace

std::string wrapText(const std::string& text, std::size_t width, std::size_t indent) {
    std::istringstream lines(text);
    std::string out;
    for (std::string line; std::getline(lines, line);) out += wrapLine(line, width, indent) + "\n";
    return out;
}

std::string optionArgument(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0 || option.get_positional()) return "";
    const std::string type = option.get_type_name().substr(0, option.get_type_name().find(':'));
    if (!isTypeName(type)) return type;
    std::string name = option.get_lnames().empty() ? option.get_snames().front() : option.get_lnames().front();
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    return name;
}

std::string optionDescription(const CLI::Option& option) {
    std::string text = option.get_description().empty() ? "Print this help and exit" : option.get_description();
    if (!text.empty() && text.back() != '.') text += '.';
    if (!option.get_excludes().empty()) text += " Cannot be combined with " + optionList(option.get_excludes()) + ".";
    if (!option.get_needs().empty()) text += " Needs " + optionList(option.get_needs()) + " as well.";
    return text;
}

HelpFormatter::HelpFormatter() { column_width(kNameColumn); }

std::string HelpFormatter::make_option(const CLI::Option* option, bool positional) const {
    const std::string argument = optionArgument(*option);
    std::string name = "  " + make_option_name(option, positional) + (argument.empty() ? "" : " " + argument);
    if (option->get_required() && !positional) name += " (required)";
    return twoColumns(name, optionDescription(*option));
}

std::string HelpFormatter::make_description(const CLI::App* app) const {
    return wrapText(CLI::Formatter::make_description(app), kHelpWidth);
}

std::string HelpFormatter::make_footer(const CLI::App* app) const {
    // A list of codes ("  17  a read failed") wraps under its text, not under its number.
    return wrapText(CLI::Formatter::make_footer(app), kHelpWidth, 7);
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
    return twoColumns("  " + command->get_name(), command->get_description());
}

}  // namespace notetool
