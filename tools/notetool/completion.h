#ifndef NOTETOOL_COMPLETION_H
#define NOTETOOL_COMPLETION_H

// notetool's shell completion, written by the build (notetool --completion bash) from the
// parser's own declarations: its commands, their options, and the values an option takes as
// they are declared beside it from the tables the checks and the help texts use. What the
// shell offers is then what the parser accepts and --help describes, and cannot drift from it.

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace notetool {

// Declares the words the option's value is one of; returns the option.
CLI::Option* offerWords(CLI::Option* option, const std::vector<std::string>& words);
// Declares the option's value a comma-separated list of those words; returns the option.
CLI::Option* offerWordList(CLI::Option* option, const std::vector<std::string>& words);
// Declares the option's value, or the positional argument, any file; returns the option.
// Undeclared, a positional argument is a note (or a folder of notes), and an option's value
// is left to the user (a number, a page list).
CLI::Option* offerFiles(CLI::Option* option);

// The bash completion script of the application, for bash-completion's folder of scripts
// (named after the program) or to be sourced.
std::string bashCompletion(const CLI::App& app);

}  // namespace notetool

#endif
