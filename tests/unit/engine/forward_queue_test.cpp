// Tests of engine/forward_queue.h.
#include "engine/forward_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <thread>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ForwardQueue : public ::testing::Test {
 protected:
    // An entry that is not in a queue yet; a queue frees it, or the test does.
    ForwardQEntry* MakeEntry(int32_t alarm, const char* pager = "anna", const char* group = "ops/1",
                             long due = 1000) {
        alarms_.push_back({});
        alarms_.back().alarmLogId = alarm;
        auto* entry = new ForwardQEntry;
        entry->alarmLogEntry = &alarms_.back();
        entry->pagerDescr = pager;
        entry->almGroup = group;
        entry->queueTime = CTime(due);
        return entry;
    }
    ForwardQEntry* MakeEntryDueAt(long due) { return MakeEntry(1, "anna", "ops/1", due); }

    // A queue in the order in which the entries stand here, head first.
    void Fill(const std::vector<ForwardQEntry*>& entries) {
        for (ForwardQEntry* entry : entries) {
            queue.AddTail(entry);
        }
    }

    static std::vector<ForwardQEntry*> EntriesOf(const CPtrList& list) {
        std::vector<ForwardQEntry*> entries;
        for (POSITION next = list.GetHeadPosition(); next != nullptr;) {
            entries.push_back(static_cast<ForwardQEntry*>(list.GetNext(next)));
        }
        return entries;
    }
    std::vector<ForwardQEntry*> Entries() const { return EntriesOf(queue); }

    CSM_ForwardQ queue;

 private:
    std::deque<AlarmLogEntry> alarms_;
};

TEST_F(ForwardQueue, NewEntryIsEmpty) {
    const ForwardQEntry entry;
    EXPECT_EQ(nullptr, entry.pagerFwdEvent);
    EXPECT_EQ(nullptr, entry.alarmLogEntry);
    EXPECT_TRUE(entry.pagerDescr.IsEmpty());
    EXPECT_TRUE(entry.almGroup.IsEmpty());
    EXPECT_TRUE(entry.serverN.IsEmpty());
    EXPECT_EQ(0U, entry.serverId) << "no server's: FindEntryByServerID of a real one misses it";
    EXPECT_FALSE(entry.postponed);
}

TEST_F(ForwardQueue, AddedEntryGoesToTheHeadWhateverItsTime) {
    ForwardQEntry* late = MakeEntryDueAt(3000);
    ForwardQEntry* early = MakeEntryDueAt(1000);
    ForwardQEntry* latest = MakeEntryDueAt(5000);
    EXPECT_TRUE(queue.AddEntryToQueue(late));
    EXPECT_TRUE(queue.AddEntryToQueue(early));
    EXPECT_TRUE(queue.AddEntryToQueue(latest));
    EXPECT_THAT(Entries(), ElementsAre(latest, early, late));
}

TEST_F(ForwardQueue, InsertedIntoAnEmptyQueueIsTheHead) {
    ForwardQEntry* only = MakeEntryDueAt(1000);
    EXPECT_TRUE(queue.InsertEntryInQueue(only));
    EXPECT_THAT(Entries(), ElementsAre(only));
}

TEST_F(ForwardQueue, InsertedOlderThanAllIsTheHead) {
    ForwardQEntry* first = MakeEntryDueAt(2000);
    ForwardQEntry* second = MakeEntryDueAt(3000);
    Fill({first, second});
    ForwardQEntry* oldest = MakeEntryDueAt(1999);
    EXPECT_TRUE(queue.InsertEntryInQueue(oldest));
    EXPECT_THAT(Entries(), ElementsAre(oldest, first, second));
}

TEST_F(ForwardQueue, InsertedAsNewAsTheNewestStandsBehindIt) {
    ForwardQEntry* first = MakeEntryDueAt(2000);
    ForwardQEntry* newest = MakeEntryDueAt(3000);
    Fill({first, newest});
    ForwardQEntry* equal = MakeEntryDueAt(3000);
    EXPECT_TRUE(queue.InsertEntryInQueue(equal));
    EXPECT_THAT(Entries(), ElementsAre(first, newest, equal));
}

TEST_F(ForwardQueue, InsertedInBetweenStandsBehindAllOfItsTime) {
    ForwardQEntry* early = MakeEntryDueAt(1000);
    ForwardQEntry* same = MakeEntryDueAt(2000);
    ForwardQEntry* alsoSame = MakeEntryDueAt(2000);
    ForwardQEntry* late = MakeEntryDueAt(3000);
    Fill({early, same, alsoSame, late});
    ForwardQEntry* inserted = MakeEntryDueAt(2000);
    EXPECT_TRUE(queue.InsertEntryInQueue(inserted));
    EXPECT_THAT(Entries(), ElementsAre(early, same, alsoSame, inserted, late));
}

// The search goes from the tail to the first that is no newer; what is out of order before it,
// because it was added and not inserted, stays as it is.
TEST_F(ForwardQueue, InsertionLooksFromTheTail) {
    ForwardQEntry* added = MakeEntryDueAt(9000);
    ForwardQEntry* early = MakeEntryDueAt(1000);
    Fill({added, early});
    ForwardQEntry* inserted = MakeEntryDueAt(2000);
    EXPECT_TRUE(queue.InsertEntryInQueue(inserted));
    EXPECT_THAT(Entries(), ElementsAre(added, early, inserted));
}

TEST_F(ForwardQueue, EqualTimesCountAsOlder) {
    ForwardQEntry* early = MakeEntryDueAt(1000);
    ForwardQEntry* late = MakeEntryDueAt(1001);
    Fill({early, late});
    EXPECT_TRUE(CSM_ForwardQ::EntryIsOlder(early, late));
    EXPECT_TRUE(CSM_ForwardQ::EntryIsOlder(early, early));
    EXPECT_FALSE(CSM_ForwardQ::EntryIsOlder(late, early));
}

TEST_F(ForwardQueue, EntriesMatchByAlarmPagerAndGroup) {
    ForwardQEntry* entry = MakeEntry(7, "anna", "ops/1");
    ForwardQEntry* same = MakeEntry(7, "anna", "ops/1");
    same->serverN = "another";
    same->state = kForwardOffLimit;
    ForwardQEntry* otherAlarm = MakeEntry(8, "anna", "ops/1");
    ForwardQEntry* otherPager = MakeEntry(7, "bert", "ops/1");
    ForwardQEntry* otherGroup = MakeEntry(7, "anna", "ops/2");
    ForwardQEntry* otherCase = MakeEntry(7, "Anna", "ops/1");
    Fill({entry, same, otherAlarm, otherPager, otherGroup, otherCase});

    EXPECT_TRUE(CSM_ForwardQ::EntryMatches(entry, same)) << "server and state are not compared";
    EXPECT_FALSE(CSM_ForwardQ::EntryMatches(entry, otherAlarm));
    EXPECT_FALSE(CSM_ForwardQ::EntryMatches(entry, otherPager));
    EXPECT_FALSE(CSM_ForwardQ::EntryMatches(entry, otherGroup));
    EXPECT_FALSE(CSM_ForwardQ::EntryMatches(entry, otherCase));
}

TEST_F(ForwardQueue, RemovingWhatMatchesNothingChangesNothing) {
    ForwardQEntry* entry = MakeEntry(7);
    Fill({entry});
    const std::unique_ptr<ForwardQEntry> stranger(MakeEntry(8));
    EXPECT_FALSE(queue.RemoveEntryFromQueue(stranger.get()));
    EXPECT_EQ(nullptr, queue.TakeMatchingEntry(stranger.get()));
    EXPECT_THAT(Entries(), ElementsAre(entry));
}

TEST_F(ForwardQueue, OfTwoMatchesOnlyTheFirstIsRemoved) {
    const std::unique_ptr<ForwardQEntry> first(MakeEntry(7));
    ForwardQEntry* other = MakeEntry(8);
    ForwardQEntry* second = MakeEntry(7);
    Fill({other, first.get(), second});
    EXPECT_TRUE(queue.RemoveEntryFromQueue(second)) << "the argument itself stays";
    EXPECT_THAT(Entries(), ElementsAre(other, second));
}

TEST_F(ForwardQueue, TakenIsTheFirstMatchNotTheArgument) {
    const std::unique_ptr<ForwardQEntry> first(MakeEntry(7));
    ForwardQEntry* second = MakeEntry(7);
    Fill({first.get(), second});
    EXPECT_EQ(first.get(), queue.TakeMatchingEntry(second));
}

TEST_F(ForwardQueue, TakesTheHead) {
    const std::unique_ptr<ForwardQEntry> head(MakeEntry(7));
    ForwardQEntry* tail = MakeEntry(8);
    Fill({head.get(), tail});
    EXPECT_EQ(head.get(), queue.TakeHeadEntry());
    EXPECT_THAT(Entries(), ElementsAre(tail));
}

TEST_F(ForwardQueue, TakesNothingFromAnEmptyQueue) {
    EXPECT_EQ(nullptr, queue.TakeHeadEntry());
}

TEST_F(ForwardQueue, CopiesSharePointersInOrderBehindWhatIsThere) {
    ForwardQEntry* first = MakeEntry(1);
    ForwardQEntry* second = MakeEntry(2);
    Fill({first, second});
    CSM_ForwardQ target;
    ForwardQEntry* there = MakeEntry(3);
    target.AddTail(there);

    EXPECT_EQ(2, queue.CopyEntriesToNewQueue(&target));
    EXPECT_THAT(EntriesOf(target), ElementsAre(there, first, second));
    EXPECT_THAT(Entries(), ElementsAre(first, second));

    target.RemoveTail();
    target.RemoveTail();
}

TEST_F(ForwardQueue, CopyOfNothingCopiesNothing) {
    CSM_ForwardQ target;
    EXPECT_EQ(0, queue.CopyEntriesToNewQueue(&target));
    EXPECT_THAT(EntriesOf(target), IsEmpty());
}

TEST_F(ForwardQueue, FindsTheFirstEntryOfAnAlarm) {
    ForwardQEntry* other = MakeEntry(8);
    ForwardQEntry* anna = MakeEntry(7, "anna");
    ForwardQEntry* bert = MakeEntry(7, "bert");
    Fill({other, anna, bert});
    EXPECT_EQ(anna, queue.FindEntryByAlmLogID(7));
    EXPECT_EQ(other, queue.FindEntryByAlmLogID(8));
    EXPECT_EQ(nullptr, queue.FindEntryByAlmLogID(9));
}

TEST_F(ForwardQueue, FindsTheFirstEntryOfAServer) {
    ForwardQEntry* first = MakeEntry(1);
    ForwardQEntry* second = MakeEntry(2);
    first->serverId = second->serverId = 5;
    Fill({MakeEntry(3), first, second});
    EXPECT_EQ(first, queue.FindEntryByServerID(5));
    EXPECT_EQ(nullptr, queue.FindEntryByServerID(6));
}

TEST_F(ForwardQueue, SaysWhetherItHasEntries) {
    EXPECT_FALSE(queue.HasEntries());
    Fill({MakeEntry(7)});
    EXPECT_TRUE(queue.HasEntries());
}

TEST_F(ForwardQueue, AnEntryThatLeavesOneOfTwoPlacesIsStillInAQueue) {
    const std::unique_ptr<ForwardQEntry> entry(MakeEntry(7));
    const auto isQueued = [&] { return CSM_ForwardQ::IsInAQueue(*entry); };
    queue.InsertEntryInQueue(entry.get());
    EXPECT_TRUE(isQueued());

    CSM_ForwardQ copy;
    queue.CopyEntriesToNewQueue(&copy);
    copy.TakeHeadEntry();
    EXPECT_TRUE(isQueued());
    queue.CopyEntriesToNewQueue(&copy);
    copy.ForgetEntries();
    EXPECT_TRUE(isQueued());
    queue.TakeHeadEntry();
    EXPECT_FALSE(isQueued());
}

TEST_F(ForwardQueue, AnEntryIsInAQueueUntilItHasLeftEveryPlace) {
    const std::unique_ptr<ForwardQEntry> entry(MakeEntry(7));
    const std::unique_ptr<ForwardQEntry> equal(MakeEntry(7));
    const auto isQueued = [&] { return CSM_ForwardQ::IsInAQueue(*entry); };
    EXPECT_FALSE(isQueued());
    queue.AddEntryToQueue(entry.get());
    queue.InsertEntryInQueue(entry.get());
    CSM_ForwardQ copy;
    queue.CopyEntriesToNewQueue(&copy);
    EXPECT_FALSE(CSM_ForwardQ::IsInAQueue(*equal));

    queue.RemoveEntryFromQueue(equal.get());
    EXPECT_TRUE(isQueued());
    queue.TakeHeadEntry();
    EXPECT_TRUE(isQueued());
    copy.ForgetEntries();
    EXPECT_FALSE(isQueued());
    EXPECT_TRUE(copy.IsEmpty());
}

// What is not freed here is told by the leak check, what is freed twice by the address check.
TEST_F(ForwardQueue, DestructionFreesWhatIsStillIn) {
    auto* other = new CSM_ForwardQ;
    other->AddEntryToQueue(MakeEntry(1));
    other->AddEntryToQueue(nullptr);
    other->AddEntryToQueue(MakeEntry(2));
    delete other;
}

TEST_F(ForwardQueue, ElevenEntriesFit) {
    for (int32_t alarm = 1; alarm <= 11; ++alarm) {
        EXPECT_TRUE(queue.AddEntryToQueue(MakeEntry(alarm)));
    }
    EXPECT_EQ(11, queue.GetCount());
}

TEST_F(ForwardQueue, IsSafeForSeveralThreads) {
    constexpr int kRounds = 500;
    std::vector<std::thread> threads;
    for (int32_t alarm = 1; alarm <= 4; ++alarm) {
        threads.emplace_back([this, alarm, entry = MakeEntry(alarm)] {
            for (int i = 0; i < kRounds; ++i) {
                EXPECT_TRUE(queue.InsertEntryInQueue(entry));
                EXPECT_EQ(entry, queue.FindEntryByAlmLogID(alarm));
                EXPECT_TRUE(queue.RemoveEntryFromQueue(entry));
            }
            queue.AddEntryToQueue(entry);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(4, queue.GetCount());
}

}  // namespace
