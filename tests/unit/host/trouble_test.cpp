// Troubles that may last, as an operator is told of them.
#include "host/process/trouble.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace host {
namespace {

using ::testing::ElementsAre;

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
    trouble.Is("", 1000);
    EXPECT_EQ("", Said());
}

TEST_F(ATrouble, IsToldOnceHoweverLongItLasts) {
    for (std::time_t now = 0; now < 1000; ++now) {
        trouble.Is("no room", now);
    }
    EXPECT_EQ("<3>error: no room; trying again\n", Said());
}

TEST_F(ATrouble, IsToldAgainOnlyWhereItsReasonIsANewOne) {
    for (const char* why : {"no room", "locked", "no room", "locked"}) {
        trouble.Is(why, 1000);
    }
    EXPECT_EQ("<3>error: no room; trying again\n<3>error: locked; trying again\n", Said());
}

TEST_F(ATrouble, IsToldToBeOverOnceAndToldAnewWhenItComesBack) {
    trouble.Is("no room", 1000);
    trouble.Is("", 1001);
    trouble.Is("", 1002);
    trouble.Is("no room", 1061);
    EXPECT_EQ("<3>error: no room; trying again\n<6>works again\n<3>error: no room; trying again\n",
              Said());
}

// As reads of a dying disk do.
TEST_F(ATrouble, ThatComesAndGoesIsToldEverMoreSeldom) {
    std::vector<std::time_t> told;
    const auto come_and_go = [&](std::time_t from, std::time_t to) {
        for (std::time_t now = from; now < to; ++now) {
            trouble.Is(now % 2 == 0 ? "no read" : "", now);
            const std::string said = Said();
            if (said == "<3>error: no read; trying again\n") {
                told.push_back(now - from);
            } else if (!said.empty()) {
                EXPECT_EQ("<6>works again\n", said);
                EXPECT_EQ(now - from, told.back() + 1);
            }
        }
    };
    come_and_go(1000, 2000);
    EXPECT_THAT(told, ElementsAre(0, 62, 184, 426, 908));
    told.clear();
    come_and_go(10'000, 10'100);
    EXPECT_THAT(told, ElementsAre(0, 62)) << "after a long rest as at first";
}

TEST_F(ATrouble, ThatIsBackSoonIsToldWhenItLasts) {
    trouble.Is("no room", 1000);
    trouble.Is("", 1001);
    Said();
    for (std::time_t now = 1005; now < 1015; ++now) {
        trouble.Is("no room", now);
    }
    EXPECT_EQ("", Said());
    trouble.Is("no room", 1015);
    EXPECT_EQ("<3>error: no room; trying again\n", Said());
}

TEST_F(ATrouble, IsToldThoughTheClockIsSetBackBehindItsEnd) {
    trouble.Is("no room", 9000);
    trouble.Is("", 9001);
    Said();
    trouble.Is("no room", 1000);
    EXPECT_EQ("<3>error: no room; trying again\n", Said());
}

TEST_F(ATrouble, WhoseReasonIsEverAnotherIsToldAFewTimes) {
    for (int look = 0; look < 1000; ++look) {
        trouble.Is("row " + std::to_string(look), 1000);
    }
    const std::string said = Said();
    EXPECT_EQ(Trouble::kMostReasons, std::count(said.begin(), said.end(), '\n'));
    trouble.Is("", 1001);
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
    trouble.Is("", 1125);
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
    of_a_line.Is("", 1060);
    EXPECT_EQ("", Said());
    for (std::time_t now = 2000; now < 2700; ++now) {
        away_at(now);
    }
    of_a_line.Is("", 2700);
    EXPECT_EQ(
        "<3>error: away at 2060; trying again\n<3>error: away at 2660; trying again\n"
        "<6>works again\n",
        Said());
}

}  // namespace
}  // namespace host
