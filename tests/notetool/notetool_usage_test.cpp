// notetool's command line, tightened: every value that cannot work is a usage error (exit 2)
// with a plain message that names the option as it was typed, before anything is written;
// failures of the library carry their reason in words beside the code.

#include <filesystem>
#include <regex>

#include <gtest/gtest.h>

#include "notetool_run.h"
#include "status.h"

namespace {

namespace fs = std::filesystem;
using namespace notetest;

struct Mistake {
    std::vector<std::string> args;  // NOTE stands for the note, OUT for a path in the scratch folder
    std::string message;            // the whole of standard error, after "notetool: "
};

TEST(NotetoolUsage, MistakesAreNamedAsTypedAndWriteNothing) {
    ScratchDir dir;
    const std::string note = dir.write("n.note", notewriter::buildNote(boxPages(4)));
    const std::vector<Mistake> mistakes = {
        {{"render", "NOTE", "-o", "OUT/", "--scale", "nan"}, "--scale: nan is not a number from 0.05 to 16"},
        {{"render", "NOTE", "-o", "OUT/", "--scale", "1e308"}, "--scale: 1e308 is not a number from 0.05 to 16"},
        {{"render", "NOTE", "-o", "OUT/", "--scale=100"}, "--scale: 100 is not a number from 0.05 to 16"},
        {{"render", "NOTE", "-o", "OUT/", "--scale", "0"}, "--scale: 0 is not a number from 0.05 to 16"},
        {{"render", "NOTE", "-o", "OUT/", "-j", "0"}, "-j: 0 is not a whole number from 1 to 256"},
        {{"convert", "NOTE", "-o", "OUT/", "--jobs", "257"}, "--jobs: 257 is not a whole number from 1 to 256"},
        {{"render", "NOTE", "-o", "OUT/", "--dpi", "0.5"}, "--dpi: 0.5 is not a number from 50 to 2400"},
        {{"render", "NOTE", "-o", ""}, "-o: the path is empty"},
        {{"render", "NOTE", "-o", "OUT/x.pdf", "--raster", "--vector"}, "--raster excludes --vector"},
        {{"render", "", "-o", "OUT/"}, "FILE: the path is empty"},
        {{"render", "NOTE", "-o", "OUT/x.jpg"}, "-o OUT/x.jpg: .jpg is not the extension of png, pdf or svg (a folder's name ends in /)"},
        {{"render", "NOTE", "--output", "OUT/x.pdf", "--format", "png"}, "--output OUT/x.pdf: the extension says pdf, --format says png"},
        {{"convert", "NOTE", "-o", "OUT/all.pdf"}, "-o OUT/all.pdf: convert writes a folder (a folder's name ends in /)"},
        {{"render", "NOTE", "-o", "OUT/", "--pages", ""}, "--pages: the list is empty"},
        {{"render", "NOTE", "-o", "OUT/", "--pages", "2,13"}, "--pages 2,13: the note has no page 13 (it has 4)"},
        {{"render", "NOTE", "-o", "OUT/", "--pages", "4-2"}, "--pages 4-2: the range 4-2 runs backwards"},
        {{"render", "NOTE", "-o", "OUT/", "--format", "gif"}, "--format: gif is none of png, pdf or svg"},
        {{"render", "NOTE", "-o", "OUT/", "--layers", "PAPER"},
         "--layers: unknown layer PAPER (known: MAINLAYER, LAYER1, LAYER2, LAYER3, BGLAYER)"},
        {{"render", "NOTE", "-o", "-", "--format", "svg"}, "-o -: svg writes a file per page; choose one page with --pages"},
        {{"convert", "NOTE", "-o", "-"}, "-o -: convert writes a folder (a folder's name ends in /)"},
        {{"strokes", "NOTE", "--page", "0"}, "--page 0: the note has no page 0 (it has 4)"},
        {{"strokes", "NOTE", "--page", "1", "-o", "OUT/s.txt"}, "-o OUT/s.txt: .txt is not the extension of json or svg"},
        {{"strokes", "NOTE", "--page", "1", "-o", "OUT/s.svg", "--format", "json"}, "-o OUT/s.svg: the extension says svg, --format says json"},
    };
    for (const Mistake& mistake : mistakes) {
        std::vector<std::string> args;
        for (const std::string& arg : mistake.args)
            args.push_back(arg == "NOTE" ? note : std::regex_replace(arg, std::regex("^OUT"), dir.path("out")));
        const std::string message = std::regex_replace(mistake.message, std::regex("OUT"), dir.path("out"));
        SCOPED_TRACE(message);
        const ToolRun r = notetool(dir, args);
        EXPECT_EQ(r.code, 2);
        EXPECT_EQ(r.err, "notetool: " + message + "\n");
        EXPECT_FALSE(fs::exists(dir.path("out")) || fs::exists(dir.path("-")));
    }
    // A command is required, and render's output.
    using Args = std::vector<std::string>;
    for (const Args& args : {Args{}, Args{"frobnicate"}, Args{"render", note}}) EXPECT_EQ(notetool(dir, args).code, 2);
}

TEST(NotetoolUsage, ExtensionsAndListsAreReadAsMeant) {
    ScratchDir dir;
    notewriter::Note layered = boxPages(2);
    layered.pages[0].layers.push_back({"LAYER1", std::vector<uint8_t>(notewriter::kPictureSize, 0x30), {}});
    const std::string note = dir.write("n.note", notewriter::buildNote(layered));

    // The extension chooses the format whatever its case (render's: the planner's test).
    ToolRun r = notetool(dir, {"strokes", note, "--page", "1", "-o", dir.path("S.SVG")});
    EXPECT_EQ(readWholeFile(dir.path("S.SVG")).rfind("<?xml", 0), 0u) << r.err;

    // --layers takes one comma-separated value: the note after it stays the input.
    r = notetool(dir, {"render", "--layers", "MAINLAYER,LAYER1", note, "-o", dir.path("d/")});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(filesIn(dir.path("d")), (std::vector<std::string>{"n-p1.png", "n-p2.png"}));
}

TEST(NotetoolUsage, FailuresSayWhatFailedInWords) {
    ScratchDir dir;
    dir.write("bad.note", "not a note at all, but long enough to be read as one");
    fs::create_directory(dir.path("folder.note"));
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{"info", dir.path("bad.note")},
         dir.path("bad.note") + ": not a readable note: " + status::statusText(status::ReadFailed) + " (code 17)"},
        {{"info", dir.path("folder.note")}, dir.path("folder.note") + ": Is a directory"},
        {{"render", dir.path("missing.note"), "-o", dir.path("x.png")}, dir.path("missing.note") + ": No such file or directory"},
    };
    for (const Case& c : cases) {
        const ToolRun r = notetool(dir, c.args);
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err, "notetool: " + c.message + "\n");
    }

    // The help and the manual list the exit codes, and every library code with its reason,
    // from the same table.
    const ToolRun help = notetool(dir, {"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("Exit codes: 0 all done; 1 some inputs failed"), std::string::npos);
    EXPECT_NE(help.out.find("\n   17  " + std::string(status::statusText(status::ReadFailed))), std::string::npos);
    const ToolRun man = notetool(dir, {"--man"});
    EXPECT_EQ(man.out.rfind(".TH NOTETOOL 1", 0), 0u);
    EXPECT_NE(man.out.find(".SS convert"), std::string::npos);
    for (int code = 1; code < 64; ++code) {
        const char* text = status::statusText(code);
        EXPECT_TRUE(!text || man.out.find(".B " + std::to_string(code) + "\n" + text) != std::string::npos) << code;
    }
}

}  // namespace
