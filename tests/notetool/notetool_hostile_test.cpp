// notetool on the note files built to break a reader: every command either succeeds or says
// what failed in one line on standard error and exits with 1; it never crashes, never hangs,
// and never leaves a half-written output file.

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hostile_notes.h"
#include "notefiles.h"
#include "run_tool.h"

namespace {

namespace fs = std::filesystem;

using notetest::filesIn;
using notetest::ToolRun;

// A tool that spins is stopped by its CPU limit, which shows as a signal.
ToolRun notetool(const notetest::ScratchDir& dir, std::vector<std::string> args) {
    args.insert(args.begin(), NOTETOOL_PATH);
    notetest::ToolLimits limits;
    limits.cpuSeconds = 60;
    return notetest::runTool(dir.path(""), std::move(args), limits);
}

// A failure is one line naming the note; a success says nothing.
void expectOutcome(const ToolRun& run, const std::string& note) {
    ASSERT_TRUE(run.code == 0 || run.code == 1) << "exit " << run.code << ": " << run.err;
    if (run.code == 0) {
        EXPECT_EQ(run.err, "");
        return;
    }
    EXPECT_EQ(run.err.rfind("notetool: " + note + ":", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_LT(run.peakKb, 256 * 1024);
}

TEST(NotetoolOnHostileNotes, FailsInOneLineAndLeavesNoPartialOutput) {
    for (const hostile::Note& n : hostile::catalogue()) {
        SCOPED_TRACE(n.attack);
        notetest::ScratchDir dir;
        const std::string note = dir.write("hostile.note", n.bytes);
        fs::create_directories(dir.path("png"));
        fs::create_directories(dir.path("pdf"));

        ToolRun run = notetool(dir, {"info", note});
        expectOutcome(run, note);

        run = notetool(dir, {"render", note, "-o", dir.path("png/"), "-j", "1"});
        expectOutcome(run, note);
        EXPECT_EQ(filesIn(dir.path("png")).size(), run.code == 0 ? 1u : 0u);

        run = notetool(dir, {"render", note, "-o", dir.path("pdf/n.pdf"), "-j", "1", "--strict"});
        expectOutcome(run, note);
        EXPECT_EQ(filesIn(dir.path("pdf")).size(), run.code == 0 ? 1u : 0u);

        run = notetool(dir, {"strokes", note, "--page", "1", "-o", dir.path("strokes.json")});
        expectOutcome(run, note);
        EXPECT_EQ(fs::exists(dir.path("strokes.json")), run.code == 0);
    }
}

}  // namespace
