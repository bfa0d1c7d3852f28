// The table of output formats, driven as any host of the page library drives it: a format's
// extensions choose it whatever their case, and each row's writer, through the page
// pipeline, writes that format under the names the row gives, a file per page or one document.

#include <algorithm>
#include <atomic>
#include <cctype>
#include <filesystem>
#include <map>
#include <mutex>

#include <gtest/gtest.h>

#include "notefiles.h"
#include "output_formats.h"
#include "page_pipeline.h"
#include "run_tool.h"

namespace {

using namespace notetool;

// How each format's files begin; a new format needs its line here.
const std::map<std::string, std::string> kMagic = {{"png", "\x89PNG\r\n"}, {"pdf", "%PDF-"}, {"svg", "<?xml"}};

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

TEST(OutputFormats, NamesAndExtensionsChooseTheirFormat) {
    for (const OutputFormat& format : outputFormats()) {
        EXPECT_EQ(formatNamed(format.name), &format);
        for (const std::string& extension : format.extensions) {
            SCOPED_TRACE(extension);
            EXPECT_EQ(formatOfPath("out/note" + extension), &format);
            EXPECT_EQ(formatOfPath("out/NOTE" + upper(extension)), &format);
            EXPECT_EQ(formatOfPath(extension), nullptr);                 // an extension alone names no file
            EXPECT_EQ(formatOfPath("note" + extension + "/"), nullptr);  // a folder
        }
    }
    EXPECT_EQ(formatNamed("gif"), nullptr);
    EXPECT_EQ(formatNamed(upper(outputFormats().front().name)), nullptr);  // names are exact
    EXPECT_EQ(formatOfPath("page.gif"), nullptr);
}

TEST(OutputFormats, EachWriterWritesItsFormatUnderTheTablesNames) {
    notetest::ScratchDir dir;
    notewriter::Note note;
    for (int page = 0; page < 2; ++page) {
        std::vector<uint8_t> ink(notewriter::kPictureSize, 0xFF);
        std::fill_n(ink.begin() + 600 * (page + 1) * notewriter::kPictureWidth, 300, 0x00);
        note.pages.push_back({});
        note.pages.back().layers = {{"MAINLAYER", ink, {}}};
    }
    const std::string path = dir.write("two.note", notewriter::buildNote(note));

    for (const OutputFormat& format : outputFormats()) {
        SCOPED_TRACE(format.name);
        NoteJob job;
        job.note = path;
        job.pages = {1, 2};
        job.largestPage = 2;
        job.dir = dir.path(format.name);
        std::filesystem::create_directory(job.dir);
        if (!format.filePerPage) job.file = joinPath(job.dir, noteStem(path) + format.extension());
        std::mutex lock;
        std::vector<std::string> errors;
        std::atomic<int> pagesDone{0};
        const PageEvents events{[&](const std::string& message) {
                                    std::lock_guard<std::mutex> hold(lock);
                                    errors.push_back(message);
                                },
                                [&] { ++pagesDone; }, nullptr};
        NoteResult result;
        notetest::captureStdout([&] { result = renderNote(job, format, DrawingOptions{}, 2, events); });
        EXPECT_EQ(result.written, 2);
        EXPECT_EQ(result.failed, 0);
        EXPECT_EQ(errors, std::vector<std::string>{});
        EXPECT_EQ(pagesDone, 2);

        const std::vector<std::string> names = format.filePerPage
            ? std::vector<std::string>{"two-p1" + format.extension(), "two-p2" + format.extension()}
            : std::vector<std::string>{"two" + format.extension()};
        ASSERT_EQ(notetest::filesIn(job.dir), names);
        for (const std::string& name : names)
            EXPECT_EQ(notetest::readWholeFile(joinPath(job.dir, name)).rfind(kMagic.at(format.name), 0), 0u) << name;
    }
}

}  // namespace
