#ifndef LIBNOTE_KWDATAFILE_H
#define LIBNOTE_KWDATAFILE_H

#include <string>

#include "kwfileload.h"
#include "libnote_export.h"

// The reader bound to a path only once the file is known to exist.
class LIBNOTE_API KwFileProcess : public KwFileLoad {
public:
    KwFileProcess();

    bool init_datafile(std::string path);
};

#endif
