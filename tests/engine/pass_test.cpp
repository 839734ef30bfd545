// Tests of engine/dial_worker.cpp: every way through a pass, step by step, as the trace and the
// tables see it.
#include <algorithm>

#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;

using Answer = PagingModem::Answer;

// One entry of the one alarm, for a pager that the test adds.
class Pass : public EngineTest {
 protected:
    Pass() {
        AddAlarm(7);
        Start();
    }

    // The nth pass from its list of entries to its end, without the look-ups of pagers and with the
    // sending of a page as one line.
    static Lines Steps(int nth) {
        Lines steps;
        int pass = 0;
        bool sends = false;
        for (const std::string& entry : EngineTrace()) {
            pass += entry == "Loop Check4DialThread\n" ? 1 : 0;
            sends = sends || entry == "*** START PAGING ***";
            if (pass == nth && !sends && entry.find("GetPager") == std::string::npos) {
                steps.push_back(entry);
            }
            if (entry == "*** END PAGING ***") {
                sends = false;
                if (pass == nth) {
                    steps.emplace_back("(sends)");
                }
            }
        }
        return steps;
    }

    // From the look-up of the pager's hours on.
    Lines CallsFromTheNextPageOn(const std::string& pager) {
        DuringTheNextPage([this] { store.ForgetCalls(); });
        Forward(7, {pager});
        Wait(50s);
        return RowCalls();
    }
};

constexpr const char* kHours =
    R"(GetAllEntriesByCondition(AlarmFwd_TMSetting, description = "always") -> 1)";
constexpr const char* kFindRow =
    R"(GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = "7") -> 1)";

std::string FindPager(const std::string& pager) {
    return R"(GetAllEntriesByCondition(AlarmFwd_PagerSetting, description = ")" + pager +
           "\") -> 1";
}

// The row is replaced, and the one state of the alarm's pages folded.
Lines Replace(const std::string& pager, int retries, int state) {
    return {kFindRow,
            R"(SQLConditionDelete(AlarmFwd_PagerEvents, WHERE AlmGroup = "OPS/1" AND AlmLogID = 7 )"
            R"(AND PagerDescr = ")" +
                pager + "\", 'y') -> 1",
            R"(Set(AlarmFwd_PagerEvents, {AlmLogID = 7, AlmGroup = "OPS/1", PagerDescr = ")" +
                pager + "\", PagerState = " + std::to_string(state) + ", PagerRetries = " +
                std::to_string(retries) + R"(, Severity = 2, ServerN = "SRV1"}, 'y', 'y', 'y'))",
            kFindRow,
            "Lock(AlarmLog, 400, 300)",
            "SQLConditionSet(AlarmLog, WHERE alarmlogID = 7, {pagerstate = " +
                std::to_string(state) + "}, 'y', 'n') -> 1",
            "Write(AlarmLog, 0) -> 1",
            "Unlock(AlarmLog)"};
}

// --- As the trace tells it

TEST_F(Pass, ThatConfirmsADelivery) {
    AddPager({"sms", kSms1});
    Forward(7, {"sms"});
    Wait(50s);
    EXPECT_THAT(
        Steps(1),
        ElementsAre("Loop Check4DialThread\n", "pWorkingQ: sms\n", "Check4DialThreadLoop: sms\n",
                    "(sends)", "PagerSendMessage successful!!\n",
                    "Check4DialThreadLoop: Sent successful: sms\n", "DeleteFromPagingQueue: sms\n",
                    "UpdateEntryInEventsDB: 0\n", "Check4DialThread: sleep\n"));
}

TEST_F(Pass, ThatPutsASentPageOff) {
    AddPager({"anna", kAlphanumeric, 1});
    Forward(7, {"anna"});
    Wait(50s);
    EXPECT_THAT(
        Steps(1),
        ElementsAre("Loop Check4DialThread\n", "pWorkingQ: anna\n", "Check4DialThreadLoop: anna\n",
                    "(sends)", "PagerSendMessage successful!!\n", "ReinsertInPagingQueue: anna\n",
                    "UpdateEntryInEventsDB: 0\n", "Check4DialThread: sleep\n"));
}

TEST_F(Pass, ThatSendsAPageForTheLastTime) {
    AddPager({"once", kAlphanumeric, 0});
    Forward(7, {"once"});
    Wait(50s);
    EXPECT_THAT(Steps(1), ElementsAre("Loop Check4DialThread\n", "pWorkingQ: once\n",
                                      "Check4DialThreadLoop: once\n", "(sends)",
                                      "PagerSendMessage successful!!\n",
                                      "Check4DialThreadLoop: Retries exceeded: once\n",
                                      "DeleteFromPagingQueue: once\n", "UpdateEntryInEventsDB: 0\n",
                                      "Check4DialThread: sleep\n"));
}

TEST_F(Pass, ThatLosesItsPager) {
    AddPager({"anna"});
    DuringTheNextPage([this] { store.Delete(kPagers, {"description", "anna"}); });
    Forward(7, {"anna"});
    Wait(50s);
    EXPECT_THAT(
        Steps(1),
        ElementsAre("Loop Check4DialThread\n", "pWorkingQ: anna\n", "Check4DialThreadLoop: anna\n",
                    "(sends)", "PagerSendMessage successful!!\n", "Check4DialThread: sleep\n"));
}

TEST_F(Pass, ThatFailsAndTheOneThatWaits) {
    modem->Plan({Answer::kBusy});
    AddPager({"anna"});
    Forward(7, {"anna"});
    Wait(100s);
    EXPECT_THAT(Steps(1), ElementsAre("Loop Check4DialThread\n", "pWorkingQ: anna\n",
                                      "Check4DialThreadLoop: anna\n", "(sends)",
                                      "ReinsertInPagingQueue: anna\n", "UpdateEntryInEventsDB: 0\n",
                                      "Check4DialThread: sleep\n"));
    EXPECT_THAT(Steps(2), ElementsAre("Loop Check4DialThread\n", "pWorkingQ: anna\n",
                                      "Check4DialThreadLoop: anna\n",
                                      "Check4DialThreadLoop: Wait\n", "Check4DialThread: sleep\n"));
}

TEST_F(Pass, ThatFailsForTheLastTime) {
    modem->Plan({}, Answer::kBusy);
    AddPager({"once", kAlphanumeric, 0});
    Forward(7, {"once"});
    UntilWorkerEnds();
    const int last = CountInTrace("Loop Check4DialThread\n");
    EXPECT_THAT(
        Steps(last),
        ElementsAre("Loop Check4DialThread\n", "pWorkingQ: once\n", "Check4DialThreadLoop: once\n",
                    "(sends)", "Check4DialThreadLoop: Retries exceeded1: once\n",
                    "DeleteFromPagingQueue: once\n", "UpdateEntryInEventsDB: ROW\n",
                    "Check4DialThread: sleep\n", "End Loop Check4DialThread\n",
                    "End Check4DialThread\n"));
}

TEST_F(Pass, ThatFindsTheAlarmAcknowledged) {
    modem->Plan({Answer::kBusy});
    AddPager({"anna"});
    Forward(7, {"anna"});
    Wait(30s);
    SetAlarmState(7, 1);
    UntilWorkerEnds();
    EXPECT_THAT(
        Steps(2),
        ElementsAre("Loop Check4DialThread\n", "pWorkingQ: anna\n", "Check4DialThreadLoop: anna\n",
                    "Check4DialThreadLoop: anna acked\n", "DeleteFromPagingQueue: 7:anna\n",
                    "Paging acknowledged by AlMan ???\n", "Check4DialThread: sleep\n",
                    "End Loop Check4DialThread\n", "End Check4DialThread\n"));
}

// --- As the tables see it

TEST_F(Pass, ConfirmedPageInTheTables) {
    AddPager({"sms", kSms1});
    EXPECT_EQ((Lines{kHours, FindPager("sms")} + Replace("sms", 0, 4)),
              CallsFromTheNextPageOn("sms"));
}

TEST_F(Pass, RepeatedPageInTheTables) {
    AddPager({"anna", kAlphanumeric, 1});
    EXPECT_EQ((Lines{kHours, FindPager("anna")} + Replace("anna", 1, 2)),
              CallsFromTheNextPageOn("anna"));
}

TEST_F(Pass, LastPageInTheTables) {
    AddPager({"once", kAlphanumeric, 0});
    EXPECT_EQ((Lines{kHours, FindPager("once")} + Replace("once", 1, 3)),
              CallsFromTheNextPageOn("once"));
}

TEST_F(Pass, FirstFailureInTheTables) {
    modem->Plan({Answer::kBusy});
    AddPager({"anna"});
    EXPECT_EQ((Lines{kHours} + Replace("anna", 0, 2)), CallsFromTheNextPageOn("anna"))
        << "the pager isn't asked for its delay";
}

TEST_F(Pass, AcknowledgedPageInTheTables) {
    modem->Plan({Answer::kBusy});
    AddPager({"anna"});
    Forward(7, {"anna"});
    Wait(30s);
    SetAlarmState(7, 1);
    store.ForgetCalls();
    UntilWorkerEnds();
    EXPECT_THAT(RowCalls(),
                ElementsAre(R"(GetAllEntriesByCondition(AlarmLog, alarmlogID = "7") -> 1)",
                            "SQLConditionDelete(AlarmFwd_PagerEvents, "
                            "WHERE AlarmFwd_PagerEvents.AlmLogID  = 7, 'y') -> 1"));
    EXPECT_EQ("1", AlarmState(7)) << "which is the service's, and left to it";
}

TEST_F(Pass, AcknowledgedEntryIsDoneBeforeItsRowsGo) {
    AddPager({"anna"});
    ForwardQEntry* entry = nullptr;
    {
        const NoWorker noWorker;
        entry = Queue(7, "anna");
    }
    SetAlarmState(7, 1);
    int state = 0;
    store.BeforeEach([&](const std::string& call) {
        if (call.find("AlmLogID  = 7") != std::string::npos) {
            state = entry->state;
        }
    });
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    UntilWorkerEnds();
    store.BeforeEach([](const std::string&) {});
    EXPECT_EQ(kForwardDone, state);
}

}  // namespace
