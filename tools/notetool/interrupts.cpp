#include "interrupts.h"

#include <csignal>
#include <string>
#include <thread>
#include <unistd.h>

#include "console.h"
#include "output_file.h"

namespace notetool {

namespace {

struct EndingSignal {
    int number;
    const char* name;
};
constexpr EndingSignal kEndingSignals[] = {{SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}};

[[noreturn]] void endRun(const EndingSignal& signal) {
    removeTemporaryFiles();
    reportInterrupted(signal.name);
    ::_exit(128 + signal.number);
}

}  // namespace

void handleSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const EndingSignal& signal : kEndingSignals) sigaddset(&set, signal.number);
    sigaddset(&set, SIGWINCH);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::thread([set] {
        for (;;) {
            int number = 0;
            if (sigwait(&set, &number) != 0) continue;
            if (number == SIGWINCH) {
                terminalResized();
                continue;
            }
            for (const EndingSignal& signal : kEndingSignals)
                if (signal.number == number) endRun(signal);
        }
    }).detach();
}

}  // namespace notetool
