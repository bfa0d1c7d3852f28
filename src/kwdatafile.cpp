#include "kwdatafile.h"

#include <cerrno>
#include <unistd.h>

#include "log.h"

KwFileProcess::KwFileProcess() = default;

bool KwFileProcess::init_datafile(std::string path) {
    if (path.empty()) {
        kwlog::text("ERROR path is null");
        return false;
    }
    // Only an existence test: every read opens the file itself.
    if (access(path.c_str(), F_OK) != 0) {
        kwlog::errnoWithText("ERROR file is note exists.errno:", errno, ",errmsg:");
        return false;
    }
    const bool bound = init_fileload(path);
    if (!bound) kwlog::text("init failed.");
    return bound;
}
