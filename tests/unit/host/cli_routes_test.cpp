// pagerfwd routes: whom an alarm would page.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::HasSubstr;

constexpr const char* kRoutedSite = R"(
[[port]]
name = "COM 1"
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"
[[port]]
name = "COM 2"
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"
[[pager]]
description = "duty"
type = "sms1"
number = "1"
hours = "office"
[[pager]]
description = "engineer"
port = "COM 2"
type = "alphanumeric"
number = "5550100@1"
retries = 6
delay = 480
hours = "office"
[[pager]]
description = "porter"
type = "numeric"
number = "5550100@2"
retries = 1
hours = "office"
[[pager]]
description = "night"
type = "sms1"
number = "2"
[[hours]]
name = "office"
mon-fri = "8-18"
[[route]]
groups = "PLANT/*"
severities = ["critical", "major"]
pagers = ["engineer", "duty", "porter"]
[[route]]
groups = "*/7"
pagers = ["duty", "night"]
)";

class CliRoutes : public CliFixture {
 protected:
    CliRoutes() { MakeSite(kRoutedSite); }

    static ProgramRun Routes(const std::string& group, const std::string& severity,
                             std::vector<std::string> more = {"--at", "2001-01-08 10:00"}) {
        more.insert(more.begin(), {"routes", "--group", group, "--severity", severity});
        return Run(more);
    }
};

TEST_F(CliRoutes, ShowWhomAnAlarmWouldPageInTheirOrder) {
    const ProgramRun run = Routes("PLANT/7", "major");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(
        "group \"PLANT/7\", severity major, mon 2001-01-08 10:00\n"
        "PAGER     TYPE          PORT            HOURS   THEN\n"
        "engineer  alphanumeric  COM 2           office  paged\n"
        "duty      sms1          COM 1 or COM 2  office  paged\n"
        "porter    numeric       COM 1 or COM 2  office  paged\n"
        "night     sms1          COM 1 or COM 2  always  paged\n",
        run.out);
}

TEST_F(CliRoutes, ShowWhomHoursBar) {
    const ProgramRun run = Routes("PLANT/7", "critical", {"--at", "2001-01-12 20:00:00"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(
        "group \"PLANT/7\", severity critical, fri 2001-01-12 20:00\n"
        "PAGER     TYPE          PORT            HOURS   THEN\n"
        "engineer  alphanumeric  COM 2           office  barred: never paged, since its tries end "
        "before its hours begin\n"
        "duty      sms1          COM 1 or COM 2  office  barred: never paged, since outside its "
        "hours an SMS page counts as sent\n"
        "porter    numeric       COM 1 or COM 2  office  barred: never paged, since its tries end "
        "before its hours begin\n"
        "night     sms1          COM 1 or COM 2  always  paged\n",
        run.out);
    EXPECT_THAT(Routes("PLANT/1", "major", {"--at", "2001-01-14"}).out,
                HasSubstr("barred until the try of mon 2001-01-15 08:00\n"));
}

TEST_F(CliRoutes, AnswerNoWhereNobodyIsPagedAtOnce) {
    EXPECT_EQ(1, Routes("PLANT/1", "major", {"--at", "2001-01-14"}).exit_code);
    const ProgramRun run = Routes("OFFICE/1", "major");
    EXPECT_EQ(1, run.exit_code);
    EXPECT_EQ(
        "group \"OFFICE/1\", severity major, mon 2001-01-08 10:00\n"
        "no route leads to a pager; nobody is paged\n",
        run.out);
    EXPECT_THAT(Routes("PLANT/1", "minor").out, HasSubstr("nobody is paged"));
}

TEST_F(CliRoutes, SayWhatKeepsAPageFromLeavingAtAll) {
    Execute(
        "UPDATE AlarmFwd_PagerSetting SET comport = 'COM 9' WHERE description = 'engineer';"
        "UPDATE AlarmFwd_PagerSetting SET timemodel = 'none' WHERE description = 'duty';"
        "DELETE FROM AlarmFwd_PagerSetting WHERE description = 'porter';"
        "INSERT INTO AlarmFwd_PagerSetting (description) VALUES ('night')");
    EXPECT_EQ(
        "group \"PLANT/7\", severity major, mon 2001-01-08 10:00\n"
        "PAGER     TYPE          PORT            HOURS   THEN\n"
        "engineer  alphanumeric  none            office  fails: there is no such port\n"
        "duty      sms1          COM 1 or COM 2  none    fails: there are no such hours\n"
        "porter    -             -               -       not paged: there is no such pager\n"
        "night     -             -               -       not paged: it stands twice in the "
        "database\n",
        Routes("PLANT/7", "major").out);
}

TEST_F(CliRoutes, AreJsonToo) {
    const ProgramRun run = Routes("PLANT/7", "minor", {"--json", "--at", "2001-01-13"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ(nlohmann::json::parse(
                  R"({"group": "PLANT/7", "severity": "minor", "at": "sat 2001-01-13 00:00",
                      "pagers": [
                        {"pager": "duty", "type": "sms1", "port": "COM 1 or COM 2",
                         "hours": "office", "paged": false, "then": "barred: never paged, since )"
                  R"(outside its hours an SMS page counts as sent"},
                        {"pager": "night", "type": "sms1", "port": "COM 1 or COM 2",
                         "hours": "always", "paged": true, "then": "paged"}]})"),
              nlohmann::json::parse(run.out));
}

TEST_F(CliRoutes, AreThoseOfThisMomentUnlessATimeIsSaid) {
    Execute("UPDATE AlarmFwd_PagerSetting SET timemodel = 'always'");
    EXPECT_EQ(0, Routes("PLANT/1", "major", {}).exit_code);
}

TEST_F(CliRoutes, RefuseWhatTheyDoNotKnow) {
    EXPECT_THAT(Routes("a", "bad").err, HasSubstr("there is no severity \"bad\""));
    const ProgramRun run = Routes("a", "major", {"--at", "noon"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("--at: \"noon\" is no instant"));
    EXPECT_EQ(2, Run({"routes", "--group", "a"}).exit_code);
}

TEST_F(CliRoutes, ChangeNothing) {
    const std::vector<std::string> before = Dump();
    Routes("PLANT/7", "major");
    EXPECT_EQ(before, Dump());
}

}  // namespace
