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

class AnOutage : public ATrouble {
 protected:
    // The reason of a moment changes while the server is away.
    void IsAwayAt(std::time_t now) {
        trouble.IsAway(
            StoreAway("db: can't be reached (" + std::to_string(now) + ")", "db: can't be reached"),
            now);
    }
    void IsAwayFor(std::time_t seconds) {
        for (std::time_t now = 1000; now < 1000 + seconds; ++now) {
            IsAwayAt(now);
        }
    }
};

TEST_F(AnOutage, IsToldOnceAMinuteWhateverTheReasons) {
    IsAwayFor(125);
    EXPECT_EQ(
        "<3>error: db: can't be reached (1000); trying again\n"
        "<3>error: db: can't be reached (1060); trying again\n"
        "<3>error: db: can't be reached (1120); trying again\n",
        Said());
    trouble.Is("");
    EXPECT_EQ("<6>works again\n", Said());
    IsAwayAt(1130);
    EXPECT_EQ("<3>error: db: can't be reached (1130); trying again\n", Said());
}

TEST_F(AnOutage, IsToldThoughTheClockIsSetBack) {
    IsAwayAt(9000);
    Said();
    IsAwayFor(61);
    EXPECT_EQ("<3>error: db: can't be reached (1060); trying again\n", Said());
}

TEST_F(AnOutage, OfAnAwayStoreThatIsNoServerIsAReasonAsAnyOther) {
    trouble.IsAway(StoreAway("locked"), 1);
    trouble.IsAway(StoreAway("locked"), 100);
    EXPECT_EQ("<3>error: locked; trying again\n", Said());
}

TEST_F(AnOutage, ThatAnotherTellsOfIsToldOnlyWhereItLasts) {
    Trouble of_a_line(log, "works again", Trouble::kToldByAnother);
    const auto away_at = [&](std::time_t now) {
        of_a_line.IsAway(StoreAway("away at " + std::to_string(now), "away"), now);
    };
    away_at(1000);
    away_at(1059);
    of_a_line.Is("");
    EXPECT_EQ("", Said());
    for (std::time_t now = 2000; now < 2700; ++now) {
        away_at(now);
    }
    of_a_line.Is("");
    EXPECT_EQ(
        "<3>error: away at 2060; trying again\n<3>error: away at 2660; trying again\n"
        "<6>works again\n",
        Said());
}

}  // namespace
}  // namespace host
