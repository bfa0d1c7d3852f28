#ifndef LIBNOTE_KWFILEINDEXMODULE_H
#define LIBNOTE_KWFILEINDEXMODULE_H

#include <string>
#include <vector>

#include "config.h"
#include "libnote_export.h"

// One entry of a note's index: a module name and the site of its metadata block.
struct ModuleKwIndexItem {
    std::string name;
    int site;
};

// The table of contents of a note, found through the file's footer.
class LIBNOTE_API KwFileIndexModule {
public:
    KwFileIndexModule();

    std::vector<ModuleKwIndexItem> vecModuleIndex;

    // Queries.
    void setInfoOfModuleIndex(std::vector<ModuleItem>& items);
    bool checkStyleExist(std::string styleName);
    int fetchModuleNum(std::string prefix);
    int fetchModuleSiteForStyle(std::string key, std::string suffix);
    int getTotalPageNum();
    std::vector<std::string> fetchAllModuleName();
    std::vector<unsigned long> fetchModuleSiteForPage(std::string key, int page);
    std::vector<unsigned long> fetchModuleSite(std::string key);
    std::vector<unsigned long> fetchModuleSiteForFileIndex(std::string key);
    std::vector<int> fetchPagesNum();

    // Editing of sites.
    int changeModuleSiteForPage(std::string key, int page, int site);
    int changeModuleSiteForIndexItem(std::string key, int site);
    int changeModuleSiteForIndexDirtyPages(int site);
    int changeModuleSiteForIndexPdfStyleList(int site);

    // Serialisation and assortment.
    void produceVecMI(std::vector<ModuleItem>& items);
    void assortVecMI(std::vector<ModuleItem>& items, std::string prefix);
    void assortVecMINotIn(std::vector<ModuleItem>& items, std::string prefix);
    void assortVecMIByKEY(std::vector<ModuleItem>& vecCover, std::vector<ModuleItem>& vecStyle,
                          std::vector<ModuleItem>& vecPage, std::vector<ModuleItem>& vecKeyword,
                          std::vector<ModuleItem>& vecTitle, std::vector<ModuleItem>& vecFileFeature,
                          std::vector<ModuleItem>& vecLinkO, std::vector<ModuleItem>& vecLinkI,
                          std::vector<ModuleItem>& vecDirty);
    void assortVecMSII(std::vector<ModuleKwIndexItem>& entries, std::string prefix);
    void assortVecMSIINotIn(std::vector<ModuleKwIndexItem>& entries, std::string prefix);
};

#endif
