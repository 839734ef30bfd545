// The line driver's texts: printable forms, option texts, the trace function.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "linux/tty.h"

namespace {

int growths_left = -1;  // how often memory can still be had; below 0: without end

}  // namespace

extern "C" {
void* __real_realloc(void* memory, size_t size);

void* __wrap_realloc(void* memory, size_t size) {
    if (growths_left == 0) {
        return nullptr;
    }
    if (growths_left > 0) {
        --growths_left;
    }
    return __real_realloc(memory, size);
}
}

namespace {

std::string Print(const std::string& bytes) {
    return mkprint(bytes.data(), static_cast<int32_t>(bytes.size()));
}

// The first test: nothing has been printed in this process yet.
TEST(PrintableText, EndsBeforeThePieceThatHasNoMemory) {
    growths_left = 0;
    EXPECT_STREQ("", mkprint("abc", 3));
    growths_left = 1;
    EXPECT_EQ(std::string(128, 'x'), Print(std::string(1000, 'x'))) << "full to the last byte";
    EXPECT_EQ(std::string(126, 'x'), Print(std::string(126, 'x') + "\x02y"))
        << "no piece is left out in the middle";
    growths_left = -1;
    EXPECT_STREQ("abc", mkprint("abc", 3));
}

TEST(PrintableText, NamesEveryControlCode) {
    const char* const names[] = {"nul", "soh", "stx", "etx", "eot", "enq", "ack", "bel",
                                 "bs",  "ht",  "lf",  "vt",  "ff",  "cr",  "so",  "si",
                                 "dle", "dc1", "dc2", "dc3", "dc4", "nak", "syn", "etb",
                                 "can", "em",  "sub", "esc", "fs",  "gs",  "rs",  "us"};
    for (int code = 0; code < 32; ++code) {
        const std::string named = "<" + std::string(names[code]) + ">";
        EXPECT_EQ(named, Print(std::string(1, static_cast<char>(code))));
        EXPECT_EQ("<M-" + named + ">", Print(std::string(1, static_cast<char>(code + 128))));
    }
    EXPECT_EQ("<del>", Print("\x7f"));
    EXPECT_EQ("<M-<del>>", Print("\xff"));
}

TEST(PrintableText, ShowsEveryOtherByteAsItIs) {
    for (int code = 32; code < 127; ++code) {
        const std::string shown(1, static_cast<char>(code));
        EXPECT_EQ(shown, Print(shown));
        EXPECT_EQ("<M-" + shown + ">", Print(std::string(1, static_cast<char>(code + 128))));
    }
}

TEST(PrintableText, HighBitGoesAroundTheName) {
    EXPECT_EQ("<M-<stx>>", Print("\x82"));
    EXPECT_EQ("a<stx>b<M-A><cr><lf>", Print("a\x02"
                                            "b\xc1\r\n"));
}

TEST(PrintableText, NothingIsEmpty) {
    EXPECT_STREQ("", mkprint("abc", 0));
    EXPECT_STREQ("", mkprint("abc", -1));
    EXPECT_STREQ("", mkprint(nullptr, 3));
}

TEST(PrintableText, NextCallReusesTheBuffer) {
    const char* const first = mkprint("abc", 3);
    EXPECT_EQ(first, mkprint("x", 1));
    EXPECT_STREQ("x", first);
}

TEST(PrintableText, HoldsEveryLength) {
    // Around each step of its growth, with the longest form at the end.
    for (size_t length = 0; length < 1000; ++length) {
        const std::string plain(length, 'x');
        ASSERT_EQ(plain, Print(plain));
        ASSERT_EQ(plain + "<M-<nul>>", Print(plain + '\x80'));
    }
    EXPECT_EQ(500000U, Print(std::string(100000, '\n')).size() + 100000U);
}

TEST(PrintableText, EndsEarlyWithoutMemory) {
    const std::string bytes(5000000, 'y');  // more than any other test asks for
    growths_left = 0;
    const std::string first = Print(bytes);
    growths_left = 3;
    const std::string second = Print(bytes);
    growths_left = -1;
    EXPECT_EQ(first.size() + 3 * 128, second.size()) << "grows in steps of 128";
    EXPECT_EQ(bytes.substr(0, second.size()), second);
    const std::string more = bytes.substr(0, second.size() + 1);
    EXPECT_EQ(more, Print(more));
}

struct CutCase {
    const char* situation;
    std::string text;
    char separator;
    std::string cut;
    const char* rest;  // null: none
};

TEST(CutText, EndsAtTheFirstSeparator) {
    const CutCase cases[] = {
        {"plain", "ascii,lower", ',', "ascii", "lower"},
        {"blanks behind the separator are skipped", "a, \t b ,c", ',', "a", "b ,c"},
        {"blanks before it are not", "a ,b", ',', "a ", "b"},
        {"nothing in front", ",b", ',', "", "b"},
        {"nothing behind", "a,", ',', "a", ""},
        {"only blanks behind", "a,  ", ',', "a", ""},
        {"no separator", "ascii", ',', "ascii", nullptr},
        {"empty text", "", ',', "", nullptr},
        {"another separator", "timeout=5,x", '=', "timeout", "5,x"},
        {"the end of the text separates nothing", "abc", '\0', "abc", nullptr},
    };
    for (const CutCase& c : cases) {
        SCOPED_TRACE(c.situation);
        std::string text = c.text;
        const char* const rest = skipch(text.data(), c.separator);
        EXPECT_STREQ(c.cut.c_str(), text.c_str());
        EXPECT_STREQ(c.rest, rest);
    }
    EXPECT_EQ(nullptr, skipch(nullptr, ','));
}

TEST(TraceOutput, GoesToStandardOutputFormatted) {
    EXPECT_EQ(1, verbose);
    EXPECT_EQ(&verbose_out, verbout);
    testing::internal::CaptureStdout();
    EXPECT_EQ(9, verbout("[Send] %s", "ab"));
    EXPECT_EQ("[Send] ab", testing::internal::GetCapturedStdout());
}

}  // namespace
