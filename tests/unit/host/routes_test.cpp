// Which pagers an alarm goes to.
#include "host/pages/routes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

bool Fits(const std::string& pattern, const std::string& group) {
    return !PagersFor({{pattern, {}, {"duty"}}}, group, "1").empty();
}

TEST(Routes, FitGroupsAsPatternsOfFileNamesDo) {
    EXPECT_TRUE(Fits("PLANT/017", "PLANT/017"));
    EXPECT_FALSE(Fits("PLANT/017", "PLANT/0170"));
    EXPECT_FALSE(Fits("PLANT/*", "plant/017"));
    EXPECT_TRUE(Fits("PLANT/*", "PLANT/"));
    EXPECT_TRUE(Fits("PLANT/*", "PLANT/hall/017"));
    EXPECT_FALSE(Fits("PLANT/*", "PLANT"));
    EXPECT_TRUE(Fits("PLANT/01?", "PLANT/017"));
    EXPECT_FALSE(Fits("PLANT/01?", "PLANT/01"));
    EXPECT_TRUE(Fits("[A-P]*/1", "PLANT/1"));
    EXPECT_FALSE(Fits("[A-P]*/1", "QUAY/1"));
    EXPECT_TRUE(Fits("*", ""));
    EXPECT_TRUE(Fits("*", ".hidden"));
    EXPECT_TRUE(Fits("", ""));
    EXPECT_FALSE(Fits("", "PLANT"));
}

TEST(Routes, CountCharactersAndNotBytes) {
    EXPECT_TRUE(Fits("K?CHE/?", "K\u00DCCHE/\u6771"));
    EXPECT_FALSE(Fits("K?CHE", "K\u00DC\u00DCCHE"));
    EXPECT_TRUE(Fits("[\u00C4\u00DC]*", "\u00DCBER"));
    EXPECT_TRUE(Fits("\u6771*", "\u6771\u4EAC"));
}

TEST(Routes, FitSeverities) {
    const std::vector<StoredRoute> routes = {{"*", {"1", "2"}, {"some"}}, {"*", {}, {"all"}}};
    EXPECT_THAT(PagersFor(routes, "ops", "1"), ElementsAre("some", "all"));
    EXPECT_THAT(PagersFor(routes, "ops", "2"), ElementsAre("some", "all"));
    EXPECT_THAT(PagersFor(routes, "ops", "3"), ElementsAre("all"));
    EXPECT_THAT(PagersFor(routes, "ops", "12"), ElementsAre("all"));
    EXPECT_THAT(PagersFor(routes, "ops", ""), ElementsAre("all"));
}

TEST(Routes, AllCountInTheirOrderAndEachPagerOnce) {
    const std::vector<StoredRoute> routes = {
        {"ops", {}, {"b", "a", "b"}}, {"other", {}, {"never"}}, {"o*", {}, {"c", "a", "d"}}};
    EXPECT_THAT(PagersFor(routes, "ops", "1"), ElementsAre("b", "a", "c", "d"));
    EXPECT_THAT(PagersFor(routes, "nothing", "1"), IsEmpty());
}

class RoutesInTables : public ServiceTest {
 protected:
    void Import(const std::string& text) {
        const ReadSite read = ParseSite(text);
        ASSERT_THAT(read.findings.All(), IsEmpty());
        StoreSite(connection, read.site);
    }
};

TEST_F(RoutesInTables, AreReadAsTheSiteFileHasThem) {
    Import(R"([[route]]
groups = "PLANT/*"
severities = ["critical", "minor"]
pagers = ["night", "duty"]
[[route]]
pagers = ["duty"]
)");
    const std::vector<StoredRoute> routes = ReadRoutes(connection, Encoding::kLatin1);
    ASSERT_EQ(2U, routes.size());
    EXPECT_EQ("PLANT/*", routes[0].groups);
    EXPECT_THAT(routes[0].severities, ElementsAre("1", "3"));
    EXPECT_THAT(routes[0].pagers, ElementsAre("night", "duty"));
    EXPECT_EQ("*", routes[1].groups);
    EXPECT_THAT(routes[1].severities, IsEmpty());
    EXPECT_THAT(routes[1].pagers, ElementsAre("duty"));
}

TEST_F(RoutesInTables, KeepTheirOrderBeyondNine) {
    std::string site;
    for (const char* pager : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"}) {
        site += std::string("[[route]]\npagers = [\"") + pager + "\"]\n";
    }
    Import(site);
    EXPECT_THAT(PagersFor(ReadRoutes(connection, Encoding::kLatin1), "ops", "1"),
                ElementsAre("a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"));
}

// U+8868 has a backslash as its second byte in Shift_JIS: as bytes, it would quote the star.
TEST_F(RoutesInTables, FitGroupsInShiftJis) {
    Import(
        "encoding = \"shift_jis\"\n[[route]]\ngroups = \"\u8868*\"\npagers = [\"\u6771\u4EAC\"]\n");
    const std::vector<StoredRoute> routes = ReadRoutes(connection, Encoding::kShiftJis);
    EXPECT_THAT(PagersFor(routes, Decode("\x95\x5C/1", Encoding::kShiftJis), "1"),
                ElementsAre("\x93\x8C\x8B\x9E"));
    EXPECT_THAT(PagersFor(routes, Decode("\x95\x5D/1", Encoding::kShiftJis), "1"), IsEmpty());
}

TEST_F(RoutesInTables, AreReplacedAsAWhole) {
    Import("[[route]]\npagers = [\"a\", \"b\"]\n[[route]]\npagers = [\"c\"]\n");
    Import("[[route]]\npagers = [\"d\"]\n");
    EXPECT_THAT(PagersFor(ReadRoutes(connection, Encoding::kLatin1), "ops", "1"), ElementsAre("d"));
    EXPECT_THAT(Rows("pager FROM Host_RoutePagers"), ElementsAre("d"));
}

}  // namespace
}  // namespace host
