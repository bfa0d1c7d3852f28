// The output planner that every host of the page library shares: which format a request
// chooses and where it puts a note's pages. What it refuses, in the words the hosts show, is
// checked through them: notetool's usage test and the Python package's save() test.

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

#include "output_plan.h"

namespace {

using namespace notetool;

const ArgumentNames kNames{"format", "output", "pages", "scale", "dpi", "workers"};

OutputPlan plan(const std::string& output, const std::string& format = "") {
    OutputRequest request;
    request.output = output;
    request.format = format;
    return planOutput(request, kNames);
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

// A format is chosen by its exact name, or by its extensions whatever their case, never by
// a folder's name.
TEST(OutputPlan, NamesAndExtensionsChooseTheirFormat) {
    const auto chosen = [](const std::string& output, const std::string& format = "") {
        return &plan(output, format).format;
    };
    const OutputFormat* fallback = &outputFormats().front();
    for (const OutputFormat& format : outputFormats()) {
        EXPECT_EQ(chosen("out/", format.name), &format);
        EXPECT_THROW(chosen("out/", upper(format.name)), RequestError);
        for (const std::string& extension : format.extensions) {
            SCOPED_TRACE(extension);
            EXPECT_EQ(chosen("out/note" + extension), &format);
            EXPECT_EQ(chosen("out/NOTE" + upper(extension)), &format);
            EXPECT_EQ(chosen(extension), fallback);                 // a hidden file, of no extension
            EXPECT_EQ(chosen("note" + extension + "/"), fallback);  // a folder
        }
    }
}

// Where the plan for `output` puts `pages` pages of notes/n.note: "file ..." or "dir ...".
std::string placed(const std::string& output, std::size_t pages, const std::string& format = "") {
    NoteJob job;
    job.note = "notes/n.note";
    job.pages.assign(pages, 1);
    placePages(plan(output, format), job, kNames);
    return job.file.empty() ? "dir " + job.dir : "file " + job.file;
}

TEST(OutputPlan, PutsADocumentOrASinglePageInAFileAndOtherPagesInAFolder) {
    EXPECT_EQ(placed("out/", 3, "pdf"), "file out/n.pdf");
    EXPECT_EQ(placed("a.PDF", 3), "file a.PDF");
    EXPECT_EQ(placed("p.png", 1), "file p.png");
    EXPECT_EQ(placed("out", 3), "dir out");
    EXPECT_EQ(placed("out/", 1, "svg"), "dir out/");
    EXPECT_EQ(placed("-", 3, "pdf"), "file -");
    EXPECT_THROW(placed("-", 2, "png"), RequestError);
}

}  // namespace
