// The table of output formats, as any host of the page library reads it: a format is chosen
// by its exact name, or by its extensions whatever their case, never by a folder's name.

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

#include "output_formats.h"

namespace {

using namespace notetool;

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

TEST(OutputFormats, NamesAndExtensionsChooseTheirFormat) {
    for (const OutputFormat& format : outputFormats()) {
        EXPECT_EQ(formatNamed(format.name), &format);
        EXPECT_EQ(formatNamed(upper(format.name)), nullptr);
        for (const std::string& extension : format.extensions) {
            SCOPED_TRACE(extension);
            EXPECT_EQ(formatOfPath("out/note" + extension), &format);
            EXPECT_EQ(formatOfPath("out/NOTE" + upper(extension)), &format);
            EXPECT_EQ(formatOfPath(extension), nullptr);                 // a hidden file, of no extension
            EXPECT_EQ(formatOfPath("note" + extension + "/"), nullptr);  // a folder
        }
    }
    EXPECT_EQ(formatOfPath("page.gif"), nullptr);
}

}  // namespace
