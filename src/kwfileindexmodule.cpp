#include "kwfileindexmodule.h"

#include <algorithm>
#include <climits>
#include <string>
#include <utility>

#include "log.h"
#include "status.h"
#include "textstream.h"

namespace {

// Searches stop at the first entry of that name: duplicated names are kept in the index, and
// only the first one is ever looked up or changed.
ModuleKwIndexItem* findFirstByName(std::vector<ModuleKwIndexItem>& entries,
                                   const std::string& name) {
    for (ModuleKwIndexItem& entry : entries) {
        if (entry.name == name) return &entry;
    }
    return nullptr;
}

// The site queries hand out unsigned 64-bit sites; a negative site is widened with its sign,
// so -1 comes out as the largest value rather than as 4294967295.
std::vector<unsigned long> siteOf(const ModuleKwIndexItem* entry) {
    if (entry == nullptr) return {};
    return {static_cast<unsigned long>(static_cast<long>(entry->site))};
}

std::string pageName(const std::string& key, int page) { return key + std::to_string(page); }

// Empties an output and gives its storage back: the result replaces what the caller passed.
template <class T>
void release(std::vector<T>& out) {
    std::vector<T>().swap(out);
}

template <class Keep>
void produceItems(const std::vector<ModuleKwIndexItem>& entries, std::vector<ModuleItem>& out,
                  Keep keep) {
    release(out);
    textstream::ClassicStream stream;  // shared by all entries of the call
    for (const ModuleKwIndexItem& entry : entries) {
        if (keep(entry.name)) out.push_back({entry.name, textstream::decimalWord(stream, entry.site)});
    }
}

template <class Keep>
void copyEntries(const std::vector<ModuleKwIndexItem>& entries,
                 std::vector<ModuleKwIndexItem>& out, Keep keep) {
    release(out);
    for (const ModuleKwIndexItem& entry : entries) {
        if (keep(entry.name)) out.push_back(entry);
    }
}

}  // namespace

KwFileIndexModule::KwFileIndexModule() = default;

namespace {

// The text stream that one call of setInfoOfModuleIndex shares between its values, reduced
// to what the call does with it: text appended at the end and never emptied, and signed ints
// taken from the front as a formatted stream extraction takes them in the "C" locale: white
// space skipped (nothing stored when only white space is left), a sign, digits up to the
// first non-digit (0 when there are none, the sign then being used up), the nearest limit
// when out of range. A std::stringstream does the same at several times the cost, which was
// most of counting the pages of a large note.
class SharedIntStream {
public:
    void append(const std::string& text) { text_ += text; }

    void extract(int& value) {
        while (pos_ < text_.size() && isSpace(text_[pos_])) ++pos_;
        if (pos_ == text_.size()) return;
        const bool negative = text_[pos_] == '-';
        if (negative || text_[pos_] == '+') ++pos_;
        const unsigned long long limit = negative ? 2147483648ull : 2147483647ull;
        unsigned long long magnitude = 0;
        const std::size_t digits = pos_;
        for (; pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9'; ++pos_)
            if (magnitude <= limit) magnitude = magnitude * 10 + static_cast<unsigned>(text_[pos_] - '0');
        if (pos_ == digits)
            value = 0;
        else if (magnitude > limit)
            value = negative ? INT_MIN : INT_MAX;
        else
            value = static_cast<int>(negative ? -static_cast<long long>(magnitude) : static_cast<long long>(magnitude));
    }

private:
    static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    std::string text_;
    std::size_t pos_ = 0;
};

}  // namespace

// One stream and one site variable serve the whole call: text that one value leaves unread
// is read first by the next, and a value of only white space repeats the previous site.
// This coupling is kept on purpose, so that hosts get the same sites from a malformed index
// as they always have.
void KwFileIndexModule::setInfoOfModuleIndex(std::vector<ModuleItem>& items) {
    vecModuleIndex.clear();
    vecModuleIndex.reserve(items.size());
    SharedIntStream stream;
    int site = 0;
    for (const ModuleItem& item : items) {
        stream.append(item.value);
        stream.extract(site);
        vecModuleIndex.push_back({item.key, site});
    }
}

bool KwFileIndexModule::checkStyleExist(std::string styleName) {
    if (findFirstByName(vecModuleIndex, "STYLE_" + styleName) != nullptr) return true;
    kwlog::text("style data not exist:");
    kwlog::text(styleName);
    return false;
}

int KwFileIndexModule::fetchModuleNum(std::string prefix) {
    if (prefix.empty()) {
        kwlog::text("ERROR para key is null");
        return 0;
    }
    const int count = static_cast<int>(
        std::count_if(vecModuleIndex.begin(), vecModuleIndex.end(),
                      [&](const ModuleKwIndexItem& entry) { return myStartsWith(entry.name, prefix); }));
    kwlog::text("Num:");
    kwlog::number(count);
    return count;
}

int KwFileIndexModule::fetchModuleSiteForStyle(std::string key, std::string suffix) {
    if (key.empty()) {
        kwlog::text("ERROR para key is null");
        return 0;
    }
    const ModuleKwIndexItem* entry = findFirstByName(vecModuleIndex, key + suffix);
    return entry != nullptr ? entry->site : 0;
}

int KwFileIndexModule::getTotalPageNum() {
    return static_cast<int>(
        std::count_if(vecModuleIndex.begin(), vecModuleIndex.end(),
                      [](const ModuleKwIndexItem& entry) { return myStartsWith(entry.name, "PAGE"); }));
}

std::vector<std::string> KwFileIndexModule::fetchAllModuleName() {
    std::vector<std::string> names;
    names.reserve(vecModuleIndex.size());
    for (const ModuleKwIndexItem& entry : vecModuleIndex) names.push_back(entry.name);
    return names;
}

std::vector<unsigned long> KwFileIndexModule::fetchModuleSiteForPage(std::string key, int page) {
    if (key.empty()) {
        kwlog::text("ERROR para key is null");
        return {};
    }
    return siteOf(findFirstByName(vecModuleIndex, pageName(key, page)));
}

std::vector<unsigned long> KwFileIndexModule::fetchModuleSite(std::string key) {
    if (key.empty()) {
        kwlog::text("ERROR para key is null");
        return {};
    }
    return siteOf(findFirstByName(vecModuleIndex, key));
}

std::vector<unsigned long> KwFileIndexModule::fetchModuleSiteForFileIndex(std::string key) {
    return fetchModuleSite(key);
}

// Every name starting with "PAGE" is parsed, so a stray "PAGESTYLE" raises std::stoi's
// invalid-argument error to the caller. One or two numbers stay in index order: hosts have
// always received them unsorted in that case.
std::vector<int> KwFileIndexModule::fetchPagesNum() {
    std::vector<int> pages;
    for (const ModuleKwIndexItem& entry : vecModuleIndex) {
        if (myStartsWith(entry.name, "PAGE")) pages.push_back(std::stoi(entry.name.substr(4)));
    }
    if (pages.size() > 2) std::sort(pages.begin(), pages.end());
    return pages;
}

int KwFileIndexModule::changeModuleSiteForPage(std::string key, int page, int site) {
    if (key.empty()) {
        kwlog::text("ERROR para iIndexKey is null");
        return status::EmptyKey;
    }
    if (fetchModuleSiteForPage(key, page).empty()) {
        kwlog::text("page module not exist.");
        return status::EntryMissing;
    }
    ModuleKwIndexItem* entry = findFirstByName(vecModuleIndex, pageName(key, page));
    if (entry == nullptr) return status::EntryNotFound;
    entry->site = site;
    return status::Ok;
}

// The message names a page whatever the key is; hosts match on this exact text.
int KwFileIndexModule::changeModuleSiteForIndexItem(std::string key, int site) {
    if (key.empty()) {
        kwlog::text("ERROR para iIndexKey is null");
        return status::EmptyKey;
    }
    if (fetchModuleSiteForFileIndex(key).empty()) {
        kwlog::text("page moudle not exist.");
        return status::EntryMissing;
    }
    ModuleKwIndexItem* entry = findFirstByName(vecModuleIndex, key);
    if (entry == nullptr) return status::EntryNotFound;
    entry->site = site;
    return status::Ok;
}

int KwFileIndexModule::changeModuleSiteForIndexDirtyPages(int site) {
    if (fetchModuleSiteForFileIndex("DIRTY").empty()) {
        kwlog::text("dirty moudle not exist, add one directly.");
        vecModuleIndex.push_back({"DIRTY", site});
        return status::Ok;
    }
    ModuleKwIndexItem* entry = findFirstByName(vecModuleIndex, "DIRTY");
    if (entry == nullptr) return status::EntryNotFound;
    entry->site = site;
    return status::Ok;
}

// An existing "PDFSTYLELIST" entry is left alone and the "DIRTY" entry takes the new site.
// Hosts written against this library depend on that, so it stays as it is.
int KwFileIndexModule::changeModuleSiteForIndexPdfStyleList(int site) {
    if (fetchModuleSiteForFileIndex("PDFSTYLELIST").empty()) {
        kwlog::text("pdf style list moudle not exist, add one directly.");
        vecModuleIndex.push_back({"PDFSTYLELIST", site});
        return status::Ok;
    }
    ModuleKwIndexItem* entry = findFirstByName(vecModuleIndex, "DIRTY");
    if (entry == nullptr) return status::EntryNotFound;
    entry->site = site;
    return status::Ok;
}

void KwFileIndexModule::produceVecMI(std::vector<ModuleItem>& items) {
    produceItems(vecModuleIndex, items, [](const std::string&) { return true; });
}

void KwFileIndexModule::assortVecMI(std::vector<ModuleItem>& items, std::string prefix) {
    produceItems(vecModuleIndex, items,
                 [&](const std::string& name) { return myStartsWith(name, prefix); });
}

void KwFileIndexModule::assortVecMINotIn(std::vector<ModuleItem>& items, std::string prefix) {
    produceItems(vecModuleIndex, items,
                 [&](const std::string& name) { return !myStartsWith(name, prefix); });
}

// "STYLE" and "DIRTY" carry no underscore, unlike the other prefixes. Entries outside the
// nine categories (such as "PDFSTYLELIST") are dropped: the split covers only what a writer
// lays out category by category.
void KwFileIndexModule::assortVecMIByKEY(
    std::vector<ModuleItem>& vecCover, std::vector<ModuleItem>& vecStyle,
    std::vector<ModuleItem>& vecPage, std::vector<ModuleItem>& vecKeyword,
    std::vector<ModuleItem>& vecTitle, std::vector<ModuleItem>& vecFileFeature,
    std::vector<ModuleItem>& vecLinkO, std::vector<ModuleItem>& vecLinkI,
    std::vector<ModuleItem>& vecDirty) {
    const std::pair<const char*, std::vector<ModuleItem>*> categories[] = {
        {"COVER_", &vecCover},   {"STYLE", &vecStyle},   {"PAGE", &vecPage},
        {"KEYWORD_", &vecKeyword}, {"TITLE_", &vecTitle}, {"FILE_FEATURE", &vecFileFeature},
        {"LINKO_", &vecLinkO},   {"LINKI_", &vecLinkI},  {"DIRTY", &vecDirty},
    };
    // All outputs are emptied before the pass, so one vector passed twice collects both
    // categories instead of losing the first one's items.
    for (const auto& category : categories) release(*category.second);

    textstream::ClassicStream stream;
    for (const ModuleKwIndexItem& entry : vecModuleIndex) {
        ModuleItem item{entry.name, textstream::decimalWord(stream, entry.site)};
        for (const auto& category : categories) {
            if (myStartsWith(entry.name, category.first)) {
                category.second->push_back(std::move(item));
                break;
            }
        }
    }
}

void KwFileIndexModule::assortVecMSII(std::vector<ModuleKwIndexItem>& entries,
                                      std::string prefix) {
    copyEntries(vecModuleIndex, entries,
                [&](const std::string& name) { return myStartsWith(name, prefix); });
}

void KwFileIndexModule::assortVecMSIINotIn(std::vector<ModuleKwIndexItem>& entries,
                                           std::string prefix) {
    copyEntries(vecModuleIndex, entries,
                [&](const std::string& name) { return !myStartsWith(name, prefix); });
}
