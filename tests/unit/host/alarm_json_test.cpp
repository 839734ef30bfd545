// Alarms as JSON from outside.
#include "host/intake/alarm_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "host/intake/json_input.h"

namespace host {
namespace {

using ::testing::HasSubstr;

struct Case {
    const char* because;
    std::string json;
    const char* field;
    const char* says;
};

void ExpectRefused(const std::vector<Case>& cases,
                   const std::function<void(const std::string&)>& read) {
    for (const Case& refused : cases) {
        try {
            read(refused.json);
            ADD_FAILURE() << refused.because;
        } catch (const BadField& error) {
            EXPECT_EQ(refused.field, error.Field()) << refused.because;
            EXPECT_THAT(error.what(), HasSubstr(refused.says)) << refused.because;
        }
    }
}

std::string Nested(int depth) {
    return std::string(static_cast<size_t>(depth), '[') +
           std::string(static_cast<size_t>(depth), ']');
}

TEST(AlarmJson, HasDefaultsForAllButTheText) {
    const std::vector<IncomingAlarm> alarms = AlarmsFromJson(R"({"text": "Disk full"})", "web1");
    ASSERT_EQ(1U, alarms.size());
    EXPECT_EQ("Disk full", alarms[0].text);
    EXPECT_EQ("ALARM/000", alarms[0].group);
    EXPECT_EQ("critical", alarms[0].severity);
    EXPECT_EQ("web1", alarms[0].server);
    EXPECT_EQ("", alarms[0].key);
}

TEST(AlarmJson, IsOneOrMany) {
    const std::vector<IncomingAlarm> alarms = AlarmsFromJson(
        R"([{"text": "a", "group": "ops/1", "severity": "minor", "server": "s", "source": "i",
             "key": "k"}, {"text": "\u00e4\n"}])",
        "");
    ASSERT_EQ(2U, alarms.size());
    EXPECT_EQ("ops/1", alarms[0].group);
    EXPECT_EQ("minor", alarms[0].severity);
    EXPECT_EQ("s", alarms[0].server);
    EXPECT_EQ("i", alarms[0].source);
    EXPECT_EQ("k", alarms[0].key);
    EXPECT_EQ("\u00e4\n", alarms[1].text);
    EXPECT_EQ(
        R"({"text":"a","group":"ops/1","severity":"minor","server":"s","source":"i","key":"k"})",
        WrittenInOneLine(ToJson(alarms[0])));
}

TEST(AlarmJson, ThatIsNoneIsRefusedWithItsPlace) {
    ExpectRefused(
        {
            {"it is nothing", "", "", "byte 1"},
            {"it is cut off", R"({"text": )", "", "no JSON"},
            {"something follows", R"({"text": "a"} x)", "", "no JSON"},
            {"it is no UTF-8", "{\"text\": \"\xff\"}", "", "no JSON"},
            {"a number is too large", R"({"text": 1e999})", "", "no JSON"},
            {"it is a text", R"("a")", "", "an object is expected here, and this is a text"},
            {"it is an empty list", "[]", "", "empty"},
            {"a list of lists", R"([{"text": "a"}, []])", "[1].", "this is a list"},
            {"the text is a number", R"({"text": 7})", "text", "a text is expected here"},
            {"the text of one of many", R"([{"text": "a"}, {"text": null}])", "[1].text",
             "this is null"},
            {"a field is misspelt", R"({"text": "a", "grup": "b"})", "grup", "text, group"},
            {"brackets without end", Nested(100000), "", "brackets stand within each other"},
            {"brackets that never close", std::string(100000, '['), "", "brackets"},
        },
        [](const std::string& json) { AlarmsFromJson(json, ""); });
}

TEST(AlarmJson, MayHaveBracketsInTexts) {
    EXPECT_EQ(std::string(100, '['),
              AlarmsFromJson(R"({"text": ")" + std::string(100, '[') + "\"}", "")[0].text);
    EXPECT_EQ("\"" + std::string(100, '{'),
              AlarmsFromJson(R"({"text": "\")" + std::string(100, '{') + "\"}", "")[0].text);
}

TEST(AlarmJson, IsRefusedAboveAThousandAtOnce) {
    std::string many = "[";
    for (size_t i = 0; i <= kMostAtOnce; ++i) {
        many += R"({"text": "x"},)";
    }
    many.back() = ']';
    ExpectRefused({{"too many", many, "", "more than 1000 at once"}},
                  [](const std::string& json) { AlarmsFromJson(json, ""); });
}

TEST(AlarmJson, IsRefusedInFewWordsHoweverManyItHas) {
    const std::string long_word(100000, 'x');
    const auto length_of = [](const std::string& json) {
        try {
            CheckedAlarms(AlarmsFromJson(json, ""), Encoding::kLatin1);
        } catch (const BadField& bad) {
            return bad.Field().size() + std::string(bad.what()).size();
        }
        return size_t{0};
    };
    for (const std::string& json : {R"({"text": "a", ")" + long_word + R"(": 1})",
                                    R"({"text": "a", "severity": ")" + long_word + R"("})"}) {
        EXPECT_GT(length_of(json), 100U);
        EXPECT_LT(length_of(json), 500U);
    }
}

TEST(AlarmJson, IsCheckedAllOrNothing) {
    ExpectRefused({{"the second has no severity that there is",
                    R"([{"text": "a"}, {"text": "b", "severity": "bad"}])", "[1].severity",
                    "there is no severity \"bad\""},
                   {"one alone", R"({"text": " "})", "text", "empty"}},
                  [](const std::string& json) {
                      CheckedAlarms(AlarmsFromJson(json, ""), Encoding::kLatin1);
                  });
}

TEST(AlarmJson, WithdrawsByKeyOrNumber) {
    const std::vector<ToWithdraw> all =
        WithdrawalsFromJson(R"([{"source": "icinga", "key": "disk"}, {"alarm": 978948000}])");
    ASSERT_EQ(2U, all.size());
    EXPECT_EQ("", all[0].number);
    EXPECT_EQ("icinga", all[0].key.source);
    EXPECT_EQ("disk", all[0].key.key);
    EXPECT_EQ("978948000", all[1].number);
}

TEST(AlarmJson, ThatWithdrawsNothingIsRefused) {
    ExpectRefused(
        {
            {"it names none", "{}", "key", "missing"},
            {"it names two", R"({"alarm": 7, "key": "disk"})", "alarm", "either"},
            {"the number is a text", R"({"alarm": "7"})", "alarm", "number"},
            {"the number is none of an alarm", R"({"alarm": 0})", "alarm", "number"},
            {"the number has more than 32 bits", R"({"alarm": 2147483648})", "alarm", "number"},
            {"the number is negative", R"({"alarm": -1})", "alarm", "number"},
            {"the number is a fraction", R"({"alarm": 1.5})", "alarm", "number"},
            {"it says more", R"({"key": "k", "text": "x"})", "text", "no such field"},
        },
        [](const std::string& json) { WithdrawalsFromJson(json); });
}

TEST(AlarmJson, AnswersWithTheNumber) {
    EXPECT_EQ(R"({"alarm":978948000,"new":false})",
              WrittenInOneLine(ToJson(Raised{"978948000", false})));
    EXPECT_EQ(R"({"alarm":"x7","new":true})", WrittenInOneLine(ToJson(Raised{"x7", true})));
}

}  // namespace
}  // namespace host
