// What a line's process proves before it touches its modem.
#include "host/platform/fence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AFence : public ::testing::Test {
 protected:
    AFence() {
        SetFence(
            {[this] { passed.emplace_back("may I"); }, [this] { passed.emplace_back("note"); }});
    }
    ~AFence() override { SetFence({}); }

    std::vector<std::string> passed;
};

TEST_F(AFence, StandsBeforeEachWrite) {
    PassFence();
    EXPECT_THAT(passed, ElementsAre("may I"));
}

// What is noted before an opening may have to wait, and the time may be over by then.
TEST_F(AFence, StandsBeforeAnOpeningAndBehindItsNote) {
    PassFenceToOpen();
    EXPECT_THAT(passed, ElementsAre("may I", "note", "may I"));
}

TEST_F(AFence, IsOpenWhereThereIsNone) {
    SetFence({});
    PassFence();
    PassFenceToOpen();
    EXPECT_THAT(passed, IsEmpty());
}

}  // namespace
}  // namespace host
