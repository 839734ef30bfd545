// CString: building, sharing, changing and locking buffers.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "linux/XString.h"
#include "tests/unit/linux/assertions.h"
#include "tests/unit/linux/string_header.h"

namespace {

// What the operations are made of, for the rules that no operation can break.
class OpenString : public CString {
 public:
    using CString::CString;
    using CString::SetLength;
};

CString CopyOf(const CString& text) {
    return text;
}

// ---- The shared empty text

TEST(EmptyText, IsOneForAll) {
    EXPECT_EQ(_afxPchNil, _afxDataNil->data());
    EXPECT_EQ(_afxPchNil, Characters(AfxGetEmptyString()));
    EXPECT_EQ(&_afxInitData.header, _afxDataNil);
    EXPECT_EQ(-1, _afxDataNil->nRefs);
    EXPECT_EQ(0, _afxDataNil->nDataLength);
    EXPECT_EQ(0, _afxDataNil->nAllocLength);
    EXPECT_EQ('\0', *_afxPchNil);
}

TEST(EmptyText, IsWhereEveryEmptyTextPoints) {
    EXPECT_TRUE(IsSharedEmptyText(CString()));
    EXPECT_TRUE(IsSharedEmptyText(CString("")));
    EXPECT_TRUE(IsSharedEmptyText(CString(kNoText)));
    EXPECT_TRUE(IsSharedEmptyText(CString('x', 0)));
    EXPECT_TRUE(IsSharedEmptyText(CString('x', -1)));
    EXPECT_TRUE(IsSharedEmptyText(CString("abc", 0)));
    EXPECT_TRUE(IsSharedEmptyText(CString("abc", -1)));
    EXPECT_TRUE(IsSharedEmptyText(CString(kNoText, 3)));
    EXPECT_TRUE(IsSharedEmptyText(CString(AfxGetEmptyString())));
}

TEST(EmptyText, IsWhereATextPointsThatLosesItsLastCharacter) {
    CString text("abc");
    text.Empty();
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "abc";
    text = "";
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "abc";
    text = CString();
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "abc";
    text.Delete(0, 3);
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "aaa";
    text.Remove('a');
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "abc";
    text.Replace("abc", "");
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "   ";
    text.TrimLeft();
    EXPECT_TRUE(IsSharedEmptyText(text));
    text = "   ";
    text.TrimRight();
    EXPECT_TRUE(IsSharedEmptyText(text));
    text.GetBuffer(10);
    text.ReleaseBuffer(0);
    EXPECT_TRUE(IsSharedEmptyText(text));
}

TEST(EmptyText, IsNeverWritten) {
    CString text;
    text.LockBuffer();
    EXPECT_TRUE(IsSharedEmptyText(text));
    text.UnlockBuffer();
    text.GetBuffer(0);
    text.ReleaseBuffer();
    text.GetBufferSetLength(0);
    text.FreeExtra();
    text.Empty();
    text += "";
    text.Format("%s", "");
    EXPECT_TRUE(IsSharedEmptyText(text));
    EXPECT_EQ(-1, _afxDataNil->nRefs);
    EXPECT_EQ(0, _afxDataNil->nDataLength);
    EXPECT_EQ('\0', *_afxPchNil);
}

// ---- Building

TEST(NewBuffer, IsAsLongAsTheText) {
    const CString text("abc");
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(1, HeaderOf(text).nRefs);
    EXPECT_EQ(3, HeaderOf(text).nDataLength);
    EXPECT_EQ(3, HeaderOf(text).nAllocLength);
    EXPECT_EQ(3, text.GetLength());
    EXPECT_EQ(3, text.GetAllocLength());
    EXPECT_FALSE(text.IsEmpty());
}

TEST(NewBuffer, HoldsACharacterRepeated) {
    EXPECT_STREQ("xxxx", CString('x', 4));
    EXPECT_EQ(4, CString('x', 4).GetAllocLength());
}

TEST(NewBuffer, HoldsAPartOfALongerText) {
    EXPECT_STREQ("ab", CString("abcdef", 2));
    EXPECT_EQ(2, CString("abcdef", 2).GetAllocLength());
}

TEST(NewBuffer, KeepsANulWithinTheLengthGiven) {
    const CString text("a\0b", 3);
    EXPECT_EQ(3, text.GetLength());
    EXPECT_EQ('\0', text.GetAt(1));
    EXPECT_EQ('b', text.GetAt(2));
    EXPECT_EQ('\0', Characters(text)[3]);
}

// ---- Sharing

TEST(Copy, SharesTheBuffer) {
    const CString first("abc");
    const CString second = CopyOf(first);
    CString third("xyz");
    third = second;
    EXPECT_TRUE(Share(first, second));
    EXPECT_TRUE(Share(first, third));
    EXPECT_EQ(3, HeaderOf(first).nRefs);
}

TEST(Copy, IsReleasedByItsEnd) {
    const CString first("abc");
    {
        const CString second = CopyOf(first);
        EXPECT_EQ(2, HeaderOf(first).nRefs);
    }
    EXPECT_EQ(1, HeaderOf(first).nRefs);
}

TEST(Copy, OutlivesTheOriginal) {
    CString second;
    {
        const CString first("abc");
        second = first;
    }
    EXPECT_STREQ("abc", second);
    EXPECT_EQ(1, HeaderOf(second).nRefs);
}

TEST(Copy, OfItselfChangesNothing) {
    CString text("abc");
    const CString& alias = text;
    text = alias;
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(1, HeaderOf(text).nRefs);
}

TEST(Copy, OfATextThatIsBeingWrittenAndStillEmptyIsTheSharedEmptyText) {
    CString text;
    text.GetBuffer(10);
    const CString copy(text);
    EXPECT_TRUE(IsSharedEmptyText(copy));
    EXPECT_EQ(1, HeaderOf(text).nRefs);
}

TEST(Copy, OfALockedBufferHasItsOwn) {
    CString locked("abc");
    locked.LockBuffer();
    const CString copy(locked);
    CString assigned;
    assigned = locked;
    EXPECT_STREQ("abc", copy);
    EXPECT_STREQ("abc", assigned);
    EXPECT_FALSE(Share(locked, copy));
    EXPECT_FALSE(Share(locked, assigned));
    EXPECT_FALSE(Share(copy, assigned));
    EXPECT_EQ(1, HeaderOf(copy).nRefs);
    EXPECT_EQ(1, HeaderOf(assigned).nRefs);
    EXPECT_EQ(-1, HeaderOf(locked).nRefs);
}

TEST(Change, OfASharedBufferIsMadeInAPrivateOneOfTheSameLength) {
    const CString original("abcdef");
    CString changed(original);
    changed.SetAt(0, 'X');
    EXPECT_STREQ("abcdef", original);
    EXPECT_STREQ("Xbcdef", changed);
    EXPECT_EQ(1, HeaderOf(original).nRefs);
    EXPECT_EQ(1, HeaderOf(changed).nRefs);
    EXPECT_EQ(6, changed.GetAllocLength());

    changed = original;
    changed.Delete(0, 4);
    EXPECT_STREQ("ef", changed);
    EXPECT_EQ(6, changed.GetAllocLength());
}

TEST(Change, OfAPrivateBufferIsMadeInPlace) {
    CString text("abc");
    const char* before = text;
    text.SetAt(1, 'X');
    EXPECT_STREQ("aXc", text);
    EXPECT_EQ(before, Characters(text));
}

// ---- Assigning and appending

TEST(Assignment, OfATextTakesExactlyTheRoomItNeeds) {
    CString text("ab");
    text = "abcdef";
    EXPECT_STREQ("abcdef", text);
    EXPECT_EQ(6, text.GetAllocLength());
}

TEST(Assignment, OfATextThatFitsStaysInThePrivateBuffer) {
    CString text("abcdef");
    const char* before = text;
    text = "xy";
    EXPECT_STREQ("xy", text);
    EXPECT_EQ(before, Characters(text));
    EXPECT_EQ(6, text.GetAllocLength());
}

TEST(Assignment, OfATextLeavesTheOthersThatShareTheBuffer) {
    const CString original("abcdef");
    CString text(original);
    text = "xy";
    EXPECT_STREQ("abcdef", original);
    EXPECT_STREQ("xy", text);
    EXPECT_EQ(2, text.GetAllocLength());
}

TEST(Assignment, OfAPartOfItself) {
    CString text("abcdef");
    text = Characters(text) + 2;
    EXPECT_STREQ("cdef", text);
}

TEST(Assignment, OfNoTextIsEmpty) {
    CString text("abc");
    text = kNoText;
    EXPECT_TRUE(text.IsEmpty());
}

TEST(Appending, BuildsABufferOfExactlyTheSum) {
    CString text("abc");
    text += "de";
    EXPECT_STREQ("abcde", text);
    EXPECT_EQ(5, text.GetAllocLength());
    text += CString("fgh");
    EXPECT_STREQ("abcdefgh", text);
    EXPECT_EQ(8, text.GetAllocLength());
}

TEST(Appending, StaysInPlaceWhereThereIsRoom) {
    CString text("abc");
    const char* before = text.GetBuffer(5);
    text += "de";
    EXPECT_STREQ("abcde", text);
    EXPECT_EQ(before, Characters(text));
    text += "f";
    EXPECT_STREQ("abcdef", text);
    EXPECT_EQ(6, text.GetAllocLength());
}

TEST(Appending, ToASharedBufferBuildsAnotherEvenWhereThereIsRoom) {
    CString original("abc");
    original.GetBuffer(10);
    CString text(original);
    text += "d";
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("abcd", text);
    EXPECT_EQ(4, text.GetAllocLength());
}

TEST(Appending, NothingKeepsTheBuffer) {
    const CString original("abc");
    CString text(original);
    text += "";
    text += kNoText;
    text += CString();
    EXPECT_TRUE(Share(original, text));
}

TEST(Appending, ATextToItself) {
    CString text("abc");
    text += text;
    EXPECT_STREQ("abcabc", text);
    text.GetBuffer(12);
    text += text;
    EXPECT_STREQ("abcabcabcabc", text);
}

TEST(Appending, KeepsWhatStandsBehindANul) {
    CString text("a\0b", 3);
    text += CString("c\0d", 3);
    EXPECT_EQ(std::string("a\0bc\0d", 6), std::string(text, 6));
    EXPECT_EQ(6, text.GetLength());
}

TEST(Sum, TakesATextOnEitherSide) {
    const CString left("ab");
    const CString right("cd");
    EXPECT_STREQ("abcd", left + right);
    EXPECT_STREQ("abcd", left + "cd");
    EXPECT_STREQ("abcd", "ab" + right);
    EXPECT_STREQ("ab", left + kNoText);
    EXPECT_STREQ("cd", kNoText + right);
    EXPECT_EQ(4, (left + right).GetAllocLength());
    EXPECT_STREQ("ab", left);
    EXPECT_STREQ("cd", right);
}

// ---- Comparing

TEST(Comparison, IsByTheCharacters) {
    const CString text("abc");
    EXPECT_TRUE(text == CString("abc"));
    EXPECT_TRUE(text == "abc");
    EXPECT_TRUE("abc" == text);
    EXPECT_FALSE(text == CString("abd"));
    EXPECT_FALSE(text == "ab");
    EXPECT_FALSE("abcd" == text);
    EXPECT_TRUE(text != CString("abd"));
    EXPECT_TRUE(text != "ab");
    EXPECT_TRUE("abcd" != text);
    EXPECT_FALSE(text != CString("abc"));
    EXPECT_FALSE(text != "abc");
    EXPECT_FALSE("abc" != text);
}

TEST(Comparison, TakesNoTextForEmpty) {
    EXPECT_TRUE(CString() == kNoText);
    EXPECT_TRUE(kNoText == CString());
    EXPECT_TRUE(CString("a") != kNoText);
}

// ---- Single characters

TEST(Character, IsReadByIndex) {
    const CString text("abc");
    EXPECT_EQ('a', text.GetAt(0));
    EXPECT_EQ('c', text.GetAt(2));
    EXPECT_EQ('b', text[1]);
}

TEST(CharacterDeathTest, OutsideTheTextCannotBeRead) {
    const CString text("abc");
    EXPECT_ASSERTION((void)text.GetAt(-1), "linux/XString", "nIndex >= 0");
    EXPECT_ASSERTION((void)text.GetAt(3), "linux/XString", "nIndex < GetData()->nDataLength");
    EXPECT_ASSERTION((void)text[-1], "linux/XString", "nIndex >= 0");
    EXPECT_ASSERTION((void)text[3], "linux/XString", "nIndex < GetData()->nDataLength");
    EXPECT_ASSERTION((void)CString().GetAt(0), "linux/XString", "nIndex < GetData()->nDataLength");
}

TEST(CharacterDeathTest, OutsideTheTextCannotBeSet) {
    CString text("abc");
    text.GetBuffer(10);
    EXPECT_ASSERTION(text.SetAt(-1, 'x'), "./XString", "nIndex >= 0");
    EXPECT_ASSERTION(text.SetAt(3, 'x'), "./XString", "nIndex < GetData()->nDataLength");
}

// ---- Writing to the buffer

TEST(GetBuffer, GrowsATooSmallBufferAndKeepsTheText) {
    CString text("abc");
    text.GetBuffer(10);
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(3, text.GetLength());
    EXPECT_EQ(10, text.GetAllocLength());
}

TEST(GetBuffer, LeavesABufferThatIsLargeEnough) {
    CString text("abc");
    const char* before = text;
    EXPECT_EQ(before, text.GetBuffer(3));
    EXPECT_EQ(before, text.GetBuffer(0));
    EXPECT_EQ(before, text.GetBuffer(-1));
    EXPECT_EQ(3, text.GetAllocLength());
}

TEST(GetBuffer, PartsFromASharedBuffer) {
    const CString original("abc");
    CString text(original);
    text.GetBuffer(2)[0] = 'X';
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("Xbc", text);
    EXPECT_EQ(3, text.GetAllocLength());
}

TEST(ReleaseBuffer, TakesTheLengthUpToTheNul) {
    CString text;
    std::memcpy(text.GetBuffer(10), "abcd", 5);
    text.ReleaseBuffer();
    EXPECT_EQ(4, text.GetLength());
    EXPECT_EQ(10, text.GetAllocLength());
}

TEST(ReleaseBuffer, TakesTheLengthGiven) {
    CString text;
    std::memcpy(text.GetBuffer(10), "abcd", 5);
    text.ReleaseBuffer(2);
    EXPECT_STREQ("ab", text);
    EXPECT_EQ(2, text.GetLength());
}

TEST(ReleaseBuffer, OfASharedBufferLeavesTheOthers) {
    const CString original("abcd");
    CString text(original);
    text.ReleaseBuffer(2);
    EXPECT_STREQ("abcd", original);
    EXPECT_STREQ("ab", text);
}

TEST(ReleaseBufferDeathTest, CannotMakeTheTextLongerThanItsBuffer) {
    CString text("abc");
    EXPECT_ASSERTION(text.ReleaseBuffer(4), "./XString", "nNewLength <= GetData()->nAllocLength");
    EXPECT_ASSERTION(text.ReleaseBuffer(-2), "./XString", "nNewLength >= 0");
}

TEST(LengthDeathTest, OfASharedBufferIsNotSet) {
    OpenString text("abc");
    const CString copy(text);
    EXPECT_ASSERTION(text.SetLength(1), "./XString", "GetData()->nRefs <= 1");
}

TEST(GetBufferSetLength, SetsTheLengthAndTerminates) {
    CString text("abcdef");
    EXPECT_EQ(Characters(text), text.GetBufferSetLength(2));
    EXPECT_STREQ("ab", text);
    std::memcpy(text.GetBufferSetLength(8), "12345678", 8);
    EXPECT_STREQ("12345678", text);
    EXPECT_EQ(8, text.GetLength());
    EXPECT_EQ(8, text.GetAllocLength());
}

TEST(GetBufferSetLengthDeathTest, RefusesANegativeLength) {
    CString text("abc");
    EXPECT_ASSERTION(text.GetBufferSetLength(-1), "./XString", "nNewLength >= 0");
}

TEST(FreeExtra, LeavesNoMoreRoomThanTheTextNeeds) {
    CString text("abc");
    text.GetBuffer(10);
    text.FreeExtra();
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(3, text.GetAllocLength());
}

TEST(FreeExtra, LeavesATightBufferAndItsSharers) {
    const CString original("abc");
    CString text(original);
    text.FreeExtra();
    EXPECT_TRUE(Share(original, text));
}

TEST(FreeExtra, LeavesALockedBuffer) {
    CString text("abc");
    text.GetBuffer(10);
    const char* locked = text.LockBuffer();
    text.FreeExtra();
    EXPECT_EQ(locked, Characters(text));
    text.UnlockBuffer();
}

// ---- Locking

TEST(Lock, MarksThePrivateBuffer) {
    const CString original("abc");
    CString text(original);
    const char* locked = text.LockBuffer();
    EXPECT_EQ(locked, Characters(text));
    EXPECT_FALSE(Share(original, text));
    EXPECT_EQ(-1, HeaderOf(text).nRefs);
    text.UnlockBuffer();
    EXPECT_EQ(locked, Characters(text));
    EXPECT_EQ(1, HeaderOf(text).nRefs);
}

TEST(Lock, StaysThroughChangesInPlace) {
    CString text("abcdef");
    const char* locked = text.LockBuffer();
    text.SetAt(0, 'X');
    text.Delete(1, 2);
    text = "xyz";
    text += "123";
    EXPECT_STREQ("xyz123", text);
    EXPECT_EQ(locked, Characters(text));
    EXPECT_EQ(-1, HeaderOf(text).nRefs);
}

TEST(Lock, EndsWithAChangeThatNeedsAnotherBuffer) {
    CString text("abc");
    text.LockBuffer();
    text += "d";
    EXPECT_STREQ("abcd", text);
    EXPECT_EQ(1, HeaderOf(text).nRefs);
}

TEST(Lock, OfAnEmptyTextCanBeUndone) {
    CString text;
    text.LockBuffer();
    text.UnlockBuffer();
    EXPECT_TRUE(IsSharedEmptyText(text));
}

TEST(LockDeathTest, IsNotUndoneWhereThereIsNone) {
    CString text("abc");
    EXPECT_ASSERTION(text.UnlockBuffer(), "./XString", "GetData()->nRefs == -1");
}

}  // namespace
