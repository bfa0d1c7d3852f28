#include "generator_note.h"

#include <okular/core/fileprinter.h>
#include <okular/core/page.h>

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPrinter>

#include <algorithm>

#include "page_reader.h"
#include "page_image.h"
#include "palette.h"
#include "tool_error.h"

OKULAR_EXPORT_PLUGIN(NoteGenerator, "okularGenerator_note.json")

namespace {

const char* const kProducer = "libNote " LIBNOTE_OKULAR_VERSION;

}  // namespace

NoteGenerator::NoteGenerator(QObject* parent, const QVariantList& args) : Okular::Generator(parent, args) {
    setFeature(Threaded);
    setFeature(PrintNative);
    setFeature(PrintToFile);
}

bool NoteGenerator::loadDocument(const QString& fileName, QVector<Okular::Page*>& pages) {
    const std::string path = QFile::encodeName(fileName).toStdString();
    try {
        info_ = notetool::documentInfo(path, 0, kProducer);
        pageNumbers_ = notetool::notePages(path);
        if (pageNumbers_.empty()) throw notetool::ToolError(path + ": the note has no pages");
    } catch (const notetool::ToolError& e) {
        // Okular shows it as the reason the file could not be opened.
        Q_EMIT error(QString::fromStdString(e.what()), -1);
        return false;
    }
    path_ = path;
    const double width = notetool::pagePoints(notetool::kPageWidth, info_.dpi, 1);
    const double height = notetool::pagePoints(notetool::kPageHeight, info_.dpi, 1);
    pages.resize(int(pageNumbers_.size()));
    for (int i = 0; i < pages.size(); ++i) pages[i] = new Okular::Page(i, width, height, Okular::Rotation0);
    return true;
}

bool NoteGenerator::doCloseDocument() {
    path_.clear();
    pageNumbers_.clear();
    return true;
}

Okular::DocumentInfo NoteGenerator::generateDocumentInfo(const QSet<Okular::DocumentInfo::Key>& keys) const {
    Okular::DocumentInfo docInfo;
    if (keys.contains(Okular::DocumentInfo::Title)) docInfo.set(Okular::DocumentInfo::Title, QString::fromStdString(info_.title));
    if (keys.contains(Okular::DocumentInfo::Producer)) docInfo.set(Okular::DocumentInfo::Producer, QString::fromLatin1(kProducer));
    if (keys.contains(Okular::DocumentInfo::MimeType))
        docInfo.set(Okular::DocumentInfo::MimeType, QStringLiteral(LIBNOTE_OKULAR_MIME_TYPE));
    return docInfo;
}

QImage NoteGenerator::pagePicture(int index, int width, int height) const {
    std::vector<uint8_t> pixels(notetool::kPagePixels);
    try {
        notetool::composePage(path_, pageNumbers_.at(std::size_t(index)), notetool::LayerSelection{}, false, pixels.data());
    } catch (const notetool::ToolError&) {
        std::fill(pixels.begin(), pixels.end(), notetool::kNothing);
    }
    return notetool::pageImage(pixels.data(), width, height);
}

QImage NoteGenerator::image(Okular::PixmapRequest* request) {
    return pagePicture(request->pageNumber(), request->width(), request->height());
}

Okular::Document::PrintError NoteGenerator::print(QPrinter& printer) {
    const QList<int> pageList = Okular::FilePrinter::pageList(printer, document()->pages(), document()->currentPage() + 1,
                                                              document()->bookmarkedPageList());
    QPainter painter(&printer);
    // The page's pixels as they are: a smoothed picture of handwriting prints blurred, and
    // the printer's own resolution is far above the tablet's.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    const QRectF paper = printer.pageLayout().paintRectPixels(printer.resolution());
    const double dotsPerPoint = printer.resolution() / 72.0;
    QSizeF size(notetool::pagePoints(notetool::kPageWidth, info_.dpi, 1) * dotsPerPoint,
                notetool::pagePoints(notetool::kPageHeight, info_.dpi, 1) * dotsPerPoint);
    // A page larger than the paper is shrunk to fit it rather than cut.
    if (size.width() > paper.width() || size.height() > paper.height()) size.scale(paper.size(), Qt::KeepAspectRatio);
    for (int i = 0; i < pageList.size(); ++i) {
        if (i > 0 && !printer.newPage()) return Okular::Document::UnknownPrintError;
        painter.drawImage(QRectF(QPointF(0, 0), size), pagePicture(pageList[i] - 1, notetool::kPageWidth, notetool::kPageHeight));
    }
    return painter.end() ? Okular::Document::NoPrintError : Okular::Document::UnknownPrintError;
}

#include "generator_note.moc"
