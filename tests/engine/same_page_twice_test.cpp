// Tests of one alarm that is forwarded twice to one pager and group. Removal takes the first entry
// that matches, not necessarily the one that is meant: an entry may then be lost, or stand in a
// queue twice, or in both. What is freed, and that it is freed once, is told by the address and
// leak checks.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Answer = PagingModem::Answer;

class SamePageTwice : public EngineTest {
 protected:
    SamePageTwice() {
        AddPager({"sms", kSms1, 5, 45});
        AddPager({"anna", kAlphanumeric, 1, 45});
        AddPager({"once", kAlphanumeric, 0, 45});
        AddAlarm(7);
        Start();
    }

    // Both before the first pass.
    void QueueTwice(const char* pager) {
        {
            const NoWorker noWorker;
            Queue(7, pager);
            Queue(7, pager);
        }
        EXPECT_EQ(1U, Rows().size()) << "one row";
        CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    }

    // The second time while the first page is being sent.
    void QueueAgainDuringThePage(const char* pager) {
        DuringTheNextPage(
            [pager] { EXPECT_TRUE(CPagerHdl::PagingAlarm(pager, "SRV1", "OPS/1", 7, 0)); });
        Forward(7, {pager});
    }
};

TEST_F(SamePageTwice, SmsIsSentTwice) {
    QueueTwice("sms");
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 sms", "7 sms"));
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 4"));
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(SamePageTwice, EachIsRepeatedOnItsOwn) {
    QueueTwice("anna");
    UntilWorkerEnds();
    EXPECT_EQ(4U, Pages().size()) << "twice two";
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_EQ(2, m_pOffLimitQ->GetCount());
}

TEST_F(SamePageTwice, SmsDuringItsPageGivesTheNewEntryUpForTheOld) {
    QueueAgainDuringThePage("sms");
    Wait(30s);
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7)) << "the old one is done, and pending";
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 sms", "7 sms"))
        << "one entry that stands there twice";
    EXPECT_EQ(m_pOffLimitQ->GetHead(), m_pOffLimitQ->GetTail());
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(SamePageTwice, EntryThatStandsInAQueueTwiceIsFreedOnceAtTheEnd) {
    QueueAgainDuringThePage("sms");
    UntilWorkerEnds();
    EXPECT_EQ(2, m_pOffLimitQ->GetCount());
    Stop();
}

TEST_F(SamePageTwice, OneWayDuringItsPageIsPutBackTwice) {
    QueueAgainDuringThePage("anna");
    Wait(30s);
    Stop();
    EXPECT_THAT(Rows(), ElementsAre("7 anna 1 2"));
}

TEST_F(SamePageTwice, OneWayDuringItsPageComesToAnEnd) {
    QueueAgainDuringThePage("anna");
    UntilWorkerEnds();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_EQ(2, m_pOffLimitQ->GetCount());
    EXPECT_EQ(m_pOffLimitQ->GetHead(), m_pOffLimitQ->GetTail());
}

TEST_F(SamePageTwice, LastOneWayPageDuringItsPage) {
    QueueAgainDuringThePage("once");
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(2, CountInTrace("Check4DialThreadLoop: Retries exceeded: once\n"));
}

TEST_F(SamePageTwice, PageThatFailsIsPutBackTwice) {
    modem->Plan({}, Answer::kBusy);
    QueueAgainDuringThePage("once");
    UntilWorkerEnds();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_GE(modem->Calls().size(), 2U);
}

TEST_F(SamePageTwice, AcknowledgedDuringThePageAfterBoth) {
    DuringTheNextPage([this] {
        CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 7, 0);
        CPagerHdl::AckPagingAlarm(7);
        CPagerHdl::AckPagingAlarm(7);
        SetAlarmState(7, 1);
    });
    Forward(7, {"anna"});
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(SamePageTwice, AcknowledgedInTheAlarmLogDropsBoth) {
    QueueTwice("anna");
    Wait(2min);
    SetAlarmState(7, 1);
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(2, CountInTrace("Check4DialThreadLoop: anna acked\n"));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(SamePageTwice, AllAcknowledgedDuringThePage) {
    DuringTheNextPage([] {
        CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 7, 0);
        CPagerHdl::AckAllPagingAlarms();
    });
    Forward(7, {"anna"});
    UntilWorkerEnds();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
}

TEST_F(SamePageTwice, ForwardedWithAnotherGroupIsAnotherPage) {
    Forward(7, {"sms"}, "OPS/1");
    Forward(7, {"sms"}, "OPS/2");
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(2U, Rows().size());
}

}  // namespace
