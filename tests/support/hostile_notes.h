#ifndef LIBNOTE_TESTS_HOSTILE_NOTES_H
#define LIBNOTE_TESTS_HOSTILE_NOTES_H

// Note files built to break a reader, each with what the library's four public calls must
// give for it; shared by the library's hostile-file test, notetool's and the Python
// package's.

#include <cstring>
#include <string>
#include <vector>

#include "notefiles.h"
#include "notewriter.h"
#include "status.h"

namespace hostile {

inline std::string site(uint64_t at) { return std::to_string(at); }

// A one-page note whose main layer's bitmap and stroke block are at the given sites,
// whatever f holds there.
inline std::string onePage(notewriter::NoteFile& f, const std::string& bitmapSite, const std::string& totalPathSite) {
    const uint64_t layer = f.block({{"LAYERNAME", "MAINLAYER"}, {"LAYERBITMAP", bitmapSite}});
    const uint64_t page = f.block({{"MAINLAYER", site(layer)}, {"TOTALPATH", totalPathSite}});
    return f.finish(f.block({{"PAGE1", site(page)}}));
}

// A one-page note whose page block is `page`.
inline std::string pageBlock(notewriter::NoteFile& f, uint64_t page, const char* name = "PAGE1") {
    return f.finish(f.block({{name, site(page)}}));
}

// A stroke record whose point count is replaced.
inline std::string strokeWithPointCount(int32_t count) {
    std::string record = notewriter::strokeRecord(notetest::sampleStroke(1));
    std::memcpy(&record[notewriter::strokeFields(notetest::sampleStroke(1)).pointCount], &count, 4);
    return record;
}

// The stroke call's result when it raises std::length_error.
constexpr int kLengthError = -100;
// What the picture buffer holds before the call.
constexpr char kUntouched = 0x77;

// The results of page 1's MAINLAYER: the page count, the picture call, whether colours came
// back, the stroke call, a text the log holds, and what the picture buffer begins with.
struct Expected {
    int pages;
    int picture;
    bool colours;
    int strokes;
    std::string log;
    std::string pixels = "";
};

struct Note {
    const char* attack;
    std::string bytes;
    Expected expected;
};

// One of each kind of attack, each a one-page note (or what is left of one).
inline std::vector<Note> catalogue() {
    using notewriter::NoteFile;
    constexpr int unreadable = status::PageUnreadable, missing = status::LayerUnavailable;
    const Expected noIndex = {-1, unreadable, false, unreadable, ""};
    std::vector<Note> notes;
    const auto add = [&](const char* attack, const std::string& bytes, Expected expected) {
        notes.push_back({attack, bytes, std::move(expected)});
    };
    const auto withLog = [](Expected e, const char* log) { return e.log = log, e; };
    {
        NoteFile f;
        f.block({{"PAGE1", "24"}});
        add("index site past the end", f.finish(f.size() + 100), withLog(noIndex, "nSite is error"));
        add("index site 0xFFFFFFFF", f.finish(0xFFFFFFFFu), withLog(noIndex, "nSite is error"));
    }
    NoteFile f;
    add("index length 0xFFFFFFFF", f.finish(f.rawBlock("<PAGE1:24>", 0xFFFFFFFFu)),
        withLog(noIndex, "content size is bigger than file size"));
    f = NoteFile();
    add("index without an item", f.finish(f.rawBlock("<PAGE1><:>>>::")), withLog(noIndex, "readModuleItemFromFile failed.\n"));
    f = NoteFile();
    add("index length 0", f.finish(f.rawBlock("")), withLog(noIndex, "content read file failed-----errno:"));
    f = NoteFile();
    add("page length 0xFFFFFFFF", pageBlock(f, f.rawBlock("<MAINLAYER:24>", 0xFFFFFFFFu)),
        {1, unreadable, false, unreadable, "content size is bigger than file size"});
    f = NoteFile();
    add("page site -1", f.finish(f.block({{"PAGE1", "-1"}})), {1, unreadable, false, unreadable, "fseek failed-----errno:22errmsg:"});
    f = NoteFile();
    add("layer length 0xFFFFFFFF", pageBlock(f, f.block({{"MAINLAYER", site(f.rawBlock("<LAYERBITMAP:24>", 0xFFFFFFFFu))}})),
        {1, missing, false, status::Ok, "content size is bigger than file size"});
    f = NoteFile();
    add("bitmap length 0xFFFFFFFF", onePage(f, site(f.codedPicture("\x61\xff", 0xFFFFFFFFu)), "0"),
        {1, missing, false, status::Ok, "compress data m_siteCompressData error."});
    f = NoteFile();
    // The largest site wraps past the size check and is refused by the seek.
    add("bitmap site 2^64 - 1", onePage(f, "18446744073709551615", "0"),
        {1, missing, false, status::Ok, "fseek failed-----errno:22setInfoOfLayerFeature error"});
    f = NoteFile();
    add("bitmap site 2^32 - 1", onePage(f, "4294967295", "0"),
        {1, missing, false, status::Ok, "compress data m_siteCompressData error."});
    {
        std::string pairs;
        for (int i = 0; i < 200000; ++i) pairs += "\x61\xff";  // 200000 x 16384 pixels of ink
        f = NoteFile();
        add("runs of billions of pixels", onePage(f, site(f.codedPicture(pairs)), "0"),
            {1, status::Ok, true, status::Ok, "uncompresseDataByRLE DataLen:3276800000",
             std::string(notewriter::kPictureSize, '\0')});
    }
    // 16384 + 1 + 128 skipped pixels, then one pixel of ink.
    f = NoteFile();
    add("colour codes 0x80 and above", onePage(f, site(f.codedPicture(std::string("\x80\xff\xff\x00\xe1\x7f\x61\x00", 8))), "0"),
        {1, status::Ok, true, status::Ok, "", std::string(16513, kUntouched) + '\0' + kUntouched});
    // Stroke counts no file could hold: the blocks after the stroke block are read as
    // records until one overruns the file, without claiming memory for what is not there.
    const std::string record = notewriter::strokeRecord(notetest::sampleStroke(1));
    for (int32_t count : {0x7FFFFFFF, 1000}) {
        f = NoteFile();
        add("stroke count", onePage(f, "0", site(f.strokeBlock({record, record}, count))),
            {1, status::Ok, true, unreadable, "read trail"});
    }
    f = NoteFile();
    add("stroke count -1", onePage(f, "0", site(f.strokeBlock({record}, -1))), {1, status::Ok, true, status::Ok, ""});
    f = NoteFile();
    add("stroke length 0xFFFFFFFF", onePage(f, "0", site(f.raw(notewriter::Bytes().u32(12).i32(1).u32(0xFFFFFFFFu).raw(record).str()))),
        {1, status::Ok, true, unreadable, "read trail data error-----errno:"});
    f = NoteFile();
    add("point count 0x7FFFFFFF", onePage(f, "0", site(f.strokeBlock({strokeWithPointCount(0x7FFFFFFF)}))),
        {1, status::Ok, true, unreadable, "m_pointsdata2Trail error."});
    f = NoteFile();
    add("point count -1", onePage(f, "0", site(f.strokeBlock({strokeWithPointCount(-1)}))),
        {1, status::Ok, true, kLengthError, ""});
    for (const char* name : {"PAGEx", "PAGE99999999999"}) {
        f = NoteFile();
        add("page number that is no number", pageBlock(f, f.block({{"MAINLAYER", "0"}}), name),
            {1, unreadable, false, unreadable, "page moudle not exist:0"});
    }
    f = NoteFile();
    add("five-star value that is no number", pageBlock(f, f.block({{"FIVESTAR", "1,2,3,4,5,x,7,8,9,10,11"}})),
        {1, missing, false, status::Ok, "mainlayer have no data."});
    {
        // A well-formed note cut short anywhere has no index.
        notewriter::Note note;
        notewriter::Page page;
        page.layers = {{"MAINLAYER", notetest::samplePicture(3), {}}};
        page.strokes = {notetest::sampleStroke(1)};
        note.pages = {page};
        notewriter::NoteSites sites;
        const std::string whole = notewriter::buildNote(note, &sites);
        const notewriter::PageSites& at = sites.pages[0];
        const std::pair<const char*, uint64_t> cuts[] = {
            {"empty note", 0}, {"note cut in its tag", 4}, {"note cut before its tag's last byte", 23},
            {"note cut in a block", at.block + 5}, {"note cut in a picture", at.pictures.at("MAINLAYER") + 1},
            {"note cut in a stroke block", at.totalPath + 4}, {"note cut in half", whole.size() / 2},
            {"note cut in its footer", whole.size() - 8}, {"note without its last byte", whole.size() - 1}};
        for (const auto& [attack, cut] : cuts) add(attack, whole.substr(0, cut), noIndex);
    }
    return notes;
}

}  // namespace hostile

#endif
