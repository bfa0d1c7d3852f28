#ifndef NOTETOOL_FILE_NAMES_H
#define NOTETOOL_FILE_NAMES_H

// Paths as text: what every host of the page library names its outputs with, apart from the
// formats that some of them choose by those names (output_formats.h).

#include <string>

namespace notetool {

// The extension of the path's last name (".pdf" of "out/a.pdf"), or "" when it has none.
// A name that starts with its only dot (".config") has none.
std::string extensionOf(const std::string& path);

// Whether the two texts are equal whatever the case of their letters.
bool equalIgnoringCase(const std::string& a, const std::string& b);

// The file name without its folder and without its last extension: "a/b/x.note" -> "x".
std::string noteStem(const std::string& path);

// name in dir ("" for the current folder), with one slash between them.
std::string joinPath(const std::string& dir, const std::string& name);

// Whether the output path names a folder: one that exists, or a name that ends in "/".
bool isFolderPath(const std::string& path);

}  // namespace notetool

#endif
