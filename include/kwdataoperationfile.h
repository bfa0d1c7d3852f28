#ifndef LIBNOTE_KWDATAOPERATIONFILE_H
#define LIBNOTE_KWDATAOPERATIONFILE_H

#include <string>

#include "kwdataload.h"

class KwDataOperationFile : public KwDataLoad {
public:
    KwDataOperationFile();

    // The number of pages of a note, or -1.
    int fetchTotalPageNumOfNote(std::string path);
};

#endif
