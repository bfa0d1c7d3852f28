// The thumbnail plugin as KIO's thumbnail worker uses it: found among the plugins of
// kf5/thumbcreator by the note type its metadata names (QT_PLUGIN_PATH points into the
// build), made by its factory, asked for a preview of the size a file manager shows.

#include <KIO/ThumbnailCreator>
#include <KPluginFactory>
#include <KPluginMetaData>

#include <QGuiApplication>
#include <QUrl>

#include <memory>

#include "hostile_notes.h"
#include "kde_test.h"

namespace {

using notetest::ScratchDir;

// The plugin that KIO would take for notes.
std::unique_ptr<KIO::ThumbnailCreator> noteThumbnailer() {
    const QVector<KPluginMetaData> plugins = KPluginMetaData::findPlugins(
        QStringLiteral("kf5/thumbcreator"), [](const KPluginMetaData& data) { return data.supportsMimeType(kdetest::kNoteType); });
    if (plugins.size() != 1) return nullptr;
    const auto result = KPluginFactory::instantiatePlugin<KIO::ThumbnailCreator>(plugins.front());
    return std::unique_ptr<KIO::ThumbnailCreator>(result.plugin);
}

KIO::ThumbnailResult thumbnail(KIO::ThumbnailCreator& creator, const std::string& path, int size, qreal dpr = 1) {
    const QUrl url = QUrl::fromLocalFile(QString::fromStdString(path));
    return creator.create(KIO::ThumbnailRequest(url, QSize(size, size), kdetest::kNoteType, dpr, 0));
}

TEST(KioThumbnail, IsNotetoolsThumbnailOfTheFirstPage) {
    const auto creator = noteThumbnailer();
    ASSERT_TRUE(creator) << "no plugin for " << kdetest::kNoteType.toStdString() << " in kf5/thumbcreator";
    ScratchDir dir;
    for (const int size : {128, 256}) {
        SCOPED_TRACE(size);
        const notetest::Picture expected = notetest::notetoolPicture(dir, {"thumbnail", "-s", std::to_string(size), SAMPLE_NOTE});
        const KIO::ThumbnailResult result = thumbnail(*creator, SAMPLE_NOTE, size);
        ASSERT_TRUE(result.isValid());
        EXPECT_TRUE(notetest::samePixels(expected, kdetest::pictureOf(result.image())));
    }
    // A screen of twice the density asks for 128 points: 256 of its pixels.
    const notetest::Picture expected = notetest::notetoolPicture(dir, {"thumbnail", "-s", "256", SAMPLE_NOTE});
    EXPECT_TRUE(notetest::samePixels(expected, kdetest::pictureOf(thumbnail(*creator, SAMPLE_NOTE, 128, 2).image())));
}

TEST(KioThumbnail, ABrokenNoteFailsAndHostileNotesDoNotCrashIt) {
    const auto creator = noteThumbnailer();
    ASSERT_TRUE(creator);
    ScratchDir dir;
    const std::string broken = dir.write("broken.note", notetest::readWholeFile(SAMPLE_NOTE).substr(0, 3000));
    const KIO::ThumbnailResult result = thumbnail(*creator, broken, 256);
    EXPECT_FALSE(result.isValid());
    EXPECT_TRUE(result.image().isNull());
    // Malformed notes give the first page (blank where it cannot be read) or nothing.
    for (const hostile::Note& note : hostile::catalogue()) {
        SCOPED_TRACE(note.attack);
        const KIO::ThumbnailResult hostileResult = thumbnail(*creator, dir.write("hostile.note", note.bytes), 256);
        if (hostileResult.isValid()) {
            EXPECT_EQ(hostileResult.image().size(), QSize(192, 256));
        }
    }
}

}  // namespace

int main(int argc, char** argv) { return kdetest::runTests<QGuiApplication>(argc, argv); }
