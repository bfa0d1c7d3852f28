// Dolphin's (and every KIO program's) previews of handwritten notes: the note's first page
// fitted in the size asked, drawn as `notetool thumbnail` draws it. KIO's thumbnail worker
// runs this for every note a folder shows, so it reads no more of the note than that page.

#include <KIO/ThumbnailCreator>
#include <KPluginFactory>

#include <QFile>
#include <QImage>

#include <vector>

#include "page_image.h"
#include "page_reader.h"
#include "page_scaling.h"
#include "palette.h"
#include "tool_error.h"

namespace {

// The first page, or a null image when the note cannot be read: the worker then says the
// thumbnail failed, and the file manager keeps the type's icon.
QImage firstPage(const std::string& path, int width, int height) {
    std::vector<uint8_t> pixels(notetool::kPagePixels);
    try {
        const std::vector<int> pages = notetool::notePages(path);
        if (pages.empty()) return {};
        notetool::composePage(path, pages.front(), notetool::LayerSelection{}, false, pixels.data());
    } catch (const notetool::ToolError&) {
        return {};
    }
    const double scale = notetool::fitScale(width, height);
    return notetool::pageImage(pixels.data(), notetool::scaledLength(notetool::kPageWidth, scale),
                               notetool::scaledLength(notetool::kPageHeight, scale));
}

}  // namespace

class NoteThumbnailCreator : public KIO::ThumbnailCreator {
    Q_OBJECT
public:
    NoteThumbnailCreator(QObject* parent, const QVariantList& args) : KIO::ThumbnailCreator(parent, args) {}

    KIO::ThumbnailResult create(const KIO::ThumbnailRequest& request) override {
        if (!request.url().isLocalFile()) return KIO::ThumbnailResult::fail();
        // A high-density screen asks for the size in its own pixels.
        const QSize size = request.targetSize() * request.devicePixelRatio();
        const QImage image = firstPage(QFile::encodeName(request.url().toLocalFile()).toStdString(), size.width(), size.height());
        return image.isNull() ? KIO::ThumbnailResult::fail() : KIO::ThumbnailResult::pass(image);
    }
};

K_PLUGIN_CLASS_WITH_JSON(NoteThumbnailCreator, "notethumbnail.json")

#include "notethumbnail.moc"
