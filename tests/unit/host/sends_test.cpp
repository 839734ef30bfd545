// The record of every sending.
#include "host/pages/sends.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/zone.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;
using Outcome = TracedPage::Outcome;

class Sends : public ServiceTest {
 protected:
    Sends() {
        test_support::UseTestZone();
        WriteEvent(978948000, "duty", 2);
    }

    // A page of the alarm 978948000 to "duty", as the trace tells it.
    static TracedPage Page() {
        TracedPage page;
        page.day = kNow / (24 * 60 * 60);
        page.second = 10 * 60 * 60 + 7;
        page.seconds = 24;
        page.pager = "duty";
        page.alarm = "ops";
        page.raised = "01/08/01 / 10:00:00";
        page.port = "COM 1";
        page.outcome = Outcome::kSent;
        return page;
    }
    Send Of(const TracedPage& page, std::time_t now = kNow + 100) {
        return SendOf(connection, page, now);
    }
};

TEST_F(Sends, BelongToTheAlarmWhoseNumberTheTraceWritesAsATime) {
    const Send send = Of(Page());
    EXPECT_EQ("978948000", send.alarm);
    EXPECT_EQ("duty", send.pager);
    EXPECT_EQ("COM 1", send.port);
    EXPECT_EQ(24, send.seconds);
    EXPECT_EQ(kNow + 31, send.at);
}

TEST_F(Sends, BelongToNoAlarmThatOwesNoSuchPage) {
    TracedPage page = Page();
    page.raised = "01/08/01 / 10:00:01";
    EXPECT_EQ("", Of(page).alarm);
    page = Page();
    page.alarm = "other";
    EXPECT_EQ("", Of(page).alarm);
    page = Page();
    page.raised = "some time";
    EXPECT_EQ("", Of(page).alarm);
    page = Page();
    page.test = true;
    EXPECT_EQ("", Of(page).alarm);
}

// The trace's reader keeps so much of a name.
TEST_F(Sends, BelongToTheAlarmWhoseNamesAreTooLongToBeKept) {
    const std::string pager(70000, 'p');
    const std::string group = "\xC3\xA9" + std::string(70000, 'g');
    WriteEvent(978948000, pager.c_str(), 2, 0, group.c_str());
    TracedPage page = Page();
    page.pager = pager.substr(0, kTracedTextKept);
    page.alarm = group.substr(0, kTracedTextKept);
    EXPECT_EQ("978948000", Of(page).alarm);
    page.alarm.back() = 'x';
    EXPECT_EQ("", Of(page).alarm);
}

// --- Where summer time is kept.

class SendsInCentralEurope : public Sends {
 protected:
    SendsInCentralEurope() { test_support::UseZone(test_support::kCentralEurope); }

    std::string AlarmRaised(const char* when) {
        TracedPage page = Page();
        page.raised = when;
        return Of(page).alarm;
    }
};

TEST_F(SendsInCentralEurope, BelongToTheirAlarmOnBothSidesOfBothNights) {
    const std::pair<int32_t, const char*> kAlarms[] = {
        {978944400, "01/08/01 / 10:00:00"},  {985481999, "03/25/01 / 01:59:59"},
        {985482000, "03/25/01 / 03:00:00"},  {994579200, "07/08/01 / 10:00:00"},
        {1004227199, "10/28/01 / 01:59:59"}, {1004234400, "10/28/01 / 03:00:00"}};
    for (const auto& [alarm, raised] : kAlarms) {
        EXPECT_EQ("", AlarmRaised(raised)) << raised;
        WriteEvent(alarm, "duty", 2);
        EXPECT_EQ(std::to_string(alarm), AlarmRaised(raised)) << raised;
    }
}

TEST_F(SendsInCentralEurope, BelongToNoAlarmOfAnHourBeforeOrAfter) {
    for (const int32_t alarm : {978944400, 994579200}) {
        WriteEvent(alarm - 3600, "duty", 2);
        WriteEvent(alarm + 3600, "duty", 2);
    }
    EXPECT_EQ("", AlarmRaised("01/08/01 / 10:00:00"));
    EXPECT_EQ("", AlarmRaised("07/08/01 / 10:00:00"));
}

TEST_F(SendsInCentralEurope, BelongToEitherAlarmOfTheHourThatComesTwice) {
    WriteEvent(1004229000 + 3600, "duty", 2);
    EXPECT_EQ("1004232600", AlarmRaised("10/28/01 / 02:30:00"));
    WriteEvent(1004229000 - 10, "duty", 2);
    EXPECT_EQ("1004228990", AlarmRaised("10/28/01 / 02:29:50"));
}

TEST_F(Sends, MayEndBehindMidnight) {
    TracedPage page = Page();
    page.second = 24 * 60 * 60 - 4;
    EXPECT_EQ(kNow + 14 * 60 * 60 + 20, Of(page, kNow + 24 * 60 * 60).at);
}

TEST_F(SendsInCentralEurope, EndByTheClockOfTheirDay) {
    const std::pair<int64_t, std::time_t> kEnds[] = {
        {978944400, 978944400},     // 8 January, 10:00
        {985507200, 985507200},     // 25 March, 10:00, eight hours after the night's jump
        {1004259600, 1004259600}};  // 28 October, 10:00
    for (const auto& [end, expected] : kEnds) {
        TracedPage page = Page();
        page.day = end / (24 * 60 * 60);
        page.second = 10 * 60 * 60 - page.seconds;
        EXPECT_EQ(expected, Of(page, expected + 100).at);
    }
}

TEST_F(Sends, EndNowWhereTheTraceDoesNotSayTheDay) {
    TracedPage page = Page();
    page.day.reset();
    EXPECT_EQ(kNow + 100, Of(page).at);
    EXPECT_EQ(kNow + 20, Of(Page(), kNow + 20).at);  // never later than now
}

TEST_F(Sends, AreRecorded) {
    Send send = Of(Page());
    RecordSend(connection, send);
    for (const Outcome outcome : {Outcome::kNotSent, Outcome::kOutsideHours, Outcome::kCutOff}) {
        send.outcome = outcome;
        send.result = 7;
        send.reason = "the centre's \"no\"";
        RecordSend(connection, send);
    }
    const std::vector<Send> sends = SendsOf(connection, "978948000");
    ASSERT_THAT(sends, SizeIs(4));
    EXPECT_EQ(Outcome::kSent, sends[0].outcome);
    EXPECT_EQ(Outcome::kNotSent, sends[1].outcome);
    EXPECT_EQ(Outcome::kOutsideHours, sends[2].outcome);
    EXPECT_EQ(Outcome::kCutOff, sends[3].outcome);
    EXPECT_EQ(7, sends[1].result);
    EXPECT_EQ("the centre's \"no\"", sends[1].reason);
    EXPECT_THAT(SendsOf(connection, "1"), IsEmpty());
}

TEST_F(Sends, TellWhenAPageLastGotThrough) {
    Send send = Of(Page());
    RecordSend(connection, send);
    send.at += 60;
    RecordSend(connection, send);
    send.at += 60;
    send.outcome = Outcome::kNotSent;
    RecordSend(connection, send);
    EXPECT_EQ((std::map<std::string, std::time_t>{{"COM 1", kNow + 91}}),
              LastSuccesses(connection));
}

}  // namespace
}  // namespace host
