// Tests of engine/handler_setup.cpp: what is there while a handler is up, and what is not after it.
#include <new>

#include "engine/longest_page.h"
#include "modem/COMHdl.h"
#include "tests/engine/engine_test.h"
#include "tests/support/without_descriptors.h"

namespace {

using ::testing::ElementsAre;

class Handler : public EngineTest {};

TEST_F(Handler, BringsEverythingUp) {
    const CPagerHdl handler(database);
    EXPECT_TRUE(CPagerHdl::IsRunning());
    EXPECT_EQ(&handler, CPagerHdl::PagerHdl);
    EXPECT_STREQ("alarms", CPagerHdl::m_dB);
    EXPECT_NE(static_cast<const char*>(database), CPagerHdl::m_dB) << "a copy";
    EXPECT_NE(nullptr, CPagerHdl::ccom);
    EXPECT_NE(nullptr, m_pPagingQ);
    EXPECT_NE(nullptr, m_pOffLimitQ);
    EXPECT_NE(nullptr, CPagerHdl::m_pPagerEventsSet);
    EXPECT_NE(nullptr, CPagerHdl::pagerFwdEvents);
    EXPECT_NE(CPagerHdl::m_pPagerEventsSet, CPagerHdl::pagerFwdEvents);
    EXPECT_NE(nullptr, CPagerHdl::m_pPagerSettingsSet);
    EXPECT_NE(nullptr, CPagerHdl::m_pAlarmLogSet);
    EXPECT_EQ(nullptr, CPagerHdl::m_pPagerTable);
    EXPECT_EQ(0U, CPagerHdl::PHTimerId);
    EXPECT_EQ(5, CPagerHdl::NumOfRetries);
    EXPECT_EQ(45, CPagerHdl::RetryDelay);
    EXPECT_FALSE(CPagerHdl::checkAlready);
}

TEST_F(Handler, TakesEverythingDown) {
    { const CPagerHdl handler(database); }
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_EQ(nullptr, CPagerHdl::m_dB);
    EXPECT_EQ(nullptr, CPagerHdl::ccom);
    EXPECT_FALSE(CCOMHdl::IsRunning());
    EXPECT_EQ(nullptr, m_pPagingQ);
    EXPECT_EQ(nullptr, m_pOffLimitQ);
    EXPECT_EQ(nullptr, CPagerHdl::m_pPagerEventsSet);
    EXPECT_EQ(nullptr, CPagerHdl::pagerFwdEvents);
    EXPECT_EQ(nullptr, CPagerHdl::m_pPagerEventsList);
    EXPECT_EQ(nullptr, CPagerHdl::m_pPagerSettingsSet);
    EXPECT_EQ(nullptr, CPagerHdl::m_pAlarmLogSet);
    EXPECT_EQ(nullptr, CPagerHdl::PHSeverityStrings);
}

TEST_F(Handler, SeveritiesCanBeLoadedAgain) {
    const CPagerHdl handler(database);
    EXPECT_TRUE(CPagerHdl::LoadSeverityStrings());
    EXPECT_EQ(5, CPagerHdl::PHSeverityStrings->GetSize());
}

TEST_F(Handler, SeveritiesAreCalledByTheirKeys) {
    const CPagerHdl handler(database);
    const CStringArray& names = *CPagerHdl::PHSeverityStrings;
    ASSERT_EQ(5, names.GetSize());
    EXPECT_EQ("Critical", names[0]);
    EXPECT_EQ("Major", names[1]);
    EXPECT_EQ("Minor", names[2]);
    EXPECT_EQ("Informational", names[3]);
    EXPECT_EQ("Unknown", names[4]);
}

TEST_F(Handler, FirstTracesTheDatabase) {
    const CPagerHdl handler(database);
    EXPECT_THAT(test_support::TraceEntries(), ElementsAre("CPagerHdl::CPagerHdl: alarms\n"));
}

TEST_F(Handler, SecondOneChangesNothing) {
    const CPagerHdl handler(database);
    const CSM_ForwardQ* queue = m_pPagingQ;
    const char* name = CPagerHdl::m_dB;
    store.ForgetCalls();

    auto* second = new CPagerHdl("another");
    EXPECT_EQ(&handler, CPagerHdl::PagerHdl);
    EXPECT_EQ(queue, m_pPagingQ);
    EXPECT_EQ(name, CPagerHdl::m_dB);
    EXPECT_STREQ("alarms", CPagerHdl::m_dB);
    EXPECT_TRUE(store.Calls().empty());

    // Kept: it shares the first one's state and takes it down.
    delete second;
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_EQ(nullptr, m_pPagingQ);
}

TEST_F(Handler, CanBeMadeAgain) {
    for (int i = 0; i < 3; ++i) {
        const CPagerHdl handler(database);
        EXPECT_TRUE(CPagerHdl::IsRunning());
        EXPECT_THAT(test_support::TraceEntries(), ElementsAre("CPagerHdl::CPagerHdl: alarms\n"));
    }
}

TEST_F(Handler, FreesTheEntriesOfBothQueues) {
    const NoWorker noWorker;
    AddAlarm(7);
    const CPagerHdl handler(database);
    Queue(7, "anna");
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "bert"));
    // The leak check says the rest.
}

TEST_F(Handler, WithoutDescriptorsForItsWorkerItDoesNotComeUp) {
    unsetenv(test_support::kTraceSwitch);
    {
        const test_support::WithoutDescriptors none;
        EXPECT_THROW(Start(), std::bad_alloc);
    }
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_EQ(nullptr, m_pPagingQ);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning()) << "the next call tries again";
}

TEST_F(Handler, CleaningUpTwiceIsNoMistake) {
    const CPagerHdl handler(database);
    CPagerHdl::CleanUp();
    CPagerHdl::CleanUp();
}

TEST_F(Handler, WithoutADatabaseNameNothingIsFound) {
    const CPagerHdl handler(nullptr);
    EXPECT_TRUE(CPagerHdl::IsRunning());
    EXPECT_STREQ("", CPagerHdl::m_dB);
    EXPECT_FALSE(CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 7, 0));
}

TEST_F(Handler, WithoutAHandlerNoAlarmIsQueued) {
    EXPECT_FALSE(CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 7, 0));
}

TEST_F(Handler, LongestPageFollowsFromTheWaitsOfTheModem) {
    const CPagerHdl handler(database);
    EXPECT_EQ((62 + 13 + 120 + 180 + 10 + 60) * 1000, LongestPageMs());
}

}  // namespace
