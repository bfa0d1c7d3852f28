#include "kwdataoperationfile.h"

#include "kwdatafile.h"
#include "kwfileindexmodule.h"
#include "log.h"

KwDataOperationFile::KwDataOperationFile() = default;

int KwDataOperationFile::fetchTotalPageNumOfNote(std::string path) {
    KwFileProcess file;
    if (!file.init_datafile(path)) {
        kwlog::text("init_datafile failed");
        return -1;
    }
    KwFileIndexModule index;
    if (file.fetchIndex(index) != 0) {
        kwlog::text("fetchIndex error.");
        return -1;
    }
    return index.fetchModuleNum("PAGE");
}
