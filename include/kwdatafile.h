#ifndef LIBNOTE_KWDATAFILE_H
#define LIBNOTE_KWDATAFILE_H

#include <string>

#include "kwfileload.h"
#include "libnote_export.h"

// The reader bound to a path only once the file is known to exist.
class LIBNOTE_API KwFileProcess : public KwFileLoad {
public:
    KwFileProcess();

    // init_datafile(): binds the reader to path once the file exists.
    // @return true when bound; false for an empty path ("ERROR path is null"), a path
    // that does not exist ("ERROR file is note exists.errno:<n>,errmsg:<text>") or a
    // reader that refuses it ("init failed.").
    bool init_datafile(std::string path);
};

#endif
