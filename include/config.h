#ifndef LIBNOTE_CONFIG_H
#define LIBNOTE_CONFIG_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "libnote_export.h"
#include "trailContainer.h"

// One <KEY:VALUE> item of a metadata block; numbers stay decimal text.
struct ModuleItem {
    std::string key;
    std::string value;
};

// The identification tag expected at offset 4 of a note file, "KW_FILE_VER_20220013".
extern LIBNOTE_API std::string kwFileIdenificationTag;

// ---- Metadata blocks and small helpers ----

// readModuleItemFromFile():
//   Reads the metadata block at byte offset `site` of the open stream: a 4-byte
//   little-endian length, then that many bytes of "<KEY:VALUE>" items, read up to the first
//   zero byte. `items` is emptied and receives the items in order; a piece that does not
//   divide into exactly one key and one value is passed over.
//   @return true when the block holds at least one item. false, with one of these lines on
//   standard output, when:
//     fp is null                         "ERROR para fp is null" (nothing else is done)
//     a seek fails                       "fseek failed-----errno:<n>errmsg:<text>"
//     site + 4 lies past the file's end  "nSite is error"
//     the length cannot be read          "content size read file failed-----errno:<n>,errmsg:<text>"
//     the block reaches past the end     "content size is bigger than file size"
//     the content cannot be read         "content read file failed-----errno:<n>,errmsg:"
//     the block holds no item            "readModuleItemFromFile failed." and a line end
//   On every failure but a null fp the stream is closed (as flushfsyncfclose closes it,
//   "fclose error." when that fails); fp is null afterwards when the close succeeded.
//   Memory: one buffer of the block's length + 1 bytes (std::bad_alloc when there is none).
LIBNOTE_API bool readModuleItemFromFile(FILE*& fp, std::vector<ModuleItem>& items, unsigned long site);

// split(): the pieces of text between characters of `delimiters` (any one of them), empty
// pieces left out; no piece at all when delimiters is empty. Prints nothing, throws nothing
// beyond std::bad_alloc.
LIBNOTE_API std::vector<std::string> split(std::string text, std::string delimiters);

// myStartsWith(): whether text begins with prefix; false when either is empty.
LIBNOTE_API bool myStartsWith(std::string text, std::string prefix);

// myEndsWith(): whether text ends with suffix; false when either is empty. Also true when
// suffix is exactly one character longer than text and does not occur in it (hosts rely on
// that result).
LIBNOTE_API bool myEndsWith(std::string text, std::string suffix);

// flushfsyncfclose():
//   Flushes (doFlush) and closes (doClose) the stream; doSync is accepted and ignored. A
//   null fp is left alone and gives true.
//   @return true when everything asked for succeeded; fp is null after a successful close.
//   false when:
//     the flush fails   "fflush failed-----errno:<n>"; the stream is closed all the same
//                       (fp null), or "close file failed-----errno:<n>" when that fails too
//     the close fails   "close file failed-----errno:<n>"; fp keeps its value, and the
//                       stream must not be closed again
LIBNOTE_API bool flushfsyncfclose(FILE*& fp, bool doFlush, bool doSync, bool doClose);

// ---- Layer bitmaps ----
// A layer's picture is 1404 x 1872 = 2628288 pixels, one byte each, row by row. The values
// 0x00, 0x01 (black), 0x30, 0x31 (dark grey), 0x50, 0x51 (light grey) and 0xFE (white) are
// ink; 0xFF is transparent. In a file it is run-length coded in pairs: a colour code, then
// a length byte b standing for b + 1 pixels (b < 0x80) or ((b & 0x7F) + 1) x 128 pixels.

// uncompresseDataByRLE():
//   Expands srcLen bytes of code into dest, which must hold 2628288 bytes; destLen is not
//   used. When srcLen is odd, src must hold one byte more, read as the last length byte
//   (the layer module keeps a zero there). Runs of ink and white are written; transparent
//   runs, and codes that stand for no pixel value, are skipped and leave dest as it was.
//   Runs past the end of the picture are cut at its end.
//   @return false only when src is null ("uncompresseDataByRLE srcData nullptr."). When
//   the runs do not add up to 2628288 pixels, prints "uncompresseDataByRLE DataLen:<total>"
//   and still returns true.
LIBNOTE_API bool uncompresseDataByRLE(char* dest, unsigned long destLen, char* src, unsigned long srcLen);

// compresseDataByRLE():
//   Codes the whole 8-byte blocks of src (size / 8 x 8 bytes; a picture has no others)
//   into dest, which must hold 2 x size bytes, the worst case. Bytes that are not pixel
//   values are coded as skipped pixels. destLen receives the number of bytes written.
//   @return false when the working buffer cannot be allocated ("compresseDataByRLE
//   oriDestData malloc failed."; destLen untouched), true otherwise. Prints nothing else.
LIBNOTE_API bool compresseDataByRLE(char* src, unsigned long size, unsigned char* dest, unsigned long& destLen);

// unitForRLE():
//   Writes the pairs for a run of `count` pixels of `value` to out: one pair per whole
//   16384 pixels, then at most one for a multiple of 128 and one for the rest. out must hold
//   2 x (count / 16384) + 4 bytes. count is left at count % 16384.
//   @return the number of bytes written, which is also added to outLen. Prints nothing.
LIBNOTE_API int unitForRLE(int& count, unsigned char value, unsigned char* out, unsigned long& outLen);

// UNCOMPRESS_INDEX: colour code -> pixel value (0xFF, transparent, for a code that stands
// for none). COMPRESS_INDEX: pixel value -> colour code (0x00 for a byte that is not a pixel
// value). NOTE_COLOR_CONVERT_INDEX: pixel value -> colour 0xAARRGGBB (0 for a byte that is
// not ink); loadImageData reads it with the byte taken as signed, so white comes out 0 there.
extern LIBNOTE_API const int UNCOMPRESS_INDEX[256];
extern LIBNOTE_API const unsigned char COMPRESS_INDEX[256];
extern LIBNOTE_API const int NOTE_COLOR_CONVERT_INDEX[256];

// ---- Stroke records ----

// data2Trail():
//   Decodes the stroke record of `length` bytes at data into trail, which should be freshly
//   made: lists are appended to. Nothing outside data[0, length) is read; fields that would
//   lie past the end read as zero. Prints "m_emrPointAxis != 1" when the axis is not 1 (the
//   record is still decoded).
//   @return 0 when decoded, also for a short, older record that ends before its render flag
//   ("renderFlag empty."); -1 when a section's elements run past the record's end, after
//   printing the section's name ("disableAreaList", "m_points", "pressures", "angles",
//   "flagDraw", "epaPoints", "epaGrays", "m_controlNums" or "PointContour").
//   @throws std::length_error when the count of m_points, pressures or angles is negative.
LIBNOTE_API int data2Trail(char* data, int length, TrailContainer& trail);

// trail2data(): writes trail's record to out, which must hold trail2dataSize(trail) bytes.
// typeName and subName must be shorter than 50 bytes (their fields' width): a longer one
// stops the process. Prints nothing.
LIBNOTE_API void trail2data(const TrailContainer& trail, char* out);
// trail2dataSize(): the exact number of bytes trail2data writes for trail.
LIBNOTE_API unsigned long trail2dataSize(const TrailContainer& trail);

// ---- Stroke points onto an image ----

// mappingTrailPoints2imageSize():
//   Maps trail's points (digitizer units, 0..maxX by 0..maxY, turned as m_emrPointAxis
//   0-3 says) onto an image of width x height pixels: out is resized to the number of
//   points and holds one pixel position each. toLastIndex non-zero maps the range onto the
//   last pixel (width - 1) instead of onto width. Results beyond the 32-bit range saturate.
//   @return 0 in every case. out is left untouched, with a message, when width or height is
//   below 1 ("cimage==NULL || cimage->p==NULL") or when maxX or maxY is 0:
//     "error ,   trailContainer.maxX==0 || trailContainer.maxY==0"
//   For an axis value other than 0-3, out is resized but not filled ("bad coordinateOrigin").
LIBNOTE_API int mappingTrailPoints2imageSize(const TrailContainer& trail, int width, int height,
                                             std::vector<MorvaPoint>& out, int toLastIndex);

#endif
