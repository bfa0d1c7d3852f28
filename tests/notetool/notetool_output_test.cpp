// notetool's output where people really send it: devices, FIFOs and symbolic links, standard
// output and pipes, files that cannot be written, a full disk, an interrupt, a terminal.
// Whatever happens, nothing is replaced that should be written to, no failure goes
// unreported, and nothing half-written or temporary is left behind.

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "notetool_run.h"

namespace {

namespace fs = std::filesystem;
using namespace notetest;

bool isRoot() { return ::geteuid() == 0; }

// A special file made in the scratch folder; "c" devices by their numbers, or a FIFO.
std::string makeNode(const ScratchDir& dir, const std::string& name, mode_t type, int major = 0, int minor = 0) {
    const std::string path = dir.path(name);
    if (::mknod(path.c_str(), type | 0666, makedev(major, minor)) != 0) throw std::runtime_error(path + ": mknod failed");
    return path;
}

mode_t typeOf(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 ? st.st_mode & S_IFMT : 0;
}

// Every file under dir, relative to it, folders left out.
std::vector<std::string> tree(const std::string& dir) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(dir))
        if (!entry.is_directory()) names.push_back(fs::relative(entry.path(), dir).string());
    std::sort(names.begin(), names.end());
    return names;
}

// Temporary files start with a dot.
bool hasTemporaries(const std::vector<std::string>& files) {
    return std::any_of(files.begin(), files.end(), [](const std::string& f) { return fs::path(f).filename().string()[0] == '.'; });
}

// A complete PDF ends with its end-of-file marker.
bool completePdf(const std::string& path) {
    const std::string bytes = readWholeFile(path);
    return bytes.rfind("%PDF-", 0) == 0 && bytes.find("%%EOF", bytes.size() > 8 ? bytes.size() - 8 : 0) != std::string::npos;
}

// A small file system of its own, so that the disk is full without filling the machine's.
// Mounting needs root; without it the test says so and is skipped.
class SmallDisk {
public:
    SmallDisk(const std::string& path, const std::string& size) : path_(path) {
        fs::create_directories(path);
        mounted_ = ::mount("tmpfs", path.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
    }
    ~SmallDisk() {
        if (mounted_) ::umount2(path_.c_str(), MNT_DETACH);
    }
    bool mounted() const { return mounted_; }

private:
    std::string path_;
    bool mounted_ = false;
};

TEST(NotetoolOutput, SpecialFilesAreWrittenToAndLinksFollowed) {
    ScratchDir dir;
    const std::string note = dir.write("n.note", notewriter::buildNote(boxPages(2)));

    // A FIFO is written to, not replaced. Held open for reading and writing here, it takes
    // the strokes without a reader waiting on the other end.
    const std::string fifo = makeNode(dir, "fifo", S_IFIFO);
    const int held = ::open(fifo.c_str(), O_RDWR | O_NONBLOCK);
    ToolRun r = notetool(dir, {"strokes", note, "--page", "1", "-o", fifo});
    EXPECT_EQ(r.code, 0) << r.err;
    std::string sent(65536, '\0');
    const ssize_t n = ::read(held, sent.data(), sent.size());
    ::close(held);
    sent.resize(n > 0 ? std::size_t(n) : 0);
    const auto json = nlohmann::json::parse(sent, nullptr, false);
    EXPECT_TRUE(json.is_object() && json["page"] == 1) << sent;
    EXPECT_EQ(typeOf(fifo), mode_t(S_IFIFO));

    // A symbolic link is followed: its target is what gets replaced, the link stays.
    fs::create_directory(dir.path("real"));
    notewriter::writeFile(dir.path("real/page.png"), "old");
    fs::create_symlink("real/page.png", dir.path("link.png"));
    fs::create_symlink("real/new.png", dir.path("dangling.png"));
    for (const char* link : {"link.png", "dangling.png"}) {
        r = notetool(dir, {"render", note, "--pages", "1", "-o", dir.path(link)});
        EXPECT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(typeOf(dir.path(link)), mode_t(S_IFLNK)) << link;
    }
    EXPECT_EQ(filesIn(dir.path("real")), (std::vector<std::string>{"new.png", "page.png"}));
    EXPECT_EQ(readWholeFile(dir.path("real/page.png")).rfind("\x89PNG", 0), 0u);

    if (!isRoot()) GTEST_SKIP() << "devices need root to be made; FIFOs and links were checked";
    // Devices as /dev/null and /dev/full are, made here: written to, never replaced, and
    // their errors reported.
    const std::string null = makeNode(dir, "null", S_IFCHR, 1, 3);
    const std::string full = makeNode(dir, "full", S_IFCHR, 1, 7);
    r = notetool(dir, {"render", note, "--pages", "1", "-o", null, "--format", "png"});
    EXPECT_EQ(r.code, 0) << r.err;
    r = notetool(dir, {"strokes", note, "--page", "1", "-o", full});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + note + ": " + full + ": No space left on device\n");
    EXPECT_EQ(typeOf(null), mode_t(S_IFCHR));
    EXPECT_EQ(typeOf(full), mode_t(S_IFCHR));
    EXPECT_FALSE(hasTemporaries(filesIn(dir.path(""))));
}

TEST(NotetoolOutput, DashIsStandardOutputForOneFile) {
    ScratchDir dir;
    const std::string note = dir.write("n.note", notewriter::buildNote(boxPages(3)));

    ToolRun r = notetool(dir, {"render", note, "--pages", "2", "-o", "-", "--format", "png"});
    ASSERT_EQ(r.code, 0) << r.err;
    unsigned width = 0, height = 0;
    readPng(dir.path("stdout.txt"), width, height);
    EXPECT_EQ(width, 1404u);

    // Through a pipe, which cannot seek, a whole PDF that qpdf finds sound.
    const std::string command = std::string(NOTETOOL_PATH) + " render " + note + " -o - --format pdf";
    std::FILE* pipe = ::popen(command.c_str(), "r");
    std::string pdf;
    char chunk[4096];
    while (const std::size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) pdf.append(chunk, got);
    EXPECT_EQ(::pclose(pipe), 0);
    dir.write("piped.pdf", pdf);
    r = program(dir, {"qpdf", "--check", dir.path("piped.pdf")});
    EXPECT_EQ(r.code, 0) << r.out;

    r = notetool(dir, {"strokes", note, "--page", "1", "-o", "-", "--format", "svg"});
    EXPECT_EQ(r.out.rfind("<?xml", 0), 0u) << r.err;
}

TEST(NotetoolOutput, EveryWriteErrorIsReportedAndFailsTheRun) {
    ScratchDir dir;
    notewriter::Note strokes = boxPages(1);
    for (int i = 0; i < 10; ++i) strokes.pages[0].strokes.push_back(sampleStroke(i));
    const std::string note = dir.write("n.note", notewriter::buildNote(strokes));
    // Files that take no more than 256 bytes, as on a nearly full disk: the output is cut
    // short, the error line is not, and no file is left half-written.
    fs::create_directory(dir.path("out"));
    const std::string page = dir.path("out/page.png");
    ToolSetup limited;
    limited.limits.fileSizeBytes = 256;
    const struct {
        std::vector<std::string> args;
        std::string err;
    } cases[] = {
        {{"strokes", note, "--page", "1"}, note + ": standard output: File too large"},
        {{"info", "--json", note}, "standard output: File too large"},
        {{"render", note, "-o", page}, note + ": " + page + ": File too large"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0]);
        const ToolRun r = notetool(dir, c.args, limited);
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err, "notetool: " + c.err + "\n");
    }
    EXPECT_TRUE(filesIn(dir.path("out")).empty());
    if (!isRoot()) GTEST_SKIP() << "a full device needs root to be made; the file-size limit was checked";
    ToolSetup full;
    full.stdoutPath = makeNode(dir, "full", S_IFCHR, 1, 7);
    const ToolRun r = notetool(dir, {"info", note}, full);
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: standard output: No space left on device\n");
}

TEST(NotetoolOutput, AFullDiskStopsTheBatchWithOneLine) {
    ScratchDir dir;
    fs::create_directory(dir.path("in"));
    for (int i = 0; i < 6; ++i) dir.write("in/n" + std::to_string(i) + ".note", notewriter::buildNote(boxPages(20)));
    const SmallDisk disk(dir.path("disk"), "256k");
    if (!disk.mounted()) GTEST_SKIP() << "mounting a small tmpfs needs root; RLIMIT_FSIZE cases run elsewhere";
    notewriter::writeFile(dir.path("disk/filler"), std::string(200 * 1024, 'x'));

    for (const char* format : {"pdf", "png"}) {
        SCOPED_TRACE(format);
        const std::string out = dir.path("disk/") + format;
        const auto start = std::chrono::steady_clock::now();
        const ToolRun r = notetool(dir, {"convert", dir.path("in"), "-o", out, "--format", format, "-j", "2"});
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
        EXPECT_EQ(r.code, 1);
        // One line: the note, then the output, then the cause.
        const std::regex line("notetool: " + dir.path("in/") + "n[0-5]\\.note: " + out + "/n[0-5](-p[0-9]+)?\\." + format +
                              ": No space left on device\n");
        EXPECT_TRUE(std::regex_match(r.err, line)) << r.err;
        const std::vector<std::string> written = tree(out);
        EXPECT_FALSE(hasTemporaries(written));
        EXPECT_LT(written.size(), std::string(format) == "pdf" ? 6u : 120u);
        for (const std::string& name : written) {
            EXPECT_TRUE(std::string(format) != "pdf" || completePdf(out + "/" + name)) << name;
        }
        fs::remove_all(out);
    }
    // Full to the last byte: the strokes of one page no longer fit.
    std::ofstream(dir.path("disk/more")) << std::string(256 * 1024, 'x');
    const ToolRun r = notetool(dir, {"strokes", dir.path("in/n0.note"), "--page", "1", "-o", dir.path("disk/s.json")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "notetool: " + dir.path("in/n0.note") + ": " + dir.path("disk/s.json") + ": No space left on device\n");
    EXPECT_EQ(filesIn(dir.path("disk")), (std::vector<std::string>{"filler", "more"}));
}

// The progress bar as a terminal shows it: each drawing of the line, without the escape
// that clears it, and without the error lines.
std::vector<std::string> barDrawings(const std::string& terminal) {
    std::vector<std::string> drawings;
    std::string text = std::regex_replace(terminal, std::regex("\033\\[K"), "");
    std::size_t start = 0;
    for (std::size_t end; (end = text.find_first_of("\r\n", start)) != std::string::npos; start = end + 1) {
        const std::string part = text.substr(start, end - start);
        if (!part.empty() && part.rfind("notetool: ", 0) != 0) drawings.push_back(part);
    }
    return drawings;
}

// Ctrl-C, a hang-up or a kill part-way through a long convert: the program stops, removes its
// temporary files, ends the progress line and exits 128 + the signal. The bar, meanwhile,
// fits the terminal, and is drawn anew when the terminal is made narrower.
TEST(NotetoolOutput, ASignalLeavesNoTemporariesAndEndsTheProgressLine) {
    ScratchDir dir;
    fs::create_directory(dir.path("in"));
    // Enough notes that the run is still going when the signal comes, on a fast idle machine too.
    constexpr int kNotes = 64;
    for (int i = 0; i < kNotes; ++i) dir.write("in/n" + std::to_string(i) + ".note", notewriter::buildNote(boxPages(50)));
    for (int sig : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(sig);
        const std::string out = dir.path("out" + std::to_string(sig));
        ToolSetup setup;
        setup.terminalColumns = 40;
        RunningTool tool(dir.path(""), {NOTETOOL_PATH, "convert", dir.path("in"), "-o", out, "--format", "pdf", "-j", "2"}, setup);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!(fs::exists(out) && std::any_of(fs::directory_iterator(out), {}, [](const fs::directory_entry& e) {
                   return e.path().filename().string()[0] != '.';
               })) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        tool.resizeTerminal(30);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        tool.signal(sig);
        const ToolRun r = tool.finish();

        EXPECT_EQ(r.code, 128 + sig);
        const std::vector<std::string> written = tree(out);
        EXPECT_FALSE(hasTemporaries(written)) << written.size();
        EXPECT_LT(written.size(), std::size_t(kNotes)) << "the run ended before the signal";
        for (const std::string& name : written) EXPECT_TRUE(completePdf(out + "/" + name)) << name;

        const std::vector<std::string> drawings = barDrawings(r.err);
        ASSERT_FALSE(drawings.empty()) << r.err;
        for (const std::string& drawing : drawings) EXPECT_LT(drawing.size(), 40u) << drawing;
        EXPECT_LT(drawings.back().size(), 30u) << drawings.back();
        EXPECT_EQ(r.err.back(), '\n') << "the progress line is left open";
    }
}

}  // namespace
