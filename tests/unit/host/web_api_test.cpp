// The API: what is answered to whom.
#include "host/web/api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "host/store/tables/test_pages.h"
#include "host/store/tables/trail.h"
#include "host/web/token.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class TheApi : public ServiceTest {
 protected:
    TheApi() { token = TokenOf("maria", "manage"); }

    std::string TokenOf(const std::string& name, const std::string& may) {
        WriteTransaction transaction(connection);
        std::string text = MakeToken(connection, {name, may, 0, kNow});
        transaction.Commit();
        return text;
    }
    WebAnswer Ask(const std::string& method, const std::string& target,
                  const std::string& body = "") {
        return api.Answer({method, target, token, body, "127.0.0.1"});
    }
    nlohmann::json Asked(const std::string& method, const std::string& target,
                         const std::string& body = "") {
        const WebAnswer answer = Ask(method, target, body);
        EXPECT_EQ(200, answer.status) << answer.body;
        return nlohmann::json::parse(answer.body);
    }
    std::string RaiseOne(const std::string& json = R"({"text": "x"})") {
        return Asked("POST", "/api/v1/alarms", json)[0]["alarm"].dump();
    }
    void ExpectMistake(const std::string& method, const std::string& target,
                       const std::string& body, const char* field, const char* says) {
        const WebAnswer answer = Ask(method, target, body);
        EXPECT_EQ(400, answer.status) << answer.body;
        const nlohmann::json json = nlohmann::json::parse(answer.body);
        EXPECT_EQ(field, json.value("field", "")) << body;
        EXPECT_THAT(json.value("error", ""), HasSubstr(says)) << body;
    }

    Api api{database, log};
    std::string token;
};

// --- Who is let in.

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

// --- Alarms in.

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
    ExpectMistake("GET", "/api/v1/alarms?count=x", "", "count", "a number");
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

// --- Alertmanager.

std::string Message(const std::string& alerts) {
    return R"({"version": "4", "status": "firing", "receiver": "pagers", "alerts": [)" + alerts +
           "]}";
}

std::string AlertOf(const std::string& status, const std::string& starts = "2001-01-08T10:00:00Z",
                    const std::string& summary = "Disk full",
                    const std::string& ends = "0001-01-01T00:00:00Z") {
    return R"({"status": ")" + status +
           R"(", "labels": {"alertname": "Disk", "severity": "warning", "instance": "web1"},)" +
           R"( "annotations": {"summary": ")" + summary + R"("}, "startsAt": ")" + starts +
           R"(", "endsAt": ")" + ends + R"(", "fingerprint": "c5d0"})";
}

TEST_F(TheApi, TakesAlertsAsAlarms) {
    const nlohmann::json answer = Asked("POST", "/api/v1/alertmanager", Message(AlertOf("firing")));
    EXPECT_EQ(1, answer["raised"]);
    EXPECT_THAT(Rows("alarm_group || ', ' || severity || ', ' || server || ', ' || details || ', '"
                     " || alarm_source || ', ' || alarm_key FROM AlarmLog"),
                ElementsAre("ALERT/Disk, 3, web1, Disk full, alertmanager, c5d0 "
                            "2001-01-08T10:00:00Z"));
}

TEST_F(TheApi, RaisesAnAlertThatComesAgainOnce) {
    for (int i = 0; i < 200; ++i) {
        Asked("POST", "/api/v1/alertmanager", Message(AlertOf("firing")));
    }
    EXPECT_THAT(Rows("times_raised || '' FROM AlarmLog"), ElementsAre("200"));
}

TEST_F(TheApi, KnowsAnAlertThatComesLateAgain) {
    const std::string target = "/api/v1/alertmanager";
    EXPECT_EQ(1, Asked("POST", target, Message(AlertOf("firing")))["raised"]);
    EXPECT_EQ(1, Asked("POST", target, Message(AlertOf("resolved")))["resolved"]);
    EXPECT_EQ(0, Asked("POST", target, Message(AlertOf("resolved")))["resolved"]) << "twice";
    EXPECT_EQ(1, Asked("POST", target, Message(AlertOf("firing")))["known"]) << "of a slow peer";
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog"), ElementsAre("1"));
    EXPECT_EQ(1,
              Asked("POST", target, Message(AlertOf("firing", "2001-01-08T11:00:00Z")))["raised"])
        << "it fires anew";
}

TEST_F(TheApi, PagesNobodyForAnAlertThatWasOverBeforeItCame) {
    const std::string target = "/api/v1/alertmanager";
    EXPECT_EQ(0, Asked("POST", target, Message(AlertOf("resolved")))["resolved"]);
    EXPECT_THAT(NewAlarms(connection), IsEmpty());
    EXPECT_EQ(1, Asked("POST", target, Message(AlertOf("firing")))["known"]);
    EXPECT_EQ(1, Asked("POST", target, Message(AlertOf("firing", "2001-01-08T09:59:00Z")))["known"])
        << "of an older time";
    EXPECT_THAT(NewAlarms(connection), IsEmpty());
    EXPECT_THAT(Rows("details || ' ' || times_raised FROM AlarmLog"), ElementsAre("Disk full 3"));
    EXPECT_EQ(1,
              Asked("POST", target, Message(AlertOf("firing", "2001-01-08T10:00:01Z")))["raised"])
        << "it fires anew";
}

TEST_F(TheApi, KnowsAnAlertThatAPeerSawBegin) {
    const std::string target = "/api/v1/alertmanager";
    EXPECT_EQ(1, Asked("POST", target, Message(AlertOf("firing")))["raised"]);
    EXPECT_EQ(1,
              Asked("POST", target, Message(AlertOf("firing", "2001-01-08T09:59:58.5Z")))["known"])
        << "another Prometheus saw it earlier";
    EXPECT_EQ(
        1, Asked("POST", target, Message(AlertOf("firing", "2001-01-08T11:00:00+01:00")))["known"])
        << "the same instant";
    EXPECT_EQ(1, Asked("POST", target,
                       Message(AlertOf("resolved", "2001-01-08T09:59:58.5Z", "Disk full",
                                       "2001-01-08T10:05:00Z")))["resolved"])
        << "what was open when it ended";
    EXPECT_THAT(Rows("times_raised || ' ' || pagerstate FROM AlarmLog"), ElementsAre("3 1"));
}

TEST_F(TheApi, LeavesOpenWhatBeganAfterTheEnd) {
    const std::string target = "/api/v1/alertmanager";
    Asked("POST", target, Message(AlertOf("firing", "2001-01-08T10:10:00Z")));
    EXPECT_EQ(0, Asked("POST", target,
                       Message(AlertOf("resolved", "2001-01-08T10:00:00Z", "Disk full",
                                       "2001-01-08T10:05:00Z")))["resolved"]);
    EXPECT_THAT(Rows("withdrawn || '' FROM AlarmLog"), ElementsAre("0"));
}

TEST_F(TheApi, TakesAWholeGroupOfAlerts) {
    const nlohmann::json answer =
        Asked("POST", "/api/v1/alertmanager",
              Message(AlertOf("firing") + "," + AlertOf("firing", "2001-01-08T10:01:00Z") + "," +
                      AlertOf("resolved")));
    EXPECT_EQ(2, answer["raised"]);
    EXPECT_EQ(1, answer["resolved"]);
    EXPECT_EQ(0, Asked("POST", "/api/v1/alertmanager", Message(""))["raised"]);
}

TEST_F(TheApi, RefusesWhatIsNoMessageOfAlertmanager) {
    ExpectMistake("POST", "/api/v1/alertmanager", "[]", "", "an object");
    ExpectMistake("POST", "/api/v1/alertmanager", "{}", "version", "\"4\"");
    ExpectMistake("POST", "/api/v1/alertmanager", R"({"version": "4"})", "alerts", "a list");
    ExpectMistake("POST", "/api/v1/alertmanager", Message("7"), "alerts[0].", "an object");
    ExpectMistake("POST", "/api/v1/alertmanager", Message(R"({"status": "firing"})"),
                  "alerts[0].fingerprint", "missing");
}

// --- Answers out.

TEST_F(TheApi, ShowsAlarmsPageByPage) {
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

TEST_F(TheApi, ShowsWhatBecameOfAnAlarm) {
    const std::string number = RaiseOne(R"({"text": "x", "key": "k"})");
    WriteEvent(std::stoi(number), "duty", 2);
    Asked("POST", "/api/v1/alarms/withdraw", R"({"key": "k"})");
    const nlohmann::json alarm = Asked("GET", "/api/v1/alarms/" + number);
    EXPECT_EQ("resolved", alarm["state"]);
    EXPECT_EQ("2001-01-08T10:00:00Z", alarm["resolved"]);
    EXPECT_EQ("raised", alarm["story"][0]["what"]);
    EXPECT_EQ("duty", alarm["story"][1]["pager"]);
}

TEST_F(TheApi, ShowsPendingPages) {
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

TEST_F(TheApi, ShowsPendingPagesThoughSomeEndMeanwhile) {
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

TEST_F(TheApi, ShowsThePagesOfAnAlarmTogether) {
    for (const char* pager : {"a", "b", "c"}) {
        WriteEvent(8, pager, 2);
    }
    WriteEvent(7, "a", 2);
    nlohmann::json pages = Asked("GET", "/api/v1/pages?count=2");
    EXPECT_EQ(1U, pages["pages"].size());
    EXPECT_EQ(7, pages["next"]);
    pages = Asked("GET", "/api/v1/pages?count=2&after=7");
    EXPECT_EQ(3U, pages["pages"].size()) << "more than were asked for";
    EXPECT_EQ(nullptr, pages["next"]);
    pages = Asked("GET", "/api/v1/pages?count=0");
    EXPECT_EQ(0U, pages["pages"].size());
    EXPECT_EQ(4, pages["pending"]);
}

TEST_F(TheApi, ShowsTheHistoryOfPages) {
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

// --- Test pages.

TEST_F(TheApi, AsksForATestPageAndTellsWhatCameOfIt) {
    AddPager("duty");
    const std::string test = Asked("POST", "/api/v1/test", R"({"pager": "duty"})")["test"].dump();
    EXPECT_EQ(false, Asked("GET", "/api/v1/test/" + test)["done"]);
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

TEST_F(TheApi, AsksForATestPageOnlyToAPagerOverALine) {
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

TEST_F(TheApi, ShowsLines) {
    Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north')");
    const nlohmann::json lines = Asked("GET", "/api/v1/lines")["lines"];
    ASSERT_EQ(1U, lines.size());
    EXPECT_EQ("north", lines[0]["line"]);
    EXPECT_EQ(nullptr, lines[0]["since"]);
}

TEST_F(TheApi, ShowsNodes) {
    Execute("INSERT INTO Host_Nodes (node, place, holder) VALUES ('east', 0, 'web1, process 7')");
    const nlohmann::json nodes = Asked("GET", "/api/v1/nodes")["nodes"];
    ASSERT_EQ(1U, nodes.size());
    EXPECT_EQ("east", nodes[0]["node"]);
    EXPECT_EQ(false, nodes[0]["runs"]);
    EXPECT_EQ("web1, process 7", nodes[0]["process"]);
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

// --- Its document.

// Also of a document in its own order.
template <typename Document>
Document Resolved(const Document& document, const Document& part) {
    return part.contains("$ref") ? document.at(typename Document::json_pointer(
                                       part["$ref"].template get<std::string>().substr(1)))
                                 : part;
}

// The path with the examples of its parameters.
std::string TargetOf(const nlohmann::json& document, std::string path,
                     const nlohmann::json& operation) {
    std::string query;
    for (const nlohmann::json& reference : operation.value("parameters", nlohmann::json::array())) {
        const nlohmann::json parameter = Resolved(document, reference);
        const std::string name = parameter["name"];
        const std::string example = parameter["example"].dump();
        if (parameter["in"] == "path") {
            path.replace(path.find("{" + name + "}"), name.size() + 2, example);
        } else {
            query += (query.empty() ? "?" : "&") + name + "=" + example;
        }
    }
    return path + query;
}

TEST_F(TheApi, AnswersEveryExampleOfItsDocument) {
    AddPager("duty");
    token = "";
    const nlohmann::json document = Asked("GET", "/api/v1/openapi.json");
    int examples = 0;
    for (const auto& [path, operations] : document["paths"].items()) {
        for (const auto& [method, operation] : operations.items()) {
            const std::string target = TargetOf(document, path, operation);
            const std::string name = method == "get" ? "GET" : "POST";
            token = "";
            EXPECT_EQ(401, Ask(name, target, "{}").status) << target;
            token = TokenOf("example " + std::to_string(++examples), "manage");
            Execute("DELETE FROM AlarmLog");
            AddAlarm("978948000");
            if (method == "get") {
                EXPECT_EQ(200, Ask(name, target).status) << target;
                continue;
            }
            for (const auto& [which, example] :
                 operation["requestBody"]["content"]["application/json"]["examples"].items()) {
                EXPECT_EQ(200, Ask(name, target, example["value"].dump()).status)
                    << target << " " << which;
            }
        }
    }
    EXPECT_EQ(12, examples);
}

// "`alarm`, `new`": what an object of this kind has, or each of a list.
std::string FieldsOf(const nlohmann::ordered_json& document, const nlohmann::ordered_json& schema) {
    const nlohmann::ordered_json part = Resolved(document, schema);
    if (part.contains("oneOf") || part.contains("items")) {
        return FieldsOf(document, part.contains("oneOf") ? part["oneOf"][0] : part["items"]);
    }
    const nlohmann::ordered_json properties =
        part.value("properties", nlohmann::ordered_json::object());
    std::string fields;
    for (const auto& [name, value] : properties.items()) {
        fields += (fields.empty() ? "`" : ", `") + name + "`";
    }
    return fields.empty() ? "-" : fields;
}

std::string ContentOf(const nlohmann::ordered_json& document,
                      const nlohmann::ordered_json& message) {
    return FieldsOf(document, message["content"]["application/json"]["schema"]);
}

std::string RowOf(const nlohmann::ordered_json& document, const std::string& call,
                  const nlohmann::ordered_json& operation) {
    const std::string description = operation["description"];
    const std::string before = "Right: ";
    const size_t at = description.find(before) + before.size();
    return "| `" + call + "` | `" + description.substr(at, description.find('.', at) - at) +
           "` | " + operation["summary"].get<std::string>() + " | " +
           (operation.contains("requestBody") ? ContentOf(document, operation["requestBody"])
                                              : "-") +
           " | " + ContentOf(document, operation["responses"]["200"]) + " |\n";
}

TEST_F(TheApi, IsInTheGuideAsItsDocumentHasIt) {
    const nlohmann::ordered_json document = nlohmann::ordered_json::parse(kOpenApi);
    std::string calls;
    for (const auto& [path, operations] : document["paths"].items()) {
        for (const auto& [method, operation] : operations.items()) {
            calls += RowOf(document, (method == "get" ? "GET " : "POST ") + path, operation);
        }
    }
    std::string objects;
    for (const auto& [name, schema] : document["components"]["schemas"].items()) {
        objects += "| " + name + " | " + FieldsOf(document, schema) + " |\n";
    }
    std::ifstream file(API_GUIDE);
    const std::string guide{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(guide, HasSubstr("\n" + calls + "\n"));
    EXPECT_THAT(guide, HasSubstr("\n" + objects + "\n"));
}

TEST_F(TheApi, HasADocumentWhoseReferencesLeadSomewhere) {
    const nlohmann::json document = nlohmann::json::parse(kOpenApi);
    int references = 0;
    const nlohmann::json flat = document.flatten();
    for (const auto& [pointer, value] : flat.items()) {
        const std::string name = pointer.substr(pointer.rfind('/') + 1);
        if (name == "$ref") {
            const std::string to = value.get<std::string>().substr(1);
            EXPECT_TRUE(document.contains(nlohmann::json::json_pointer(to))) << to;
            ++references;
        }
    }
    EXPECT_GT(references, 20);
}

}  // namespace
}  // namespace host
