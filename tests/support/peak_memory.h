#ifndef LIBNOTE_TESTS_PEAK_MEMORY_H
#define LIBNOTE_TESTS_PEAK_MEMORY_H

// How much memory one call claims at its peak: the rise of the process's peak resident size
// over what was resident before the call. It catches a small file that makes the library
// allocate (and touch) far more than the file could describe.

#include <fstream>
#include <string>

namespace peakmemory {

// A "VmRSS:" or "VmHWM:" line of /proc/self/status, in kilobytes.
inline long statusKb(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string name;
    long kb = 0;
    while (status >> name) {
        if (name == field && status >> kb) return kb;
        std::getline(status, name);
    }
    return 0;
}

// Restarts the peak at the present size. Where the kernel refuses, the peak so far is the
// baseline instead, which can only understate a rise.
inline long resetPeakKb() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return clear ? statusKb("VmRSS:") : statusKb("VmHWM:");
}

// Bytes by which the peak resident size rose while call ran.
template <class F>
long growth(F&& call) {
    const long baseKb = resetPeakKb();
    call();
    return (statusKb("VmHWM:") - baseKb) * 1024;
}

}  // namespace peakmemory

#endif
