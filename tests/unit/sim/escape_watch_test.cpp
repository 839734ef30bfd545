// The escape sequence and its guard times.
#include "sim/phone/escape_watch.h"

#include <gtest/gtest.h>

namespace pagersim {
namespace {

using namespace std::chrono_literals;

TEST(EscapeWatch, ThreePlusesAndSilence) {
    EscapeWatch watch({500ms, false});
    EXPECT_TRUE(watch.Heard("+++", 1000ms));
    EXPECT_FALSE(watch.Completed(1499ms));
    EXPECT_TRUE(watch.Completed(1500ms));
}

TEST(EscapeWatch, PlusesMayComeOneByOne) {
    EscapeWatch watch({500ms, false});
    EXPECT_FALSE(watch.Heard("+", 0ms));
    EXPECT_FALSE(watch.Heard("+", 499ms));
    EXPECT_TRUE(watch.Heard("+", 998ms));
    EXPECT_TRUE(watch.Completed(1498ms));
}

TEST(EscapeWatch, ButNotTooSlowly) {
    EscapeWatch watch({500ms, false});
    watch.Heard("++", 0ms);
    EXPECT_FALSE(watch.Heard("+", 500ms));
    EXPECT_FALSE(watch.Completed(2000ms));
}

TEST(EscapeWatch, AnythingBehindThemSpoilsIt) {
    EscapeWatch watch({500ms, false});
    watch.Heard("+++", 0ms);
    EXPECT_FALSE(watch.Heard("A", 499ms));
    EXPECT_FALSE(watch.Completed(5000ms));
}

TEST(EscapeWatch, FourAreNone) {
    EscapeWatch watch({500ms, false});
    EXPECT_FALSE(watch.Heard("++++", 0ms));
    EXPECT_FALSE(watch.Completed(5000ms));
}

TEST(EscapeWatch, DataBeforeThemIsAllowedUnlessSilenceIsAsked) {
    EscapeWatch lenient({500ms, false});
    EXPECT_TRUE(lenient.Heard("\x04\r+++", 0ms));
    EXPECT_TRUE(lenient.Completed(500ms));
    EscapeWatch strict({500ms, true});
    EXPECT_FALSE(strict.Heard("\x04\r+++", 0ms));
    EXPECT_FALSE(strict.Completed(500ms));
}

TEST(EscapeWatch, SilenceBeforeIsAsLongAsBehind) {
    EscapeWatch watch({500ms, true});
    watch.Heard("\x04\r", 0ms);
    EXPECT_FALSE(watch.Heard("+++", 499ms));
    EXPECT_FALSE(watch.Completed(5000ms));
    EXPECT_TRUE(watch.Heard("+++", 5000ms));
    EXPECT_TRUE(watch.Completed(5500ms));
}

TEST(EscapeWatch, AFreshOneHasHeardSilence) {
    EXPECT_TRUE(EscapeWatch({500ms, true}).Heard("+++", 0ms));
    EXPECT_FALSE(EscapeWatch({500ms, true}).Completed(0ms));
}

}  // namespace
}  // namespace pagersim
