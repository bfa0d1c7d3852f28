// Replays saved inputs through a fuzz target without libFuzzer, so that every build (plain,
// sanitized, under valgrind) runs the corpus as a test. Arguments are files or folders of
// files, and the bounds libFuzzer enforces while fuzzing, under its option names:
//   -timeout=<s>        wall time for one input (0: none)
//   -rss_limit_mb=<mb>  rise of the peak resident size during one input (0: none)

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

#include "harness.h"
#include "peak_memory.h"

namespace {

namespace fs = std::filesystem;

struct Limits {
    unsigned seconds = 1;
    long megabytes = 256;
};

const char* currentInput = "";

void onTimeout(int) {
    const char text[] = "replay: input ran out of time: ";
    write(STDERR_FILENO, text, sizeof text - 1);
    write(STDERR_FILENO, currentInput, std::strlen(currentInput));
    write(STDERR_FILENO, "\n", 1);
    _exit(1);
}

bool runOne(const std::string& file, const Limits& limits) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof()) {
        std::fprintf(stderr, "replay: cannot read %s\n", file.c_str());
        return false;
    }
    currentInput = file.c_str();
    alarm(limits.seconds);
    const long rise = peakmemory::growth([&] { LLVMFuzzerTestOneInput(bytes.data(), bytes.size()); });
    alarm(0);
    if (limits.megabytes > 0 && rise > limits.megabytes * 1024 * 1024) {
        std::fprintf(stderr, "replay: %s took %ld MB\n", file.c_str(), rise / (1024 * 1024));
        return false;
    }
    return true;
}

// The files named, and the files in the folders named, each folder in name order.
std::vector<std::string> inputsOf(const std::vector<std::string>& paths) {
    std::vector<std::string> inputs;
    for (const std::string& path : paths) {
        if (!fs::is_directory(path)) {
            inputs.push_back(path);
            continue;
        }
        std::vector<std::string> files;
        for (const auto& entry : fs::directory_iterator(path))
            if (entry.is_regular_file()) files.push_back(entry.path().string());
        std::sort(files.begin(), files.end());
        inputs.insert(inputs.end(), files.begin(), files.end());
    }
    return inputs;
}

}  // namespace

int main(int argc, char** argv) {
    Limits limits;
    std::vector<std::string> paths;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind("-timeout=", 0) == 0)
            limits.seconds = static_cast<unsigned>(std::stoul(arg.substr(9)));
        else if (arg.rfind("-rss_limit_mb=", 0) == 0)
            limits.megabytes = std::stol(arg.substr(14));
        else
            paths.push_back(arg);
    }
    LLVMFuzzerInitialize(&argc, &argv);
    std::signal(SIGALRM, onTimeout);

    const std::vector<std::string> inputs = inputsOf(paths);
    if (inputs.empty()) {
        std::fprintf(stderr, "replay: no inputs\n");
        return 1;
    }
    int failed = 0;
    for (const std::string& input : inputs)
        if (!runOne(input, limits)) ++failed;
    std::fprintf(stderr, "replay: %zu inputs, %d over their limits\n", inputs.size(), failed);
    return failed == 0 ? 0 : 1;
}
