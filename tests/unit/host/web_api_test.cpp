// The API: who is let in, alarms in, and what is wrong with what came.
#include "host/store/tables/trail.h"
#include "tests/unit/host/api_fixture.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using TheApi = ApiTest;

TEST_F(TheApi, LetsNobodyInWithoutAToken) {
    for (const char* wrong : {"", "x", "pagerfwd_00000000_"}) {
        token = wrong;
        EXPECT_EQ(401, Ask("GET", "/api/v1/alarms").status);
        EXPECT_EQ(401, Ask("POST", "/api/v1/alarms", R"({"text": "x"})").status);
        EXPECT_EQ(401, Ask("GET", "/api/v1/alarms/7").status);
    }
    EXPECT_THAT(Rows("details FROM AlarmLog"), IsEmpty());
}

TEST_F(TheApi, LetsATokenDoWhatItIsFor) {
    const std::string number = RaiseOne();
    struct Right {
        const char* right;
        const char* method;
        std::string target;
        std::string body;
    };
    const std::vector<Right> rights = {
        {"raise", "POST", "/api/v1/alarms", R"({"text": "y"})"},
        {"raise", "POST", "/api/v1/alarms/withdraw", R"({"key": "k"})"},
        {"acknowledge", "POST", "/api/v1/alarms/acknowledge", "{\"alarm\": " + number + "}"},
        {"look", "GET", "/api/v1/alarms", ""},
        {"look", "GET", "/api/v1/alarms/" + number, ""},
        {"look", "GET", "/api/v1/pages", ""},
        {"look", "GET", "/api/v1/lines", ""},
        {"look", "GET", "/api/v1/nodes", ""},
        {"look", "GET", "/api/v1/history", ""},
    };
    for (const char* may : {"raise", "acknowledge", "look"}) {
        token = TokenOf(may, may);
        for (const Right& right : rights) {
            EXPECT_EQ(right.right == std::string(may) ? 200 : 403,
                      Ask(right.method, right.target, right.body).status)
                << may << ": " << right.target;
        }
    }
}

TEST_F(TheApi, LetsNobodyInAnyMoreWhoseTokenIsRevoked) {
    Execute("DELETE FROM Host_Tokens");
    EXPECT_EQ(401, Ask("GET", "/api/v1/alarms").status);
}

TEST_F(TheApi, RaisesOneOrMany) {
    const nlohmann::json answer = Asked(
        "POST", "/api/v1/alarms", R"([{"text": "a", "key": "k"}, {"text": "b", "key": "k"}])");
    ASSERT_EQ(2U, answer.size());
    EXPECT_TRUE(answer[0]["new"]);
    EXPECT_FALSE(answer[1]["new"]);
    EXPECT_EQ(answer[0]["alarm"], answer[1]["alarm"]);
    EXPECT_THAT(Rows("details || ' ' || alarm_source || ' ' || server || ' ' || times_raised"
                     " FROM AlarmLog"),
                ElementsAre("b maria maria 2"));
}

TEST_F(TheApi, RaisesAllOrNone) {
    ExpectMistake("POST", "/api/v1/alarms", R"([{"text": "a"}, {"text": "b", "severity": "bad"}])",
                  "[1].severity", "there is no severity");
    EXPECT_THAT(Rows("details FROM AlarmLog"), IsEmpty());
}

TEST_F(TheApi, SaysWhatIsWrong) {
    ExpectMistake("POST", "/api/v1/alarms", "", "", "no JSON");
    ExpectMistake("POST", "/api/v1/alarms", "[]", "", "empty");
    ExpectMistake("POST", "/api/v1/alarms", R"({"text": 7})", "text", "a text is expected");
    ExpectMistake("POST", "/api/v1/alarms", R"({"txt": "x"})", "txt", "no such field");
    ExpectMistake("POST", "/api/v1/alarms/withdraw", "{}", "key", "missing");
    ExpectMistake("POST", "/api/v1/alarms/withdraw", R"({"alarm": 7})", "alarm", "no alarm 7");
    ExpectMistake("POST", "/api/v1/alarms/acknowledge", "{}", "alarm", "number");
    ExpectMistake("POST", "/api/v1/alarms/acknowledge", R"({"alarm": 7})", "alarm", "no alarm 7");
    ExpectMistake("POST", "/api/v1/alarms/acknowledge", R"({"alarm": 7, "by": 1})", "by", "text");
    ExpectMistake("POST", "/api/v1/alarms/acknowledge", R"({"alarm": 7, "by": "maria\u0000"})",
                  "by", "control characters");
    ExpectMistake("GET", "/api/v1/alarms?count=x", "", "count", "a number");
    ExpectMistake("GET", "/api/v1/alarms?count=5x", "", "count", "a number");
    ExpectMistake("GET", "/api/v1/alarms?count=1001", "", "count", "1000");
    ExpectMistake("GET", "/api/v1/alarms?after=-1", "", "after", "a number");
    ExpectMistake("GET", "/api/v1/alarms?cuont=1", "", "cuont", "no such parameter");
    ExpectMistake("GET", "/api/v1/alarms?%", "", "", "address");
}

TEST_F(TheApi, KnowsWhatItHas) {
    EXPECT_EQ(404, Ask("GET", "/").status);
    EXPECT_EQ(404, Ask("GET", "/api/v1/alarms/").status);
    EXPECT_EQ(404, Ask("GET", "/api/v1/alarms/x").status);
    EXPECT_EQ(404, Ask("GET", "/api/v1/alarms/7").status);
    EXPECT_EQ(405, Ask("DELETE", "/api/v1/alarms").status);
    EXPECT_EQ(405, Ask("POST", "/api/v1/alarms/7").status);
    EXPECT_EQ(405, Ask("GET", "/api/v1/alarms/withdraw").status);
    EXPECT_EQ(405, Ask("POST", "/api/v1/openapi.json").status);
    EXPECT_THAT(Ask("PUT", "/api/v1/alarms").body, HasSubstr("POST, GET"));
}

TEST_F(TheApi, WithdrawsWhatItRaised) {
    const std::string number = RaiseOne(R"({"text": "x", "key": "k"})");
    EXPECT_EQ(R"([{"alarm":)" + number + R"(,"resolved":true}])",
              Ask("POST", "/api/v1/alarms/withdraw", R"({"key": "k"})").body);
    EXPECT_EQ(R"([{"alarm":null,"resolved":false}])",
              Ask("POST", "/api/v1/alarms/withdraw", R"({"key": "k"})").body);
    EXPECT_EQ(R"([{"alarm":)" + number + R"(,"resolved":false}])",
              Ask("POST", "/api/v1/alarms/withdraw", "{\"alarm\": " + number + "}").body);
}

TEST_F(TheApi, AcknowledgesInSomebodysName) {
    const std::string number = RaiseOne();
    const std::string body =
        "{\"alarm\": " + number + R"(, "by": "J\u00fcrgen", "comment": "coming"})";
    EXPECT_TRUE(Asked("POST", "/api/v1/alarms/acknowledge", body)[0]["acknowledged"]);
    EXPECT_FALSE(Asked("POST", "/api/v1/alarms/acknowledge", body)[0]["acknowledged"]);
    EXPECT_EQ("1", StateOf(number));
    const std::vector<TrailEntry> trail = TrailOf(connection, number);
    ASSERT_EQ(1U, trail.size());
    EXPECT_EQ("J\u00fcrgen (maria)", trail[0].who);
    EXPECT_EQ("coming", trail[0].note);
    const nlohmann::json alarm = Asked("GET", "/api/v1/alarms/" + number);
    EXPECT_EQ("J\u00fcrgen (maria): coming", alarm["acknowledged"]["by"]);
}

TEST_F(TheApi, TakesNamesAndCommentsOfAThousandBytesAtMost) {
    const std::string number = RaiseOne();
    const std::string longest(1000, 'x');
    for (const char* field : {"by", "comment"}) {
        const std::string before = "{\"alarm\": " + number + ", \"" + field + "\": \"" + longest;
        EXPECT_EQ(200, Ask("POST", "/api/v1/alarms/acknowledge", before + "\"}").status) << field;
        ExpectMistake("POST", "/api/v1/alarms/acknowledge", before + "x\"}", field, "1000 bytes");
    }
}

TEST_F(TheApi, ShowsNoPathAndNoReason) {
    Execute("DROP TABLE Host_Trail");
    const std::string number = RaiseOne();
    const WebAnswer answer =
        Ask("POST", "/api/v1/alarms/acknowledge", "{\"alarm\": " + number + "}");
    EXPECT_EQ(500, answer.status);
    EXPECT_THAT(answer.body, Not(HasSubstr("Host_Trail")));
    EXPECT_THAT(said.str(), HasSubstr("Host_Trail")) << "the journal has it";
    EXPECT_EQ("0", StateOf(number)) << "all of it or nothing";
}

}  // namespace
}  // namespace host
