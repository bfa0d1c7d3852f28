#include "completion.h"

#include <map>

namespace notetool {

namespace {

struct Offer {
    enum Kind { Words, WordList, Files } kind;
    std::vector<std::string> words;
};

// What was declared for each option. The parser is built once per run, and its options live
// as long as it does.
std::map<const CLI::Option*, Offer>& offers() {
    static std::map<const CLI::Option*, Offer> declared;
    return declared;
}

CLI::Option* declare(CLI::Option* option, Offer offer) {
    offers()[option] = std::move(offer);
    return option;
}

const Offer* offerOf(const CLI::Option* option) {
    const auto found = offers().find(option);
    return found == offers().end() ? nullptr : &found->second;
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

// The text as one word of a shell command.
std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// The options --help lists (hidden ones are in no group), positionals included.
std::vector<const CLI::Option*> shownOptions(const CLI::App& app) {
    std::vector<const CLI::Option*> shown;
    for (const CLI::Option* option : app.get_options())
        if (!option->get_group().empty()) shown.push_back(option);
    return shown;
}

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

bool takesValue(const CLI::Option& option) { return !option.get_positional() && option.get_items_expected_max() > 0; }

// The names of the options that take a value, which is then the next word (or, after "=",
// the one after it).
std::vector<std::string> valuedNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : shownOptions(app))
        if (takesValue(*option))
            for (const std::string& name : namesOf(*option)) names.push_back(name);
    return names;
}

// The shell command that completes the current word ("$1") as the offer says.
std::string completing(const Offer* offer) {
    if (!offer) return "_notetool_notes \"$1\"";  // what a positional argument is unless declared
    switch (offer->kind) {
    case Offer::Words: return "_notetool_words \"$1\" " + quoted(joined(offer->words, " "));
    case Offer::WordList: return "_notetool_word_list \"$1\" " + quoted(joined(offer->words, " "));
    case Offer::Files: break;
    }
    return "_notetool_files \"$1\"";
}

// The case arms that complete an option's value, the previous word ("$2") being the option.
// The value of an option declared with nothing to offer is the user's to type.
std::string valueArms(const CLI::App& app) {
    std::string arms;
    std::vector<std::string> typedByHand;
    for (const CLI::Option* option : shownOptions(app)) {
        if (!takesValue(*option)) continue;
        const std::vector<std::string> names = namesOf(*option);
        if (const Offer* offer = offerOf(option))
            arms += "    " + joined(names, "|") + ") " + completing(offer) + "; return ;;\n";
        else
            typedByHand.insert(typedByHand.end(), names.begin(), names.end());
    }
    if (!typedByHand.empty()) arms += "    " + joined(typedByHand, "|") + ") return ;;\n";
    return arms;
}

// Every name of the options --help lists.
std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : shownOptions(app))
        for (const std::string& name : namesOf(*option)) names.push_back(name);
    return names;
}

// The completion of the positional argument a word would be.
std::string positionalCompletion(const CLI::App& command) {
    std::vector<const CLI::Option*> positionals;
    for (const CLI::Option* option : shownOptions(command))
        if (option->get_positional()) positionals.push_back(option);
    if (positionals.empty()) return "";
    bool alike = true;
    for (const CLI::Option* positional : positionals)
        alike = alike && completing(offerOf(positional)) == completing(offerOf(positionals.front()));
    if (alike) return "    " + completing(offerOf(positionals.front())) + "\n";
    // Which one it is: count the words before it that are neither options nor their values.
    std::string text = "    case $(_notetool_position \"$3\" " + quoted(joined(valuedNames(command), " ")) + ") in\n";
    for (std::size_t i = 0; i < positionals.size(); ++i)
        text += "    " + (i + 1 == positionals.size() ? std::string("*") : std::to_string(i)) + ") " +
                completing(offerOf(positionals[i])) + " ;;\n";
    return text + "    esac\n";
}

// A function that completes word $1 of the command (or of the program, before any command),
// $2 being the word before it and $3 the index of the command's name: the value of the option
// before it, else an option's name, else what `otherwise` completes.
std::string completionFunction(const std::string& name, const CLI::App& app, const std::string& otherwise) {
    const std::string arms = valueArms(app);
    return "\n" + name + "() {\n" + (arms.empty() ? "" : "    case $2 in\n" + arms + "    esac\n") +
           "    if [[ $1 == -* ]]; then\n" +
           "        _notetool_words \"$1\" " + quoted(joined(optionNames(app), " ")) + "\n        return\n    fi\n" +
           otherwise + "}\n";
}

// The helpers every command's completion uses; $1 is the word being completed.
const char* const kHelpers = R"(# Words from a list.
_notetool_words() {
    local IFS=$' \t\n'
    COMPREPLY=($(compgen -W "$2" -- "$1"))
}

# A comma-separated list of words: the words before the last comma are kept.
_notetool_word_list() {
    local before= last=$1
    if [[ $1 == *,* ]]; then
        before=${1%,*},
        last=${1##*,}
    fi
    local IFS=$' \t\n'
    COMPREPLY=($(compgen -P "$before" -W "$2" -- "$last"))
}

# Any file, and folders to go into.
_notetool_files() {
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$1"))
}

# Notes: files named *.note in any case, and folders, which hold notes or lead to them.
_notetool_notes() {
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -d -- "$1") $(compgen -f -X '!*.[Nn][Oo][Tt][Ee]' -- "$1"))
}

# How many positional arguments precede the current word, counted from the word after the
# command at index $1; $2 lists the options whose value is the next word.
_notetool_position() {
    local i count=0 valued=" $2 "
    for ((i = $1 + 1; i < COMP_CWORD; i++)); do
        if [[ $valued == *" ${COMP_WORDS[i]} "* ]]; then
            i=$((i + 1))
            [[ ${COMP_WORDS[i]-} == = ]] && i=$((i + 1))
        elif [[ ${COMP_WORDS[i]} != -* ]]; then
            count=$((count + 1))
        fi
    done
    echo "$count"
}
)";

}  // namespace

CLI::Option* offerWords(CLI::Option* option, const std::vector<std::string>& words) {
    return declare(option, {Offer::Words, words});
}

CLI::Option* offerWordList(CLI::Option* option, const std::vector<std::string>& words) {
    return declare(option, {Offer::WordList, words});
}

CLI::Option* offerFiles(CLI::Option* option) { return declare(option, {Offer::Files, {}}); }

std::string bashCompletion(const CLI::App& app) {
    const std::string program = app.get_name();
    std::string script = "# bash completion for " + program + ", written by `" + program +
                         " --completion bash` from its own declarations of commands and options.\n\n" + kHelpers;
    std::vector<std::string> commandNames;
    std::string commandArms;
    for (const CLI::App* command : app.get_subcommands({})) {
        const std::string function = "_notetool_command_" + command->get_name();
        commandNames.push_back(command->get_name());
        commandArms += "        " + command->get_name() + ") " + function + " \"$cur\" \"$prev\" \"$i\"; return ;;\n";
        script += completionFunction(function, *command, positionalCompletion(*command));
    }
    script += completionFunction("_notetool_program", app,
                                 "    _notetool_words \"$1\" " + quoted(joined(commandNames, " ")) + "\n");
    const std::vector<std::string> valued = valuedNames(app);
    script += R"(
_notetool() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]-} i
    # bash splits "--format=pdf" at the "=".
    if [[ $cur == = ]]; then
        cur=
    elif [[ $prev == = ]]; then
        prev=${COMP_WORDS[COMP_CWORD-2]}
    fi
    COMPREPLY=()
    # The first word that names a command, after the program's own options and their values.
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
)";
    if (!valued.empty())
        script += "        " + joined(valued, "|") + ")\n            i=$((i + 1))\n            [[ ${COMP_WORDS[i]-} == = ]] && i=$((i + 1)) ;;\n";
    return script + commandArms + "        esac\n    done\n    _notetool_program \"$cur\" \"$prev\" 0\n}\n\ncomplete -F _notetool " +
           program + "\n";
}

}  // namespace notetool
