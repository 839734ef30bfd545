// The fold of an alarm's pages into one state.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tables/pager_fwd_events.h"

namespace {

using States = std::vector<int>;

int Fold(const States& states) {
    ForwardState folded{};
    for (const int state : states) {
        folded = FoldState(folded, static_cast<ForwardState>(state));
    }
    return folded;
}

// The rule in other words: a 2 anywhere wins. Otherwise the first page that has a state decides,
// unless it is a 4 and a 3 comes behind it.
int Rule(const States& states) {
    const auto has = [](auto begin, auto end, int state) {
        return std::find(begin, end, state) != end;
    };
    if (has(states.begin(), states.end(), 2)) {
        return 2;
    }
    const auto first =
        std::find_if(states.begin(), states.end(), [](int state) { return state != 0; });
    if (first == states.end()) {
        return 0;
    }
    return *first == 4 && has(first, states.end(), 3) ? 3 : *first;
}

std::string Shown(const States& states) {
    std::string shown;
    for (const int state : states) {
        shown += (shown.empty() ? "" : ", ") + std::to_string(state);
    }
    return "states " + shown;
}

// Every sequence of up to `longest` states, the given ones first.
template <class Check>
void ForAllSequences(const States& begun, size_t longest, const Check& check) {
    check(begun);
    if (begun.size() == longest) {
        return;
    }
    for (const int state : {-2147483647 - 1, -1, 0, 1, 2, 3, 4, 5, 1000000}) {
        States longer = begun;
        longer.push_back(state);
        ForAllSequences(longer, longest, check);
    }
}

TEST(Fold, AllSequencesUpToLengthFourFollowTheRule) {
    size_t count = 0;
    ForAllSequences({}, 4, [&](const States& states) {
        ++count;
        EXPECT_EQ(Rule(states), Fold(states)) << Shown(states);
    });
    EXPECT_EQ(1U + 9U + 81U + 729U + 6561U, count);
}

TEST(Fold, OffLimitOutranksDone) {
    EXPECT_EQ(3, Fold({4, 3, 4}));
}

TEST(Fold, BeingPagedWinsWhereverItStands) {
    EXPECT_EQ(2, Fold({3, 2}));
    EXPECT_EQ(2, Fold({2, 3}));
    EXPECT_EQ(2, Fold({1, 4, 2}));
}

TEST(Fold, KeepsTheAlarmAcknowledgedWhenTheFirstPageIs) {
    EXPECT_EQ(1, Fold({1, 3}));
    EXPECT_EQ(1, Fold({1, 4}));
}

TEST(Fold, KeepsTheAsymmetryOfTheFirstPage) {
    EXPECT_EQ(4, Fold({4, 1})) << "done stays done behind it";
    EXPECT_EQ(3, Fold({3, 1})) << "off limit too";
    EXPECT_EQ(3, Fold({3, 4}));
}

TEST(Fold, OnePageIsItsOwnState) {
    EXPECT_EQ(4, Fold({4}));
    EXPECT_EQ(0, Fold({}));
}

}  // namespace
