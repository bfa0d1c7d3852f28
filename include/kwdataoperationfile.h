#ifndef LIBNOTE_KWDATAOPERATIONFILE_H
#define LIBNOTE_KWDATAOPERATIONFILE_H

#include <string>

#include "kwdataload.h"
#include "libnote_export.h"

class LIBNOTE_API KwDataOperationFile : public KwDataLoad {
public:
    KwDataOperationFile();

    // The number of pages of a note, or -1.
    int fetchTotalPageNumOfNote(std::string path);
};

#endif
