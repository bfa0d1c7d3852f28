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

// The identification tag expected at offset 4 of a note file.
extern LIBNOTE_API std::string kwFileIdenificationTag;

// Metadata blocks and small helpers.
LIBNOTE_API bool readModuleItemFromFile(FILE*& fp, std::vector<ModuleItem>& items, unsigned long site);
LIBNOTE_API std::vector<std::string> split(std::string text, std::string delimiters);
LIBNOTE_API bool myStartsWith(std::string text, std::string prefix);
LIBNOTE_API bool myEndsWith(std::string text, std::string suffix);
LIBNOTE_API bool flushfsyncfclose(FILE*& fp, bool doFlush, bool doSync, bool doClose);

// Layer bitmaps: 1872 x 1404 pixels, one byte each, run-length coded in the file.
LIBNOTE_API bool uncompresseDataByRLE(char* dest, unsigned long destLen, char* src, unsigned long srcLen);
LIBNOTE_API bool compresseDataByRLE(char* src, unsigned long size, unsigned char* dest, unsigned long& destLen);
LIBNOTE_API int unitForRLE(int& count, unsigned char value, unsigned char* out, unsigned long& outLen);

extern LIBNOTE_API const int UNCOMPRESS_INDEX[256];
extern LIBNOTE_API const unsigned char COMPRESS_INDEX[256];
extern LIBNOTE_API const int NOTE_COLOR_CONVERT_INDEX[256];

// Stroke records.
LIBNOTE_API int data2Trail(char* data, int length, TrailContainer& trail);
LIBNOTE_API void trail2data(const TrailContainer& trail, char* out);
LIBNOTE_API unsigned long trail2dataSize(const TrailContainer& trail);

// Stroke points onto an image of width x height pixels.
LIBNOTE_API int mappingTrailPoints2imageSize(const TrailContainer& trail, int width, int height,
                                             std::vector<MorvaPoint>& out, int toLastIndex);

#endif
