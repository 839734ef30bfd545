// Troubles that may last, as an operator is told of them.
#include "host/process/trouble.h"

#include <gtest/gtest.h>

#include <sstream>

namespace host {
namespace {

class ATrouble : public ::testing::Test {
 protected:
    // What has been said since the last call.
    std::string Said() {
        std::string text = out.str();
        out.str("");
        return text;
    }

    std::ostringstream out;
    OperatorLog log{out, true};
    Trouble trouble{log, "works again"};
};

TEST_F(ATrouble, ThatNeverCameIsNotOverEither) {
    trouble.Is("");
    EXPECT_EQ("", Said());
}

TEST_F(ATrouble, IsToldOnceHoweverLongItLasts) {
    for (int look = 0; look < 1000; ++look) {
        trouble.Is("no room");
    }
    EXPECT_EQ("<3>error: no room; trying again\n", Said());
}

TEST_F(ATrouble, IsToldAgainOnlyWhereItsReasonIsANewOne) {
    for (const char* why : {"no room", "locked", "no room", "locked"}) {
        trouble.Is(why);
    }
    EXPECT_EQ("<3>error: no room; trying again\n<3>error: locked; trying again\n", Said());
}

TEST_F(ATrouble, IsToldToBeOverOnceAndToldAnewWhenItComesBack) {
    trouble.Is("no room");
    trouble.Is("");
    trouble.Is("");
    trouble.Is("no room");
    EXPECT_EQ("<3>error: no room; trying again\n<6>works again\n<3>error: no room; trying again\n",
              Said());
}

TEST_F(ATrouble, WhoseReasonIsEverAnotherIsToldAFewTimes) {
    for (int look = 0; look < 1000; ++look) {
        trouble.Is("row " + std::to_string(look));
    }
    const std::string said = Said();
    EXPECT_EQ(Trouble::kMostReasons, std::count(said.begin(), said.end(), '\n'));
    trouble.Is("");
    EXPECT_EQ("<6>works again\n", Said());
}

}  // namespace
}  // namespace host
