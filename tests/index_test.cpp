// The note index: reading it from items, its queries, editing its sites and producing it back.

#include <climits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "capture.h"
#include "kwfileindexmodule.h"

using Entries = std::vector<ModuleKwIndexItem>;
using Items = std::vector<ModuleItem>;
using Sites = std::vector<unsigned long>;
using Result = std::pair<int, std::string>;

bool operator==(const ModuleKwIndexItem& a, const ModuleKwIndexItem& b) {
    return a.name == b.name && a.site == b.site;
}
bool operator==(const ModuleItem& a, const ModuleItem& b) {
    return a.key == b.key && a.value == b.value;
}

namespace {

KwFileIndexModule indexWith(Entries entries) {
    KwFileIndexModule index;
    index.vecModuleIndex = entries;
    return index;
}

std::vector<int> sitesRead(Items items) {
    KwFileIndexModule index = indexWith({{"OLD", 1}});
    index.setInfoOfModuleIndex(items);
    std::vector<int> sites;
    for (const ModuleKwIndexItem& entry : index.vecModuleIndex) sites.push_back(entry.site);
    return sites;
}

// What a count or an edit returns, with what it logged.
template <class F>
Result logged(F&& f) {
    int result = -1;
    std::string log = notetest::captureStdout([&] { result = f(); });
    return {result, log};
}

std::string pagesNumError(Entries entries) {
    try {
        indexWith(entries).fetchPagesNum();
    } catch (const std::invalid_argument& e) {
        return std::string("invalid:") + e.what();
    } catch (const std::out_of_range& e) {
        return std::string("range:") + e.what();
    }
    return "none";
}

}  // namespace

// All values of one call go through one text stream that is never emptied, so what one value
// leaves unread is read first by the next.
TEST(IndexReading, ValuesShareOneStream) {
    EXPECT_EQ(sitesRead({{"PAGE1", "100"}, {"PAGE1", "200"}, {"DIRTY", "300"}}),
              (std::vector<int>{100, 200, 300}));
    EXPECT_EQ(sitesRead({{"A", "x"}, {"PAGE1", "5"}, {"B", "6"}}), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(sitesRead({{"A", "7 "}, {"B", "9"}}), (std::vector<int>{7, 9}));
    // Nothing to read keeps the one site variable of the call, which starts at 0.
    EXPECT_EQ(sitesRead({{"A", " "}, {"B", "4"}, {"C", "  "}}), (std::vector<int>{0, 4, 4}));
    EXPECT_EQ(sitesRead({{"A", "99999999999"}, {"B", "-99999999999"}}),
              (std::vector<int>{INT_MAX, INT_MIN}));
}

TEST(IndexQueries, PageCountsTakeEveryNameStartingWithPage) {
    KwFileIndexModule index = indexWith({{"PAGE1", 10}, {"PAGE1", 20}, {"PAGEX", 30}, {"DIRTY", 4}});
    EXPECT_EQ(logged([&] { return index.getTotalPageNum(); }), Result(3, ""));
    EXPECT_EQ(logged([&] { return index.fetchModuleNum("PAGE"); }), Result(3, "Num:3"));
    EXPECT_EQ(logged([&] { return index.fetchModuleNum(""); }), Result(0, "ERROR para key is null"));
    EXPECT_EQ(logged([] { return KwFileIndexModule().fetchModuleNum("PAGE"); }), Result(0, "Num:0"));
    EXPECT_EQ(pagesNumError(index.vecModuleIndex), "invalid:stoi");
}

// One or two page numbers come back in index order; only longer lists are sorted.
TEST(IndexQueries, PageNumbersSortedOnlyWhenMoreThanTwo) {
    EXPECT_EQ(indexWith({{"PAGE10", 1}, {"PAGE2", 2}}).fetchPagesNum(), (std::vector<int>{10, 2}));
    EXPECT_EQ(indexWith({{"PAGE10", 1}, {"DIRTY", 0}, {"PAGE2", 2}, {"PAGE 1x", 3}}).fetchPagesNum(),
              (std::vector<int>{1, 2, 10}));
    EXPECT_EQ(pagesNumError({{"PAGE1", 1}, {"PAGE", 2}}), "invalid:stoi");
    EXPECT_EQ(pagesNumError({{"PAGE99999999999", 1}}), "range:stoi");
}

TEST(IndexQueries, LookupsFindTheFirstEntryAndWidenItsSign) {
    KwFileIndexModule index = indexWith({{"PAGE2", 200}, {"PAGE2", 222}, {"PAGE-3", 7},
                                         {"NEG", -1}, {"STYLE_grid", 50}});
    EXPECT_EQ(index.fetchModuleSiteForPage("PAGE", 2), Sites{200});
    EXPECT_EQ(index.fetchModuleSiteForPage("PAGE", -3), Sites{7});
    EXPECT_EQ(index.fetchModuleSite("NEG"), Sites{ULONG_MAX});
    EXPECT_EQ(index.fetchModuleSiteForFileIndex("NEG"), Sites{ULONG_MAX});
    EXPECT_EQ(index.fetchModuleSiteForStyle("STYLE_", "grid"), 50);
    EXPECT_TRUE(index.checkStyleExist("grid"));
    // Absent entries answer quietly; names are compared whole and case-sensitively.
    EXPECT_EQ(logged([&] {
                  return index.fetchModuleSiteForPage("PAGE", 3).size() +
                         index.fetchModuleSite("neg").size() + index.fetchModuleSite("NE").size() +
                         index.fetchModuleSiteForStyle("STYLE_", "dots");
              }),
              Result(0, ""));
    EXPECT_EQ(logged([&] { return index.fetchModuleSite("").size(); }), Result(0, "ERROR para key is null"));
    EXPECT_EQ(logged([&] { return index.checkStyleExist("dots"); }), Result(0, "style data not exist:dots"));
}

TEST(IndexEditing, PageAndNamedItemMustExist) {
    KwFileIndexModule index = indexWith({{"PAGE1", 100}, {"PAGE1", 110}, {"COVER_a", 1}});
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForPage("PAGE", 1, 500); }), Result(0, ""));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexItem("COVER_a", 9); }), Result(0, ""));
    // The two missing-entry texts differ ("moudle") on purpose.
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForPage("PAGE", 2, 7); }),
              Result(4, "page module not exist."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexItem("COVER_b", 7); }),
              Result(4, "page moudle not exist."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForPage("", 1, 7); }),
              Result(24, "ERROR para iIndexKey is null"));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexItem("", 7); }),
              Result(24, "ERROR para iIndexKey is null"));
    EXPECT_EQ(index.vecModuleIndex, (Entries{{"PAGE1", 500}, {"PAGE1", 110}, {"COVER_a", 9}}));
}

// A missing "DIRTY" or "PDFSTYLELIST" entry is appended; an existing "PDFSTYLELIST" keeps its
// site and the edit lands on "DIRTY" instead.
TEST(IndexEditing, DirtyAndPdfStyleListEntries) {
    KwFileIndexModule index = indexWith({{"PAGE1", 1}});
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexDirtyPages(7); }),
              Result(0, "dirty moudle not exist, add one directly."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexPdfStyleList(8); }),
              Result(0, "pdf style list moudle not exist, add one directly."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexPdfStyleList(9); }), Result(0, ""));
    EXPECT_EQ(index.vecModuleIndex, (Entries{{"PAGE1", 1}, {"DIRTY", 9}, {"PDFSTYLELIST", 8}}));

    index = indexWith({{"DIRTY", 1}, {"DIRTY", 2}, {"PDFSTYLELIST", 3}});
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexDirtyPages(7); }), Result(0, ""));
    EXPECT_EQ(index.vecModuleIndex, (Entries{{"DIRTY", 7}, {"DIRTY", 2}, {"PDFSTYLELIST", 3}}));
    index = indexWith({{"PDFSTYLELIST", 3}});
    EXPECT_EQ(index.changeModuleSiteForIndexPdfStyleList(9), 5);
    EXPECT_EQ(index.vecModuleIndex, (Entries{{"PDFSTYLELIST", 3}}));
}

// Outputs replace what the caller passed in; an empty prefix never matches.
TEST(IndexSerialisation, ProduceAndPrefixFilters) {
    KwFileIndexModule index = indexWith({{"PAGE1", 1}, {"NEG", -1}, {"PAGE1", INT_MIN}});
    Items items{{"old", "1"}};
    index.produceVecMI(items);
    EXPECT_EQ(items, (Items{{"PAGE1", "1"}, {"NEG", "-1"}, {"PAGE1", "-2147483648"}}));
    index.assortVecMINotIn(items, "PAGE");
    EXPECT_EQ(items, (Items{{"NEG", "-1"}}));
    index.assortVecMI(items, "");
    EXPECT_TRUE(items.empty());
    index.assortVecMINotIn(items, "");
    EXPECT_EQ(items.size(), 3u);

    Entries entries{{"old", 1}};
    index.assortVecMSII(entries, "PAGE");
    EXPECT_EQ(entries, (Entries{{"PAGE1", 1}, {"PAGE1", INT_MIN}}));
    index.assortVecMSIINotIn(entries, "");
    EXPECT_EQ(entries, index.vecModuleIndex);

    KwFileIndexModule().produceVecMI(items);
    EXPECT_EQ(items.capacity(), 0u);
}

// "STYLE" and "DIRTY" carry no underscore; names outside the nine categories are dropped, and
// a vector given for two categories collects both, in index order.
TEST(IndexSerialisation, SplitsIntoNineCategories) {
    KwFileIndexModule index = indexWith({{"DIRTYX", 0},   {"COVER_f", 1}, {"STYLESHEET", 2},
                                         {"PAGE1", 3},    {"KEYWORD_k", 4}, {"TITLE_t", 5},
                                         {"FILE_FEATURE", 6}, {"LINKO_o", 7}, {"LINKI_i", 8},
                                         {"PDFSTYLELIST", 9}, {"COVER", 10}});
    std::vector<Items> out(8, Items{{"old", "0"}});
    index.assortVecMIByKEY(out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7], out[0]);
    EXPECT_EQ(out, (std::vector<Items>{{{"DIRTYX", "0"}, {"COVER_f", "1"}}, {{"STYLESHEET", "2"}},
                                       {{"PAGE1", "3"}}, {{"KEYWORD_k", "4"}}, {{"TITLE_t", "5"}},
                                       {{"FILE_FEATURE", "6"}}, {{"LINKO_o", "7"}},
                                       {{"LINKI_i", "8"}}}));
}
