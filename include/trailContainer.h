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
class LIBNOTE_API TrailContainer {
public:
    TrailContainer();

    std::vector<MorvaPoint> m_points;
    std::vector<MorvaPoint> workListA;
    std::vector<uint16_t> pressures;
    std::vector<MorvaPointS> angles;
    std::vector<bool> flagDraw;
    std::vector<uint64_t> workListB;
    std::vector<std::vector<MorvaPointF>> PointContour;
    std::vector<uint32_t> workListC;
    std::vector<std::vector<MorvaPoint>> workListD;
    std::vector<MorvaPoint> epaPoints;
    std::vector<int> epaGrays;
    std::vector<int> workListE;
    std::vector<int> extraControlNums;
    std::vector<int> workListF;
    double ratioA;
    int pageWidth;
    int pageHeight;
    double ratioB;
    std::string typeName;
    int attrB0;
    int attrB1;
    int attrB2;
    int attrB3;
    unsigned long attrB4;
    std::vector<FlagRect> disableAreaList;
    unsigned long spare64;
    int attrC;
    unsigned char renderFlag;
    unsigned char attrD;
    int attrE;
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
    int maxX;
    int maxY;
    std::string subName;
    int m_emrPointAxis;
    int attrF0;
    int attrF1;
    int attrF2;
    int attrG;
    int attrH;
    int attrI;
    std::vector<int> m_controlNums;
    int attrJ0;
    int attrJ1;
    int rectA[4];
    int attrK;
    int rectB[4];
    int attrL;
    std::string textA;
    std::string textB;
    int attrM0;
    int attrM1;
    int attrN;
    unsigned char attrO;
    unsigned char attrP;
};

#endif
