// The printable form of what goes out on a line, held against the way it came about: a text area in
// which each byte that is not shown as itself is printed at the current place, whatever its length,
// and the place moves on by four.

#include "modem/printable_form.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

std::string AsTheAreaShowsIt(const std::string& bytes) {
    std::vector<char> area(bytes.size() * 4 + 16);
    size_t place = 0;
    for (const char c : bytes) {
        // As on the platform. NOLINTNEXTLINE(bugprone-signed-char-misuse)
        const int value = static_cast<signed char>(c);
        if (value > 32) {
            area[place++] = c;
        } else {
            sprintf(&area[place], "<%2x>", static_cast<unsigned>(value));
            place += 4;
        }
    }
    area[place] = '\0';
    return area.data();
}

std::string Shown(const std::string& bytes) {
    return PrintableForm(bytes.data(), bytes.size());
}

TEST(PrintableForm, OfCommandsReadsAsTheyAre) {
    EXPECT_EQ("ATDT0,5550100< d>", Shown("ATDT0,5550100\r"));
    EXPECT_EQ("ATHV1< d>< a>", Shown("ATHV1\r\n"));
    EXPECT_EQ("< d>< 0>", Shown(std::string("\r\0", 2)));
    EXPECT_EQ("< 2>Pump<20>3<1b>", Shown("\x02Pump 3\x1B"));
    EXPECT_EQ("", Shown(""));
}

TEST(PrintableForm, KeepsFourCharactersOfABytesFrom128Up) {
    EXPECT_EQ("<fffA", Shown("\x82"
                             "A"));
    EXPECT_EQ("<fff", Shown("\x82"));
    EXPECT_EQ("<fff<fff< d>", Shown("\x80\xFF\r"));
}

TEST(PrintableForm, OfEachByteAndEachPairOfBytes) {
    for (int first = 0; first < 256; ++first) {
        const std::string one(1, static_cast<char>(first));
        EXPECT_EQ(AsTheAreaShowsIt(one), Shown(one)) << "byte " << first;
        for (int second = 0; second < 256; ++second) {
            const std::string two = one + static_cast<char>(second);
            ASSERT_EQ(AsTheAreaShowsIt(two), Shown(two)) << "bytes " << first << ", " << second;
        }
    }
}

TEST(PrintableForm, OfTextsOfAnyLength) {
    constexpr unsigned kSeed = 20010108;
    std::mt19937 random(kSeed);
    for (const size_t length : {3U, 10U, 499U, 500U, 501U, 1999U, 2000U, 2001U, 65536U}) {
        std::string bytes(length, ' ');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() % 256);
        }
        EXPECT_EQ(AsTheAreaShowsIt(bytes), Shown(bytes)) << length << " bytes, seed " << kSeed;
    }
}

}  // namespace
