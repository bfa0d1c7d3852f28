// The output planner that notetool and the Python package share: what it refuses, in the
// words both hosts show, and where it puts a note's pages.

#include <gtest/gtest.h>

#include "output_plan.h"

namespace {

using namespace notetool;

const ArgumentNames kNames{"format", "output", "pages", "scale", "dpi", "workers"};

OutputRequest request(const std::string& output, const std::string& format = "") {
    OutputRequest request;
    request.output = output;
    request.format = format;
    return request;
}

std::string refusal(const OutputRequest& request) {
    try {
        planOutput(request, kNames);
    } catch (const RequestError& e) {
        return e.what();
    }
    return "";
}

TEST(OutputPlan, RefusesWhatNoNoteCouldBeWrittenAs) {
    OutputRequest wrong = request("out/");
    wrong.scale = 100;  // a page of 22464 x 29952 pixels
    EXPECT_EQ(refusal(wrong), "scale: 100 is not a number from 0.05 to 16");
    wrong = request("out/");
    wrong.workers = 0;
    EXPECT_EQ(refusal(wrong), "workers: 0 is not a whole number from 1 to 256");
    wrong.workers = 257;
    EXPECT_EQ(refusal(wrong), "workers: 257 is not a whole number from 1 to 256");
    wrong = request("out/");
    wrong.dpi = 10;
    EXPECT_EQ(refusal(wrong), "dpi: 10 is not a number from 50 to 2400");
    EXPECT_EQ(refusal(request("out/x.jpg")),
              "output out/x.jpg: .jpg is not the extension of png, pdf or svg (a folder's name ends in /)");
    EXPECT_EQ(refusal(request("a.pdf", "png")), "output a.pdf: the extension says pdf, format says png");
    EXPECT_EQ(refusal(request("out/", "gif")), "format: gif is none of png, pdf or svg");
    EXPECT_EQ(refusal(request("x.jpg/")), "");  // a folder's name is no file name
}

// Where the plan for `output` puts `pages` pages of notes/n.note: "file ..." or "dir ...".
std::string placed(const std::string& output, std::size_t pages, const std::string& format = "") {
    NoteJob job;
    job.note = "notes/n.note";
    job.pages.assign(pages, 1);
    placePages(planOutput(request(output, format), kNames), job, kNames);
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
