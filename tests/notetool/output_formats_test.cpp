// The table of output formats, as every host of the page library chooses from it: a format
// is chosen by its exact name, or by its extensions whatever their case, never by a folder's
// name.

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

#include "output_plan.h"

namespace {

using namespace notetool;

const ArgumentNames kNames{"format", "output", "pages", "scale", "dpi", "workers"};

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

const OutputFormat& chosen(const std::string& output, const std::string& format = "") {
    OutputRequest request;
    request.output = output;
    request.format = format;
    return planOutput(request, kNames).format;
}

TEST(OutputFormats, NamesAndExtensionsChooseTheirFormat) {
    const OutputFormat& fallback = outputFormats().front();
    for (const OutputFormat& format : outputFormats()) {
        EXPECT_EQ(&chosen("out/", format.name), &format);
        EXPECT_THROW(chosen("out/", upper(format.name)), RequestError);
        for (const std::string& extension : format.extensions) {
            SCOPED_TRACE(extension);
            EXPECT_EQ(&chosen("out/note" + extension), &format);
            EXPECT_EQ(&chosen("out/NOTE" + upper(extension)), &format);
            EXPECT_EQ(&chosen(extension), &fallback);                 // a hidden file, of no extension
            EXPECT_EQ(&chosen("note" + extension + "/"), &fallback);  // a folder
        }
    }
}

}  // namespace
