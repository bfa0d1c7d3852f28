#ifndef LIBNOTE_CONFIG_H
#define LIBNOTE_CONFIG_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "trailContainer.h"

// One <KEY:VALUE> item of a metadata block; numbers stay decimal text.
struct ModuleItem {
    std::string key;
    std::string value;
};

// The identification tag expected at offset 4 of a note file.
extern std::string kwFileIdenificationTag;

// Metadata blocks and small helpers.
bool readModuleItemFromFile(FILE*& fp, std::vector<ModuleItem>& items, unsigned long site);
std::vector<std::string> split(std::string text, std::string delimiters);
bool myStartsWith(std::string text, std::string prefix);
bool myEndsWith(std::string text, std::string suffix);
bool flushfsyncfclose(FILE*& fp, bool doFlush, bool doSync, bool doClose);

// Layer bitmaps: 1872 x 1404 pixels, one byte each, run-length coded in the file.
bool uncompresseDataByRLE(char* dest, unsigned long destLen, char* src, unsigned long srcLen);
bool compresseDataByRLE(char* src, unsigned long size, unsigned char* dest, unsigned long& destLen);
int unitForRLE(int& count, unsigned char value, unsigned char* out, unsigned long& outLen);

extern const int UNCOMPRESS_INDEX[256];
extern const unsigned char COMPRESS_INDEX[256];
extern const int NOTE_COLOR_CONVERT_INDEX[256];

// Stroke records.
int data2Trail(char* data, int length, TrailContainer& trail);
void trail2data(const TrailContainer& trail, char* out);
unsigned long trail2dataSize(const TrailContainer& trail);

// Stroke points onto an image of width x height pixels.
int mappingTrailPoints2imageSize(const TrailContainer& trail, int width, int height,
                                 std::vector<MorvaPoint>& out, int toLastIndex);

#endif
