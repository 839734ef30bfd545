// Tests of the exported functions and the facade behind them: engine/entry_points.cpp,
// pager_fwd.cpp.
#include "engine/pager_fwd.h"
#include "modem/COMHdl.h"
#include "tables/owned_text.h"
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Answer = PagingModem::Answer;

class EntryPoints : public EngineTest {
 protected:
    EntryPoints() {
        AddPager({"anna", kAlphanumeric, 0});
        AddPager({"sms", kSms1});
        AddAlarm(7);
    }
};

// --- Life of the engine

TEST_F(EntryPoints, NothingIsThereBeforeTheFirstCall) {
    EXPECT_EQ(nullptr, pagerFwd);
    EXPECT_EQ(nullptr, pagerHdl);
    EXPECT_EQ(nullptr, m_dB);
}

TEST_F(EntryPoints, StopBeforeAnyOtherCallDoesNothing) {
    StopAlarmFwdPager();
    EXPECT_EQ(nullptr, pagerFwd);
    EXPECT_TRUE(store.Calls().empty());
}

TEST_F(EntryPoints, StartBringsTheEngineUp) {
    Start();
    EXPECT_NE(nullptr, pagerFwd);
    EXPECT_NE(nullptr, pagerHdl);
    EXPECT_EQ(pagerHdl, CPagerHdl::PagerHdl);
    EXPECT_STREQ("alarms", m_dB);
    EXPECT_NE(static_cast<char*>(database), m_dB) << "a copy";
}

TEST_F(EntryPoints, SecondStartChangesNothing) {
    Start();
    const CPagerFwd* facade = pagerFwd;
    const CPagerHdl* handler = pagerHdl;
    Start();
    EXPECT_EQ(facade, pagerFwd);
    EXPECT_EQ(handler, pagerHdl);
}

// A test page has left a facade behind, and no name.
TEST_F(EntryPoints, StartTakesTheDatabaseOfItsOwnRecord) {
    Test({"anna", kSms1});
    Start();
    EXPECT_STREQ("alarms", CPagerHdl::m_dB);
    EXPECT_EQ(nullptr, m_dB) << "the next alarm's record names it";
}

TEST_F(EntryPoints, StopTakesItDownAndItCanBeStartedAgain) {
    Start();
    Stop();
    EXPECT_EQ(nullptr, pagerFwd);
    EXPECT_EQ(nullptr, pagerHdl);
    EXPECT_EQ(nullptr, m_dB);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
}

TEST_F(EntryPoints, StopWithoutAFacadeLeavesAHandlerAlone) {
    pagerHdl = new CPagerHdl(database);
    Stop();
    EXPECT_TRUE(CPagerHdl::IsRunning());
    delete pagerHdl;
    pagerHdl = nullptr;
}

TEST_F(EntryPoints, KeepsForgettingAHandlerFromBeforeTheFacade) {
    CPagerHdl* before = pagerHdl = new CPagerHdl(database);
    {
        const CPagerFwd facade(database);
        EXPECT_EQ(nullptr, pagerHdl);
        EXPECT_TRUE(CPagerHdl::IsRunning());
    }
    delete before;
}

// The call that forgot it then makes another, which shares what is up.
TEST_F(EntryPoints, ForgottenHandlerIsReplaced) {
    const CPagerHdl before(database);
    Start();
    EXPECT_NE(nullptr, pagerHdl);
    Stop();
    EXPECT_FALSE(CPagerHdl::IsRunning());
}

TEST_F(EntryPoints, FacadeKeepsTheNameThatIsThere) {
    m_dB = CopyText("first");
    const CPagerFwd facade(database);
    EXPECT_STREQ("first", m_dB);
}

TEST_F(EntryPoints, FacadeWithoutANameHasNone) {
    const CPagerFwd facade(nullptr);
    EXPECT_EQ(nullptr, m_dB);
}

// --- Forwarding an alarm

TEST_F(EntryPoints, NoPagerIsMinusOneButBringsTheEngineUp) {
    EXPECT_EQ(-1, AlarmFwdPager(&info, nullptr, nullptr, nullptr, 0));
    EXPECT_NE(nullptr, pagerFwd);
    EXPECT_TRUE(CPagerHdl::IsRunning());
    EXPECT_FALSE(WorkerRuns());
    EXPECT_THAT(Rows(), IsEmpty());
}

struct ResultCase {
    const char* situation;
    int alarm;
    std::vector<std::string> pagers;
    int result;
};

TEST_F(EntryPoints, ResultIsThatOfTheLastPagerFound) {
    const ResultCase kCases[] = {
        {"one pager, queued", 7, {"sms"}, 1},
        {"one pager, not known", 7, {"ghost"}, -1},
        {"one pager, alarm not known", 99, {"sms"}, 0},
        {"queued, then not known", 7, {"sms", "ghost"}, 1},
        {"not known, then queued", 7, {"ghost", "sms"}, 1},
        {"not known, then refused", 99, {"ghost", "sms"}, 0},
        {"refused, then not known", 99, {"sms", "ghost"}, 0},
        {"nobody known", 7, {"ghost", "phantom"}, -1},
    };
    for (const ResultCase& c : kCases) {
        EXPECT_EQ(c.result, Forward(c.alarm, c.pagers)) << c.situation;
    }
}

TEST_F(EntryPoints, UnknownPagerIsTraced) {
    Start();
    Forward(7, {"ghost"});
    EXPECT_THAT(
        EngineTrace(),
        ElementsAre("CPagerHdl::CPagerHdl: alarms\n", "AlarmFwdPager: ghost\n",
                    "CDB_PagerSettings::GetPager: ghost: ",
                    "CDB_PagerSettings::GetPager:Count: 0\n", "AlarmFwdPager: pager not found\n"));
}

TEST_F(EntryPoints, PagerThatStandsTwiceInTheTableIsUnknown) {
    AddPager({"sms", kSms1});
    EXPECT_EQ(-1, Forward(7, {"sms"}));
}

TEST_F(EntryPoints, EachPagerHasItsAlarmGroup) {
    Start();
    const NoWorker noWorker;
    char sms[] = "sms";
    char anna[] = "anna";
    char ghost[] = "ghost";
    char* pagers[] = {sms, ghost, anna};
    char north[] = "NORTH/1";
    char west[] = "WEST/2";
    char south[] = "SOUTH/3";
    char* groups[] = {north, west, south};
    int32_t id = 7;
    char server[] = "SRV9";
    FwdSpecialInfoStr call{database, &id, nullptr, groups};
    EXPECT_EQ(1, AlarmFwdPager(&call, server, nullptr, pagers, 3));
    EXPECT_THAT(store.Column(kEvents, "AlmGroup"), ElementsAre("NORTH/1", "SOUTH/3"));
    EXPECT_THAT(store.Column(kEvents, "PagerDescr"), ElementsAre("sms", "anna"));
    EXPECT_THAT(store.Column(kEvents, "ServerN"), ElementsAre("SRV9", "SRV9"));
    EXPECT_THAT(store.Column(kEvents, "PagerRetries"), ElementsAre("0", "0"));
}

TEST_F(EntryPoints, DoesNotWaitForThePage) {
    EXPECT_EQ(1, Forward(7, {"sms"}));
    EXPECT_EQ(0ms, pagersim::VirtualClock::Now());
    Wait(10s);  // in the middle of the call
    EXPECT_EQ(1, Forward(7, {"anna"}));
    EXPECT_EQ(10, pagersim::VirtualClock::Now() / 1s);
}

TEST_F(EntryPoints, DatabaseOfTheFirstCallIsKept) {
    Start();
    const test_support::MemoryStore another("another");
    char name[] = "another";
    char group[] = "OPS/1";
    char sms[] = "sms";
    char* pagers[] = {sms};
    char* groups[] = {group};
    int32_t id = 7;
    FwdSpecialInfoStr call{name, &id, nullptr, groups};
    EXPECT_EQ(1, AlarmFwdPager(&call, group, nullptr, pagers, 1));
    EXPECT_STREQ("alarms", m_dB);
    EXPECT_TRUE(another.Calls().empty());
}

// --- Test pages

TEST_F(EntryPoints, TestPageIsSentAtOnce) {
    EXPECT_EQ(0, Test({"anna", kSms1}));
    EXPECT_THAT(Pages(), ElementsAre("555|TEST/Informational/TESTSERVER/test"));
}

TEST_F(EntryPoints, TestPageOnAStoppedEngineBringsOneUpForTheCall) {
    Test({"anna", kSms1});
    EXPECT_NE(nullptr, pagerFwd);
    EXPECT_EQ(nullptr, pagerHdl);
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_EQ(nullptr, m_dB);
}

TEST_F(EntryPoints, TestPageOnARunningEngineLeavesItRunning) {
    Start();
    const CPagerHdl* handler = pagerHdl;
    EXPECT_EQ(0, Test({"anna", kSms1}));
    EXPECT_EQ(handler, pagerHdl);
    EXPECT_TRUE(CPagerHdl::IsRunning());
    EXPECT_EQ(nullptr, m_dB);
}

TEST_F(EntryPoints, TestPageTouchesNeitherQueuesNorTables) {
    Start();
    store.ForgetCalls();
    Test({"anna", kSms1});
    EXPECT_EQ(0, m_pPagingQ->GetCount());
    EXPECT_EQ(0, m_pOffLimitQ->GetCount());
    EXPECT_TRUE(store.Calls().empty()) << "not even the time model is read";
}

TEST_F(EntryPoints, TestPageIsTriedOnce) {
    modem->Plan({}, Answer::kBusy);
    Start();
    EXPECT_EQ(6, Test({"anna", kSms1}));
    Wait(600s);
    EXPECT_THAT(modem->Calls(), SizeIs(1));
}

TEST_F(EntryPoints, TestPageIgnoresTheTimeModel) {
    for (const char* hours : {"never", "no such hours"}) {
        PagerRow pager{"anna", kSms1};
        pager.hours = hours;
        EXPECT_EQ(0, Test(pager)) << hours;
    }
    EXPECT_EQ(0, CountInTrace("Time out of bounds! (Good SEND!)"));
}

TEST_F(EntryPoints, TestPageTellsItsResult) {
    modem->Plan({Answer::kIgnoresInit, Answer::kBusy, Answer::kFallsSilent, Answer::kDelivers});
    EXPECT_EQ(8, Test({"anna", kSms1})) << "modem did not initialise";
    EXPECT_EQ(6, Test({"anna", kSms1})) << "dial failed";
    EXPECT_EQ(7, Test({"anna", kSms1})) << "transfer failed";
    EXPECT_EQ(0, Test({"anna", kSms1})) << "sent";
    PagerRow nowhere{"anna", kSms1};
    nowhere.port = "COM 5";
    EXPECT_EQ(5, Test(nowhere)) << "no line";
    EXPECT_FALSE(CCOMHdl::ModemTest) << "nor is anything after it a test";
}

TEST_F(EntryPoints, TestPageUsesTheDatabaseOfItsOwnRecord) {
    Start();
    Stop();
    test_support::MemoryStore another("another");
    another.AddAllTables();
    char name[] = "another";
    info.dbName = name;
    EXPECT_EQ(5, Test({"anna", kSms1})) << "a database without ports";
    EXPECT_FALSE(another.Calls().empty());
    EXPECT_EQ("", another.Verdict());
}

TEST_F(EntryPoints, AfterATestPageTheNextAlarmNamesTheDatabase) {
    Start();
    Test({"anna", kSms1});
    test_support::MemoryStore another("another");
    another.AddAllTables();
    char name[] = "another";
    char sms[] = "sms";
    char* pagers[] = {sms};
    char* groups[] = {sms};
    FwdSpecialInfoStr call{name, &alarmLogId, nullptr, groups};
    EXPECT_EQ(-1, AlarmFwdPager(&call, sms, nullptr, pagers, 1)) << "it knows no pager";
    EXPECT_STREQ("another", m_dB);
    EXPECT_STREQ("alarms", CPagerHdl::m_dB) << "the handler keeps its own";
}

TEST_F(EntryPoints, TestPageWaitsForThePageInProgress) {
    Forward(7, {"sms"});
    Wait(10s);
    EXPECT_EQ(0, Test({"anna", kSms1}));
    EXPECT_THAT(Pages(), ElementsAre("555|OPS/Major/SRV1/pump 3 failed",
                                     "555|TEST/Informational/TESTSERVER/test"));
}

TEST_F(EntryPoints, TestPageOnAStoppedEngineStartsPendingPages) {
    AddRow(7, "sms");
    EXPECT_EQ(0, Test({"anna", kSms1}));
    EXPECT_THAT(Pages(), SizeIs(2));
    EXPECT_FALSE(WorkerRuns());
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 4"));
}

TEST_F(EntryPoints, TestPageIsTracedAsOne) {
    Start();
    const std::string now = LocalTime("%x\t%X\t");
    Test({"anna", kSms1});
    EXPECT_THAT(EngineTrace(),
                ElementsAre("CPagerHdl::CPagerHdl: alarms\n", "*** START PAGING ***",
                            "PAGER TEST invoked!", "Try to page for anna at " + now + ": ",
                            "COM: COM 1", "Pagernumber: 555 (SMS1(TAP) )", "Timemodel: always",
                            "Caused through alarm: TEST/000 (approximately logging time:01/01/70 / "
                            "00:00:00)",
                            "Server: TESTSERVER\tSeverity: Informational",
                            "Message to send: TEST/Informational/TESTSERVER/test", "Before Dial",
                            "After Dial", "Before TransMsg", "Message transfered!",
                            "Before CloseComPort", "*** END PAGING ***"));
    EXPECT_FALSE(CCOMHdl::ModemTest);
}

TEST_F(EntryPoints, TestPageShowsInTheWaitForTheCall) {
    Start();
    EXPECT_EQ(0, Test({"anna", kSms1}));
    EXPECT_THAT(
        test_support::TraceEntries(),
        ::testing::Contains(::testing::HasSubstr(", CString CONNECT, DWORD 120000, BOOL 0 )")));
}

TEST_F(EntryPoints, PagerTypeIsReadAsANumber) {
    Start();
    char text[] = "anna";
    char number[] = "555";
    char port[] = "COM 1";
    char type[] = " 4a";
    EXPECT_EQ(0, TestPager(&info, text, number, port, type, text));
    EXPECT_TRUE(TraceHas("Pagernumber: 555 (SMS1(TAP) )"));
}

TEST_F(EntryPoints, MissingTextsOfATestPageAreEmpty) {
    EXPECT_EQ(0, TestPager(&info, nullptr, nullptr, nullptr, nullptr, nullptr))
        << "a signal to nobody: the dial is the page";
    EXPECT_THAT(modem->Calls(), SizeIs(1));
}

}  // namespace
