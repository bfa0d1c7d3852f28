#ifndef LIBNOTE_SRC_FACTS_STATUS_H
#define LIBNOTE_SRC_FACTS_STATUS_H

// The status codes that the library's loaders and editors return, by name, and what each
// means in words. The numbers are part of the interface: hosts compare results with them,
// so a code never changes its value. Header-only, so that the programs built beside the
// library (its tests, notetool, the Python binding) word a failure the same way without the
// library exporting anything beyond its public interface.

namespace status {

enum Code : int {
    Ok = 0,
    OpenFailed = 1,          // the file cannot be opened
    FileMissing = 2,         // the file does not exist
    FooterMarkerWrong = 3,   // the tag matched but the footer marker is not "tail"
    EntryMissing = 4,        // the index has no such entry to change
    EntryNotFound = 5,       // the entry was not found on the final search
    PageNotInIndex = 6,      // the index has no module for the page
    BitmapSizeWrong = 7,     // a picture is not 1872 x 1404 bytes
    BitmapNotExpanded = 9,   // the run-length code cannot be expanded
    BitmapNotCompressed = 10,  // the picture cannot be compressed
    AllocationFailed = 11,
    IndexUnreadable = 14,    // the index cannot be read
    ReadFailed = 17,         // a read came back short
    EmptyKey = 24,
    CloseFailed = 25,
    PageUnreadable = 26,     // the page module cannot be read
    LayerUnavailable = 27,   // the page has no such layer, or it cannot be read
    ReaderNotBound = 30,     // the file reader cannot be bound to the path
    LayerNotFilled = 34,     // the layer module cannot be filled
    SeekFailed = 38,

    // Code 17 is given for several failures of reading; these names say which one a
    // reader met, so that the code says what the number does not.
    BlockUnreadable = ReadFailed,   // a metadata block cannot be read
    SiteOutsideFile = ReadFailed,   // a site, or a length from it, reaches past the file's end
    LayerNameUnknown = ReadFailed,  // a layer name other than the five of a page
    StrokeUnreadable = ReadFailed,  // a stroke record cannot be decoded
    PageNotFilled = ReadFailed,     // the page module cannot take its block's items

    // The page count's failure and a stroke record that runs past its end.
    PageCountFailed = -1,
    StrokeOverrun = -1,
};

// What a code means, worded to follow "the note: " in a message; null for a number that is
// not one of the codes.
constexpr const char* statusText(int code) {
    switch (code) {
        case Ok: return "success";
        case OpenFailed: return "the file cannot be opened";
        case FileMissing: return "the file does not exist";
        case FooterMarkerWrong: return "the footer marker is wrong";
        case EntryMissing: return "the index entry is missing";
        case EntryNotFound: return "the index entry was not found";
        case PageNotInIndex: return "the page is not in the index";
        case BitmapSizeWrong: return "the picture is not 1404 x 1872 pixels";
        case BitmapNotExpanded: return "the picture cannot be expanded";
        case BitmapNotCompressed: return "the picture cannot be compressed";
        case AllocationFailed: return "memory cannot be allocated";
        case IndexUnreadable: return "the index cannot be read";
        case ReadFailed: return "a read failed, or a block, site or layer name is bad";
        case PageCountFailed: return "the pages cannot be counted, or a stroke record overruns";
        case EmptyKey: return "the key is empty";
        case CloseFailed: return "the file cannot be closed";
        case PageUnreadable: return "the page cannot be read";
        case LayerUnavailable: return "the layer is missing or cannot be read";
        case ReaderNotBound: return "the file reader cannot be bound to the path";
        case LayerNotFilled: return "the layer module cannot be filled";
        case SeekFailed: return "a seek failed";
        default: return nullptr;
    }
}

}  // namespace status

#endif
