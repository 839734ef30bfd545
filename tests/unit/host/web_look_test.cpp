// The API: what can be looked at, and test pages.
#include "host/store/tables/test_pages.h"
#include "tests/unit/host/api_fixture.h"

namespace host {
namespace {

using ::testing::ElementsAre;

using AnswersOut = ApiTest;

TEST_F(AnswersOut, ShowsAlarmsPageByPage) {
    for (const char* text : {"a", "b", "c"}) {
        RaiseOne(std::string(R"({"text": ")") + text + "\"}");
    }
    const nlohmann::json first = Asked("GET", "/api/v1/alarms?count=2");
    ASSERT_EQ(2U, first["alarms"].size());
    EXPECT_EQ("a", first["alarms"][0]["text"]);
    EXPECT_EQ("2001-01-08T10:00:00Z", first["alarms"][0]["raised"]);
    EXPECT_EQ("new", first["alarms"][0]["state"]);
    EXPECT_EQ(nullptr, first["alarms"][0]["acknowledged"]);
    const nlohmann::json second =
        Asked("GET", "/api/v1/alarms?count=2&after=" + first["next"].dump());
    ASSERT_EQ(1U, second["alarms"].size());
    EXPECT_EQ("c", second["alarms"][0]["text"]);
    EXPECT_EQ(nullptr, second["next"]);
}

TEST_F(AnswersOut, ShowsWhatBecameOfAnAlarm) {
    const std::string number = RaiseOne(R"({"text": "x", "key": "k"})");
    WriteEvent(std::stoi(number), "duty", 2);
    Asked("POST", "/api/v1/alarms/withdraw", R"({"key": "k"})");
    const nlohmann::json alarm = Asked("GET", "/api/v1/alarms/" + number);
    EXPECT_EQ("resolved", alarm["state"]);
    EXPECT_EQ("2001-01-08T10:00:00Z", alarm["resolved"]);
    EXPECT_EQ("raised", alarm["story"][0]["what"]);
    EXPECT_EQ("duty", alarm["story"][1]["pager"]);
}

TEST_F(AnswersOut, ShowsPendingPages) {
    for (const int32_t alarm : {7, 8, 9}) {
        WriteEvent(alarm, "duty", 2);
    }
    const nlohmann::json first = Asked("GET", "/api/v1/pages?count=2");
    EXPECT_EQ(3, first["pending"]);
    EXPECT_EQ(2U, first["pages"].size());
    EXPECT_EQ(7, first["pages"][0]["alarm"]);
    EXPECT_EQ("pending", first["pages"][0]["state"]);
    const nlohmann::json second = Asked("GET", "/api/v1/pages?after=" + first["next"].dump());
    EXPECT_EQ(1U, second["pages"].size());
    EXPECT_EQ(nullptr, second["next"]);
    EXPECT_EQ(0U, Asked("GET", "/api/v1/pages?after=9223372036854775807")["pages"].size());
}

TEST_F(AnswersOut, ShowsPendingPagesThoughSomeEndMeanwhile) {
    for (const int32_t alarm : {7, 8, 9}) {
        WriteEvent(alarm, "duty", 2);
    }
    const nlohmann::json first = Asked("GET", "/api/v1/pages?count=1");
    DeleteEvent(7, "duty");
    const nlohmann::json second =
        Asked("GET", "/api/v1/pages?count=1&after=" + first["next"].dump());
    EXPECT_EQ(8, second["pages"][0]["alarm"]);
    EXPECT_EQ(8, second["next"]);
}

TEST_F(AnswersOut, ShowsThePagesOfAnAlarmTogether) {
    for (const char* pager : {"a", "b", "c"}) {
        WriteEvent(8, pager, 2);
    }
    WriteEvent(7, "a", 2);
    nlohmann::json pages = Asked("GET", "/api/v1/pages?count=1");
    EXPECT_EQ(1U, pages["pages"].size());
    EXPECT_EQ(7, pages["next"]);
    pages = Asked("GET", "/api/v1/pages?count=1&after=7");
    EXPECT_EQ(3U, pages["pages"].size()) << "more than were asked for";
    EXPECT_EQ(nullptr, pages["next"]);
    pages = Asked("GET", "/api/v1/pages?count=0");
    EXPECT_EQ(0U, pages["pages"].size());
    EXPECT_EQ(4, pages["pending"]);
}

TEST_F(AnswersOut, ShowsTheHistoryOfPages) {
    WriteEvent(7, "duty", 2);
    WriteEvent(8, "boss", 2, 1);
    RewriteEvent(7, "duty", 4, 0);
    const nlohmann::json first = Asked("GET", "/api/v1/history?count=2");
    ASSERT_EQ(2U, first["history"].size());
    EXPECT_EQ(7, first["history"][0]["alarm"]);
    EXPECT_EQ("duty", first["history"][0]["pager"]);
    EXPECT_EQ("written", first["history"][0]["change"]);
    EXPECT_EQ("being paged", first["history"][0]["state"]);
    EXPECT_EQ(1, first["history"][1]["tries"]);
    const nlohmann::json rest = Asked("GET", "/api/v1/history?after=" + first["next"].dump());
    EXPECT_EQ(nullptr, rest["next"]);
    EXPECT_EQ("done", rest["history"].back()["state"]);
}

TEST_F(AnswersOut, AsksForATestPageAndTellsWhatCameOfIt) {
    AddPager("duty");
    const std::string test = Asked("POST", "/api/v1/test", R"({"pager": "duty"})")["test"].dump();
    EXPECT_EQ(false, Asked("GET", "/api/v1/test/" + test)["done"]);
    EXPECT_EQ(404, Ask("GET", "/api/v1/test/" + test + "0").status);
    AnswerTestPage(connection, std::stoll(test), {0, ""});
    nlohmann::json answer = Asked("GET", "/api/v1/test/" + test);
    EXPECT_EQ(true, answer["done"]);
    EXPECT_EQ(true, answer["sent"]);
    AnswerTestPage(connection, std::stoll(test), {6, ""});
    answer = Asked("GET", "/api/v1/test/" + test);
    EXPECT_EQ(false, answer["sent"]);
    EXPECT_EQ(6, answer["result"]);
    EXPECT_THAT(Rows("who || ': ' || what || ' to ' || note FROM Host_Trail"),
                ElementsAre("maria: test page to duty"));
}

TEST_F(AnswersOut, AsksForATestPageOnlyToAPagerOverALine) {
    AddPager("duty");
    AddPager("twice");
    AddPager("twice");
    ExpectMistake("POST", "/api/v1/test", R"({"pager": "nobody"})", "pager", "none of this name");
    ExpectMistake("POST", "/api/v1/test", R"({"pager": "twice"})", "pager", "several");
    ExpectMistake("POST", "/api/v1/test", R"({"pager": "\u6771"})", "pager", "none of this name");
    ExpectMistake("POST", "/api/v1/test", R"({"pager": "duty", "line": "x"})", "line", "none");
    ExpectMistake("POST", "/api/v1/test", R"([{"pager": "duty"}, {"pager": "duty"}])", "", "one");
    token = TokenOf("looker", "look,raise,acknowledge");
    EXPECT_EQ(403, Ask("POST", "/api/v1/test", R"({"pager": "duty"})").status);
}

TEST_F(AnswersOut, ShowsLines) {
    Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north')");
    const nlohmann::json lines = Asked("GET", "/api/v1/lines")["lines"];
    ASSERT_EQ(1U, lines.size());
    EXPECT_EQ("north", lines[0]["line"]);
    EXPECT_EQ(nullptr, lines[0]["since"]);
}

TEST_F(AnswersOut, ShowsNodes) {
    Execute("INSERT INTO Host_Nodes (node, place, holder) VALUES ('east', 0, 'web1, process 7')");
    const nlohmann::json nodes = Asked("GET", "/api/v1/nodes")["nodes"];
    ASSERT_EQ(1U, nodes.size());
    EXPECT_EQ("east", nodes[0]["node"]);
    EXPECT_EQ(false, nodes[0]["runs"]);
    EXPECT_EQ("web1, process 7", nodes[0]["process"]);
}

}  // namespace
}  // namespace host
