// The page that is about to be on a line, noted before the modem is opened.
#include "host/line/page_on_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/connection.h"
#include "tests/unit/host/recorded_trace.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class APageOnALine : public ::testing::Test {
 protected:
    // What the library writes, as it writes it.
    void Trace(const TraceWriter& trace) { notes.Read(trace.Text()); }

    std::vector<std::string> noted;
    int refusals = 0;
    PageOnLineNotes notes{[this](const TracedPage* page) {
                              if (refusals > 0) {
                                  throw StoreAway("away");
                              }
                              noted.push_back(page == nullptr ? "none" : page->pager);
                          },
                          [this] { --refusals; }};
};

TEST_F(APageOnALine, IsNotedBeforeTheModemIsOpened) {
    Trace(TraceWriter().Begin("duty"));
    EXPECT_THAT(noted, IsEmpty());
    notes.BeforeOpening();
    EXPECT_THAT(noted, ElementsAre("duty"));
}

TEST_F(APageOnALine, IsForgottenWhenItHasEnded) {
    Trace(TraceWriter().Begin("duty"));
    notes.BeforeOpening();
    notes.Settle();
    EXPECT_THAT(noted, ElementsAre("duty")) << "it is still there";
    Trace(TraceWriter().End());
    notes.Settle();
    notes.Settle();
    EXPECT_THAT(noted, ElementsAre("duty", "none"));
}

TEST_F(APageOnALine, GivesWayToTheNext) {
    Trace(TraceWriter().Begin("duty"));
    notes.BeforeOpening();
    Trace(TraceWriter().End().Begin("night"));
    notes.Settle();
    notes.BeforeOpening();
    EXPECT_THAT(noted, ElementsAre("duty", "night"));
}

// What the process before has left there is none of this one's.
TEST_F(APageOnALine, IsNoneBeforeTheFirst) {
    notes.Settle();
    notes.Settle();
    EXPECT_THAT(noted, ElementsAre("none"));
    notes.BeforeOpening();
    EXPECT_THAT(noted, ElementsAre("none")) << "a test call";
}

TEST_F(APageOnALine, WaitsUntilItCanBeNoted) {
    refusals = 3;
    Trace(TraceWriter().Begin("duty"));
    notes.BeforeOpening();
    EXPECT_EQ(0, refusals);
    EXPECT_THAT(noted, ElementsAre("duty"));
}

}  // namespace
}  // namespace host
