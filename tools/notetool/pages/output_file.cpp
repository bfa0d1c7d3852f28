#include "atomic_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace notetool {

namespace {

std::runtime_error systemError(const std::string& what, const std::string& path) {
    return std::runtime_error(path + ": " + what + ": " + std::strerror(errno));
}

}  // namespace

AtomicFile::AtomicFile(const std::string& path) : path_(path) {
    // The temporary name starts with a dot so that folder listings and globs of finished
    // pages do not pick it up while it is being written.
    const std::size_t slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string pattern = dir + "." + base + ".XXXXXX";
    fd_ = ::mkstemp(&pattern[0]);
    if (fd_ < 0) throw systemError("cannot create", path);
    // mkstemp makes the file private; a finished page gets the usual permissions.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd_, 0666 & ~mask);
    tempPath_ = pattern;
}

AtomicFile::~AtomicFile() {
    if (committed_) return;
    closeTemp();
    ::unlink(tempPath_.c_str());
}

void AtomicFile::write(const void* data, std::size_t length) {
    const char* bytes = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t n = ::write(fd_, bytes, length);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw systemError("cannot write", path_);
        }
        bytes += n;
        length -= static_cast<std::size_t>(n);
    }
}

bool AtomicFile::writeCallback(void* closure, const unsigned char* data, unsigned int length) {
    try {
        static_cast<AtomicFile*>(closure)->write(data, length);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

void AtomicFile::commit() {
    const int fd = fd_;
    fd_ = -1;
    if (::close(fd) != 0) throw systemError("cannot write", path_);
    if (::rename(tempPath_.c_str(), path_.c_str()) != 0) throw systemError("cannot rename into place", path_);
    committed_ = true;
}

void AtomicFile::closeTemp() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void makeDirectories(const std::string& dir) {
    for (std::size_t at = 1; at != std::string::npos && at <= dir.size();) {
        at = dir.find('/', at);
        const std::string prefix = dir.substr(0, at);
        if (!prefix.empty() && ::mkdir(prefix.c_str(), 0777) != 0 && errno != EEXIST)
            throw systemError("cannot create folder", prefix);
        if (at != std::string::npos) ++at;
    }
    struct stat st;
    if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        errno = ENOTDIR;
        throw systemError("cannot create folder", dir);
    }
}

}  // namespace notetool
