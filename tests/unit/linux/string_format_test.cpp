// CString::Format: what is printed, and how much is reserved for it before that.

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cfloat>
#include <cstdarg>
#include <cstring>
#include <string>

#include "host/text_helpers.h"
#include "linux/XString.h"
#include "tests/unit/linux/assertions.h"
#include "tests/unit/linux/string_header.h"

namespace {

// Unlike Format itself, takes formats that the compiler would refuse.
CString Printed(const char* format, ...) {
    va_list args;
    va_start(args, format);
    CString text;
    text.FormatV(format, args);
    va_end(args);
    return text;
}

template <class... Args>
int Reserved(const char* format, Args... args) {
    return Printed(format, args...).GetAllocLength();
}

// Memory behind whose end nothing may be read.
class LastOfItsMemory {
 public:
    LastOfItsMemory()
        : m_page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          m_begin(static_cast<char*>(mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        mprotect(End(), m_page, PROT_NONE);
    }
    ~LastOfItsMemory() { munmap(m_begin, 2 * m_page); }
    LastOfItsMemory(const LastOfItsMemory&) = delete;
    LastOfItsMemory& operator=(const LastOfItsMemory&) = delete;

    char* End() const { return m_begin + m_page; }

 private:
    size_t m_page;
    char* m_begin;
};

// ---- The text

TEST(Format, PrintsAsTheCLibraryDoes) {
    CString text("before");
    text.Format("%s|%5d|%-4x|%c|%.2f|100%%", "abc", 7, 255U, 'y', 1.5);
    EXPECT_STREQ("abc|    7|ff  |y|1.50|100%", text);
    EXPECT_EQ(26, text.GetLength());
}

TEST(Format, PrintsASingleCharacter) {
    EXPECT_STREQ("x", Printed("x"));
}

TEST(Format, OfNoFormatIsEmpty) {
    CString text("before");
    text.Format(kNoText);
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "before";
    EXPECT_TRUE(IsSharedEmptyText(Printed("")));
}

TEST(Format, LeavesTheOthersThatShareTheBuffer) {
    CString text("before");
    const CString copy(text);
    text.Format("%d", 1);
    EXPECT_STREQ("before", copy);
    EXPECT_STREQ("1", text);
}

TEST(Format, TakesItsOwnTextAsAnArgument) {
    CString text("abc");
    text.Format("<%s|%s>", Characters(text), Characters(text) + 1);
    EXPECT_STREQ("<abc|bc>", text);
}

TEST(Format, FormatsOnceOnly) {
    CString text;
    text.Format("%s L:%%d %%s", "100%d");
    EXPECT_STREQ("100%d L:%d %s", text);
}

TEST(Format, TakesEachArgumentInItsOwnSize) {
    EXPECT_STREQ("1 -2 3 x", Printed("%hd %ld %lld %s", 1, -2L, 3LL, "x"));
    EXPECT_STREQ("4 5 x", Printed("%Ld %hhu %s", 4LL, 5, "x"));
    EXPECT_STREQ("1.5 2.5 x", Printed("%.1f %.1Lf %s", 1.5, 2.5L, "x"));
    EXPECT_STREQ("1.5 2.5 2.5 x", Printed("%g %Lg %llG %s", 1.5, 2.5L, 2.5L, "x"));
    EXPECT_STREQ("    7 00008 x", Printed("%*d %.*d %s", 5, 7, 5, 8, "x"));
    int written = 0;
    EXPECT_STREQ("ab x", Printed("ab%n %s", &written, "x"));
    EXPECT_EQ(2, written);
    EXPECT_STREQ("y x", Printed("%c %s", 'y', "x"));
    EXPECT_STREQ("0x10 x", Printed("%p %s", reinterpret_cast<void*>(16), "x"));
}

TEST(Format, TakesWideTexts) {
    EXPECT_STREQ("abc", Printed("%ls", L"abc"));
    EXPECT_STREQ("abc", Printed("%S", L"abc"));
    EXPECT_STREQ("ab", Printed("%.2ls", L"abc"));
    EXPECT_STREQ("y", Printed("%lc", L'y'));
    EXPECT_STREQ("y", Printed("%C", L'y'));
}

TEST(Format, OfWhatCannotBePrintedIsEmpty) {
    EXPECT_TRUE(IsSharedEmptyText(Printed("abc%ls", L"\x20AC")));  // no such byte in the C locale
}

TEST(Format, EndsAtANul) {
    const CString text = Printed("ab%cd", 0);
    EXPECT_STREQ("ab", text);
    EXPECT_EQ(2, text.GetLength());
}

TEST(Format, ReadsNoMoreOfATextThanItsPrecision) {
    const LastOfItsMemory memory;
    const char* unterminated = memory.End() - 3;
    std::memcpy(memory.End() - 3, "abc", 3);
    EXPECT_STREQ("abc", Printed("%.3s", unterminated));
    EXPECT_STREQ("ab", Printed("%.*s", 2, unterminated));
}

TEST(Format, ThatNeedsMoreThanItsReserveGrows) {
    const CString wide = Printed("%400f", 1.0);
    EXPECT_EQ(std::string(392, ' ') + "1.000000", Characters(wide));
    EXPECT_EQ(400, wide.GetAllocLength());

    const CString least = Printed("%f", -DBL_MAX);
    EXPECT_EQ(1 + 309 + 7, least.GetLength());
    EXPECT_EQ(317, least.GetAllocLength());

    const CString large = Printed("%Lf", LDBL_MAX);
    EXPECT_EQ(4933 + 7, large.GetLength());
    EXPECT_EQ(0, large.Find("1189731495357231765"));
}

TEST(Format, FillsItsReserveToTheLastCharacter) {
    const CString text = Printed("%s-%s", "abc", "defg");
    EXPECT_STREQ("abc-defg", text);
    EXPECT_EQ(8, text.GetAllocLength());
}

TEST(Format, TakesTextsInShiftJisByteByByte) {
    host::UseShiftJis(true);
    const CString text = Printed("\x83\x7C%s\x83", "\x83\x50");
    host::UseShiftJis(false);
    EXPECT_STREQ("\x83\x7C\x83\x50\x83", text);
}

// ---- The reserve

TEST(FormatReserve, CountsOrdinaryCharacters) {
    EXPECT_EQ(3, Reserved("abc"));
    EXPECT_EQ(1, Reserved("%%"));
    EXPECT_EQ(3, Reserved("a%%b"));
}

TEST(FormatReserve, OfACharacterIsTwo) {
    EXPECT_EQ(2, Reserved("%c", 'x'));
    EXPECT_EQ(2, Reserved("%C", L'x'));
    EXPECT_EQ(1, Reserved("%.1c", 'x'));
    EXPECT_EQ(5, Reserved("%5c", 'x'));
}

TEST(FormatReserve, OfATextIsItsLengthButAtLeastOne) {
    EXPECT_EQ(3, Reserved("%s", "abc"));
    EXPECT_EQ(3, Reserved("%S", L"abc"));
    EXPECT_EQ(2, Reserved("x%s", ""));
}

TEST(FormatReserve, OfANullTextIsSix) {
    EXPECT_EQ(6, Reserved("%s", kNoText));
    EXPECT_STREQ("(null)", Printed("%s", kNoText));
    EXPECT_EQ(3, Reserved("x%.2s", kNoText));
    EXPECT_EQ(8, Reserved("%8s", kNoText));
}

TEST(FormatReserve, OfATextIsCutToThePrecisionThenRaisedToTheWidth) {
    EXPECT_EQ(2, Reserved("%.2s", "abc"));
    EXPECT_EQ(3, Reserved("%.5s", "abc"));
    EXPECT_EQ(3, Reserved("%2s", "abc"));
    EXPECT_EQ(7, Reserved("%7s", "abc"));
    EXPECT_EQ(5, Reserved("%5.2s", "abc"));
    EXPECT_EQ(1, Reserved("x%.0s", "abc"));
    EXPECT_EQ(1, Reserved("x%.s", "abc"));
    EXPECT_EQ(12, Reserved("%12.2s", "abc"));
}

TEST(FormatReserve, TakesWidthAndPrecisionFromTheArguments) {
    EXPECT_EQ(7, Reserved("%*s", 7, "abc"));
    EXPECT_EQ(2, Reserved("%.*s", 2, "abc"));
    EXPECT_EQ(5, Reserved("%*.*s", 5, 2, "abc"));
    EXPECT_EQ(50, Reserved("%*.*d", 40, 10, 1));
}

TEST(FormatReserve, OfAnIntegerIsWidthAndPrecisionButAtLeast32) {
    for (const char* format : {"%d", "%i", "%u", "%x", "%X", "%o", "%20.12d"}) {
        EXPECT_EQ(32, Reserved(format, 1)) << format;
    }
    for (const char* format : {"%40d", "%40i", "%40u", "%30.10x", "%30.10X", "%30.10o"}) {
        EXPECT_EQ(40, Reserved(format, 1)) << format;
    }
    EXPECT_EQ(33, Reserved("%20.13d", 1));
    EXPECT_EQ(32, Reserved("%p", &kNoText));
    EXPECT_EQ(40, Reserved("%40p", &kNoText));
    EXPECT_EQ(40, Reserved("%30.10p", &kNoText));
}

TEST(FormatReserve, SkipsFlagsButAddsTwoForTheAlternateForm) {
    EXPECT_EQ(32, Reserved("%-+0 d", 1));
    EXPECT_EQ(40, Reserved("%-040d", 1));
    EXPECT_EQ(34, Reserved("%#x", 1));
    EXPECT_EQ(34, Reserved("%-#x", 1));
    EXPECT_EQ(42, Reserved("%#-40x", 1));
}

TEST(FormatReserve, SkipsSizePrefixes) {
    EXPECT_EQ(32, Reserved("%hd", 1));
    EXPECT_EQ(32, Reserved("%ld", 1L));
    EXPECT_EQ(32, Reserved("%lld", 1LL));
    EXPECT_EQ(32, Reserved("%Ld", 1LL));
    EXPECT_EQ(32, Reserved("%Nd", 1));
    EXPECT_EQ(32, Reserved("%Fd", 1.0));
    EXPECT_EQ(2, Reserved("%lc", L'x'));
    EXPECT_EQ(3, Reserved("%hs", "abc"));
}

TEST(FormatReserve, OfAFloatIsWidthAndPrecisionButAtLeast128) {
    for (const char* format : {"%e", "%g", "%G", "%100.28e"}) {
        EXPECT_EQ(128, Reserved(format, 1.0)) << format;
    }
    for (const char* format : {"%200e", "%180.20g", "%180.20G"}) {
        EXPECT_EQ(200, Reserved(format, 1.0)) << format;
    }
    EXPECT_EQ(128, Reserved("%Le", 1.0L));
}

TEST(FormatReserve, OfAFixedPointNumberIs312AndThePrecision) {
    EXPECT_EQ(312, Reserved("%f", 1.0));
    EXPECT_EQ(332, Reserved("%.20f", 1.0));
    EXPECT_EQ(332, Reserved("%300.20f", 1.0));
    EXPECT_EQ(312, Reserved("%Lf", 1.0L));
}

TEST(FormatReserve, OfTheCountWrittenSoFarIsNothing) {
    int written = 0;
    EXPECT_EQ(2, Reserved("ab%n", &written));
    EXPECT_EQ(2, written);
}

TEST(FormatReserve, IsTheSumOverTheFormat) {
    EXPECT_EQ(5 + 1 + 32, Reserved("%5.2s|%d", "abc", 7));
    EXPECT_EQ(3 + 32 + 1 + 128, Reserved("no.%d/%e", 7, 1.0));
}

// The text behind shows whether just the one argument was taken, of the right size.
TEST(FormatReserve, TakesEachArgumentInItsOwnSize) {
    EXPECT_EQ(32 + 3, Reserved("%d%s", 1, "abc"));
    EXPECT_EQ(32 + 3, Reserved("%hd%s", 1, "abc"));
    EXPECT_EQ(32 + 3, Reserved("%ld%s", 1L, "abc"));
    EXPECT_EQ(32 + 3, Reserved("%lld%s", 1LL, "abc"));
    EXPECT_EQ(32 + 3, Reserved("%p%s", &kNoText, "abc"));
    EXPECT_EQ(128 + 3, Reserved("%e%s", 1.5, "abc"));
    EXPECT_EQ(128 + 3, Reserved("%Le%s", 1.5L, "abc"));
    EXPECT_EQ(312 + 3 + 2, Reserved("%f%s%s", 1.5, "abc", "de"));
}

// The number behind has room to spare, which would show.
TEST(FormatReserve, OfAWideTextIsItsLength) {
    EXPECT_EQ(3 + 32, Reserved("%ls%d", L"abc", 1));
    EXPECT_EQ(3 + 32, Reserved("%S%d", L"abc", 1));
    EXPECT_EQ(3 + 6 + 32, Reserved("%ls%s%d", L"abc", "abcdef", 1)) << "and the next is not wide";
    EXPECT_EQ(6 + 32, Reserved("%hs%d", "abcdef", 1));
}

TEST(FormatDeathTest, RefusesOtherConversions) {
    for (const char* format : {"%E", "%a", "%A", "%m", "%zu", "%q", "%1$s", "%5%", "%", "%5", "%.",
                               "%F", "%l", "ab%-"}) {
        EXPECT_ASSERTION(Printed(format, 1, 1), "./XString", "0") << format;
    }
}

TEST(FormatDeathTest, RefusesANegativeWidthOrPrecision) {
    EXPECT_ASSERTION(Printed("%*d", -1, 1), "./XString", "nWidth >= 0");
    EXPECT_ASSERTION(Printed("%.*d", -1, 1), "./XString", "nPrecision >= 0");
}

TEST(FormatDeathTest, RefusesATextThatNoBufferHolds) {
    EXPECT_ASSERTION(Printed("%2147483647d", 1), "./XString", "nLength <= kMostCharacters");
    EXPECT_ASSERTION(Printed("%99999999999999999999s", "x"), "./XString",
                     "nLength <= kMostCharacters");
    EXPECT_ASSERTION(Printed("%.2147483647f%.2147483647f", 1.0, 1.0), "./XString",
                     "nLength <= kMostCharacters");
}

}  // namespace
