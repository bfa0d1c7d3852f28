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

    // ---- Queries ----
    // Names are compared whole and case-sensitively; where a name occurs more than once,
    // only its first entry is ever found or changed. A site query gives the site widened
    // with its sign (-1 is the largest unsigned value), in a list of one, or no site.

    // setInfoOfModuleIndex(): replaces the entries with one per item, in order. The sites
    // are read through one text stream shared by the whole call: text one value leaves
    // unread is read first by the next, and a value of only white space repeats the site
    // before it.
    void setInfoOfModuleIndex(std::vector<ModuleItem>& items);
    // checkStyleExist(): whether "STYLE_<styleName>" is an entry; false prints "style data
    // not exist:<styleName>".
    bool checkStyleExist(std::string styleName);
    // fetchModuleNum(): the number of entries whose name begins with prefix, printed as
    // "Num:<n>"; 0 for an empty prefix ("ERROR para key is null").
    int fetchModuleNum(std::string prefix);
    // fetchModuleSiteForStyle(): the site of entry key + suffix, 0 when there is none or
    // key is empty ("ERROR para key is null").
    int fetchModuleSiteForStyle(std::string key, std::string suffix);
    // getTotalPageNum(): the number of entries whose name begins with "PAGE". Prints nothing.
    int getTotalPageNum();
    // fetchAllModuleName(): every entry's name, in order.
    std::vector<std::string> fetchAllModuleName();
    // fetchModuleSiteForPage(): the site of entry key + page number ("PAGE3"); none for an
    // empty key ("ERROR para key is null").
    std::vector<unsigned long> fetchModuleSiteForPage(std::string key, int page);
    // fetchModuleSite(), fetchModuleSiteForFileIndex(): the site of entry key; none for an
    // empty key ("ERROR para key is null").
    std::vector<unsigned long> fetchModuleSite(std::string key);
    std::vector<unsigned long> fetchModuleSiteForFileIndex(std::string key);
    // fetchPagesNum(): the numbers after "PAGE" of every entry whose name begins with it,
    // sorted when there are three or more, in index order otherwise.
    // @throws std::invalid_argument or std::out_of_range from "stoi" for such a name not
    // followed by a number ("PAGESTYLE").
    std::vector<int> fetchPagesNum();

    // ---- Editing of sites ----
    // Status codes: 0 success, 4 no such entry to change, 5 the entry was not found on the
    // final search, 24 empty key.

    // changeModuleSiteForPage(): sets the site of entry key + page.
    // @return 0, 24 ("ERROR para iIndexKey is null"), 4 ("page module not exist.") or 5.
    int changeModuleSiteForPage(std::string key, int page, int site);
    // changeModuleSiteForIndexItem(): sets the site of entry key.
    // @return 0, 24 ("ERROR para iIndexKey is null"), 4 ("page moudle not exist.") or 5.
    int changeModuleSiteForIndexItem(std::string key, int site);
    // changeModuleSiteForIndexDirtyPages(): sets the site of "DIRTY", or adds that entry
    // ("dirty moudle not exist, add one directly.").
    // @return 0, or 5.
    int changeModuleSiteForIndexDirtyPages(int site);
    // changeModuleSiteForIndexPdfStyleList(): adds "PDFSTYLELIST" with the site when there
    // is no such entry ("pdf style list moudle not exist, add one directly."); when there
    // is, the site goes to "DIRTY" instead, and the list's own site stays.
    // @return 0, or 5 when there is then no "DIRTY" entry.
    int changeModuleSiteForIndexPdfStyleList(int site);

    // ---- Serialisation and assortment ----
    // Each replaces its outputs. Sites become decimal words through one text stream per
    // call. produceVecMI gives every entry; assortVecMI those whose name begins with prefix,
    // assortVecMINotIn the others; assortVecMIByKEY sorts the entries into nine lists by
    // the prefixes "COVER_", "STYLE", "PAGE", "KEYWORD_", "TITLE_", "FILE_FEATURE", "LINKO_",
    // "LINKI_", "DIRTY" (others are dropped); assortVecMSII and assortVecMSIINotIn copy the
    // entries themselves. None prints or throws beyond std::bad_alloc.
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
