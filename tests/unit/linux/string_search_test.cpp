// CString: searching and cutting.

#include <gtest/gtest.h>

#include <climits>

#include "linux/XString.h"
#include "tests/unit/linux/assertions.h"
#include "tests/unit/linux/string_header.h"

namespace {

class TextWithPart : public CString {
 public:
    using CString::CString;
    using CString::Part;
};

TEST(FindCharacter, GivesTheFirstFromTheStartOn) {
    const CString text("abcabc");
    EXPECT_EQ(1, text.Find('b'));
    EXPECT_EQ(1, text.Find('b', 1));
    EXPECT_EQ(4, text.Find('b', 2));
    EXPECT_EQ(-1, text.Find('b', 5));
    EXPECT_EQ(-1, text.Find('x'));
}

TEST(FindCharacter, FindsNothingAtOrBeyondTheEnd) {
    const CString text("abcdex");
    EXPECT_EQ(5, text.Find('x', 5));
    EXPECT_EQ(-1, text.Find('x', 6));
    EXPECT_EQ(-1, text.Find('x', 7));
    EXPECT_EQ(-1, text.Find('\0', 6));
    EXPECT_EQ(-1, CString().Find('x'));
    EXPECT_EQ(-1, CString().Find('\0'));
}

TEST(FindCharacter, FindsTheTerminatorFromWithinTheText) {
    EXPECT_EQ(3, CString("abc").Find('\0'));
    EXPECT_EQ(1, CString("a\0c", 3).Find('\0'));
}

TEST(FindCharacter, StartsAtTheBeginningForANegativeStart) {
    EXPECT_EQ(0, CString("abc").Find('a', -1));
    EXPECT_EQ(0, CString("abc").Find('a', INT_MIN));
}

TEST(FindCharacter, SeesTheUpperHalfOfTheCharacters) {
    EXPECT_EQ(2, CString("ab\xE9").Find('\xE9'));
    EXPECT_EQ(2, CString("ab\xFF").ReverseFind('\xFF'));
    EXPECT_EQ(2, CString("ab\xFF").FindOneOf("\xFF"));
}

TEST(FindText, GivesTheFirstFromTheStartOn) {
    const CString text("abcabc");
    EXPECT_EQ(1, text.Find("bc"));
    EXPECT_EQ(4, text.Find("bc", 2));
    EXPECT_EQ(-1, text.Find("bc", 5));
    EXPECT_EQ(-1, text.Find("cb"));
    EXPECT_EQ(0, text.Find("abcabc"));
    EXPECT_EQ(-1, text.Find("abcabcd"));
    EXPECT_EQ(0, text.Find("a", -1));
}

TEST(FindText, FindsTheEmptyTextUpToTheEnd) {
    const CString text("abcdef");
    EXPECT_EQ(0, text.Find(""));
    EXPECT_EQ(6, text.Find("", 6));
    EXPECT_EQ(-1, text.Find("", 7));
    EXPECT_EQ(2, text.Find(kNoText, 2));
    EXPECT_EQ(-1, text.Find("a", 6));
    EXPECT_EQ(0, CString().Find(""));
}

TEST(FindText, SeesNothingBehindANul) {
    EXPECT_EQ(-1, CString("a\0bc", 4).Find("bc"));
    EXPECT_EQ(-1, CString("a\0bc", 4).Find('c'));
    EXPECT_EQ(2, CString("a\0bc", 4).Find("bc", 2));
}

TEST(ReverseFind, GivesTheLast) {
    EXPECT_EQ(4, CString("abcabc").ReverseFind('b'));
    EXPECT_EQ(0, CString("abc").ReverseFind('a'));
    EXPECT_EQ(-1, CString("abc").ReverseFind('x'));
    EXPECT_EQ(-1, CString().ReverseFind('x'));
}

TEST(FindOneOf, KeepsToTheOrderOfTheSet) {
    const CString text("abcdef");
    EXPECT_EQ(4, text.FindOneOf("eb"));  // not 1, the leftmost
    EXPECT_EQ(1, text.FindOneOf("be"));
    EXPECT_EQ(3, text.FindOneOf("xyzda"));
    EXPECT_EQ(1, CString("abcabc").FindOneOf("b"));
    EXPECT_EQ(-1, text.FindOneOf("xyz"));
    EXPECT_EQ(-1, text.FindOneOf(""));
    EXPECT_EQ(-1, text.FindOneOf(kNoText));
    EXPECT_EQ(-1, CString().FindOneOf("a"));
}

TEST(Mid, GivesThePart) {
    const CString text("abcdef");
    EXPECT_STREQ("cd", text.Mid(2, 2));
    EXPECT_STREQ("cdef", text.Mid(2));
    EXPECT_STREQ("", text.Mid(2, 0));
    EXPECT_EQ(2, text.Mid(2, 2).GetAllocLength());
    EXPECT_STREQ("abcdef", text);
}

TEST(Mid, CutsTheCountToWhatRemains) {
    const CString text("abcdef");
    EXPECT_STREQ("ef", text.Mid(4, 3));
    EXPECT_STREQ("ef", text.Mid(4, INT_MAX));
    EXPECT_STREQ("", text.Mid(6, 1));
    EXPECT_STREQ("", text.Mid(7, 1));
    EXPECT_STREQ("", text.Mid(7));
    EXPECT_STREQ("", text.Mid(INT_MAX, INT_MAX));
    EXPECT_TRUE(IsSharedEmptyText(text.Mid(7)));
}

TEST(Mid, TakesNegativeNumbersForZero) {
    const CString text("abcdef");
    EXPECT_STREQ("ab", text.Mid(-1, 2));
    EXPECT_STREQ("", text.Mid(1, -1));
    EXPECT_STREQ("abcdef", text.Mid(-1));
    EXPECT_STREQ("abcdef", text.Mid(INT_MIN));
}

TEST(Mid, OfTheWholeSharesTheBuffer) {
    const CString text("abcdef");
    EXPECT_TRUE(Share(text, text.Mid(0)));
    EXPECT_TRUE(Share(text, text.Mid(0, 6)));
    EXPECT_TRUE(Share(text, text.Mid(-3, 100)));
    EXPECT_FALSE(Share(text, text.Mid(0, 5)));
}

TEST(Mid, OfTheWholeOfALockedBufferDoesNotShare) {
    CString text("abc");
    text.LockBuffer();
    EXPECT_FALSE(Share(text, text.Mid(0)));
    EXPECT_STREQ("abc", text.Mid(0));
}

TEST(MidDeathTest, NeverReadsBeyondTheText) {
    const TextWithPart text("abc");
    EXPECT_ASSERTION(text.Part(1, 3), "./XString", "nFirst + nCount <= GetData()->nDataLength");
    EXPECT_ASSERTION(text.Part(-1, 1), "./XString", "nFirst >= 0");
}

TEST(Left, GivesTheBeginning) {
    const CString text("abcdef");
    EXPECT_STREQ("ab", text.Left(2));
    EXPECT_STREQ("", text.Left(0));
    EXPECT_STREQ("", text.Left(-1));
    EXPECT_STREQ("abcde", text.Left(5));
    EXPECT_EQ(2, text.Left(2).GetAllocLength());
}

TEST(Left, OfTheWholeSharesTheBuffer) {
    const CString text("abcdef");
    EXPECT_TRUE(Share(text, text.Left(6)));
    EXPECT_TRUE(Share(text, text.Left(INT_MAX)));
}

TEST(Right, GivesTheEnd) {
    const CString text("abcdef");
    EXPECT_STREQ("ef", text.Right(2));
    EXPECT_STREQ("", text.Right(0));
    EXPECT_STREQ("", text.Right(-1));
    EXPECT_STREQ("bcdef", text.Right(5));
}

TEST(Right, OfTheWholeSharesTheBuffer) {
    const CString text("abcdef");
    EXPECT_TRUE(Share(text, text.Right(6)));
    EXPECT_TRUE(Share(text, text.Right(INT_MAX)));
}

}  // namespace
