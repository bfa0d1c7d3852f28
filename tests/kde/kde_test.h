#ifndef LIBNOTE_TESTS_KDE_TEST_H
#define LIBNOTE_TESTS_KDE_TEST_H

// What the tests of KDE's plugins share: Qt's images as notetest compares them with
// notetool's pictures, and the note type, which the tests' environment (XDG_DATA_DIRS) makes
// known.

#include <QImage>
#include <QMimeDatabase>
#include <QString>

#include <gtest/gtest.h>

#include <string>

#include "notetool_run.h"

namespace kdetest {

const QString kNoteType = QStringLiteral("application/x-handwritten-note");

inline QMimeType noteType() { return QMimeDatabase().mimeTypeForName(kNoteType); }

// A Qt image's pixels, to hold against notetool's.
inline notetest::Picture pictureOf(const QImage& image) {
    const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    notetest::Picture picture{unsigned(rgba.width()), unsigned(rgba.height()), {}};
    for (int y = 0; y < rgba.height(); ++y)
        picture.rgba.insert(picture.rgba.end(), rgba.constScanLine(y), rgba.constScanLine(y) + 4 * rgba.width());
    return picture;
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
