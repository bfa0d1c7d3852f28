#ifndef NOTETOOL_MIME_INFO_H
#define NOTETOOL_MIME_INFO_H

// The file type of notes on the Linux desktop: a shared-mime-info description, written by
// the build (notetool --mime-info) and installed to share/mime/packages/, by which file
// managers know a note by its name and, renamed, by its content, and find the thumbnailer
// and the applications that handle it.

#include <string>

namespace notetool {

// The shared-mime-info XML of the MIME type the build names (NOTETOOL_MIME_TYPE, which the
// desktop files name too): the glob *.note, and libNote's identification tag at offset 4 as
// the magic that recognises a note whatever its name.
std::string mimeInfo();

}  // namespace notetool

#endif
