// notetool: turns the note files of an e-ink writing tablet into images, PDF, SVG and
// strokes, through libNote.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <malloc.h>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "completion.h"
#include "console.h"
#include "interrupts.h"
#include "mime_info.h"
#include "status.h"

namespace {

// Allocations up to this size come from the heap, and this much free memory is kept there.
constexpr int kKeptAllocation = 64 << 20;

const char* const kDescription =
    "notetool reads the note files of an e-ink writing tablet through libNote and gets their pages out: "
    "as PNG images, as PDF (the picture, losslessly, or traced into vector outlines) and SVG, as pen strokes, "
    "and for whole folders at once.";

const char* const kFooter =
    "Exit codes: 0 all done; 1 some inputs failed or an output could not be written (each failure is one line on "
    "standard error, \"notetool: NOTE: OUTPUT: ...\"); 2 usage error, before anything is written; 128 + N when "
    "signal N ended the run (130 for Ctrl-C, 143 for SIGTERM, 129 for SIGHUP), which then removes its temporary "
    "files and ends the progress line.\n"
    "libNote writes its own log while it reads; notetool sends that log to the file given by --log "
    "(appended), or discards it, so that its own output stays clean. Output files are written under a "
    "temporary name and renamed once complete, so a failure never leaves a half-written file. An output "
    "that exists and is not a regular file (a device, a FIFO) is written to, never replaced; a symbolic link is "
    "followed. -o - is standard output. Every write is checked, the last one on closing standard output too; "
    "when the disk is full, a run stops after one line that says so.\n"
    "A failure of libNote carries its code with the reason in words, from the table below.";

// The codes of libNote that an error line can carry, with their reasons, from the library's
// own table of them.
std::vector<std::pair<int, const char*>> statusReasons() {
    std::vector<std::pair<int, const char*>> reasons;
    for (int code = 1; code < 64; ++code)
        if (const char* text = status::statusText(code)) reasons.emplace_back(code, text);
    return reasons;
}

std::string footer() {
    std::string text = kFooter;
    for (const auto& [code, reason] : statusReasons()) {
        const std::string number = std::to_string(code);
        text += "\n  " + std::string(number.size() < 3 ? 3 - number.size() : 0, ' ') + number + "  " + reason;
    }
    return text;
}

// troff text: a backslash, a hyphen or a leading dot means something to the formatter.
std::string roff(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\\') out += "\\e";
        else if (c == '-') out += "\\-";
        else out += c;
    }
    std::string escaped;
    std::istringstream lines(out);
    // Each line of the help text is a paragraph of its own.
    for (std::string line; std::getline(lines, line);)
        escaped += (escaped.empty() ? "" : ".PP\n") +
                   (line.empty() || (line[0] != '.' && line[0] != '\'') ? line : "\\&" + line) + "\n";
    return escaped;
}

void manOptions(std::ostringstream& man, const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_group().empty()) continue;  // hidden
        man << ".TP\n.B " << roff(option->get_positional() ? option->get_name(true) : option->get_name(false, true))
            << roff(option->get_description().empty() ? "Print this help and exit" : option->get_description());
    }
}

// The manual page, built from the same descriptions as --help.
std::string manPage(const CLI::App& app) {
    std::ostringstream man;
    man << ".TH NOTETOOL 1 \"\" \"" << notetool::kCreator << "\" \"User Commands\"\n"
        << ".SH NAME\nnotetool \\- get the pages out of handwritten-note files\n"
        << ".SH SYNOPSIS\n.B notetool\n[\\fB\\-\\-log\\fR \\fIFILE\\fR] \\fICOMMAND\\fR [\\fIOPTIONS\\fR]\n"
        << ".SH DESCRIPTION\n" << roff(kDescription) << ".SH OPTIONS\n";
    manOptions(man, app);
    man << ".SH COMMANDS\n";
    for (const CLI::App* command : app.get_subcommands({})) {
        man << ".SS " << command->get_name() << "\n" << roff(command->get_description()) << ".PP\n"
            << roff(command->get_footer());
        manOptions(man, *command);
    }
    man << ".SH EXIT STATUS AND OUTPUT\n" << roff(kFooter);
    for (const auto& [code, reason] : statusReasons()) man << ".TP\n.B " << code << "\n" << roff(reason);
    return man.str();
}

// Messages name an option by its first long name ("--output: the path is empty"); the user
// may have typed another of its names ("-o"), which the message then takes. The last use
// counts, as it is the one whose value the option keeps.
std::string namedAsTyped(const std::string& message, const CLI::App& app, int argc, char** argv) {
    const std::size_t end = std::min(message.find(' '), message.find(':'));
    const std::string canonical = message.substr(0, end);
    if (canonical.rfind("--", 0) != 0 || end == std::string::npos) return message;
    std::vector<const CLI::App*> commands = app.get_subcommands({});
    commands.push_back(&app);
    for (const CLI::App* command : commands)
        for (const CLI::Option* option : command->get_options()) {
            if (option->get_name() != canonical) continue;
            for (int i = argc - 1; i > 0; --i) {
                const std::string typed = argv[i];
                for (const std::string& name : option->get_snames())
                    if (typed.rfind("-" + name, 0) == 0) return "-" + name + message.substr(end);
                for (const std::string& name : option->get_lnames())
                    if (typed == "--" + name || typed.rfind("--" + name + "=", 0) == 0) return "--" + name + message.substr(end);
            }
        }
    return message;
}

struct Command {
    const CLI::App* app;
    std::function<int()> run;
};

}  // namespace

int main(int argc, char** argv) {
    using namespace notetool;
    handleSignals();
    // A write past a file-size limit should fail like any other write (and the temporary
    // file be removed), not kill the process.
    std::signal(SIGXFSZ, SIG_IGN);
    // Tracing a page allocates and frees the same few megabytes for every colour of every
    // page (potrace's bitmaps and paths). Left to itself, malloc hands them back to the system
    // and takes them again, and the page faults cost a sixth of the tracing; the memory is
    // kept instead, bounded by the pages in flight.
    mallopt(M_MMAP_THRESHOLD, kKeptAllocation);
    mallopt(M_TRIM_THRESHOLD, kKeptAllocation);

    CLI::App app(kDescription, "notetool");
    app.footer(footer());
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", std::string(kCreator));
    std::string logPath;
    offerFiles(app.add_option("--log", logPath, "Append libNote's own log to this file (default: discard it)"));
    // The build writes these from the parser and the library, so that they never drift from
    // them: the manual page, the shell completion, and the file type of notes.
    bool man = false;
    std::string completionShell;
    bool mime = false;
    app.add_flag("--man", man, "Print the manual page")->group("");
    app.add_option("--completion", completionShell, "Print the completion script for this shell")
        ->check(CLI::IsMember({"bash"}))
        ->group("");
    app.add_flag("--mime-info", mime, "Print the shared-mime-info description of note files")->group("");

    // Each command's options and the work that runs on them.
    InfoArgs info;
    RenderArgs render;
    StrokesArgs strokes;
    ConvertArgs convert;
    ThumbnailArgs thumbnail;
    const std::vector<Command> commands = {
        {addInfoOptions(app, info), [&] { return runInfo(info); }},
        {addRenderOptions(app, render), [&] { return runRender(render); }},
        {addStrokesOptions(app, strokes), [&] { return runStrokes(strokes); }},
        {addConvertOptions(app, convert), [&] { return runConvert(convert); }},
        {addThumbnailOptions(app, thumbnail), [&] { return runThumbnail(thumbnail); }},
    };

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        return app.exit(e);  // --help, --version
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "notetool: %s\n", namedAsTyped(e.what(), app, argc, argv).c_str());
        return kExitUsage;
    }
    const auto chosen = std::find_if(commands.begin(), commands.end(), [](const Command& c) { return c.app->parsed(); });
    const bool document = man || !completionShell.empty() || mime;
    if (!document && chosen == commands.end()) {
        std::vector<std::string> names;
        for (const Command& command : commands) names.push_back(command.app->get_name());
        std::fprintf(stderr, "notetool: a command is required: %s\nRun with --help for more information.\n",
                     nameList(names).c_str());
        return kExitUsage;
    }

    int code = kExitOk;
    try {
        if (man) {
            printOut(manPage(app));
        } else if (!completionShell.empty()) {
            printOut(bashCompletion(app));
        } else if (mime) {
            printOut(mimeInfo());
        } else {
            redirectLibraryLog(logPath);
            code = chosen->run();
        }
    } catch (const UsageError& e) {
        reportError(namedAsTyped(e.what(), app, argc, argv));
        code = kExitUsage;
    } catch (const std::exception& e) {
        reportError(e.what());
        code = kExitFailed;
    }
    try {
        closeStandardOutput();
    } catch (const OutputError& e) {
        reportError(e.what());
        code = kExitFailed;
    }
    return code;
}
