// The metadata block reader (framing, item syntax, failure texts, closing the stream on
// failure) and the small string and stream helpers beside it.

#include <cerrno>
#include <climits>
#include <cstring>

#include <gtest/gtest.h>

#include "config.h"
#include "notefiles.h"

using notetest::Logged;
using notetest::logged;
using notewriter::Items;

namespace {

TEST(ReadModuleItemFromFile, ItemsFramingAndFailures) {
    // Error numbers of failed reads at the end of a file vary; the texts before them do not.
    const std::string failedRead = "content read file failed-----errno:";
    const struct {
        std::string text;
        uint32_t extraLength;  // added to the length field
        unsigned long fromEnd;  // 0: the block's site, else this many bytes before the end
        Items items;            // none: the read fails and closes the stream
        std::string log;
    } rows[] = {
        {"<A:1><B:2><A:3><C:><D><F:1:2><E::5>>><:V>\n<G:7>x<H:8" + std::string("\0<Z:9>", 6), 0, 0,
         // one part or three make no item, empty pieces are dropped, the first character of
         // a key is dropped whatever it is, and the text ends at its first zero byte
         {{"A", "1"}, {"B", "2"}, {"A", "3"}, {"E", "5"}, {"", "V"}, {"<G", "7"}, {"<H", "8"}}, ""},
        {"<A:><A><A:1:2>", 0, 0, {}, "readModuleItemFromFile failed.\n"},
        {"<A:1>", 0, 3, {}, "nSite is error"},
        // The length field is not counted in the size check: 4 bytes of overrun fail at the read.
        {"<A:1>", 8 + 4, 0, {}, failedRead},
        {"<A:1>", 8 + 5, 0, {}, "content size is bigger than file size"},
    };
    notetest::ScratchDir dir;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        notewriter::NoteFile note;
        unsigned long site = note.rawBlock(row.text, uint32_t(row.text.size() + row.extraLength));
        const std::string bytes = note.finish(0);
        if (row.fromEnd) site = bytes.size() - row.fromEnd;
        FILE* fp = std::fopen(dir.write("a.note", bytes).c_str(), "rb");
        std::vector<ModuleItem> items{{"stale", "item"}};
        const Logged r = logged([&] { return readModuleItemFromFile(fp, items, site); });
        EXPECT_EQ(notetest::headOf(r, row.log.size()), Logged(!row.items.empty(), row.log));
        EXPECT_EQ(notetest::pairsOf(items), row.items);
        EXPECT_EQ(fp == nullptr, row.items.empty());  // a failure closes the stream
        if (fp) {
            EXPECT_EQ(std::ftell(fp), long(site + 4 + row.text.size()));  // ready for the next block
            std::fclose(fp);
        }
    }
}

TEST(ReadModuleItemFromFile, StreamFailures) {
    FILE* fp = nullptr;
    std::vector<ModuleItem> items{{"K", "V"}};
    EXPECT_EQ(logged([&] { return readModuleItemFromFile(fp, items, 0); }), Logged(0, "ERROR para fp is null"));
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    ::close(fds[1]);
    fp = ::fdopen(fds[0], "rb");  // a pipe cannot seek; the seek text has no comma
    EXPECT_EQ(logged([&] { return readModuleItemFromFile(fp, items, 0); }),
              Logged(0, "fseek failed-----errno:" + std::to_string(ESPIPE) + "errmsg:" + std::strerror(ESPIPE)));
    EXPECT_EQ(fp, nullptr);

    notetest::ScratchDir dir;
    fp = std::fopen(dir.write("a.note", "0123456789").c_str(), "ab");  // seeks and tells, cannot read
    EXPECT_EQ(logged([&] { return readModuleItemFromFile(fp, items, 0); }),
              Logged(0, "content size read file failed-----errno:" + std::to_string(EBADF) + ",errmsg:" +
                            std::strerror(EBADF)));
    EXPECT_EQ(fp, nullptr);

    // The site's room is checked in unsigned 64-bit arithmetic, which wraps: the last four
    // sites pass that check and are refused by the seek, which takes them as negative.
    const std::string negative = "fseek failed-----errno:" + std::to_string(EINVAL) + "errmsg:" + std::strerror(EINVAL);
    const std::pair<unsigned long, std::string> sites[] = {
        {ULONG_MAX, negative}, {ULONG_MAX - 3, negative}, {ULONG_MAX - 4, "nSite is error"}, {1ul << 63, "nSite is error"}};
    for (const auto& [site, log] : sites) {
        fp = std::fopen(dir.write("b.note", "0123456789").c_str(), "rb");
        // A structured binding cannot be captured before C++20, hence the copy.
        EXPECT_EQ(logged([&, site = site] { return readModuleItemFromFile(fp, items, site); }), Logged(0, log)) << site;
        EXPECT_EQ(fp, nullptr);
    }
}

TEST(StringHelpers, SplitStartsWithEndsWith) {
    EXPECT_EQ(split(">>a:b>c>", ":>"), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_TRUE(myStartsWith("PAGE12", "PAGE") && !myStartsWith("XPAGE", "PAGE") && !myStartsWith("PAGE12", ""));
    EXPECT_TRUE(myEndsWith("bcabc", "bc"));
    // A suffix one character longer than the text: the not-found value and the wrapped
    // length difference are the same number, whatever the characters.
    EXPECT_TRUE(myEndsWith("xy", "abc"));
    EXPECT_FALSE(myEndsWith("bcx", "bc") || myEndsWith("ab", "abcd") || myEndsWith("abc", ""));
}

TEST(FlushFsyncFclose, ClosesWhenAskedOrWhenFlushFails) {
    FILE* fp = std::fopen("/dev/null", "w");
    EXPECT_EQ(logged([&] { return flushfsyncfclose(fp, true, true, false); }), Logged(1, ""));
    EXPECT_NE(fp, nullptr);  // still open
    EXPECT_EQ(logged([&] { return flushfsyncfclose(fp, false, true, true); }), Logged(1, ""));
    EXPECT_EQ(fp, nullptr);

    fp = std::fopen("/dev/full", "w");
    std::fputs("ink", fp);
    EXPECT_EQ(logged([&] { return flushfsyncfclose(fp, true, true, false); }),
              Logged(0, "fflush failed-----errno:" + std::to_string(ENOSPC)));
    EXPECT_EQ(fp, nullptr);  // closed anyway, so that it does not leak
}

}  // namespace
