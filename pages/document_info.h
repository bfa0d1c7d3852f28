#ifndef NOTETOOL_DOCUMENT_INFO_H
#define NOTETOOL_DOCUMENT_INFO_H

// What a written file says about the note it comes from: its name, its maker, when it was
// made, and how large its pages are on paper. Every writer takes these from here, so that a
// page has the same physical size in every format.

#include <string>
#include <utility>
#include <vector>

namespace notetool {

// The tablet's resolution, for notes whose header does not give a sane one.
constexpr double kDefaultDpi = 226;
// The resolutions a page may be printed at: the tablet's page from 28 inches down to half an
// inch wide. Outside them a header's value is taken for garbage, and --dpi is refused.
constexpr double kMinDpi = 50;
constexpr double kMaxDpi = 2400;

// notetool and its version: what --version prints, and the maker that the files of the page
// writers name, whichever host writes them, so that they are the same bytes from every host.
extern const char* const kCreator;

struct DocumentInfo {
    std::string title;    // the note's name: "sample" for notes/sample.note
    std::string creator;  // the program that wrote the file, kCreator
    std::string created;  // ISO 8601 in UTC, or empty: no date, so that the bytes stay the same
    double dpi = kDefaultDpi;  // page pixels per inch on paper, before the scale
    // Keys and texts written as they are by the formats that carry such pairs (a PNG's tEXt
    // chunks): a thumbnail's "Thumb::URI" and the like, by which a thumbnail cache knows
    // whether the picture still shows its file.
    std::vector<std::pair<std::string, std::string>> attributes;
};

// The resolution of a note's pages: `requested` when it is not 0 (--dpi), else the header's
// DEVICE_DPI when that is a number from kMinDpi to kMaxDpi, else kDefaultDpi.
double pageDpi(double requested, const std::string& deviceDpi);

// The resolution of the note's pages by pageDpi, from its header; a header that cannot be read
// counts as none.
double noteDpi(const std::string& note, double requested);

// A page's size on paper, in PDF points (1/72 inch), of `pixels` page pixels drawn `scale`
// times their size at `dpi` pixels per inch.
double pagePoints(int pixels, double dpi, double scale);

// The creation date that SOURCE_DATE_EPOCH asks for (seconds since 1970, the convention of
// reproducible builds), as ISO 8601 in UTC; empty when it is not set or not such a number.
std::string creationDate();

// The document info of a note: its title from the file name, its resolution from its header
// (pageDpi), the creator and the creation date as given.
DocumentInfo documentInfo(const std::string& note, double requestedDpi, const std::string& creator);

}  // namespace notetool

#endif
