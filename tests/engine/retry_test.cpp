// Tests of engine/dial_worker.cpp: what becomes of a page after each attempt, from its first to its
// last, through the exported functions.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Answer = PagingModem::Answer;

constexpr int kOffLimit = 3;

class Retry : public EngineTest {
 protected:
    Retry() { AddAlarm(7); }

    // Forwards the alarm to the pager and lets the worker run to its end.
    void PageToTheEnd(const PagerRow& pager) {
        AddPager(pager);
        Start();
        EXPECT_EQ(1, Forward(7, {pager.description}));
        UntilWorkerEnds();
    }
};

// --- Failures

TEST_F(Retry, FailuresAlternateBetweenFiveMinutesAndThePagersDelay) {
    modem->Plan({}, Answer::kBusy);
    PageToTheEnd({"anna", kAlphanumeric, 5, 45});
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 5, 50, 55, 100, 105, 150, 155, 200, 205, 250, 255))
        << "5 retries are 12 failures";
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Retries exceeded1: anna\n"));
    EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7));
}

TEST_F(Retry, FirstFailureIsNotCounted) {
    modem->Plan({}, Answer::kBusy);
    AddPager({"anna"});
    Start();
    Forward(7, {"anna"});
    Wait(3min);
    EXPECT_THAT(Rows(), ElementsAre("7 anna 0 2"));
    Wait(4min);
    EXPECT_THAT(Rows(), ElementsAre("7 anna 1 2")) << "the second is";
    EXPECT_EQ("2", AlarmState(7));
}

TEST_F(Retry, WithoutRetriesThereAreTwoFailures) {
    modem->Plan({}, Answer::kBusy);
    PageToTheEnd({"anna", kAlphanumeric, 0, 45});
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 5));
    EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7));
}

TEST_F(Retry, SmsPageFailsInTheSameWay) {
    modem->Plan({}, Answer::kBusy);
    PageToTheEnd({"sms", kSms1, 1, 10});
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 5, 15, 20));
    EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7));
}

TEST_F(Retry, EveryKindOfFailureCountsTheSame) {
    for (const Answer answer : {Answer::kBusy, Answer::kFallsSilent, Answer::kIgnoresInit}) {
        modem->Plan({}, answer);
        store.Delete(kPagers, {"description", "sms"});
        PageToTheEnd({"sms", kSms1, 1, 45});
        EXPECT_EQ(4, CountInTrace("*** START PAGING ***")) << "answer " << static_cast<int>(answer);
        EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7));
        Stop();
    }
}

TEST_F(Retry, PortThatCannotBeOpenedIsAFailure) {
    PageToTheEnd({"anna", kAlphanumeric, 0, 45, "555", "always", "COM 5"});
    EXPECT_EQ(2, CountInTrace("COM port cannot be opened!"));
    EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7));
}

TEST_F(Retry, UnknownTimeModelIsAFailure) {
    PageToTheEnd({"anna", kAlphanumeric, 0, 45, "555", "no such hours"});
    EXPECT_EQ(2, CountInTrace("Using unknown Timemodel!"));
    EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7));
}

// A page that was sent late may fall due again at once: the delay counts from the old due time.
TEST_F(Retry, DelayCountsFromTheOldDueTime) {
    // No ID= three times: each failure takes more than a minute and a half.
    modem->Plan({}, Answer::kFallsSilent);
    PageToTheEnd({"sms", kSms1, 3, 1});
    const std::vector<PagingModem::Call> calls = modem->Calls();
    ASSERT_EQ(8U, calls.size());
    // Due at 0, 5, 6, 11, 12, 17, 18, 23.
    EXPECT_LT(calls[2].at - calls[1].at, 3min) << "due again while it was being sent";
    EXPECT_LT(calls[7].at, 26min);
}

// --- Successes

TEST_F(Retry, SmsPageIsDoneAfterOneSuccess) {
    for (const int type : {kSms1, kSms2}) {
        store.Delete(kPagers, {"description", "sms"});
        PageToTheEnd({"sms", type, 5, 45});
        EXPECT_EQ(1, CountInTrace("*** START PAGING ***")) << "type " << type;
        EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Sent successful: sms\n"));
        EXPECT_THAT(Rows(), ElementsAre("7 sms 0 4"));
        EXPECT_EQ("4", AlarmState(7));
        EXPECT_EQ(kOffLimit, CPagerHdl::GetPagingState(7)) << "where done pages are kept";
        Stop();
    }
    EXPECT_EQ(2U, Pages().size());
}

TEST_F(Retry, OtherPagesAreRepeatedUntilTheAttemptsAreUsedUp) {
    PageToTheEnd({"anna", kAlphanumeric, 5, 45});
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 45, 90, 135, 180, 225)) << "5 retries are 6 pages";
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Retries exceeded: anna\n"));
    EXPECT_EQ(0, CountInTrace("Check4DialThreadLoop: Retries exceeded1: anna\n"));
    EXPECT_THAT(Rows(), ElementsAre("7 anna 6 3"));
    EXPECT_EQ("3", AlarmState(7));
}

TEST_F(Retry, SentPagesAreRepeatedAfterThePagersDelay) {
    PageToTheEnd({"anna", kAlphanumeric, 2, 30});
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 30, 60));
}

TEST_F(Retry, WithoutRetriesThereIsOnePage) {
    for (const int type : {kSignal, kNumeric, kAlphanumeric, kNTT}) {
        store.Delete(kPagers, {"description", "anna"});
        PageToTheEnd({"anna", type, 0, 45});
        EXPECT_EQ(1, CountInTrace("*** START PAGING ***")) << "type " << type;
        EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Retries exceeded: anna\n"));
        Stop();
    }
}

TEST_F(Retry, RepeatedUntilTheAlarmIsAcknowledged) {
    AddPager({"anna", kAlphanumeric, 5, 45});
    Start();
    Forward(7, {"anna"});
    Wait(100min);
    SetAlarmState(7, 1);
    UntilWorkerEnds();
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 45, 90));
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

// A success says nothing about the line's next failure, which counts at once.
TEST_F(Retry, SuccessLeavesThePostponementAsItIs) {
    modem->Plan({Answer::kBusy, Answer::kDelivers, Answer::kBusy, Answer::kBusy});
    AddPager({"anna", kAlphanumeric, 5, 45});
    Start();
    Forward(7, {"anna"});
    Wait(52min);
    EXPECT_THAT(Rows(), ElementsAre("7 anna 2 2")) << "one success, one counted failure";
    Wait(120min);
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 5, 50, 95, 100, 145));
}

// --- Hours

TEST_F(Retry, SmsPageOutsideItsHoursIsDoneWithoutACall) {
    PageToTheEnd({"sms", kSms1, 5, 45, "555", "never"});
    EXPECT_EQ(1, line.Opens()) << "only when the ports were explored";
    EXPECT_EQ(1, CountInTrace("Time out of bounds! (Good SEND!)"));
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 4"));
}

TEST_F(Retry, OtherPagesOutsideTheirHoursAreRepeated) {
    PageToTheEnd({"anna", kAlphanumeric, 2, 45, "555", "never"});
    EXPECT_EQ(3, CountInTrace("Time out of bounds! (Good SEND!)"));
    EXPECT_THAT(modem->Calls(), IsEmpty());
    EXPECT_THAT(Rows(), ElementsAre("7 anna 3 3"));
}

TEST_F(Retry, PageIsSentOnceItsHoursHaveCome) {
    std::string hours(168, '0');
    hours[11] = '1';  // Mondays from 11 to 12
    store.InsertTimeModel("late morning", hours);
    PageToTheEnd({"anna", kAlphanumeric, 5, 45, "555", "late morning"});
    EXPECT_THAT(CallMinutes(), ElementsAre(90)) << "at 10:00, 10:45 and 12:15 on it was barred";
}

// --- Unknown pagers

TEST_F(Retry, PagerThatVanishesDuringItsPageStaysDue) {
    AddPager({"anna", kAlphanumeric, 0, 45});
    Start();
    DuringTheNextPage([this] { store.Delete(kPagers, {"description", "anna"}); });
    Forward(7, {"anna"});
    Wait(30s);
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(1, CountInTrace("PagerSendMessage successful!!\n"));
    EXPECT_EQ(0, CountInTrace("ReinsertInPagingQueue: anna\n"));
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7));

    AddPager({"anna", kAlphanumeric, 0, 45});
    Wait(1min);
    EXPECT_EQ(2U, Pages().size()) << "sent again in the next pass";
    UntilWorkerEnds();
    EXPECT_THAT(Rows(), ElementsAre("7 anna 1 3"));
}

TEST_F(Retry, UnknownPagerHasTheDefaultLimits) {
    AddPager({"anna", kAlphanumeric, 1, 10});
    modem->Plan({}, Answer::kBusy);
    Start();
    DuringTheNextPage([this] { store.Delete(kPagers, {"description", "anna"}); });
    Forward(7, {"anna"});
    UntilWorkerEnds();
    EXPECT_EQ(1U, modem->Calls().size());
    EXPECT_EQ(11, CountInTrace("Pager NOT found!")) << "12 failures, the first of them busy";
    EXPECT_EQ(11, CountInTrace("ReinsertInPagingQueue: anna\n"));
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Retries exceeded1: anna\n"));
    EXPECT_GE(pagersim::VirtualClock::Now(), 255min) << "45 minutes five times, 5 six times";
    EXPECT_LT(pagersim::VirtualClock::Now(), 260min);
}

// --- Several pagers

TEST_F(Retry, EachPagerOfAnAlarmGoesItsOwnWay) {
    AddPager({"sms", kSms1, 0, 45});
    AddPager({"anna", kAlphanumeric, 1, 45});
    AddPager({"lost", kAlphanumeric, 0, 45, "555", "always", "COM 5"});
    Start();
    EXPECT_EQ(1, Forward(7, {"sms", "anna", "lost"}));
    Wait(20min);
    EXPECT_EQ("2", AlarmState(7)) << "being paged while one page is";
    UntilWorkerEnds();
    EXPECT_EQ(3U, Pages().size()) << "one by SMS, two to anna";
    std::vector<std::string> rows = Rows();
    EXPECT_THAT(rows, ::testing::UnorderedElementsAre("7 sms 0 4", "7 anna 2 3", "7 lost 1 3"));
    EXPECT_EQ("3", AlarmState(7)) << "off limit goes before done";
}

}  // namespace
