// notetool on the note files built to break a reader: every command either succeeds or says
// what failed in one line on standard error and exits with 1; it never crashes, never hangs,
// and never leaves a half-written output file.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hostile_notes.h"
#include "notefiles.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;

struct ToolRun {
    int code = -1;  // the exit code, or 128 + the signal that ended the tool
    std::string err;
    long peakKb = 0;
};

// Runs notetool with standard output discarded and standard error in a file; a tool that
// spins is stopped by its CPU limit, which shows as a signal.
ToolRun notetool(const notetest::ScratchDir& dir, std::vector<std::string> args) {
    const std::string errPath = dir.path("stderr.txt");
    args.insert(args.begin(), NOTETOOL_PATH);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    rlimit cpu{}, saved{};
    getrlimit(RLIMIT_CPU, &saved);
    cpu = {60, 60};
    setrlimit(RLIMIT_CPU, &cpu);  // inherited by the child; restored for this process below
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[0], &files, nullptr, argv.data(), environ);
    setrlimit(RLIMIT_CPU, &saved);
    posix_spawn_file_actions_destroy(&files);
    ToolRun run;
    if (spawned != 0) return run;
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.peakKb = usage.ru_maxrss;
    std::ifstream err(errPath);
    run.err.assign(std::istreambuf_iterator<char>(err), {});
    return run;
}

std::vector<std::string> filesIn(const std::string& dir) {
    std::vector<std::string> names;
    if (fs::is_directory(dir))
        for (const auto& entry : fs::directory_iterator(dir)) names.push_back(entry.path().filename().string());
    return names;
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

        run = notetool(dir, {"render", note, "-o", dir.path("pdf/n.pdf"), "-j", "1"});
        expectOutcome(run, note);
        EXPECT_EQ(filesIn(dir.path("pdf")).size(), run.code == 0 ? 1u : 0u);

        run = notetool(dir, {"strokes", note, "--page", "1", "-o", dir.path("strokes.json")});
        expectOutcome(run, note);
        EXPECT_EQ(fs::exists(dir.path("strokes.json")), run.code == 0);
    }
}

}  // namespace
