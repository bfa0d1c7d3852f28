// The note index: reading it from items, its queries, editing its sites and producing it back.

#include <climits>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "kwfileindexmodule.h"
#include "notefiles.h"

using notetest::Logged;
using notetest::logged;
using Entries = std::vector<std::pair<std::string, int>>;
using Items = notewriter::Items;
using Sites = std::vector<unsigned long>;

namespace {

KwFileIndexModule indexWith(const Entries& entries) {
    KwFileIndexModule index;
    for (const auto& [name, site] : entries) index.vecModuleIndex.push_back({name, site});
    return index;
}

Entries entriesOf(const KwFileIndexModule& index) {
    Entries out;
    for (const ModuleKwIndexItem& e : index.vecModuleIndex) out.emplace_back(e.name, e.site);
    return out;
}

// All values of one call go through one text stream that is never emptied: what one value
// leaves unread is read first by the next, nothing to read keeps the previous site, and a
// failed read spoils the rest. Held to a real std::stringstream used so, on random values
// of white space, signs, digits (some far out of range) and other characters.
TEST(IndexReading, SitesAreThoseOfOneSharedStringStream) {
    std::mt19937 random(7);
    const std::string alphabet = " \t\n+-0123456789x.";
    for (int round = 0; round < 2000; ++round) {
        std::vector<ModuleItem> items;
        for (int n = random() % 6; n >= 0; --n) {
            std::string value;
            for (int k = random() % (random() % 4 == 0 ? 24 : 5); k > 0; --k) value += alphabet[random() % alphabet.size()];
            if (random() % 8 == 0) value += std::string(9 + random() % 16, static_cast<char>('1' + random() % 9));
            items.push_back({"K" + std::to_string(n), value});
        }
        std::stringstream stream;
        int site = 0;
        Entries expected;
        for (const ModuleItem& item : items) {
            stream.clear();
            stream << item.value;
            stream >> site;
            expected.emplace_back(item.key, site);
        }
        KwFileIndexModule index = indexWith({{"OLD", 1}});
        index.setInfoOfModuleIndex(items);
        ASSERT_EQ(entriesOf(index), expected) << "round " << round;
    }
}

TEST(IndexQueries, PageCountsNumbersAndLookups) {
    KwFileIndexModule index = indexWith({{"PAGE1", 10}, {"PAGE1", 20}, {"PAGEX", 30}, {"DIRTY", 4}});
    EXPECT_EQ(logged([&] { return index.getTotalPageNum(); }), Logged(3, ""));
    EXPECT_EQ(logged([&] { return index.fetchModuleNum("PAGE"); }), Logged(3, "Num:3"));
    // One or two page numbers come back in index order; only longer lists are sorted.
    EXPECT_EQ(indexWith({{"PAGE10", 1}, {"PAGE2", 2}}).fetchPagesNum(), (std::vector<int>{10, 2}));
    EXPECT_EQ(indexWith({{"PAGE10", 1}, {"DIRTY", 0}, {"PAGE2", 2}, {"PAGE 1x", 3}}).fetchPagesNum(),
              (std::vector<int>{1, 2, 10}));

    index = indexWith({{"PAGE2", 200}, {"PAGE2", 222}, {"NEG", -1}, {"STYLE_grid", 50}});
    EXPECT_EQ(index.fetchModuleSiteForPage("PAGE", 2), Sites{200});  // the first of two
    EXPECT_EQ(index.fetchModuleSite("NEG"), Sites{ULONG_MAX});       // the sign is widened
    EXPECT_EQ(index.fetchModuleSiteForStyle("STYLE_", "grid"), 50);
    // Absent names answer quietly; names are compared whole.
    EXPECT_EQ(logged([&] {
                  return index.fetchModuleSiteForPage("PAGE", 3).size() + index.fetchModuleSite("NE").size() +
                         !index.checkStyleExist("grid");
              }),
              Logged(0, ""));
    EXPECT_EQ(logged([&] { return index.fetchModuleSite("").size(); }), Logged(0, "ERROR para key is null"));
    EXPECT_EQ(logged([&] { return index.checkStyleExist(""); }), Logged(0, "style data not exist:"));
}

TEST(IndexEditing, SitesOfPagesItemsDirtyAndPdfStyleList) {
    KwFileIndexModule index = indexWith({{"PAGE1", 100}, {"PAGE1", 110}, {"COVER_a", 1}});
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForPage("PAGE", 1, 500); }), Logged(0, ""));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexItem("COVER_a", 9); }), Logged(0, ""));
    // The two missing-entry texts differ ("moudle") on purpose.
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForPage("PAGE", 2, 7); }), Logged(4, "page module not exist."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexItem("COVER_b", 7); }),
              Logged(4, "page moudle not exist."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexItem("", 7); }),
              Logged(24, "ERROR para iIndexKey is null"));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexDirtyPages(7); }),
              Logged(0, "dirty moudle not exist, add one directly."));
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexPdfStyleList(9); }),
              Logged(0, "pdf style list moudle not exist, add one directly."));
    // An existing "PDFSTYLELIST" keeps its site: the edit lands on "DIRTY".
    EXPECT_EQ(logged([&] { return index.changeModuleSiteForIndexPdfStyleList(10); }), Logged(0, ""));
    EXPECT_EQ(entriesOf(index),
              (Entries{{"PAGE1", 500}, {"PAGE1", 110}, {"COVER_a", 9}, {"DIRTY", 10}, {"PDFSTYLELIST", 9}}));
    index = indexWith({{"PDFSTYLELIST", 3}});
    EXPECT_EQ(index.changeModuleSiteForIndexPdfStyleList(9), 5);
    EXPECT_EQ(entriesOf(index), (Entries{{"PDFSTYLELIST", 3}}));
}

// Outputs replace what the caller passed in; an empty prefix never matches.
TEST(IndexSerialisation, ProducePrefixFiltersAndNineCategories) {
    KwFileIndexModule index = indexWith({{"PAGE1", 1}, {"NEG", -1}, {"PAGE1", INT_MIN}});
    std::vector<ModuleItem> items{{"old", "1"}};
    index.produceVecMI(items);
    EXPECT_EQ(notetest::pairsOf(items), (Items{{"PAGE1", "1"}, {"NEG", "-1"}, {"PAGE1", "-2147483648"}}));
    index.assortVecMINotIn(items, "PAGE");
    EXPECT_EQ(notetest::pairsOf(items), (Items{{"NEG", "-1"}}));

    // "STYLE" and "DIRTY" carry no underscore; names outside the nine categories are
    // dropped, and a vector given for two categories collects both, in index order.
    index = indexWith({{"DIRTYX", 0}, {"COVER_f", 1}, {"STYLESHEET", 2}, {"PAGE1", 3}, {"KEYWORD_k", 4},
                       {"TITLE_t", 5}, {"FILE_FEATURE", 6}, {"LINKO_o", 7}, {"LINKI_i", 8}, {"COVER", 10}});
    std::vector<std::vector<ModuleItem>> out(8, std::vector<ModuleItem>{{"old", "0"}});
    index.assortVecMIByKEY(out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7], out[0]);
    std::vector<Items> got;
    for (const auto& list : out) got.push_back(notetest::pairsOf(list));
    EXPECT_EQ(got, (std::vector<Items>{{{"DIRTYX", "0"}, {"COVER_f", "1"}}, {{"STYLESHEET", "2"}}, {{"PAGE1", "3"}},
                                       {{"KEYWORD_k", "4"}}, {{"TITLE_t", "5"}}, {{"FILE_FEATURE", "6"}},
                                       {{"LINKO_o", "7"}}, {{"LINKI_i", "8"}}}));
}

}  // namespace
