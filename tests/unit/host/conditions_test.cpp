// The forms of conditions, and what is none.
#include "host/store/conditions.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

// "AlarmLog: alarmlogID = 7", or "none".
std::string Read(std::string_view text) {
    const std::optional<Condition> condition = ParseCondition(text);
    if (!condition) {
        return "none";
    }
    std::string read = std::string(condition->table) + ":";
    for (const Term& term : condition->terms) {
        read += " " + std::string(term.column) + " " + term.sign + " " + std::string(term.value);
    }
    return read;
}

std::string Key(const std::string& group, const std::string& alarm, const std::string& pager) {
    return "WHERE AlmGroup = \"" + group + "\" AND AlmLogID = " + alarm + " AND PagerDescr = \"" +
           pager + "\"";
}

std::string ReadKey(const std::string& group, const std::string& alarm, const std::string& pager) {
    return "AlarmFwd_PagerEvents: AlmGroup = " + group + " AlmLogID = " + alarm +
           " PagerDescr = " + pager;
}

TEST(Conditions, HaveFourForms) {
    EXPECT_EQ("AlarmLog: alarmlogID = 7", Read("WHERE alarmlogID = 7"));
    EXPECT_EQ(ReadKey("ops/1", "7", "duty"), Read(Key("ops/1", "7", "duty")));
    EXPECT_EQ("AlarmFwd_PagerEvents: PagerState <> 2",
              Read("WHERE AlarmFwd_PagerEvents.PagerState <> 2"));
    EXPECT_EQ("AlarmFwd_PagerEvents: AlmLogID = 7",
              Read("WHERE AlarmFwd_PagerEvents.AlmLogID  = 7"));
}

TEST(Conditions, HoldAny32BitNumber) {
    for (const char* number : {"0", "-1", "2147483647", "-2147483648"}) {
        EXPECT_EQ(std::string("AlarmLog: alarmlogID = ") + number,
                  Read(std::string("WHERE alarmlogID = ") + number));
        EXPECT_EQ(ReadKey("g", number, "p"), Read(Key("g", number, "p")));
    }
}

TEST(Conditions, EndWhereTheirTextEnds) {
    const std::string_view longer = "WHERE alarmlogID = 123";
    EXPECT_EQ("AlarmLog: alarmlogID = 12", Read(longer.substr(0, longer.size() - 1)));
}

TEST(Conditions, HoldAnyText) {
    const std::string large(65536, 'x');
    for (const std::string& text :
         {std::string(""), std::string(" "), std::string("it's"), std::string("a\"b"),
          std::string("\""), std::string("\"\""), std::string("\" OR \"1\" = \"1"),
          std::string("%s%n"), std::string("J\xFCrgen"), std::string("\x1b\r\n"),
          std::string("\" AND AlmLogID = "), std::string(" AND PagerDescr = \""),
          std::string("; DROP TABLE AlarmLog; --"), large}) {
        EXPECT_EQ(ReadKey(text, "7", "duty"), Read(Key(text, "7", "duty"))) << text.substr(0, 80);
        EXPECT_EQ(ReadKey("ops", "7", text), Read(Key("ops", "7", text))) << text.substr(0, 80);
    }
}

TEST(Conditions, AreNoneWhenTheyCanBeReadInTwoWays) {
    // The group could end at either place.
    const std::string inner = "a\" AND AlmLogID = 1 AND PagerDescr = \"b";
    EXPECT_EQ("none", Read(Key(inner, "7", "duty")));
    EXPECT_EQ("none", Read(Key("ops", "7", inner)));
}

TEST(Conditions, AreTakenToTheLetterOnly) {
    for (const std::string& text : {
             std::string(""),
             std::string("WHERE"),
             std::string("WHERE "),
             std::string("where alarmlogID = 7"),
             std::string("WHERE AlarmLogID = 7"),
             std::string(" WHERE alarmlogID = 7"),
             std::string("WHERE alarmlogID = 7 "),
             std::string("WHERE alarmlogID = 7;"),
             std::string("WHERE alarmlogID = 7 OR 1 = 1"),
             std::string("WHERE alarmlogID =7"),
             std::string("WHERE alarmlogID = "),
             std::string("WHERE alarmlogID = +7"),
             std::string("WHERE alarmlogID = 07"),
             std::string("WHERE alarmlogID = -0"),
             std::string("WHERE alarmlogID = 7.0"),
             std::string("WHERE alarmlogID = 0x7"),
             std::string("WHERE alarmlogID = 2147483648"),
             std::string("WHERE alarmlogID = 99999999999999999999"),
             std::string("WHERE alarmlogID = \"7\""),
             std::string("WHERE alarmlogID <> 7"),
             std::string("WHERE alarmlogID = 7\0", 21),
             std::string("WHERE AlarmFwd_PagerEvents.PagerState <> two"),
             std::string("WHERE AlarmFwd_PagerEvents.PagerState = 2"),
             std::string("WHERE AlarmFwd_PagerEvents.AlmLogID = 7"),
             std::string("WHERE AlarmLog.AlmLogID  = 7"),
             std::string("WHERE AlmLogID = 7"),
             std::string("WHERE AlmGroup = \""),
             std::string("WHERE AlmGroup = \"ops\""),
             std::string("WHERE AlmGroup = \"ops\" AND AlmLogID = 7"),
             std::string("WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \""),
             std::string("WHERE AlmGroup = 'ops' AND AlmLogID = 7 AND PagerDescr = 'duty'"),
             Key("ops", "seven", "duty"),
             Key("ops", "", "duty"),
             Key("ops", "7", "duty") + " OR 1 = 1",
             Key("ops", "7", "duty") + " ",
             Key("ops", "7", "duty").substr(0, Key("ops", "7", "duty").size() - 1),
         }) {
        EXPECT_EQ("none", Read(text)) << text;
    }
}

}  // namespace
}  // namespace host
