#ifndef NOTETOOL_HELP_FORMAT_H
#define NOTETOOL_HELP_FORMAT_H

// How notetool's --help and manual page show options: text wrapped to a terminal's 80
// columns, each option with the name of its argument, and what an option excludes or needs
// said as a sentence of its description.

#include <cstddef>
#include <string>

#include <CLI/CLI.hpp>

namespace notetool {

constexpr std::size_t kHelpWidth = 80;

// The text with each line broken at spaces into lines of at most `width` columns (a longer
// word stays whole). A continued line of an indented line (a list's entry) starts in column
// `indent`, or under the line's own start where that is further in.
std::string wrapText(const std::string& text, std::size_t width, std::size_t indent = 0);

// The name of an option's argument ("FILE", "SIZE"); empty for a flag or a positional one,
// whose name says it.
std::string optionArgument(const CLI::Option& option);

// The option's description, followed by what it excludes and needs as sentences.
std::string optionDescription(const CLI::Option& option);

class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter();
    std::string make_option(const CLI::Option* option, bool positional) const override;
    std::string make_description(const CLI::App* app) const override;
    std::string make_footer(const CLI::App* app) const override;
    std::string make_subcommand(const CLI::App* command) const override;
};

}  // namespace notetool

#endif
