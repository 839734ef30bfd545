// Mode texts: the known cases, and random ones against a second parser that shares no line with the
// first.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <string>

#include "linux/win_serial.h"

namespace {

constexpr int32_t kEarlierError = 77;

// What a mode text makes of a block of 0xee bytes and of an earlier error.
struct Outcome {
    BOOL result = 0;
    int32_t error = 0;
    DCB dcb{};
};

Outcome Build(const std::string& mode) {
    Outcome outcome;
    memset(&outcome.dcb, 0xee, sizeof outcome.dcb);
    win_errno = kEarlierError;
    outcome.result = BuildCommDCB(mode.c_str(), &outcome.dcb);
    outcome.error = GetLastError();
    return outcome;
}

bool IsUntouched(const DCB& dcb) {
    return std::string(reinterpret_cast<const char*>(&dcb), sizeof dcb) ==
           std::string(sizeof dcb, '\xee');
}

DCB Block(DWORD baud, BYTE parity, BYTE data_bits, BYTE stop_bits) {
    DCB dcb;
    memset(&dcb, 0, sizeof dcb);
    dcb.DCBlength = 28;
    dcb.BaudRate = baud;
    dcb.fParity = parity != 0 ? 1 : 0;
    dcb.Parity = parity;
    dcb.ByteSize = data_bits;
    dcb.StopBits = stop_bits;
    return dcb;
}

bool SameBytes(const DCB& a, const DCB& b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

struct GoodMode {
    const char* mode;
    DCB dcb;
};

const GoodMode kGoodModes[] = {
    {"COM1:2400,n,8,1", Block(2400, 0, 8, 0)},
    {"COM1:9600,E,7,2", Block(9600, 2, 7, 2)},
    {"COM1:9600,n,,1", Block(9600, 0, 8, 0)},
    {"COM9:300,o,5,1", Block(300, 1, 5, 0)},
    {"COM2:1200,m,6,2", Block(1200, 3, 6, 2)},
    {"COM2:1200,S,6,2", Block(1200, 4, 6, 2)},
    {":2400,n,8,1", Block(2400, 0, 8, 0)},
    {"COM1:2400,n,8,1,x", Block(2400, 0, 8, 0)},
    {"COM1:2400,n,8,1 and whatever: 9,9", Block(2400, 0, 8, 0)},
    {"COM1:2400 bps , .n , <8> , (1)", Block(2400, 0, 8, 0)},
    {"COM1::2400,none,8,1", Block(2400, 0, 8, 0)},
    {"COM1:123456789,n,8,1", Block(123456789, 0, 8, 0)},
    {"COM1:2147483647,n,8,1", Block(2147483647, 0, 8, 0)},
    {"COM1:99999999999999999999999999,n,8,1", Block(2147483647, 0, 8, 0)},
    {"COM1:02400,n,08,01", Block(2400, 0, 8, 0)},
    {"COM1:2400,n,,,1", Block(2400, 0, 8, 0)},
    // Neighbours of letters and digits are neither.
    {"COM1:/2400:,@[`{n,/8:,/1:", Block(2400, 0, 8, 0)},
};

TEST(ModeText, FillsTheWholeBlock) {
    for (const GoodMode& c : kGoodModes) {
        SCOPED_TRACE(c.mode);
        const Outcome outcome = Build(c.mode);
        EXPECT_EQ(1, outcome.result);
        EXPECT_TRUE(SameBytes(c.dcb, outcome.dcb));
        EXPECT_EQ(kEarlierError, outcome.error);
    }
}

struct BadMode {
    const char* situation;
    const char* mode;
    int32_t error;
};

const BadMode kBadModes[] = {
    {"baud rate below 300", "COM1:200,n,8,1", -12},
    {"baud rate just below 300", "COM1:299,n,8,1", -12},
    {"baud rate is checked before anything behind it", "COM1:299", -12},
    {"data bits above 8", "COM1:9600,n,9,1", -11},
    {"data bits below 5", "COM1:9600,n,4,1", -11},
    {"data bits beyond any number", "COM1:9600,n,4294967304,1", -11},
    {"data bits are checked before anything behind them", "COM1:9600,n,9", -11},
    {"no colon", "2400,n,8,1", kEarlierError},
    {"nothing behind the colon", "COM1:", kEarlierError},
    {"nothing at all", "", kEarlierError},
    {"no digit to the end", "COM1:baud,n", kEarlierError},
    {"ends behind the baud rate", "COM1:9600", kEarlierError},
    {"ends behind the first comma", "COM1:9600,", kEarlierError},
    {"no letter to the end", "COM1:9600,8,1", kEarlierError},
    {"no such parity", "COM1:9600,x,8,1", kEarlierError},
    {"only the first letter counts", "COM1:9600,parity none,8,1", kEarlierError},
    {"the first letter of the alphabet is one", "COM1:9600,a none,8,1", kEarlierError},
    {"the last letter of the alphabet is one", "COM1:9600,z none,8,1", kEarlierError},
    {"so is the first in upper case", "COM1:9600,A none,8,1", kEarlierError},
    {"so is the last in upper case", "COM1:9600,Z none,8,1", kEarlierError},
    {"ends behind the parity", "COM1:9600,n", kEarlierError},
    {"ends where the data bits should be", "COM1:9600,n,", kEarlierError},
    {"no digit for the data bits to the end", "COM1:9600,n,bits", kEarlierError},
    {"ends behind the data bits", "COM1:9600,n,8", kEarlierError},
    {"ends where the stop bits should be", "COM1:9600,n,8,", kEarlierError},
    {"no digit for the stop bits to the end", "COM1:9600,n,8,one", kEarlierError},
    {"empty data bits and nothing behind them", "COM1:9600,n,,", kEarlierError},
    {"three stop bits", "COM1:9600,n,8,3", kEarlierError},
    {"no stop bits", "COM1:9600,n,8,0", kEarlierError},
    {"twelve stop bits", "COM1:9600,n,8,12", kEarlierError},
};

TEST(ModeText, RefusalLeavesTheBlockAlone) {
    for (const BadMode& c : kBadModes) {
        SCOPED_TRACE(c.situation);
        const Outcome outcome = Build(c.mode);
        EXPECT_EQ(0, outcome.result);
        EXPECT_EQ(c.error, outcome.error);
        EXPECT_TRUE(IsUntouched(outcome.dcb));
    }
}

TEST(ModeText, NoTextOrNoBlockIsRefused) {
    DCB dcb{};
    EXPECT_EQ(0, BuildCommDCB(nullptr, &dcb));
    EXPECT_EQ(0, BuildCommDCB("COM1:2400,n,8,1", nullptr));
}

// The second parser: positions in a string, one field after the other.
class Reference {
 public:
    explicit Reference(const std::string& mode) : mode_(mode) {}

    Outcome Parse() {
        Outcome outcome;
        outcome.error = kEarlierError;
        memset(&outcome.dcb, 0xee, sizeof outcome.dcb);
        const size_t colon = mode_.find(':');
        if (colon == std::string::npos || colon + 1 == mode_.size()) {
            return outcome;
        }
        at_ = colon + 1;
        const auto baud = Number();
        if (!baud || *baud < 300) {
            outcome.error = baud ? -12 : kEarlierError;
            return outcome;
        }
        const auto parity = Comma() ? Parity() : std::nullopt;
        if (!parity || !Comma()) {
            return outcome;
        }
        const auto bits = at_ < mode_.size() && mode_[at_] == ',' ? 8 : Number();
        if (!bits || *bits < 5 || *bits > 8) {
            outcome.error = bits ? -11 : kEarlierError;
            return outcome;
        }
        const auto stop = Comma() ? Number() : std::nullopt;
        if (stop && (*stop == 1 || *stop == 2)) {
            outcome.result = 1;
            outcome.dcb = Block(static_cast<DWORD>(*baud), *parity, static_cast<BYTE>(*bits),
                                *stop == 1 ? 0 : 2);
        }
        return outcome;
    }

 private:
    std::optional<int64_t> Number() {
        const size_t begin = mode_.find_first_of("0123456789", at_);
        if (begin == std::string::npos) {
            return std::nullopt;
        }
        at_ = std::min(mode_.find_first_not_of("0123456789", begin), mode_.size());
        std::string digits = mode_.substr(begin, at_ - begin);
        digits.erase(0, digits.find_first_not_of('0'));
        if (digits.size() > 10) {
            return 2147483647;
        }
        return digits.empty() ? 0 : std::min<int64_t>(std::stoll(digits), 2147483647);
    }

    bool Comma() {
        const size_t comma = mode_.find(',', at_);
        at_ = comma + 1;
        return comma != std::string::npos;
    }

    std::optional<BYTE> Parity() {
        const size_t letter =
            mode_.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", at_);
        if (letter == std::string::npos) {
            return std::nullopt;
        }
        at_ = letter;
        const std::map<char, BYTE> letters = {{'n', 0}, {'N', 0}, {'o', 1}, {'O', 1}, {'e', 2},
                                              {'E', 2}, {'m', 3}, {'M', 3}, {'s', 4}, {'S', 4}};
        const auto found = letters.find(mode_[letter]);
        return found == letters.end() ? std::nullopt : std::optional<BYTE>(found->second);
    }

    std::string mode_;
    size_t at_ = 0;
};

// A mode text with some of its fields and separators replaced, doubled or left out.
std::string RandomMode(std::mt19937* random) {
    static const std::string kParts[][8] = {
        {"COM1", "COM9", "", "x", "2400", "tty", "a,b", "\xff"},
        {":", ":", ":", ":", ":", "::", "", ";"},
        {"2400", "300", "299", "9600", "99999999999999999999", "0300", "", " 1200bd"},
        {",", ",", ",", ",", ",", ",,", "", " , "},
        {"n", "E", "o", "m", "S", "x", "none", ""},
        {",", ",", ",", ",", ",", ",", "", ", "},
        {"8", "7", "5", "4", "9", "", "\xe9", "0008"},
        {",", ",", ",", ",", ",", ",,", "", "."},
        {"1", "2", "1", "2", "0", "3", "", "1x"},
    };
    std::string mode;
    for (const auto& choices : kParts) {
        // Mostly the usual, so that every field behind is reached often.
        const auto roll = (*random)() % 12;
        mode += choices[roll < 8 ? roll : (*random)() % 2];
    }
    if ((*random)() % 8 == 0) {
        mode.resize((*random)() % (mode.size() + 1));
    }
    return mode;
}

TEST(ModeText, RandomTextsAreReadAsByASecondParser) {
    const auto seed = std::random_device{}();
    std::cout << "seed " << seed << "\n";
    std::mt19937 random(seed);
    std::map<std::string, int> outcomes;
    for (int i = 0; i < 100000; ++i) {
        const std::string mode = RandomMode(&random);
        const Outcome expected = Reference(mode).Parse();
        const Outcome outcome = Build(mode);
        ASSERT_EQ(expected.result, outcome.result) << mode;
        ASSERT_EQ(expected.error, outcome.error) << mode;
        ASSERT_TRUE(SameBytes(expected.dcb, outcome.dcb)) << mode;
        ++outcomes[outcome.result != 0 ? "good" : std::to_string(outcome.error)];
    }
    EXPECT_GT(outcomes["good"], 1000);
    EXPECT_GT(outcomes["-11"], 1000);
    EXPECT_GT(outcomes["-12"], 1000);
    EXPECT_GT(outcomes[std::to_string(kEarlierError)], 1000);
}

}  // namespace
