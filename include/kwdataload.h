#ifndef LIBNOTE_KWDATALOAD_H
#define LIBNOTE_KWDATALOAD_H

#include <cstdint>
#include <string>
#include <vector>

#include "libnote_export.h"
#include "trailContainer.h"

// One call each for the picture of a layer and the strokes of a page.
class LIBNOTE_API KwDataLoad {
public:
    KwDataLoad();

    // pixels must hold 2628288 bytes; only the layer's ink and white are written.
    int fetchNoteDataFromFileByLayer(std::string path, int page, std::string layer, char* pixels);
    // 2628288 colours 0xAARRGGBB, released with delete[]; null on any failure.
    uint32_t* loadImageData(std::string path, int page, std::string layer);
    int fetchNotePathFromFile(std::vector<TrailContainer>& trails, std::string path, int page);
};

#endif
