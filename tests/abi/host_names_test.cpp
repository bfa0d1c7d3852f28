// A host program may have functions of its own under the names of libNote's helpers: the
// library must go on calling its own. This program defines three of them, with the same
// types, as a host with its own string and stream utilities would, and reads a note.

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kwdatafile.h"
#include "kwdataoperationfile.h"
#include "notefiles.h"

namespace {
int hostCalls = 0;  // how often the host's own helpers below ran
}

// The host's helpers: each gives an answer of its own, unlike the library's.
std::vector<std::string> split(std::string text, std::string) {
    ++hostCalls;
    return {text};
}
bool myStartsWith(std::string, std::string) {
    ++hostCalls;
    return false;
}
bool flushfsyncfclose(FILE*&, bool, bool, bool) {
    ++hostCalls;
    return false;
}

namespace {

TEST(HostNames, TheLibraryKeepsCallingItsOwnHelpers) {
    notewriter::Page page;
    page.extra = {{"FIVESTAR", "1,2,3,4,5,6,7,8,9,10,11"}};
    notewriter::Note note;
    note.pages = {page, page};
    notetest::ScratchDir dir;
    const std::string path = dir.write("stars.note", notewriter::buildNote(note));

    ASSERT_EQ(split("a,b", ","), std::vector<std::string>{"a,b"}) << "the host calls its own split";
    hostCalls = 0;

    int pages = 0, read = -1;
    KwPageFeatureModule module;
    notetest::captureStdout([&] {
        pages = KwDataOperationFile().fetchTotalPageNumOfNote(path);  // counts with myStartsWith
        KwFileProcess file;
        file.init_datafile(path);
        PageFeatureReadFlag flags;
        flags.fiveStar = true;
        read = file.fetchPageFeature(module, 1, flags);  // splits the marks, closes with flushfsyncfclose
    });
    ASSERT_EQ(std::make_tuple(pages, read, module.fiveStars.size()), std::make_tuple(2, 0, 1ul));
    EXPECT_EQ(std::make_pair(module.fiveStars[0].values[10], hostCalls), std::make_pair(11, 0))
        << "the library called the host's helpers";
}

}  // namespace
