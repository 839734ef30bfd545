// Two hosts over one database, the clock of one of which is set by an hour in the middle of its
// page, forwards or back: neither loses its lease for that, and no page is sent twice.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/proof/two_hosts.h"
#include "tests/unit/host/files.h"

namespace proof {
namespace {

class OneHostsClock : public TwoHosts, public ::testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(SetByAnHour, OneHostsClock, ::testing::Values(3600, -3600));

TEST_P(OneHostsClock, MayBeSetWhilePagesAreOnTheLines) {
    BeginBoth({std::string("LD_PRELOAD=") + CLOCK_SHIFT_LIBRARY,
               "CLOCK_SHIFT=" + std::filesystem::current_path().string() + "/shift"});
    WriteFile("shift.new", std::to_string(GetParam()));
    std::filesystem::rename("shift.new", "shift");
    UntilAllLeft();
    EXPECT_EQ("2", Ask("SELECT count(*) FROM Host_Nodes WHERE term = 1"));
    EXPECT_EQ("0", Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
    Judge(2);
}

}  // namespace
}  // namespace proof
