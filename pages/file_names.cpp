#include "file_names.h"

#include <algorithm>
#include <cctype>
#include <sys/stat.h>

namespace notetool {

namespace {

std::string lastName(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string extensionOf(const std::string& path) {
    const std::string name = lastName(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot);
}

bool equalIgnoringCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

std::string noteStem(const std::string& path) {
    const std::string name = lastName(path);
    return name.substr(0, name.size() - extensionOf(name).size());
}

std::string joinPath(const std::string& dir, const std::string& name) {
    if (dir.empty()) return name;
    return dir.back() == '/' ? dir + name : dir + "/" + name;
}

bool isFolderPath(const std::string& path) {
    struct stat st;
    return (!path.empty() && path.back() == '/') || (::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode));
}

}  // namespace notetool
