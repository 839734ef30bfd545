// Tests of what the engine does when memory runs out: the only way in which a queue refuses an
// entry, and a handler does not come up.
#include <memory>
#include <new>

#include "engine/pager_fwd.h"
#include "modem/COMHdl.h"
#include "tests/engine/allocation_faults.h"
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A queue allocates its nodes ten at a time: three pointers each, and one for the block.
constexpr int kNodesPerBlock = 10;
constexpr size_t kNodeBlock = (3 * kNodesPerBlock + 1) * sizeof(void*);

class OutOfMemory : public EngineTest {
 protected:
    OutOfMemory() {
        AddPager({"anna"});
        for (int alarm = 1; alarm <= kNodesPerBlock + 2; ++alarm) {
            AddAlarm(alarm);
        }
    }

    NoWorker noWorker;
};

TEST_F(OutOfMemory, RefusedAlarmIsFreedAndAnswered0) {
    Start();
    for (int alarm = 1; alarm <= kNodesPerBlock; ++alarm) {
        EXPECT_EQ(1, Forward(alarm, {"anna"}));
    }
    {
        const FailingSize fault(kNodeBlock);
        EXPECT_EQ(0, Forward(11, {"anna"}));
    }
    EXPECT_EQ(kNodesPerBlock, m_pPagingQ->GetCount());
    EXPECT_EQ(10U, Rows().size());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(11));
    EXPECT_EQ(11, CountInTrace("InsertInPagingQueue: anna\n"));
    EXPECT_EQ(10, CountInTrace("Check4Dial\n"));
    EXPECT_EQ(1, Forward(12, {"anna"}));
}

// The eleventh entry that the start-up pass files is refused: its alarm is the second one, since
// the pass files the last row first.
TEST_F(OutOfMemory, StartUpGoesOnBehindARefusedEntry) {
    for (int alarm = 1; alarm <= kNodesPerBlock + 2; ++alarm) {
        AddRow(alarm, "anna");
    }
    std::unique_ptr<FailingSize> fault;
    store.BeforeEach([&fault](const std::string& call) {
        const bool filesTheTenth =
            call == R"(GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = "3"))";
        if (filesTheTenth && !fault) {
            fault = std::make_unique<FailingSize>(kNodeBlock);
        }
    });
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
    EXPECT_EQ(kNodesPerBlock + 1, m_pPagingQ->GetCount());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(2));
    EXPECT_EQ(2, CPagerHdl::GetPagingState(1));
    EXPECT_EQ(12U, Rows().size()) << "its row stays for the next start";
}

TEST_F(OutOfMemory, StartUpGoesOnBehindARowThatItCannotKeep) {
    for (int alarm = 1; alarm <= kNodesPerBlock + 2; ++alarm) {
        AddRow(alarm, "anna");
    }
    std::unique_ptr<FailingSize> fault;
    store.BeforeEach([&fault](const std::string& call) {
        const bool takesUpTheEleventh =
            call == R"(GetAllEntriesByCondition(AlarmLog, alarmlogID = "11"))";
        if (takesUpTheEleventh && !fault) {
            fault = std::make_unique<FailingSize>(kNodeBlock);
        }
    });
    Start();
    EXPECT_EQ(kNodesPerBlock + 1, m_pPagingQ->GetCount());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(11));
    EXPECT_EQ(2, CPagerHdl::GetPagingState(12));
}

TEST_F(OutOfMemory, EntryThatCannotBePutBackGoesOffLimit) {
    Start();
    ForwardQEntry* entry = Queue(1, "anna");
    {
        // The queue gives its memory back with its only entry, and gets none for the return.
        const FailingSize fault(kNodeBlock);
        EXPECT_FALSE(CPagerHdl::ReinsertInPagingQueue(entry, 5));
    }
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("1 anna"));
    EXPECT_THAT(Rows(), ElementsAre("1 anna 0 3"));
    EXPECT_EQ("3", AlarmState(1));
}

TEST_F(OutOfMemory, EntryThatNoQueueTakesIsFreed) {
    Start();
    ForwardQEntry* entry = Queue(1, "anna");
    {
        const FailingSize fault(kNodeBlock, 2);
        EXPECT_FALSE(CPagerHdl::ReinsertInPagingQueue(entry, 5));
    }
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
    EXPECT_THAT(Rows(), ElementsAre("1 anna 0 3"));
}

TEST_F(OutOfMemory, EntryThatNoQueueEverTookIsFreed) {
    Start();
    ForwardQEntry* entry = MakeEntry(1, "anna");
    {
        const FailingSize fault(kNodeBlock);
        EXPECT_TRUE(CPagerHdl::InsertInOffLimitQueue(entry));
    }
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
}

constexpr size_t kServerSize = 12345;

// The rows of an alarm's other pagers are looked at, and nothing is made of them.
TEST_F(OutOfMemory, RowOfAnotherPagerIsOnlyCompared) {
    store.Insert(kEvents, {{"AlmLogID", "1"},
                           {"AlmGroup", "OPS/1"},
                           {"PagerDescr", "bert"},
                           {"ServerN", std::string(kServerSize - 1, 'x')}});
    AddRow(1, "anna");
    std::unique_ptr<FailingSize> fault;
    store.BeforeEach([&fault](const std::string& call) {
        if (call == "GetElementColumn(AlarmFwd_PagerEvents, Severity)") {  // the rows are read
            fault = std::make_unique<FailingSize>(kServerSize);
        }
    });
    CDB_PagerFwdEvents events(database);
    PagerFwdEvent* const found = events.FindFwdEvent(1, "OPS/1", "anna");
    ASSERT_NE(nullptr, found);
    EXPECT_STREQ("anna", found->pagerDescr);
    CDB_PagerFwdEvents::FreePagerFwdEvent(found);
}

// A copy that is not finished must not leave entries to two owners: each would free them.
TEST_F(OutOfMemory, CopyThatIsNotFinishedTakesBackWhatItHasCopied) {
    Start();
    for (int alarm = 1; alarm <= kNodesPerBlock; ++alarm) {
        Queue(alarm, "anna");
    }
    {
        CSM_ForwardQ copy;
        copy.AddEntryToQueue(MakeEntry(11, "anna"));  // and nine of its nodes are left
        const FailingSize fault(kNodeBlock);
        EXPECT_THROW(m_pPagingQ->CopyEntriesToNewQueue(&copy), std::bad_alloc);
        EXPECT_EQ(1, copy.GetCount());
        auto* own = static_cast<ForwardQEntry*>(copy.GetHead());
        EXPECT_TRUE(copy.RemoveEntryFromQueue(own));
        CPagerHdl::FreeQEntry(own);
    }
    EXPECT_THAT(EntriesIn(m_pPagingQ), ::testing::SizeIs(kNodesPerBlock));
}

TEST_F(OutOfMemory, ExceptionPassesOnAndLeavesNoFacade) {
    const FailingSize fault(sizeof(CPagerFwd));
    EXPECT_THROW(Start(), std::bad_alloc);
    EXPECT_EQ(nullptr, pagerFwd);
    EXPECT_EQ(nullptr, pagerHdl);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
}

// From an engine that is not up only.
TEST_F(OutOfMemory, ExceptionPassesOnFromTheFirstAlarmAndNoOther) {
    {
        const FailingSize fault(sizeof(CPagerFwd));
        EXPECT_THROW(Forward(1, {"anna"}), std::bad_alloc);
    }
    Start();
    {
        const FailingSize fault(sizeof database);  // its copy, to look the pagers up with
        EXPECT_EQ(0, Forward(1, {"anna"}));
    }
    EXPECT_EQ(1, Forward(1, {"anna"}));
}

TEST_F(OutOfMemory, ExceptionPassesOnAndLeavesNoHandler) {
    {
        const FailingSize fault(sizeof database);  // its copy, the first thing that is made
        EXPECT_THROW(CPagerHdl handler(database), std::bad_alloc);
    }
    EXPECT_FALSE(CPagerHdl::IsRunning());
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
}

TEST_F(OutOfMemory, HalfMadeModemHandlerLeavesNothing) {
    {
        const FailingSize fault(sizeof(ComPort));  // of the port that it finds
        EXPECT_THROW(CCOMHdl handler(database), std::bad_alloc);
    }
    EXPECT_FALSE(CCOMHdl::IsRunning());
    EXPECT_EQ(nullptr, CCOMHdl::COMHdl);
    EXPECT_EQ(nullptr, CCOMHdl::pDBComPorts);
}

}  // namespace
