#ifndef LIBNOTE_TRAILCONTAINER_H
#define LIBNOTE_TRAILCONTAINER_H

#include <cstdint>
#include <string>
#include <vector>

#include "libnote_export.h"

// A point in digitizer units, or a pixel once mapped onto an image.
struct MorvaPoint {
    int x;
    int y;
};

// A point of a contour outline.
struct MorvaPointF {
    float x;
    float y;
};

// The pen angle pair of one sampled point.
struct MorvaPointS {
    int16_t x;
    int16_t y;
};

// One disabled area of a stroke, carried whole and never interpreted.
struct FlagRect {
    uint32_t words[6];
};

// One stroke of a page: its sampled points with their companions, its contours and its
// scalar attributes, as the stroke record of a note file carries them.
//
// The record, as data2Trail reads it: a head of 208 bytes in which each field has a fixed
// place ("head byte n" below), then the body, one part after another:
//   [1] disableAreaList  [2] m_points  [3] pressures  [4] angles  [5] flagDraw
//   [6] epaPoints  [7] epaGrays  [8] a fixed block of 13 words  [9] m_controlNums
//   [10] attrM0, attrM1, attrO, renderFlag  [11] PointContour
//   [12] a list of 16-byte elements that is stepped over and not kept
//   [13] attrI, ratioB, attrD, attrE  [14] extraControlNums
//   [15] pageWidth, pageHeight, attrN, attrP  [16] textA, textB
// A list is a 4-byte count, then its elements as they lie in memory, so the element types
// here fix their width; a count below 1 holds none. Single fields are as wide as their type.
// Integers are little-endian. Older records end before renderFlag, and a record may end
// anywhere from [13] on: from renderFlag on, the fields a record does not reach keep their
// defaults. trail2data writes no [12], so its records read back differently from [13] on.
//
// The library gives a meaning to few fields: m_points, maxX, maxY and m_emrPointAxis (the
// mapping onto an image), pointCapacity (the room the constructor reserves) and the head's
// two texts (their width). Every other field with a place in the record is carried between
// the file and memory unchanged; those marked "memory only" never reach a file.
class LIBNOTE_API TrailContainer {
public:
    TrailContainer();

    // The sampled points, in digitizer units, and the lists that go with them point by
    // point; each keeps the count its record gives, nothing makes them as long as m_points.
    std::vector<MorvaPoint> m_points;   // [2]
    std::vector<MorvaPoint> workListA;  // memory only
    std::vector<uint16_t> pressures;    // [3], carried
    std::vector<MorvaPointS> angles;    // [4], carried
    std::vector<bool> flagDraw;         // [5], carried: one byte a point, non-zero for true
    std::vector<uint64_t> workListB;    // memory only

    // [11], carried: a count of contours, then each contour as a list of its own.
    std::vector<std::vector<MorvaPointF>> PointContour;

    std::vector<uint32_t> workListC;                // memory only
    std::vector<std::vector<MorvaPoint>> workListD;  // memory only
    std::vector<MorvaPoint> epaPoints;               // [6], carried
    std::vector<int> epaGrays;                       // [7], carried
    std::vector<int> workListE;                      // memory only
    std::vector<int> extraControlNums;               // [14], carried
    std::vector<int> workListF;                      // memory only
    double ratioA;                                   // memory only

    // [15], carried: the mapping onto an image takes the image's size from its caller.
    int pageWidth;
    int pageHeight;

    double ratioB;  // [13], carried: its 8 bytes as they are

    // Head bytes 48 to 123, carried: typeName at 48 (a 50-byte field, zero-terminated, so a
    // text to be written must be shorter than 50 bytes), attrB0..attrB3 at 100, attrB4 at 116.
    std::string typeName;
    int attrB0;
    int attrB1;
    int attrB2;
    int attrB3;
    unsigned long attrB4;

    std::vector<FlagRect> disableAreaList;  // [1], its count at byte 208: carried whole
    unsigned long spare64;                  // memory only
    int attrC;                              // head byte 124, carried

    // renderFlag: [10], its last byte; attrD and attrE: [13]. Carried.
    unsigned char renderFlag;
    unsigned char attrD;
    int attrE;

    // Head bytes 0 to 47, twelve words in order. Carried, but for attrA10, which as
    // pointCapacity gives the room the constructor reserves.
    int attrA0;
    int attrA1;
    int attrA2;
    int attrA3;
    int attrA4;
    int attrA5;
    int attrA6;
    int attrA7;
    int attrA8;
    int attrA9;
    union {
        int attrA10;
        int pointCapacity;  // the room reserved in flagDraw and workListB
    };
    int attrA11;

    // Head bytes 128 to 207. The digitizer's range (maxX, maxY at 128 and 132) and how its
    // axes lie on the page (m_emrPointAxis at 188, 0 to 3; files carry 1) are what the
    // mapping onto an image uses. subName (136, a 50-byte field like typeName's),
    // attrF0..attrF2 (192) and attrG (204) are carried.
    int maxX;
    int maxY;
    std::string subName;
    int m_emrPointAxis;
    int attrF0;
    int attrF1;
    int attrF2;
    int attrG;

    // Carried. The fixed block [8] holds attrJ0, attrJ1, attrH, attrK, attrL, rectA, rectB
    // in that order; trail2data writes rectB into rectA's words too, so rectA does not
    // survive a write. attrI is the first field of [13].
    int attrH;
    int attrI;
    std::vector<int> m_controlNums;  // [9], carried
    int attrJ0;
    int attrJ1;
    int rectA[4];
    int attrK;
    int rectB[4];
    int attrL;

    // [16]: a 4-byte length and the text's bytes each. trail2data writes them; data2Trail
    // never reads them.
    std::string textA;
    std::string textB;

    // Carried: attrM0, attrM1 and attrO in [10], attrN and attrP in [15].
    int attrM0;
    int attrM1;
    int attrN;
    unsigned char attrO;
    unsigned char attrP;
};

#endif
