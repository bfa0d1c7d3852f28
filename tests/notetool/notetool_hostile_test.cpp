// notetool on the note files built to break a reader: every command either succeeds or says
// what failed in one line on standard error and exits with 1; it never crashes, never hangs,
// and never leaves a half-written output file.

#include <filesystem>

#include <gtest/gtest.h>

#include "hostile_notes.h"
#include "notetool_run.h"

namespace {

namespace fs = std::filesystem;
using namespace notetest;

// A tool that spins is stopped by its CPU limit, which shows as a signal.
ToolRun run(const ScratchDir& dir, std::vector<std::string> args) { return notetool(dir, std::move(args), {{0, 60}, "", 0}); }

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
        ScratchDir dir;
        const std::string note = dir.write("hostile.note", n.bytes);
        fs::create_directories(dir.path("png"));
        fs::create_directories(dir.path("pdf"));

        expectOutcome(run(dir, {"info", note}), note);
        ToolRun r = run(dir, {"render", note, "-o", dir.path("png/"), "-j", "1"});
        expectOutcome(r, note);
        EXPECT_EQ(filesIn(dir.path("png")).size(), r.code == 0 ? 1u : 0u);
        r = run(dir, {"render", note, "-o", dir.path("pdf/n.pdf"), "-j", "1", "--strict"});
        expectOutcome(r, note);
        EXPECT_EQ(filesIn(dir.path("pdf")).size(), r.code == 0 ? 1u : 0u);
        r = run(dir, {"strokes", note, "--page", "1", "-o", dir.path("strokes.json")});
        expectOutcome(r, note);
        EXPECT_EQ(fs::exists(dir.path("strokes.json")), r.code == 0);
    }
}

}  // namespace
