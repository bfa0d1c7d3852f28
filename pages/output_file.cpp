#include "output_file.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace notetool {

namespace {

int g_standardOutput = STDOUT_FILENO;

// Every temporary file of the process that is not yet renamed or removed, so that an
// interrupted run can remove them all. Creating, renaming and removing one happen under the
// lock, so that no temporary file exists that the list does not hold.
std::mutex g_temporariesLock;
std::set<std::string> g_temporaries;

// The file a path ends up in: symbolic links followed, the last one even when its target
// does not exist yet (it is then created). A relative target is relative to its link.
std::string followLinks(const std::string& path) {
    std::string at = path;
    for (int hops = 0; hops < 40; ++hops) {  // the kernel's own limit on a chain of links
        char target[PATH_MAX];
        const ssize_t length = ::readlink(at.c_str(), target, sizeof target);
        if (length < 0) return at;  // not a link, or nothing there yet
        std::string next(target, static_cast<std::size_t>(length));
        const std::size_t slash = at.rfind('/');
        if (next[0] != '/' && slash != std::string::npos) next.insert(0, at.substr(0, slash + 1));
        at = next;
    }
    throw OutputError(path, ELOOP);
}

}  // namespace

OutputError::OutputError(const std::string& output, int error)
    : ToolError(output + ": " + std::strerror(error), {std::nullopt, error, output}) {}

bool OutputError::outOfSpace() const { return cause.error == ENOSPC || cause.error == EDQUOT; }

std::string outputName(const std::string& path) { return path == kStandardOutput ? "standard output" : path; }

OutputFile::OutputFile(const std::string& path) : name_(outputName(path)) {
    if (path == kStandardOutput) {
        fd_ = g_standardOutput;
        ownsFd_ = false;
        return;
    }
    path_ = followLinks(path);
    struct stat st;
    if (::stat(path_.c_str(), &st) == 0 && !S_ISREG(st.st_mode)) {
        if (S_ISDIR(st.st_mode)) throw OutputError(name_, EISDIR);
        fd_ = ::open(path_.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
        if (fd_ < 0) throw OutputError(name_, errno);
        return;
    }
    // The temporary name starts with a dot so that folder listings and globs of finished
    // pages do not pick it up while it is being written.
    const std::size_t slash = path_.rfind('/');
    std::string pattern = path_.substr(0, slash + 1) + "." + path_.substr(slash + 1) + ".XXXXXX";
    {
        std::lock_guard<std::mutex> hold(g_temporariesLock);
        fd_ = ::mkostemp(&pattern[0], O_CLOEXEC);
        if (fd_ < 0) throw OutputError(name_, errno);
        g_temporaries.insert(pattern);
    }
    tempPath_ = pattern;
    // mkstemp makes the file private; a finished page gets the usual permissions.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd_, 0666 & ~mask);
}

OutputFile::~OutputFile() {
    if (fd_ >= 0 && ownsFd_) ::close(fd_);
    if (tempPath_.empty() || committed_) return;
    std::lock_guard<std::mutex> hold(g_temporariesLock);
    ::unlink(tempPath_.c_str());
    g_temporaries.erase(tempPath_);
}

void OutputFile::write(const void* data, std::size_t length) {
    const char* bytes = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t n = ::write(fd_, bytes, length);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw OutputError(name_, errno);
        }
        bytes += n;
        length -= static_cast<std::size_t>(n);
    }
}

void OutputFile::close() {
    if (fd_ < 0 || !ownsFd_) return;
    const int fd = fd_;
    fd_ = -1;
    // Some file systems (NFS, FUSE) report a failed write only here.
    if (::close(fd) != 0) throw OutputError(name_, errno);
}

void OutputFile::commit() {
    close();
    if (!tempPath_.empty()) {
        std::lock_guard<std::mutex> hold(g_temporariesLock);
        if (::rename(tempPath_.c_str(), path_.c_str()) != 0) throw OutputError(name_, errno);
        g_temporaries.erase(tempPath_);
    }
    committed_ = true;
}

void setStandardOutput(int fd) { g_standardOutput = fd; }

void closeStandardOutput() {
    if (::close(g_standardOutput) != 0 && errno != EBADF) throw OutputError(outputName(kStandardOutput), errno);
}

void removeTemporaryFiles() {
    g_temporariesLock.lock();  // never unlocked: the process exits holding it
    for (const std::string& path : g_temporaries) ::unlink(path.c_str());
}

void makeDirectories(const std::string& dir) {
    for (std::size_t at = 1; at != std::string::npos && at <= dir.size();) {
        at = dir.find('/', at);
        const std::string prefix = dir.substr(0, at);
        if (!prefix.empty() && ::mkdir(prefix.c_str(), 0777) != 0 && errno != EEXIST) throw OutputError(prefix, errno);
        if (at != std::string::npos) ++at;
    }
    struct stat st;
    if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) throw OutputError(dir, ENOTDIR);
}

}  // namespace notetool
