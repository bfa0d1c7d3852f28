#ifndef LIBNOTE_TESTS_KDE_TEST_H
#define LIBNOTE_TESTS_KDE_TEST_H

// What the tests of KDE's plugins share: notetool's pictures to compare the plugins' with, as
// Qt images, and the note type, which the tests' environment (XDG_DATA_DIRS) makes known.

#include <QImage>
#include <QMimeDatabase>
#include <QString>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "notetool_run.h"

namespace kdetest {

const QString kNoteType = QStringLiteral("application/x-handwritten-note");

inline QMimeType noteType() { return QMimeDatabase().mimeTypeForName(kNoteType); }

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// What notetool writes with these arguments into dir/out.png, as grey pixels.
inline QImage notetoolPicture(const notetest::ScratchDir& dir, std::vector<std::string> args) {
    args.push_back(dir.path("out.png"));
    const notetest::ToolRun run = notetest::notetool(dir, args);
    EXPECT_EQ(run.code, 0) << run.err;
    return QImage(QString::fromStdString(dir.path("out.png"))).convertToFormat(QImage::Format_Grayscale8);
}

// Whether two grey pictures have the same size and pixels, and where they differ first.
inline ::testing::AssertionResult samePixels(const QImage& expected, const QImage& actual) {
    const QImage a = actual.convertToFormat(QImage::Format_Grayscale8);
    if (a.size() != expected.size())
        return ::testing::AssertionFailure() << "size " << a.width() << "x" << a.height() << ", expected "
                                             << expected.width() << "x" << expected.height();
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixelColor(x, y) != expected.pixelColor(x, y))
                return ::testing::AssertionFailure() << "pixel " << x << "," << y << " is " << qGray(a.pixel(x, y))
                                                     << ", expected " << qGray(expected.pixel(x, y));
    return ::testing::AssertionSuccess();
}

// main() of a test. Qt and KDE find the build's plugins (KDE_TEST_PLUGINS) and the note type
// (in KDE_TEST_SHARE) as they find installed ones, and keep their settings and caches in the
// build, not in the user's home. No display is needed, not even to list the tests at build
// time, so the application draws offscreen.
template <class Application>
int runTests(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_PLUGIN_PATH", KDE_TEST_PLUGINS);
    qputenv("XDG_DATA_DIRS", KDE_TEST_SHARE ":/usr/local/share:/usr/share");
    qputenv("XDG_CONFIG_HOME", KDE_TEST_HOME "/config");
    qputenv("XDG_CACHE_HOME", KDE_TEST_HOME "/cache");
    Application app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

}  // namespace kdetest

#endif
