// The conditions that the store in memory takes, and those it does not.
#include "tests/support/memory_condition.h"

#include <gtest/gtest.h>

namespace {

using test_support::ParseCondition;

// "column=text" or "column<>text" of each term, or "none".
std::string Parsed(const char* table, const std::string& text) {
    const auto condition = ParseCondition(table, text);
    if (!condition) {
        return "none";
    }
    std::string shown;
    for (const auto& term : *condition) {
        shown += (shown.empty() ? "" : " ") + term.column + (term.differs ? "<>" : "=") + term.text;
    }
    return shown;
}

constexpr char kEvents[] = "AlarmFwd_PagerEvents";

TEST(MemoryCondition, EachFormThatOccurs) {
    EXPECT_EQ("alarmlogID=7", Parsed("AlarmLog", "WHERE alarmlogID = 7"));
    EXPECT_EQ("alarmlogID=-7", Parsed("AlarmLog", "WHERE alarmlogID = -7"));
    EXPECT_EQ(
        "AlmGroup=ops AlmLogID=7 PagerDescr=anna",
        Parsed(kEvents, "WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"anna\""));
    EXPECT_EQ("AlmGroup= AlmLogID=0 PagerDescr=",
              Parsed(kEvents, "WHERE AlmGroup = \"\" AND AlmLogID = 0 AND PagerDescr = \"\""));
    EXPECT_EQ("PagerState<>2", Parsed(kEvents, "WHERE AlarmFwd_PagerEvents.PagerState <> 2"));
    EXPECT_EQ("AlmLogID=7", Parsed(kEvents, "WHERE AlarmFwd_PagerEvents.AlmLogID  = 7"));
}

TEST(MemoryCondition, NothingElse) {
    const struct {
        const char* table;
        const char* text;
    } strangers[] = {
        {"AlarmLog", ""},
        {"AlarmLog", "WHERE alarmlogID = "},
        {"AlarmLog", "WHERE alarmlogID = -"},
        {"AlarmLog", "WHERE alarmlogID = 7 "},
        {"AlarmLog", " WHERE alarmlogID = 7"},
        {"AlarmLog", "WHERE alarmlogid = 7"},
        {"AlarmLog", "WHERE alarmlogID  = 7"},
        {"AlarmLog", "WHERE alarmlogID = 7 OR 1 = 1"},
        {kEvents, "WHERE alarmlogID = 7"},
        {"AlarmLog", "WHERE AlarmFwd_PagerEvents.PagerState <> 2"},
        {kEvents, "WHERE AlarmFwd_PagerEvents.AlmLogID = 7"},
        {kEvents, "WHERE AlarmFwd_PagerEvents.PagerState <> two"},
        {kEvents, "WHERE AlmGroup = \"ops\" AND AlmLogID = 7"},
        {kEvents, "WHERE AlmGroup = \"o\"ps\" AND AlmLogID = 7 AND PagerDescr = \"anna\""},
        {kEvents, "WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"an\"na\""},
        {kEvents, "WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"anna"},
    };
    for (const auto& each : strangers) {
        EXPECT_EQ("none", Parsed(each.table, each.text)) << each.text;
    }
}

TEST(MemoryCondition, TextsOfAnyLength) {
    const std::string longText(65536, 'x');
    EXPECT_EQ("AlmGroup=" + longText + " AlmLogID=7 PagerDescr=anna",
              Parsed(kEvents, "WHERE AlmGroup = \"" + longText +
                                  "\" AND AlmLogID = 7 AND PagerDescr = \"anna\""));
}

}  // namespace
