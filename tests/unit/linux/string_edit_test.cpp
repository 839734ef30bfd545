// CString: changes within a text.

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "linux/XString.h"
#include "tests/unit/linux/assertions.h"
#include "tests/unit/linux/string_header.h"

namespace {

std::string Whole(const CString& text) {
    return std::string(text, static_cast<size_t>(text.GetLength()));
}

// ---- Insert

TEST(Insert, PutsCharactersBeforeTheIndex) {
    CString text("abef");
    EXPECT_EQ(6, text.Insert(2, "cd"));
    EXPECT_STREQ("abcdef", text);
    EXPECT_EQ(7, text.Insert(0, 'X'));
    EXPECT_STREQ("Xabcdef", text);
}

TEST(Insert, ClampsTheIndexToTheText) {
    CString text("bc");
    EXPECT_EQ(3, text.Insert(-5, 'a'));
    EXPECT_EQ(4, text.Insert(100, 'd'));
    EXPECT_EQ(6, text.Insert(INT_MAX, "ef"));
    EXPECT_EQ(7, text.Insert(INT_MIN, "_"));
    EXPECT_STREQ("_abcdef", text);
}

// The buffer is longer than the text; what stands behind the text would move under the copying.
TEST(Insert, TakesWhatStandsBehindTheTextInItsBuffer) {
    CString text;
    char* const buffer = text.GetBuffer(40);
    std::strcpy(buffer, "abcdef");
    text.ReleaseBuffer();
    std::strcpy(buffer + 8, "XYZ");
    EXPECT_EQ(9, text.Insert(0, buffer + 8));
    EXPECT_STREQ("XYZabcdef", text);

    std::strcpy(buffer + 10, "123456");
    text += buffer + 10;
    EXPECT_STREQ("XYZabcdef123456", text);
}

TEST(Insert, GrowsToExactlyTheNewLength) {
    CString text("ad");
    text.Insert(1, "bc");
    EXPECT_EQ(4, text.GetAllocLength());
    text.Insert(4, 'e');
    EXPECT_EQ(5, text.GetAllocLength());
}

TEST(Insert, StaysInPlaceWhereThereIsRoom) {
    CString text("ad");
    const char* before = text.GetBuffer(10);
    EXPECT_EQ(4, text.Insert(1, "bc"));
    EXPECT_STREQ("abcd", text);
    EXPECT_EQ(before, Characters(text));
}

TEST(Insert, OfNothingChangesNothing) {
    const CString original("abc");
    CString text(original);
    EXPECT_EQ(3, text.Insert(1, ""));
    EXPECT_EQ(3, text.Insert(1, kNoText));
    EXPECT_TRUE(Share(original, text));
}

TEST(Insert, IntoASharedBufferLeavesTheOthers) {
    const CString original("abc");
    CString text(original);
    text.Insert(1, "X");
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("aXbc", text);
}

TEST(Insert, OfItself) {
    CString text("abc");
    text.Insert(1, text);
    EXPECT_STREQ("aabcbc", text);
    text = "abc";
    text.GetBuffer(20);
    text.Insert(1, text);
    EXPECT_STREQ("aabcbc", text);
    text.GetBuffer(20);
    text.Insert(0, Characters(text) + 4);
    EXPECT_STREQ("bcaabcbc", text);
}

// ---- Delete

TEST(Delete, KeepsReturningTheLengthBeforeTheDeletion) {
    CString text("abcdef");
    EXPECT_EQ(6, text.Delete(2, 3));
    EXPECT_STREQ("abf", text);
    EXPECT_EQ(3, text.GetLength());
}

TEST(Delete, RemovesOneCharacterUnlessToldOtherwise) {
    CString text("abc");
    EXPECT_EQ(3, text.Delete(0));
    EXPECT_STREQ("bc", text);
}

TEST(Delete, ReachesToTheEnd) {
    CString text("abcdef");
    EXPECT_EQ(6, text.Delete(4, 2));
    EXPECT_STREQ("abcd", text);
    EXPECT_EQ(4, text.Delete(0, 4));
    EXPECT_STREQ("", text);
}

TEST(Delete, StartsAtTheBeginningForANegativeIndex) {
    CString text("abcdef");
    EXPECT_EQ(6, text.Delete(-3, 2));
    EXPECT_STREQ("cdef", text);
}

TEST(Delete, DoesNothingWithoutACountOrBeyondTheText) {
    const CString original("abcdef");
    CString text(original);
    EXPECT_EQ(6, text.Delete(2, 0));
    EXPECT_EQ(6, text.Delete(2, -1));
    EXPECT_EQ(6, text.Delete(6, 1));
    EXPECT_EQ(6, text.Delete(100, 1));
    EXPECT_EQ(0, CString().Delete(0, 1));
    EXPECT_TRUE(Share(original, text));
}

TEST(Delete, InASharedBufferLeavesTheOthers) {
    const CString original("abcdef");
    CString text(original);
    text.Delete(0, 1);
    EXPECT_STREQ("abcdef", original);
    EXPECT_STREQ("bcdef", text);
}

TEST(DeleteDeathTest, DoesNotCutTheCountToWhatRemains) {
    CString text("abcdef");
    EXPECT_ASSERTION(text.Delete(4, 3), "./XString", "nCount <= GetData()->nDataLength - nIndex");
    EXPECT_ASSERTION(text.Delete(4, INT_MAX), "./XString",
                     "nCount <= GetData()->nDataLength - nIndex");
}

// ---- Replace and Remove

TEST(ReplaceText, CountsTheReplacements) {
    CString text("one two one");
    EXPECT_EQ(2, text.Replace("one", "three"));
    EXPECT_STREQ("three two three", text);
    EXPECT_EQ(15, text.GetAllocLength());
    EXPECT_EQ(2, text.Replace("three", "1"));
    EXPECT_STREQ("1 two 1", text);
    EXPECT_EQ(2, text.Replace("1", "x"));
    EXPECT_STREQ("x two x", text);
    EXPECT_EQ(2, text.Replace("x", kNoText));
    EXPECT_STREQ(" two ", text);
}

TEST(ReplaceText, DoesNotSeeOverlappingMatches) {
    CString text("aaaaa");
    EXPECT_EQ(2, text.Replace("aa", "b"));
    EXPECT_STREQ("bba", text);
}

TEST(ReplaceText, DoesNotLookIntoWhatItPutIn) {
    CString text("aXb");
    EXPECT_EQ(1, text.Replace("X", "XX"));
    EXPECT_STREQ("aXXb", text);
}

TEST(ReplaceText, OfAnEmptyTextReplacesNothing) {
    const CString original("abc");
    CString text(original);
    EXPECT_EQ(0, text.Replace("", "x"));
    EXPECT_EQ(0, text.Replace(kNoText, "x"));
    EXPECT_EQ(0, text.Replace("x", "y"));
    EXPECT_TRUE(Share(original, text));
}

TEST(ReplaceText, ReachesBehindANul) {
    CString text("ab\0ab", 5);
    EXPECT_EQ(2, text.Replace("ab", "xyz"));
    EXPECT_EQ(std::string("xyz\0xyz", 7), Whole(text));
}

TEST(ReplaceText, ByAPartOfItself) {
    CString text("a-b-");
    EXPECT_EQ(2, text.Replace("-", Characters(text)));
    EXPECT_STREQ("aa-b-ba-b-", text);
}

TEST(ReplaceText, InASharedBufferLeavesTheOthers) {
    const CString original("abc");
    CString text(original);
    text.Replace("b", "xx");
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("axxc", text);
}

TEST(ReplaceCharacter, CountsTheReplacements) {
    CString text("abcabc");
    EXPECT_EQ(2, text.Replace('b', 'x'));
    EXPECT_STREQ("axcaxc", text);
    EXPECT_EQ(0, text.Replace('b', 'x'));
}

TEST(ReplaceCharacter, LeavesTheOthersThatShareTheBuffer) {
    const CString original("abc");
    CString text(original);
    EXPECT_EQ(0, text.Replace('x', 'y'));
    EXPECT_TRUE(Share(original, text));
    EXPECT_EQ(1, text.Replace('b', 'x'));
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("axc", text);
}

TEST(Remove, CountsTheRemoved) {
    CString text("abcabc");
    EXPECT_EQ(2, text.Remove('b'));
    EXPECT_STREQ("acac", text);
    EXPECT_EQ(0, text.Remove('b'));
    EXPECT_EQ(4, text.GetLength());
}

TEST(Remove, LeavesTheOthersThatShareTheBuffer) {
    const CString original("abc");
    CString text(original);
    EXPECT_EQ(0, text.Remove('x'));
    EXPECT_TRUE(Share(original, text));
    EXPECT_EQ(1, text.Remove('a'));
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("bc", text);
}

// ---- Trim

using Trim = void (*)(CString&);

std::string Trimmed(const char* text, Trim trim) {
    CString trimmed(text);
    trim(trimmed);
    return Whole(trimmed);
}

TEST(Trim, RemovesWhiteSpaceFromOneSide) {
    const Trim left = [](CString& text) { text.TrimLeft(); };
    EXPECT_EQ("a b \t", Trimmed(" \t\n\v\f\ra b \t", left));
    EXPECT_EQ("ab", Trimmed("ab", left));
    EXPECT_EQ("", Trimmed(" \t", left));
    EXPECT_EQ("", Trimmed("", left));
    EXPECT_EQ("\xA0 ab", Trimmed("\xA0 ab", left));

    const Trim right = [](CString& text) { text.TrimRight(); };
    EXPECT_EQ("\t a b", Trimmed("\t a b \t\n\v\f\r", right));
    EXPECT_EQ("ab", Trimmed("ab", right));
    EXPECT_EQ("", Trimmed(" \t", right));
    EXPECT_EQ("", Trimmed("", right));
    EXPECT_EQ("ab\xA0", Trimmed("ab\xA0", right));
}

TEST(Trim, RemovesOneCharacterFromOneSide) {
    const Trim left = [](CString& text) { text.TrimLeft('x'); };
    EXPECT_EQ("axx", Trimmed("xxaxx", left));
    EXPECT_EQ("", Trimmed("xx", left));
    EXPECT_EQ(" x", Trimmed(" x", left));

    const Trim right = [](CString& text) { text.TrimRight('x'); };
    EXPECT_EQ("xxa", Trimmed("xxaxx", right));
    EXPECT_EQ("", Trimmed("xx", right));
    EXPECT_EQ("x ", Trimmed("x ", right));
}

TEST(Trim, RemovesAnyCharacterOfASetFromOneSide) {
    const Trim left = [](CString& text) { text.TrimLeft("xy\xE9"); };
    EXPECT_EQ("axy", Trimmed("yx\xE9yaxy", left));
    EXPECT_EQ("", Trimmed("xyxy", left));

    const Trim right = [](CString& text) { text.TrimRight("xy\xE9"); };
    EXPECT_EQ("yxa", Trimmed("yxax\xE9y", right));
    EXPECT_EQ("", Trimmed("xyxy", right));
}

TEST(Trim, RemovesNothingForAnEmptySet) {
    EXPECT_EQ(" a ", Trimmed(" a ", [](CString& text) { text.TrimLeft(""); }));
    EXPECT_EQ(" a ", Trimmed(" a ", [](CString& text) { text.TrimRight(""); }));
    EXPECT_EQ(" a ", Trimmed(" a ", [](CString& text) { text.TrimLeft(kNoText); }));
    EXPECT_EQ(" a ", Trimmed(" a ", [](CString& text) { text.TrimRight(kNoText); }));
}

TEST(Trim, DoesNotTakeTheEndOfTheSetForOneOfItsCharacters) {
    CString text("\0a\0", 3);
    text.TrimLeft("x");
    text.TrimRight("x");
    EXPECT_EQ(std::string("\0a\0", 3), Whole(text));
    text.TrimLeft('\0');
    text.TrimRight('\0');
    EXPECT_EQ("a", Whole(text));
}

TEST(Trim, LeavesTheOthersThatShareTheBuffer) {
    const CString original(" a ");
    CString text(original);
    text.TrimLeft('x');
    text.TrimRight('x');
    EXPECT_TRUE(Share(original, text));
    text.TrimLeft();
    EXPECT_STREQ("a ", text);
    text = original;
    text.TrimRight();
    EXPECT_STREQ(" a", text);
    EXPECT_STREQ(" a ", original);
}

TEST(Trim, BySetThatIsAPartOfTheText) {
    CString text("xyaxy");
    text.TrimRight(Characters(text) + 3);
    EXPECT_STREQ("xya", text);
}

}  // namespace
