#ifndef LIBNOTE_TESTS_HOSTILE_NOTES_H
#define LIBNOTE_TESTS_HOSTILE_NOTES_H

// Note files built to break a reader, shared by the library's and notetool's tests.

#include <cstring>
#include <string>
#include <vector>

#include "notefiles.h"
#include "notewriter.h"

namespace hostile {

inline std::string site(uint64_t at) { return std::to_string(at); }

// A one-page note whose main layer's bitmap and stroke block are at the given sites,
// whatever f holds there.
inline std::string onePage(notewriter::NoteFile& f, const std::string& bitmapSite, const std::string& totalPathSite) {
    const uint64_t layer = f.block({{"LAYERNAME", "MAINLAYER"}, {"LAYERBITMAP", bitmapSite}});
    const uint64_t page = f.block({{"MAINLAYER", site(layer)}, {"TOTALPATH", totalPathSite}});
    return f.finish(f.block({{"PAGE1", site(page)}}));
}

// A stroke record whose point count is replaced.
inline std::string strokeWithPointCount(int32_t count) {
    std::string record = notewriter::strokeRecord(notetest::sampleStroke(1));
    // After the head and the one disabled area of the sample stroke: 208 + 4 + 24.
    std::memcpy(&record[236], &count, 4);
    return record;
}

struct Note {
    const char* attack;
    std::string bytes;
};

// One of each kind of attack, each a one-page note (or what is left of one).
inline std::vector<Note> catalogue() {
    using notewriter::NoteFile;
    std::vector<Note> notes;
    {
        NoteFile f;
        f.block({{"PAGE1", "24"}});
        notes.push_back({"index site 0xFFFFFFFF", f.finish(0xFFFFFFFFu)});
    }
    {
        NoteFile f;
        notes.push_back({"index length 0xFFFFFFFF", f.finish(f.rawBlock("<PAGE1:24>", 0xFFFFFFFFu))});
    }
    {
        NoteFile f;
        notes.push_back({"index without an item", f.finish(f.rawBlock("<PAGE1><:>>>::"))});
    }
    {
        NoteFile f;
        const uint64_t page = f.rawBlock("<MAINLAYER:24>", 0xFFFFFFFFu);
        notes.push_back({"page length 0xFFFFFFFF", f.finish(f.block({{"PAGE1", site(page)}}))});
    }
    {
        NoteFile f;
        const uint64_t picture = f.codedPicture("\x61\xff", 0xFFFFFFFFu);
        notes.push_back({"bitmap length 0xFFFFFFFF", onePage(f, site(picture), "0")});
    }
    {
        NoteFile f;
        notes.push_back({"bitmap site 2^64 - 1", onePage(f, "18446744073709551615", "0")});
    }
    {
        std::string pairs;
        for (int i = 0; i < 200000; ++i) pairs += "\x61\xff";
        NoteFile f;
        notes.push_back({"runs of billions of pixels", onePage(f, site(f.codedPicture(pairs)), "0")});
    }
    {
        NoteFile f;
        const std::string pairs("\x80\xff" "\xff\x00" "\xe1\x7f" "\x61\x00", 8);
        notes.push_back({"colour codes 0x80 and above", onePage(f, site(f.codedPicture(pairs)), "0")});
    }
    const std::string record = notewriter::strokeRecord(notetest::sampleStroke(1));
    for (int32_t count : {0x7FFFFFFF, -1, 1000}) {
        NoteFile f;
        const uint64_t strokes = f.strokeBlock({record}, count);
        notes.push_back({"stroke count", onePage(f, "0", site(strokes))});
    }
    for (int32_t count : {0x7FFFFFFF, -1}) {
        NoteFile f;
        const uint64_t strokes = f.strokeBlock({strokeWithPointCount(count)});
        notes.push_back({"point count", onePage(f, "0", site(strokes))});
    }
    for (const char* name : {"PAGEx", "PAGE99999999999"}) {
        NoteFile f;
        const uint64_t page = f.block({{"MAINLAYER", "0"}});
        notes.push_back({"page number that is no number", f.finish(f.block({{name, site(page)}}))});
    }
    {
        NoteFile f;
        const uint64_t page = f.block({{"FIVESTAR", "1,2,3,4,5,x,7,8,9,10,11"}});
        notes.push_back({"five-star value that is no number", f.finish(f.block({{"PAGE1", site(page)}}))});
    }
    {
        notewriter::Note note;
        notewriter::Page page;
        page.layers = {{"MAINLAYER", notetest::samplePicture(3), {}}};
        page.strokes = {notetest::sampleStroke(1)};
        note.pages = {page};
        const std::string whole = notewriter::buildNote(note);
        notes.push_back({"truncated note", whole.substr(0, whole.size() / 2)});
    }
    return notes;
}

}  // namespace hostile

#endif
