// Looking for pages, failures and alarms in the browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class TheSearch : public WebTest {
 protected:
    TheSearch() {
        AddPager("duty");
        AddPager("night & day");
        AddAlarm("9", "2", "PLANT/1", kNow + 100);
        AddAlarm("10", "3", "OFFICE/2", kNow + 200);
        Execute(
            "UPDATE AlarmLog SET details = 'pump' WHERE alarmlogID = '9';"
            "UPDATE AlarmLog SET details = 'printer' WHERE alarmlogID = '10';"
            "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, answer)"
            " VALUES ('9', 0, 'PLANT/1', 'duty', 0, NULL),"
            " ('10', 0, 'OFFICE/2', 'night & day', 0, 1)");
        SignIn("look");
    }
    void AddSend(const std::string& alarm, const std::string& pager, int64_t at,
                 const std::string& outcome = "not sent", int result = 6) {
        Statement(connection,
                  "INSERT INTO Host_Sends (at, seconds, alarm, pager, port, outcome, result,"
                  " reason) VALUES (?, 20, ?, ?, 'north', ?, ?, 'dialling failed: BUSY')")
            .Bind(at)
            .Bind(alarm)
            .Bind(pager)
            .Bind(outcome)
            .Bind(int64_t{result})
            .Run();
    }
};

TEST_F(TheSearch, TakesAGroupAsAPatternOrAPartOfIt) {
    for (const char* fits : {"PLANT/1", "LANT", "PLANT/*", "?LANT*"}) {
        EXPECT_THAT(Get(std::string("/alarms?group=") + fits).body,
                    AllOf(HasSubstr("<div>pump</div>"), Not(HasSubstr("<div>printer</div>"))))
            << fits;
    }
    EXPECT_THAT(Get("/alarms?group=LANT*").body, HasSubstr("Nothing fits this search"));
    EXPECT_THAT(Get("/pages?group=OFFICE").body, HasSubstr("Nothing fits this search"));
    EXPECT_THAT(Get("/pages?group=PLANT").body, HasSubstr("Pending: 1<"));
}

TEST_F(TheSearch, TakesAPager) {
    EXPECT_THAT(Get("/alarms?pager=night+%26+day").body,
                AllOf(HasSubstr("<div>printer</div>"), Not(HasSubstr("<div>pump</div>")),
                      HasSubstr("<option value=\"night &amp; day\" selected>")));
    EXPECT_THAT(Get("/alarms?pager=nobody").body,
                AllOf(HasSubstr("Nothing fits this search"), HasSubstr("\"nobody\" selected")));
}

TEST_F(TheSearch, TakesAState) {
    EXPECT_THAT(Get("/alarms?state=off+limit").body,
                AllOf(HasSubstr("<div>printer</div>"), Not(HasSubstr("<div>pump</div>"))));
    EXPECT_THAT(Get("/alarms?state=being+paged").body, Not(HasSubstr("<div>printer</div>")));
    EXPECT_THAT(Get("/alarms?state=nonsense").body, HasSubstr("Nothing fits this search"));
    Execute("UPDATE AlarmLog SET withdrawn = 5 WHERE alarmlogID = '10'");
    EXPECT_THAT(Get("/alarms?state=off+limit").body, Not(HasSubstr("<div>printer</div>")));
    EXPECT_THAT(Get("/alarms?state=resolved").body, HasSubstr("<div>printer</div>"));
    Execute("UPDATE AlarmLog SET alarmack = '1' WHERE alarmlogID = '9'");
    EXPECT_THAT(Get("/alarms?state=acknowledged").body, HasSubstr("<div>pump</div>"));
    EXPECT_THAT(Get("/alarms?state=being+paged").body, HasSubstr("Nothing fits this search"));
    Raise("new one");
    EXPECT_THAT(Get("/alarms?state=new").body, HasSubstr("<div>new one</div>"));
}

TEST_F(TheSearch, TakesATimeOfTheSite) {
    const std::string html = Get("/alarms?since=2001-01-08T10:02:00").body;
    EXPECT_THAT(html, AllOf(HasSubstr("<div>printer</div>"), Not(HasSubstr("<div>pump</div>")),
                            HasSubstr("name=\"since\" value=\"2001-01-08T10:02:00\"")));
    EXPECT_THAT(Get("/alarms?until=2001-01-08+10:02").body,
                AllOf(Not(HasSubstr("<div>printer</div>")), HasSubstr("<div>pump</div>")));
    EXPECT_THAT(Get("/pages?until=2001-01-07").body, HasSubstr("Nothing fits this search"));
    const WebAnswer answer = Get("/alarms?since=soon");
    EXPECT_EQ(400, answer.status);
    EXPECT_THAT(answer.body, HasSubstr("since: &quot;soon&quot; is no instant"));
}

TEST_F(TheSearch, ShowsWhatFailedAndWhy) {
    AddSend("9", "duty", kNow + 120);
    AddSend("10", "night & day", kNow + 220, "cut off", 0);
    AddSend("9", "duty", kNow + 320, "sent", 0);
    EXPECT_THAT(Get("/failed").body,
                AllOf(HasSubstr("dialling failed: BUSY"),
                      HasSubstr("dialling failed: busy, no answer, no carrier or no dial tone. Is "
                                "the telephone line plugged in"),
                      HasSubstr(">2001-01-08 10:02:00 UTC<"), HasSubstr(">cut off<"),
                      Not(HasSubstr(">sent<")), HasSubstr("<div>printer</div>")));
}

TEST_F(TheSearch, FindsFailuresByPagerGroupAndTime) {
    AddSend("9", "duty", kNow + 120);
    AddSend("10", "night & day", kNow + 220);
    const auto shows = [this](const std::string& query) {
        const std::string html = Get("/failed?" + query).body;
        return std::string(html.find("send=1\"") != std::string::npos ? "1" : "") +
               (html.find("send=2\"") != std::string::npos ? "2" : "");
    };
    EXPECT_EQ("12", shows(""));
    EXPECT_EQ("1", shows("pager=duty"));
    EXPECT_EQ("2", shows("group=OFFICE/*"));
    EXPECT_EQ("2", shows("since=2001-01-08+10:03"));
    EXPECT_EQ("1", shows("until=2001-01-08+10:03"));
}

TEST_F(TheSearch, GoesOnBehindAPageOfRows) {
    for (int i = 0; i < 60; ++i) {
        AddSend("9", "duty", kNow + i);
    }
    const std::string first = Get("/failed?pager=duty").body;
    EXPECT_THAT(first,
                AllOf(HasSubstr("send=60\""), HasSubstr("send=11\""), Not(HasSubstr("send=10\"")),
                      HasSubstr("href=\"/failed?pager=duty&amp;from=11\"")));
    EXPECT_THAT(
        Get("/failed?pager=duty&from=11").body,
        AllOf(HasSubstr("send=10\""), Not(HasSubstr("send=11\"")), Not(HasSubstr("Further ones"))));
}

TEST_F(TheSearch, GoesOnBehindManyThatAreNotWanted) {
    for (int i = 0; i < 450; ++i) {
        AddSend(i == 3 ? "9" : "10", "duty", kNow + i);
    }
    EXPECT_THAT(Get("/failed?group=PLANT").body, HasSubstr("send=4\""));
}

}  // namespace
}  // namespace host
