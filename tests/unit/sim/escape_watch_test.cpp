// The escape sequence and its guard times.
#include "sim/phone/escape_watch.h"

#include <gtest/gtest.h>

#include <string>

namespace pagersim {
namespace {

using namespace std::chrono_literals;

// Hears all of it, and returns whether that may be an escape.
bool Heard(EscapeWatch& watch, std::string_view bytes, Milliseconds now) {
    watch.TakeData(bytes, now);
    EXPECT_EQ("", bytes) << "all of it is data";
    return watch.Due().has_value();
}

TEST(EscapeWatch, UsualOneIsASecondOfSilenceOnBothSides) {
    EscapeWatch watch((EscapeRules()));
    EXPECT_FALSE(Heard(watch, "data", 0ms));
    EXPECT_TRUE(Heard(watch, "+++", 1020ms));
    EXPECT_FALSE(watch.Completed(2039ms));
    EXPECT_TRUE(watch.Completed(2040ms));
}

TEST(EscapeWatch, ExactlyASecondIsTooShort) {
    EscapeWatch watch((EscapeRules()));
    Heard(watch, "+++", 0ms);
    EXPECT_FALSE(watch.Completed(1000ms)) << "the fiftieth of a second that had begun is none";
    EXPECT_FALSE(Heard(watch, "ATHV1\r", 1019ms));
    EXPECT_FALSE(watch.Completed(5000ms));
    EscapeWatch other((EscapeRules()));
    Heard(other, "data", 0ms);
    EXPECT_FALSE(Heard(other, "+++", 1019ms));
}

TEST(EscapeWatch, SaysWhenToAskAgain) {
    EscapeWatch watch({500ms, false});
    EXPECT_EQ(std::nullopt, watch.Due());
    Heard(watch, "+++", 1000ms);
    EXPECT_EQ(520ms, watch.Due());
    EXPECT_FALSE(watch.Completed(1519ms));
    EXPECT_TRUE(watch.Completed(1520ms));
}

TEST(EscapeWatch, PlusesMayComeOneByOne) {
    EscapeWatch watch({500ms, false});
    EXPECT_FALSE(Heard(watch, "+", 0ms));
    EXPECT_FALSE(Heard(watch, "+", 519ms));
    EXPECT_TRUE(Heard(watch, "+", 1038ms));
    EXPECT_TRUE(watch.Completed(1558ms));
}

TEST(EscapeWatch, ButNotTooSlowly) {
    EscapeWatch watch({500ms, false});
    Heard(watch, "++", 0ms);
    EXPECT_FALSE(Heard(watch, "+", 520ms));
    EXPECT_FALSE(watch.Completed(2000ms));
}

TEST(EscapeWatch, AnythingBehindThemSpoilsIt) {
    EscapeWatch watch({500ms, false});
    Heard(watch, "+++", 0ms);
    EXPECT_FALSE(Heard(watch, "A", 499ms));
    EXPECT_FALSE(watch.Completed(5000ms));
}

TEST(EscapeWatch, FourAreNone) {
    EscapeWatch watch({500ms, false});
    EXPECT_FALSE(Heard(watch, "++++", 0ms));
    EXPECT_FALSE(watch.Completed(5000ms));
}

TEST(EscapeWatch, DataBeforeThemIsAllowedUnlessSilenceIsAsked) {
    EscapeWatch lenient({500ms, false});
    EXPECT_TRUE(Heard(lenient, "\x04\r+++", 0ms));
    EXPECT_TRUE(lenient.Completed(520ms));
    EscapeWatch strict({500ms, true});
    EXPECT_FALSE(Heard(strict, "\x04\r+++", 0ms));
    EXPECT_FALSE(strict.Completed(5000ms));
}

TEST(EscapeWatch, SilenceBeforeIsAsLongAsBehind) {
    EscapeWatch watch({500ms, true});
    Heard(watch, "\x04\r", 0ms);
    EXPECT_FALSE(Heard(watch, "+++", 519ms));
    EXPECT_FALSE(watch.Completed(5000ms));
    EXPECT_TRUE(Heard(watch, "+++", 5000ms));
    EXPECT_TRUE(watch.Completed(5520ms));
}

TEST(EscapeWatch, AFreshOneHasHeardSilence) {
    EscapeWatch watch({500ms, true});
    EXPECT_TRUE(Heard(watch, "+++", 0ms));
    EXPECT_FALSE(watch.Completed(0ms));
}

TEST(EscapeWatch, WithoutAGuardTimeTheThirdPlusEndsTheData) {
    EscapeWatch watch({0ms, true});
    std::string_view bytes = "data+++ATH\r";
    EXPECT_EQ("data+++", watch.TakeData(bytes, 7ms));
    EXPECT_EQ("ATH\r", bytes);
    EXPECT_EQ(0ms, watch.Due());
    EXPECT_TRUE(watch.Completed(7ms));
}

TEST(EscapeWatch, WithoutAGuardTimeThePlusesMayComeAtLongIntervals) {
    EscapeWatch watch({0ms, true});
    Heard(watch, "+", 0ms);
    Heard(watch, "+", 60'000ms);
    EXPECT_TRUE(Heard(watch, "+", 120'000ms));
}

}  // namespace
}  // namespace pagersim
