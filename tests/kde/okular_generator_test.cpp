// The generator as Okular uses it: loaded by Okular::Document from its metadata for the
// note type (QT_PLUGIN_PATH points into the build), pages drawn in its worker thread on
// request of an observer, as Okular's page view asks for them.

#include <okular/core/document.h>
#include <okular/core/generator.h>
#include <okular/core/observer.h>
#include <okular/core/page.h>
#include <okular/core/settings_core.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPixmap>
#include <QPrinter>
#include <QUrl>

#include "hostile_notes.h"
#include "kde_test.h"

// Okular's page view takes a page's pixmap through its PagePainter, the one class the page
// lets read it; the test reads it the same way.
class PagePainter {
public:
    static const QPixmap* pixmap(const Okular::Page& page, Okular::DocumentObserver* observer, int width, int height) {
        return page._o_nearestPixmap(observer, width, height);
    }
};

namespace {

using notetest::ScratchDir;

// Counts the pixmaps the document delivers.
class Observer : public Okular::DocumentObserver {
public:
    void notifyPageChanged(int, int flags) override {
        if (flags & Pixmap) ++pixmaps;
    }
    int pixmaps = 0;
};

class Viewer {
public:
    Viewer() { document_.addObserver(&observer_); }
    ~Viewer() { document_.closeDocument(); }

    Okular::Document::OpenResult open(const std::string& path) {
        const QString file = QString::fromStdString(path);
        return document_.openDocument(file, QUrl::fromLocalFile(file), kdetest::noteType());
    }

    // Page `page` (from 0) drawn width x height pixels large, as the page view gets it.
    QImage pixmap(int page, int width, int height) {
        const int before = observer_.pixmaps;
        document_.requestPixmaps({new Okular::PixmapRequest(&observer_, page, width, height, 1.0, 1,
                                                            Okular::PixmapRequest::Asynchronous)});
        QElapsedTimer timer;
        timer.start();
        while (observer_.pixmaps == before && timer.elapsed() < 20000) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        const QPixmap* drawn = PagePainter::pixmap(*document_.page(page), &observer_, width, height);
        return drawn ? drawn->toImage() : QImage();
    }

    // Okular's part reads its settings before it makes a document, and so must a viewer.
    struct Settings {
        Settings() { Okular::SettingsCore::instance(QStringLiteral("okular_generator_testrc")); }
    } settings_;
    Okular::Document document_{nullptr};
    Observer observer_;
};

const std::string kSample = SAMPLE_NOTE;

TEST(OkularGenerator, OpensTheSampleWithItsPagesAtTheirSizeOnPaperAndItsInfo) {
    Viewer viewer;
    ASSERT_EQ(viewer.open(kSample), Okular::Document::OpenSuccess) << viewer.document_.openError().toStdString();
    ScratchDir dir;
    const notetest::ToolRun info = notetest::notetool(dir, {"info", kSample});
    const std::string pages = "pages: " + std::to_string(viewer.document_.pages()) + "\n";
    EXPECT_NE(info.out.find(pages), std::string::npos) << info.out;
    // notetool's PDF page of the same note has the size on paper, in points.
    notetest::notetool(dir, {"render", kSample, "--pages", "1", "-o", dir.path("p.pdf")});
    const notetest::ToolRun pdf = notetest::program(dir, {"pdfinfo", dir.path("p.pdf")});
    const Okular::Page* first = viewer.document_.page(0);
    char size[64];
    std::snprintf(size, sizeof size, "%g x %g pts", first->width(), first->height());
    EXPECT_NE(pdf.out.find(size), std::string::npos) << pdf.out << " lacks " << size;
    for (uint i = 1; i < viewer.document_.pages(); ++i) EXPECT_EQ(viewer.document_.page(i)->width(), first->width());

    const Okular::DocumentInfo docInfo = viewer.document_.documentInfo(
        {Okular::DocumentInfo::Title, Okular::DocumentInfo::Producer});
    EXPECT_EQ(docInfo.get(Okular::DocumentInfo::Title), QStringLiteral("sample"));
    EXPECT_TRUE(docInfo.get(Okular::DocumentInfo::Producer).startsWith(QStringLiteral("libNote ")));
}

TEST(OkularGenerator, PixmapsAreNotetoolsPicturesOfTheSameSize) {
    Viewer viewer;
    ASSERT_EQ(viewer.open(kSample), Okular::Document::OpenSuccess);
    ScratchDir dir;
    for (const char* scale : {"0.5", "1", "2"}) {
        const notetest::Picture expected = notetest::notetoolPicture(dir, {"render", kSample, "--pages", "1", "--scale", scale, "-o"});
        const QImage pixmap = viewer.pixmap(0, int(expected.width), int(expected.height));
        EXPECT_TRUE(notetest::samePixels(expected, kdetest::pictureOf(pixmap))) << scale;
    }
}

// Okular's print dialog prints through the generator; printed to a PDF file, each page is the
// page's own pixels (1404 x 1872, not resampled), not smoothed by the viewer of the PDF.
TEST(OkularGenerator, PrintsEveryPageAsItsOwnPixels) {
    Viewer viewer;
    ASSERT_EQ(viewer.open(kSample), Okular::Document::OpenSuccess);
    EXPECT_EQ(viewer.document_.printingSupport(), Okular::Document::NativePrinting);
    ScratchDir dir;
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(dir.path("printed.pdf")));
    ASSERT_EQ(viewer.document_.print(printer), Okular::Document::NoPrintError);

    const notetest::ToolRun images = notetest::program(dir, {"pdfimages", "-list", dir.path("printed.pdf")});
    int pages = 0;
    for (std::size_t at = images.out.find(" image "); at != std::string::npos; at = images.out.find(" image ", at + 1)) {
        EXPECT_EQ(images.out.compare(at, 20, " image    1404  1872"), 0) << images.out.substr(at, 40);
        ++pages;
    }
    EXPECT_EQ(pages, int(viewer.document_.pages())) << images.out;
    EXPECT_EQ(notetest::readWholeFile(dir.path("printed.pdf")).find("/Interpolate true"), std::string::npos);
}

TEST(OkularGenerator, ABrokenNoteFailsWithTheLibrarysReason) {
    ScratchDir dir;
    // The sample cut short: a note by its first bytes, whose footer and index are gone. (A
    // file that is text is not the generator's: Okular then tries the type of its content.)
    const std::string broken = dir.write("broken.note", notetest::readWholeFile(kSample).substr(0, 3000));
    Viewer viewer;
    EXPECT_EQ(viewer.open(broken), Okular::Document::OpenError);
    // notetool's error line about the same note: "notetool: <the reason>".
    const notetest::ToolRun info = notetest::notetool(dir, {"info", broken});
    ASSERT_NE(info.code, 0);
    const std::string reason = viewer.document_.openError().toStdString();
    EXPECT_FALSE(reason.empty());
    EXPECT_NE(info.err.find(reason), std::string::npos) << info.err << " vs " << reason;
}

// Every malformed note of the catalogue either opens, its first page drawn, or fails with a
// reason; none crashes Okular. What a page of it shows is the page library's tests' to check.
TEST(OkularGenerator, HostileNotesOpenOrFailCleanly) {
    ScratchDir dir;
    for (const hostile::Note& note : hostile::catalogue()) {
        SCOPED_TRACE(note.attack);
        const std::string path = dir.write("hostile.note", note.bytes);
        Viewer viewer;
        if (viewer.open(path) != Okular::Document::OpenSuccess) {
            EXPECT_FALSE(viewer.document_.openError().isEmpty());
            continue;
        }
        EXPECT_EQ(viewer.pixmap(0, 351, 468).size(), QSize(351, 468));
    }
}

}  // namespace

int main(int argc, char** argv) { return kdetest::runTests<QApplication>(argc, argv); }
