// The metadata block reader (framing, item syntax, failure texts, closing of the stream on
// failure) and the small string and stream helpers beside it.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <regex>
#include <string>
#include <unistd.h>
#include <vector>

#include "capture.h"
#include "config.h"
#include "notewriter.h"

namespace {

using notewriter::Items;
using notewriter::NoteFile;

// A file on disk holding the given bytes, removed at the end of the test.
class TempFile {
public:
    explicit TempFile(const std::string& bytes)
        : path_(::testing::TempDir() + "metadata_block_test_" + std::to_string(::getpid())) {
        notewriter::writeFile(path_, bytes);
    }
    ~TempFile() { std::remove(path_.c_str()); }
    FILE* open(const char* mode = "rb") const { return std::fopen(path_.c_str(), mode); }

private:
    std::string path_;
};

Items pairsOf(const std::vector<ModuleItem>& items) {
    Items out;
    for (const ModuleItem& item : items) out.emplace_back(item.key, item.value);
    return out;
}

struct ReadOutcome {
    bool ok = false;
    Items items;
    std::string log;
    bool streamClosed = false;  // the reader closed the stream and nulled the pointer
    long position = -1;         // where an open stream was left
};

// Reads the block at site from an open stream and closes the stream if the reader left it open.
ReadOutcome readAt(FILE* fp, unsigned long site) {
    ReadOutcome out;
    std::vector<ModuleItem> items{{"stale", "item"}};
    out.log = notetest::captureStdout([&] { out.ok = readModuleItemFromFile(fp, items, site); });
    out.items = pairsOf(items);
    out.streamClosed = fp == nullptr;
    if (fp != nullptr) {
        out.position = std::ftell(fp);
        std::fclose(fp);
    }
    return out;
}

// A file holding one block with the given text (and, optionally, a wrong length field),
// followed by the 8-byte footer.
struct OneBlock {
    unsigned long site;
    std::string bytes;
};

OneBlock oneBlock(const std::string& text) {
    NoteFile note;
    unsigned long site = note.rawBlock(text);
    return {site, note.finish(0)};
}

OneBlock oneBlock(const std::string& text, uint32_t claimedLength) {
    NoteFile note;
    unsigned long site = note.rawBlock(text, claimedLength);
    return {site, note.finish(0)};
}

ReadOutcome readText(const std::string& text) {
    OneBlock block = oneBlock(text);
    TempFile file(block.bytes);
    return readAt(file.open(), block.site);
}

// The read failure of the text carries no system text after its separator.
const std::regex kTextReadFailure("content read file failed-----errno:[0-9]+,errmsg:");

TEST(ReadModuleItemFromFile, ReadsItemsInFileOrderAndLeavesStreamJustAfterTheBlock) {
    NoteFile note;
    unsigned long first = note.block({{"A", "1"}, {"B", "2"}});
    unsigned long second = note.rawBlock("<PAGE1:24><PAGE1:99>");
    TempFile file(note.finish(first));

    ReadOutcome out = readAt(file.open(), second);
    EXPECT_TRUE(out.ok);
    EXPECT_EQ(out.log, "");
    EXPECT_FALSE(out.streamClosed);
    EXPECT_EQ(out.items, (Items{{"PAGE1", "24"}, {"PAGE1", "99"}}));  // stale item gone, repeats kept
    EXPECT_EQ(out.position, long(second + 4 + 20));

    // The stream stays usable for the next block.
    FILE* fp = file.open();
    std::vector<ModuleItem> items;
    ASSERT_TRUE(readModuleItemFromFile(fp, items, second));
    ASSERT_TRUE(readModuleItemFromFile(fp, items, first));
    EXPECT_EQ(pairsOf(items), (Items{{"A", "1"}, {"B", "2"}}));
    std::fclose(fp);
}

TEST(ReadModuleItemFromFile, SplitsPiecesAndDropsTheFirstCharacterOfEveryKey) {
    const std::string text =
        "<A:1><B:2><A:3>"
        "<C:><D><F:1:2>"  // one part or three: skipped
        "<E::5>>>"        // empty pieces dropped
        "<:V>"            // empty key
        "\n<G:7>"         // the line break is the character removed, not the "<"
        "x<H:8"           // a rest without ">" is a piece too
        + std::string("\0<Z:9>", 6);  // the text ends at its first zero byte
    ReadOutcome out = readText(text);
    EXPECT_TRUE(out.ok);
    EXPECT_EQ(out.log, "");
    EXPECT_EQ(out.items, (Items{{"A", "1"}, {"B", "2"}, {"A", "3"}, {"E", "5"}, {"", "V"},
                                {"<G", "7"}, {"<H", "8"}}));
}

TEST(ReadModuleItemFromFile, BlockWithoutItemFailsWithLineEndAndClosesTheStream) {
    for (const std::string& text : std::vector<std::string>{"<A:>", "<A>", "<A:1:2>", std::string("\0<A:1>", 6)}) {
        SCOPED_TRACE(text);
        ReadOutcome out = readText(text);
        EXPECT_FALSE(out.ok);
        EXPECT_EQ(out.log, "readModuleItemFromFile failed.\n");
        EXPECT_TRUE(out.streamClosed);
        EXPECT_TRUE(out.items.empty());
    }
}

TEST(ReadModuleItemFromFile, EmptyBlockFailsAtTheTextRead) {
    ReadOutcome out = readText("");
    EXPECT_FALSE(out.ok);
    EXPECT_TRUE(std::regex_match(out.log, kTextReadFailure)) << out.log;
    EXPECT_TRUE(out.streamClosed);
}

TEST(ReadModuleItemFromFile, SiteMustLeaveRoomForTheLengthField) {
    OneBlock block = oneBlock("<A:1>");
    TempFile file(block.bytes);
    const unsigned long size = block.bytes.size();

    ReadOutcome beyond = readAt(file.open(), size - 3);
    EXPECT_FALSE(beyond.ok);
    EXPECT_EQ(beyond.log, "nSite is error");
    EXPECT_TRUE(beyond.streamClosed);

    // Four bytes are enough for the size check: the footer's zero index site is read as the
    // length and the (empty) text read fails.
    ReadOutcome atEnd = readAt(file.open(), size - 4);
    EXPECT_TRUE(std::regex_match(atEnd.log, kTextReadFailure)) << atEnd.log;
    EXPECT_TRUE(atEnd.streamClosed);
}

TEST(ReadModuleItemFromFile, LengthCheckLeavesOutTheLengthFieldItself) {
    // The file ends 8 footer bytes after the 5-byte text; the check compares site + N with
    // the size, so N may overrun the file by the 4 bytes of the length field and then fail
    // at the read instead.
    const uint32_t overrunByFour = 5 + 8 + 4;
    OneBlock passes = oneBlock("<A:1>", overrunByFour);
    TempFile passesFile(passes.bytes);
    ReadOutcome atRead = readAt(passesFile.open(), passes.site);
    EXPECT_FALSE(atRead.ok);
    EXPECT_TRUE(std::regex_match(atRead.log, kTextReadFailure)) << atRead.log;
    EXPECT_TRUE(atRead.streamClosed);

    OneBlock refused = oneBlock("<A:1>", overrunByFour + 1);
    TempFile refusedFile(refused.bytes);
    ReadOutcome atCheck = readAt(refusedFile.open(), refused.site);
    EXPECT_FALSE(atCheck.ok);
    EXPECT_EQ(atCheck.log, "content size is bigger than file size");
    EXPECT_TRUE(atCheck.streamClosed);
}

TEST(ReadModuleItemFromFile, NullStreamFailsAndKeepsTheItems) {
    FILE* fp = nullptr;
    std::vector<ModuleItem> items{{"K", "V"}};
    bool ok = true;
    std::string log = notetest::captureStdout([&] { ok = readModuleItemFromFile(fp, items, 0); });
    EXPECT_FALSE(ok);
    EXPECT_EQ(log, "ERROR para fp is null");
    EXPECT_EQ(pairsOf(items), (Items{{"K", "V"}}));
}

TEST(ReadModuleItemFromFile, SeekFailureReportsErrnoWithoutCommaAndCloses) {
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    ::close(fds[1]);
    ReadOutcome out = readAt(::fdopen(fds[0], "rb"), 0);  // a pipe cannot seek
    EXPECT_FALSE(out.ok);
    EXPECT_EQ(out.log, "fseek failed-----errno:" + std::to_string(ESPIPE) + "errmsg:" +
                           std::strerror(ESPIPE));
    EXPECT_TRUE(out.streamClosed);
}

TEST(ReadModuleItemFromFile, LengthReadFailureReportsErrnoAndSystemText) {
    OneBlock block = oneBlock("<A:1>");
    TempFile file(block.bytes);
    // A stream opened for appending seeks and tells, but cannot read.
    ReadOutcome out = readAt(file.open("ab"), block.site);
    EXPECT_FALSE(out.ok);
    EXPECT_EQ(out.log, "content size read file failed-----errno:" + std::to_string(EBADF) +
                           ",errmsg:" + std::strerror(EBADF));
    EXPECT_TRUE(out.streamClosed);
}

TEST(Split, DividesAtAnyDelimiterAndDropsEmptyPieces) {
    using Pieces = std::vector<std::string>;
    EXPECT_EQ(split("a>>b>", ">"), (Pieces{"a", "b"}));
    EXPECT_EQ(split(">>a", ">"), (Pieces{"a"}));
    EXPECT_EQ(split("a:b>c", ":>"), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(split("abc", ">"), (Pieces{"abc"}));
    EXPECT_EQ(split("", ">"), Pieces{});
    EXPECT_EQ(split(">>", ">"), Pieces{});
    EXPECT_EQ(split("a>b", ""), Pieces{});
}

TEST(MyStartsWith, IsTrueOnlyForANonEmptyPrefixAtPositionZero) {
    EXPECT_TRUE(myStartsWith("PAGE12", "PAGE"));
    EXPECT_TRUE(myStartsWith("PAGE", "PAGE"));
    EXPECT_FALSE(myStartsWith("XPAGE", "PAGE"));
    EXPECT_FALSE(myStartsWith("PAG", "PAGE"));
    EXPECT_FALSE(myStartsWith("", "PAGE"));
    EXPECT_FALSE(myStartsWith("PAGE12", ""));
}

TEST(MyEndsWith, ComparesInWrappingArithmetic) {
    EXPECT_TRUE(myEndsWith("abc", "bc"));
    EXPECT_TRUE(myEndsWith("bcabc", "bc"));  // the last occurrence counts
    EXPECT_FALSE(myEndsWith("bcx", "bc"));
    EXPECT_FALSE(myEndsWith("abc", ""));
    EXPECT_FALSE(myEndsWith("", "a"));
    // A suffix one character longer than the text: not found and length difference wrap to
    // the same value, whatever the characters.
    EXPECT_TRUE(myEndsWith("ab", "abc"));
    EXPECT_TRUE(myEndsWith("xy", "abc"));
    EXPECT_FALSE(myEndsWith("ab", "abcd"));
}

struct FinishOutcome {
    bool ok;
    std::string log;
};

FinishOutcome finishStream(FILE*& fp, bool doFlush, bool doClose) {
    FinishOutcome out{false, ""};
    out.log = notetest::captureStdout([&] { out.ok = flushfsyncfclose(fp, doFlush, true, doClose); });
    return out;
}

TEST(FlushFsyncFclose, NullStreamIsDone) {
    FILE* fp = nullptr;
    FinishOutcome out = finishStream(fp, true, true);
    EXPECT_TRUE(out.ok);
    EXPECT_EQ(out.log, "");
}

TEST(FlushFsyncFclose, ClosesOnlyWhenAskedAndNullsThePointer) {
    TempFile file("xy");
    FILE* fp = file.open();
    FILE* const opened = fp;
    FinishOutcome kept = finishStream(fp, true, false);
    EXPECT_TRUE(kept.ok);
    EXPECT_EQ(fp, opened);
    EXPECT_EQ(std::fgetc(fp), 'x');

    FinishOutcome closed = finishStream(fp, false, true);
    EXPECT_TRUE(closed.ok);
    EXPECT_EQ(fp, nullptr);
    EXPECT_EQ(kept.log + closed.log, "");
}

TEST(FlushFsyncFclose, FailedFlushClosesAnyway) {
    FILE* fp = std::fopen("/dev/full", "w");
    ASSERT_NE(fp, nullptr);
    std::fputs("ink", fp);
    FinishOutcome out = finishStream(fp, true, false);
    EXPECT_FALSE(out.ok);
    EXPECT_EQ(out.log, "fflush failed-----errno:" + std::to_string(ENOSPC));
    EXPECT_EQ(fp, nullptr);
}

TEST(FlushFsyncFclose, FailedCloseKeepsThePointer) {
    FILE* fp = std::fopen("/dev/full", "w");
    ASSERT_NE(fp, nullptr);
    std::fputs("ink", fp);
    FILE* const opened = fp;
    FinishOutcome out = finishStream(fp, false, true);
    EXPECT_FALSE(out.ok);
    EXPECT_EQ(out.log, "close file failed-----errno:" + std::to_string(ENOSPC));
    EXPECT_EQ(fp, opened);  // the stream itself is gone: it is not touched again
}

}  // namespace
