#ifndef LIBNOTE_EVINCE_VIEWED_NOTE_H
#define LIBNOTE_EVINCE_VIEWED_NOTE_H

// A note as a document viewer shows it, without the viewer's object system: what it learns
// when the note is opened, and each page drawn on demand at the size the viewer asks for.
// Pages are composed and reduced by the page library, as notetool draws them, so a page on
// screen is the PNG that `notetool render --scale` writes. Nothing of a page is kept once it
// is drawn: a viewer asks again when it needs a page again.

#include <cairo.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "kwfilefeaturemodule.h"

namespace notebackend {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

// A layer as the viewer's Layers panel lists it.
struct LayerTitle {
    std::string name;   // MAINLAYER
    std::string title;  // Main layer
};

class ViewedNote {
public:
    // Reads the note's index and header; throws notetool::ToolError with the library's
    // reason when the note cannot be read or has no page.
    explicit ViewedNote(std::string path);

    const std::string& path() const { return path_; }
    const std::string& title() const { return title_; }
    int pageCount() const { return static_cast<int>(pages_.size()); }
    int pageNumber(int index) const { return pages_.at(std::size_t(index)); }
    // Page pixels per inch on paper: the header's DEVICE_DPI when it is sane.
    double dpi() const { return dpi_; }
    // The size on paper, in points, that every page has.
    double widthPoints() const;
    double heightPoints() const;
    const std::optional<KwFileFeatureModule>& header() const { return header_; }

    // The layers any page has, top first.
    std::vector<LayerTitle> layers() const;

    // The page at `index` drawn at width x height pixels and turned `rotation` degrees
    // clockwise (0, 90, 180, 270), leaving out the hidden layers. A page that cannot be read
    // is blank paper: the others still show.
    Surface draw(int index, int width, int height, int rotation, const std::set<std::string>& hidden) const;

    // The page at its full resolution, each page pixel one surface pixel: what a printed page
    // holds.
    Surface drawFull(int index, const std::set<std::string>& hidden) const;

private:
    std::vector<uint8_t> compose(int index, const std::set<std::string>& hidden) const;

    std::string path_;
    std::string title_;
    std::vector<int> pages_;
    double dpi_;
    std::optional<KwFileFeatureModule> header_;
};

}  // namespace notebackend

#endif
