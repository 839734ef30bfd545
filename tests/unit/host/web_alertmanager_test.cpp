// The API: messages of Alertmanager.
#include "tests/unit/host/api_fixture.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using AlertsIn = ApiTest;

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

TEST_F(AlertsIn, TakesAlertsAsAlarms) {
    const nlohmann::json answer = Asked("POST", "/api/v1/alertmanager", Message(AlertOf("firing")));
    EXPECT_EQ(1, answer["raised"]);
    EXPECT_THAT(Rows("alarm_group || ', ' || severity || ', ' || server || ', ' || details || ', '"
                     " || alarm_source || ', ' || alarm_key FROM AlarmLog"),
                ElementsAre("ALERT/Disk, 3, web1, Disk full, alertmanager, c5d0 "
                            "2001-01-08T10:00:00Z"));
}

TEST_F(AlertsIn, RaisesAnAlertThatComesAgainOnce) {
    for (int i = 0; i < 200; ++i) {
        Asked("POST", "/api/v1/alertmanager", Message(AlertOf("firing")));
    }
    EXPECT_THAT(Rows("times_raised || '' FROM AlarmLog"), ElementsAre("200"));
}

TEST_F(AlertsIn, KnowsAnAlertThatComesLateAgain) {
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

TEST_F(AlertsIn, PagesNobodyForAnAlertThatWasOverBeforeItCame) {
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

TEST_F(AlertsIn, KnowsAnAlertThatAPeerSawBegin) {
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

TEST_F(AlertsIn, LeavesOpenWhatBeganAfterTheEnd) {
    const std::string target = "/api/v1/alertmanager";
    Asked("POST", target, Message(AlertOf("firing", "2001-01-08T10:10:00Z")));
    EXPECT_EQ(0, Asked("POST", target,
                       Message(AlertOf("resolved", "2001-01-08T10:00:00Z", "Disk full",
                                       "2001-01-08T10:05:00Z")))["resolved"]);
    EXPECT_THAT(Rows("withdrawn || '' FROM AlarmLog"), ElementsAre("0"));
}

TEST_F(AlertsIn, TakesAWholeGroupOfAlerts) {
    const nlohmann::json answer =
        Asked("POST", "/api/v1/alertmanager",
              Message(AlertOf("firing") + "," + AlertOf("firing", "2001-01-08T10:01:00Z") + "," +
                      AlertOf("resolved")));
    EXPECT_EQ(2, answer["raised"]);
    EXPECT_EQ(1, answer["resolved"]);
    EXPECT_EQ(0, Asked("POST", "/api/v1/alertmanager", Message(""))["raised"]);
}

TEST_F(AlertsIn, RefusesWhatIsNoMessageOfAlertmanager) {
    ExpectMistake("POST", "/api/v1/alertmanager", "[]", "", "an object");
    ExpectMistake("POST", "/api/v1/alertmanager", "{}", "version", "\"4\"");
    ExpectMistake("POST", "/api/v1/alertmanager", R"({"version": "4"})", "alerts", "a list");
    ExpectMistake("POST", "/api/v1/alertmanager", Message("7"), "alerts[0].", "an object");
    ExpectMistake("POST", "/api/v1/alertmanager", Message(R"({"status": "firing"})"),
                  "alerts[0].fingerprint", "missing");
}

}  // namespace
}  // namespace host
