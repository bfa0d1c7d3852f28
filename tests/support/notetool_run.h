#ifndef LIBNOTE_TESTS_NOTETOOL_RUN_H
#define LIBNOTE_TESTS_NOTETOOL_RUN_H

// What the tests that run notetool share (tests/notetool, tests/desktop, and the viewer
// plugins' tests, which hold their pages to notetool's): the program, which the test's target
// names in NOTETOOL_PATH, run as a child in a scratch folder, notes to run it on, and its
// outputs read back.

#include <gtest/gtest.h>
#include <png.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "notefiles.h"
#include "run_tool.h"

namespace notetest {

// notetool with args, run to its end.
inline ToolRun notetool(const ScratchDir& dir, std::vector<std::string> args, ToolSetup setup = {}) {
    args.insert(args.begin(), NOTETOOL_PATH);
    return RunningTool(dir.path(""), std::move(args), setup).finish();
}

// Another program (pdfinfo, qpdf) on notetool's output; argv[0] is found on the PATH.
inline ToolRun program(const ScratchDir& dir, std::vector<std::string> argv) {
    argv.insert(argv.begin(), "/usr/bin/env");
    return runTool(dir.path(""), std::move(argv));
}

inline void box(std::vector<uint8_t>& pixels, int x0, int y0, int x1, int y1, uint8_t value) {
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) pixels[std::size_t(y) * notewriter::kPictureWidth + x] = value;
}

// Pages each with one ink box on the main layer, placed by page.
inline notewriter::Note boxPages(int count) {
    notewriter::Note note;
    for (int i = 0; i < count; ++i) {
        std::vector<uint8_t> ink(notewriter::kPictureSize, 0xFF);
        box(ink, 100, 100 + 20 * (i % 80), 400, 110 + 20 * (i % 80), 0x00);
        note.pages.push_back({});
        note.pages.back().layers = {{"MAINLAYER", ink, {}}};
    }
    return note;
}

// The PNG as 8-bit RGBA, through libpng's own reader.
inline std::vector<uint8_t> readPng(const std::string& path, unsigned& width, unsigned& height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) throw std::runtime_error(path + ": " + image.message);
    image.format = PNG_FORMAT_RGBA;
    std::vector<uint8_t> rgba(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr)) throw std::runtime_error(path + ": " + image.message);
    width = image.width;
    height = image.height;
    return rgba;
}

// A picture's size and its 8-bit RGBA pixels, row after row.
struct Picture {
    unsigned width = 0, height = 0;
    std::vector<uint8_t> rgba;
};

// The PNG that notetool writes with args, its path added last.
inline Picture notetoolPicture(const ScratchDir& dir, std::vector<std::string> args) {
    const std::string png = dir.path("notetool-picture.png");
    args.push_back(png);
    const ToolRun run = notetool(dir, std::move(args));
    if (run.code != 0) throw std::runtime_error("notetool: " + run.err);
    Picture picture;
    picture.rgba = readPng(png, picture.width, picture.height);
    return picture;
}

// Whether a host's picture is notetool's, and if not, where they first differ.
inline ::testing::AssertionResult samePixels(const Picture& expected, const Picture& actual) {
    if (actual.width != expected.width || actual.height != expected.height)
        return ::testing::AssertionFailure() << "size " << actual.width << "x" << actual.height << ", expected "
                                             << expected.width << "x" << expected.height;
    for (std::size_t i = 0; i < expected.rgba.size(); ++i)
        if (actual.rgba[i] != expected.rgba[i])
            return ::testing::AssertionFailure() << "pixel " << i / 4 % expected.width << "," << i / 4 / expected.width
                                                 << " channel " << i % 4 << " is " << int(actual.rgba[i]) << ", expected "
                                                 << int(expected.rgba[i]);
    return ::testing::AssertionSuccess();
}

}  // namespace notetest

#endif
