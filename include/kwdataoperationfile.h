#ifndef LIBNOTE_KWDATAOPERATIONFILE_H
#define LIBNOTE_KWDATAOPERATIONFILE_H

#include <string>

#include "kwdataload.h"
#include "libnote_export.h"

class LIBNOTE_API KwDataOperationFile : public KwDataLoad {
public:
    KwDataOperationFile();

    // fetchTotalPageNumOfNote():
    // @return the number of index entries whose name begins with "PAGE" (printing
    // "Num:<n>"); -1 when the reader cannot be bound ("init_datafile failed") or the index
    // cannot be read ("fetchIndex error.", after the reader's own lines).
    int fetchTotalPageNumOfNote(std::string path);
};

#endif
