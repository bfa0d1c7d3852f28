#ifndef LIBNOTE_KWDATALOAD_H
#define LIBNOTE_KWDATALOAD_H

#include <cstdint>
#include <string>
#include <vector>

#include "libnote_export.h"
#include "trailContainer.h"

// One call each for the picture of a layer and the strokes of a page. Each reads the file
// anew and closes it before it returns.
class LIBNOTE_API KwDataLoad {
public:
    KwDataLoad();

    // fetchNoteDataFromFileByLayer():
    //   Decodes the picture of layer (see KwFileLoad::fetchLayerFeature) of page into
    //   pixels, which must hold 2628288 bytes (1404 x 1872, row by row). Only the layer's
    //   ink and white are written: transparent pixels keep what the caller put there, and a
    //   layer without a bitmap leaves pixels untouched (printing "else" and a line end).
    //   Prints the path's folder and file name first, a line each.
    //   @return 0, with "fetchNoteDataFromFileByLayer" and a line end, or:
    //     2   the file does not exist ("file not exist.")
    //     30  the reader cannot be bound ("init_datafile error.")
    //     26  the page cannot be read ("fetchPageFeature error.")
    //     27  the page has no such layer ("mainlayer have no data.", "layer1 have no
    //         data.", ...) or it cannot be read ("fetchLayerFeature error.")
    //     9   the bitmap cannot be expanded ("fetchCompressedData error.")
    int fetchNoteDataFromFileByLayer(std::string path, int page, std::string layer, char* pixels);

    // loadImageData():
    //   The picture as fetchNoteDataFromFileByLayer decodes it onto a transparent page, as
    //   2628288 colours 0xAARRGGBB from NOTE_COLOR_CONVERT_INDEX, where transparent and
    //   white are both 0. Prints what fetchNoteDataFromFileByLayer prints.
    //   @return an array the caller releases with delete[]; null when the picture call
    //   fails or memory cannot be had.
    uint32_t* loadImageData(std::string path, int page, std::string layer);

    // fetchNotePathFromFile():
    //   Replaces trails with the strokes of page (none when the page has no stroke block).
    //   @return 0, or 2 when the file does not exist ("--file not exist.  <path>") or the
    //   reader refuses the path ("wrong sNotePath."), or 26 when the page or its strokes
    //   cannot be read ("fetchPageFeature error."); trails is then left as it was.
    //   @throws std::length_error for a stroke record with a negative section count.
    int fetchNotePathFromFile(std::vector<TrailContainer>& trails, std::string path, int page);
};

#endif
