// Whether a screenshot of Okular's window shows the first page of a note as notetool draws
// it: the page view's page is found by its frame (black lines longer than any stroke), and
// the ink of what shows of it is compared with `notetool render`'s at the page's width.
//
//   page_area_check <screenshot.png> <window x> <window y> <window width> <window height> <note>
//
// Exits 0 when the ink is the same (to 1 %), 1 otherwise, saying what it found.

#include <QImage>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kde_test.h"

namespace {

constexpr int kFrameLength = 100;  // pixels of black in a line: a page's frame, not ink

bool blackRun(const QImage& shot, int x, int y, int dx, int dy) {
    for (int i = 0; i < kFrameLength; ++i)
        if (!shot.valid(x + i * dx, y + i * dy) || qGray(shot.pixel(x + i * dx, y + i * dy)) != 0) return false;
    return true;
}

// The page's inside, left of its frame to right of it, top of its frame down to the
// window's bottom: the first vertical black line from the window's middle to the right is
// the page's left edge (the sidebar's thumbnails are smaller), the next its right edge.
QRect pageArea(const QImage& shot, const QRect& window) {
    const int y = window.center().y();
    int left = -1, right = -1;
    for (int x = window.left() + window.width() / 8; x < window.right() && right < 0; ++x)
        if (blackRun(shot, x, y, 0, 1) || blackRun(shot, x, y - kFrameLength + 1, 0, 1)) (left < 0 ? left : right) = x;
    if (right < 0) return {};
    int top = y;
    while (top > window.top() && qGray(shot.pixel(left + 1, top)) != 0) --top;
    if (!blackRun(shot, left + 1, top, 1, 0)) return {};
    return QRect(QPoint(left + 1, top + 1), QPoint(right - 1, window.bottom()));
}

constexpr int kInk = 64, kNearInk = 128;

int darkPixels(const QImage& image, const QSize& within) {
    int count = 0;
    for (int y = 0; y < within.height() && y < image.height(); ++y)
        for (int x = 0; x < within.width() && x < image.width(); ++x) count += qGray(image.pixel(x, y)) < kInk;
    return count;
}

// The pixels of ink in `image` (where `other` has pixels too) that have none nearby in `other`.
int inkWithout(const QImage& image, const QImage& other) {
    int count = 0;
    for (int y = 1; y + 1 < image.height() && y + 1 < other.height(); ++y)
        for (int x = 1; x + 1 < image.width() && x + 1 < other.width(); ++x) {
            if (qGray(image.pixel(x, y)) >= kInk) continue;
            bool near = false;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) near = near || qGray(other.pixel(x + dx, y + dy)) < kNearInk;
            count += !near;
        }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 7) {
        std::fprintf(stderr, "usage: page_area_check SHOT X Y WIDTH HEIGHT NOTE\n");
        return 2;
    }
    const QImage shot = QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_Grayscale8);
    const QRect window(std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]), std::atoi(argv[5]));
    const QRect area = pageArea(shot, window.intersected(shot.rect()));
    if (area.isEmpty()) {
        std::printf("no page frame in the window\n");
        return 1;
    }
    notetest::ScratchDir dir;
    const std::string scale = std::to_string(double(area.width()) / 1404);
    notetest::Picture picture = notetest::notetoolPicture(dir, {"render", argv[6], "--pages", "1", "--scale", scale, "-o"});
    const QImage page = QImage(picture.rgba.data(), int(picture.width), int(picture.height), QImage::Format_RGBA8888)
                            .convertToFormat(QImage::Format_Grayscale8);
    // Okular asks for a page height that it rounds down where notetool rounds to nearest, so
    // the rows of its reduction may begin one pixel apart: ink is compared, each dark pixel of
    // one picture with a dark one at most a pixel away in the other.
    const QImage shown = shot.copy(area);
    const int ink = darkPixels(page, shown.size()), missing = inkWithout(page, shown), extra = inkWithout(shown, page);
    std::printf("page %dx%d at %d,%d; notetool's page at scale %s holds %d pixels of ink there, %d missing from the "
                "screen, %d more on the screen\n",
                area.width(), area.height(), area.left(), area.top(), scale.c_str(), ink, missing, extra);
    // A few pixels at the edges of strokes darken across the line between dark and light.
    return ink > 0 && (missing + extra) * 100 <= ink ? 0 : 1;
}
