#include "kwdataoperationfile.h"

#include "kwdatafile.h"
#include "kwfileindexmodule.h"
#include "log.h"
#include "status.h"

KwDataOperationFile::KwDataOperationFile() = default;

int KwDataOperationFile::fetchTotalPageNumOfNote(std::string path) {
    KwFileProcess file;
    if (!file.init_datafile(path)) {
        kwlog::text("init_datafile failed");
        return status::PageCountFailed;
    }
    KwFileIndexModule index;
    if (file.fetchIndex(index) != status::Ok) {
        kwlog::text("fetchIndex error.");
        return status::PageCountFailed;
    }
    return index.fetchModuleNum("PAGE");
}
