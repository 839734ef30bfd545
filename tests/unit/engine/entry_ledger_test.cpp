// Tests of engine/entry_ledger.h.
#include "engine/entry_ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "engine/forward_queue.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// The ledger never looks into an entry, so the tests give it any, and see what it releases.
class Ledger : public ::testing::Test {
 protected:
    Ledger() {
        queued.clear();
        released.clear();
    }

    static std::vector<ForwardQEntry*> queued;
    static std::vector<ForwardQEntry*> released;

    ForwardQEntry entries_[2];
    ForwardQEntry* const a = &entries_[0];
    ForwardQEntry* const b = &entries_[1];
    EntryLedger ledger{[](ForwardQEntry* entry) {
                           return std::find(queued.begin(), queued.end(), entry) != queued.end();
                       },
                       [](ForwardQEntry* entry) { released.push_back(entry); }};
};

std::vector<ForwardQEntry*> Ledger::queued;
std::vector<ForwardQEntry*> Ledger::released;

TEST_F(Ledger, ReleasesAtOnceWhenNobodyIsLooking) {
    ledger.Note(a);
    EXPECT_THAT(released, ElementsAre(a));
    EXPECT_EQ(0U, ledger.NotedCount());
}

TEST_F(Ledger, ReleasesAtTheEndOfTheUse) {
    {
        const EntryUse use(ledger);
        ledger.Note(a);
        ledger.Note(b);
        EXPECT_THAT(released, IsEmpty());
        EXPECT_EQ(2U, ledger.NotedCount());
    }
    EXPECT_THAT(released, UnorderedElementsAre(a, b));
}

TEST_F(Ledger, WaitsForTheLastOfSeveralUses) {
    auto service = std::make_unique<EntryUse>(ledger);
    {
        const EntryUse pass(ledger);
        ledger.Note(a);
    }
    EXPECT_THAT(released, IsEmpty());
    service.reset();
    EXPECT_THAT(released, ElementsAre(a));
}

TEST_F(Ledger, ReleasesOnceWhatIsNotedTwice) {
    {
        const EntryUse use(ledger);
        ledger.Note(a);
        ledger.Note(a);
    }
    EXPECT_THAT(released, ElementsAre(a));
}

TEST_F(Ledger, ForgetsWhatWasPutBackIntoAQueue) {
    {
        const EntryUse use(ledger);
        ledger.Note(a);
        ledger.Note(b);
        queued = {a};
    }
    EXPECT_THAT(released, ElementsAre(b));
    EXPECT_EQ(0U, ledger.NotedCount());

    queued.clear();
    { const EntryUse use(ledger); }
    EXPECT_THAT(released, ElementsAre(b)) << "it was forgotten, not kept in mind";
}

TEST_F(Ledger, ReleasesWhatLeavesItsQueueForGoodLater) {
    queued = {a};
    ledger.Note(a);
    EXPECT_THAT(released, IsEmpty());
    queued.clear();
    ledger.Note(a);
    EXPECT_THAT(released, ElementsAre(a));
}

}  // namespace
