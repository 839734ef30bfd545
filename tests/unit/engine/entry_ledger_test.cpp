// Tests of engine/entry_ledger.h. The freeing of an entry's alarm is wrapped at link time: it tells
// which entries are freed.
#include "engine/entry_ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "engine/forward_queue.h"

namespace {

std::vector<int> freed;  // alarms

}  // namespace

extern "C" {
void __real__ZN12CDB_AlarmLog17FreeAlarmLogEntryEP13AlarmLogEntry(AlarmLogEntry* alarm);

void __wrap__ZN12CDB_AlarmLog17FreeAlarmLogEntryEP13AlarmLogEntry(AlarmLogEntry* alarm) {
    if (alarm != nullptr) {
        freed.push_back(alarm->alarmLogId);
    }
    __real__ZN12CDB_AlarmLog17FreeAlarmLogEntryEP13AlarmLogEntry(alarm);
}
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class Ledger : public ::testing::Test {
 protected:
    Ledger() { freed.clear(); }
    ~Ledger() override { EXPECT_THAT(freed, UnorderedElementsAre(1, 2)) << "each once"; }

    // With both its records.
    static ForwardQEntry* EntryOf(int alarm) {
        auto* entry = new ForwardQEntry;
        entry->alarmLogEntry = new AlarmLogEntry{};
        entry->alarmLogEntry->alarmLogId = alarm;
        entry->pagerFwdEvent = new PagerFwdEvent{};
        return entry;
    }

    EntryLedger ledger;
    CSM_ForwardQ queue;
    ForwardQEntry* const a = EntryOf(1);
    ForwardQEntry* const b = EntryOf(2);
};

TEST_F(Ledger, FreesAtOnceWhenNobodyIsLooking) {
    ledger.Note(a);
    EXPECT_THAT(freed, ElementsAre(1));
    EXPECT_EQ(0U, ledger.NotedCount());
    ledger.Note(b);
}

TEST_F(Ledger, FreesAtTheEndOfTheUse) {
    {
        const EntryUse use(ledger);
        ledger.Note(a);
        use.Note(b);
        EXPECT_THAT(freed, IsEmpty());
        EXPECT_EQ(2U, ledger.NotedCount());
    }
    EXPECT_THAT(freed, UnorderedElementsAre(1, 2));
}

TEST_F(Ledger, WaitsForTheLastOfSeveralUses) {
    auto service = std::make_unique<EntryUse>(ledger);
    {
        const EntryUse pass(ledger);
        ledger.Note(a);
    }
    EXPECT_THAT(freed, IsEmpty());
    service.reset();
    EXPECT_THAT(freed, ElementsAre(1));
    ledger.Note(b);
}

TEST_F(Ledger, FreesOnceWhatIsNotedTwice) {
    {
        const EntryUse use(ledger);
        ledger.Note(a);
        ledger.Note(a);
        EXPECT_EQ(1U, ledger.NotedCount());
    }
    EXPECT_THAT(freed, ElementsAre(1));
    ledger.Note(b);
}

TEST_F(Ledger, ForgetsWhatWasPutBackIntoAQueue) {
    {
        const EntryUse use(ledger);
        ledger.Note(a);
        ledger.Note(b);
        queue.AddEntryToQueue(a);
    }
    EXPECT_THAT(freed, ElementsAre(2));
    EXPECT_EQ(0U, ledger.NotedCount());

    queue.TakeHeadEntry();
    { const EntryUse use(ledger); }
    EXPECT_THAT(freed, ElementsAre(2)) << "it was forgotten, not kept in mind";
    ledger.Note(a);
}

TEST_F(Ledger, FreesWhatLeavesItsQueueForGoodLater) {
    queue.AddEntryToQueue(a);
    ledger.Note(a);
    EXPECT_THAT(freed, IsEmpty());
    queue.TakeHeadEntry();
    ledger.Note(a);
    EXPECT_THAT(freed, ElementsAre(1));
    ledger.Note(b);
}

}  // namespace
