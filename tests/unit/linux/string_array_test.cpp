// CStringArray.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "linux/XStringArray.h"
#include "tests/unit/linux/assertions.h"
#include "tests/unit/linux/string_header.h"

namespace {

class OpenArray : public CStringArray {
 public:
    OpenArray() = default;
    OpenArray(std::initializer_list<const char*> texts) {
        for (const char* text : texts) {
            Add(text);
        }
    }
    int MaxSize() const { return m_nMaxSize; }
    int GrowBy() const { return m_nGrowBy; }
    bool HasMemory() const { return m_pData != nullptr; }
};

std::vector<std::string> TextsOf(const CStringArray& array) {
    std::vector<std::string> texts;
    texts.reserve(static_cast<size_t>(array.GetSize()));
    for (int i = 0; i < array.GetSize(); ++i) {
        texts.emplace_back(array[i]);
    }
    return texts;
}

using List = std::vector<std::string>;

// ---- Size

TEST(ArraySize, IsZeroAtFirst) {
    const OpenArray array;
    EXPECT_EQ(0, array.GetSize());
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_FALSE(array.HasMemory());
    EXPECT_EQ(0, array.GrowBy());
}

TEST(ArraySize, OfTheFirstElementsIsAllocatedExactly) {
    OpenArray array;
    array.SetSize(3);
    EXPECT_EQ((List{"", "", ""}), TextsOf(array));
    EXPECT_EQ(3, array.MaxSize());

    OpenArray growing;
    growing.SetSize(1, 100);
    EXPECT_EQ(1, growing.MaxSize());
}

TEST(ArraySize, ShrinksAndGrowsWithinItsMemory) {
    OpenArray array{"a", "b", "c"};
    const int maxSize = array.MaxSize();
    array.SetSize(1);
    EXPECT_EQ((List{"a"}), TextsOf(array));
    array.SetSize(maxSize);
    EXPECT_EQ(maxSize, array.MaxSize());
    EXPECT_EQ("", TextsOf(array)[1]);
}

TEST(ArraySize, ReleasesWhatItCutsOff) {
    const CString text("abc");
    OpenArray array;
    array.Add(text);
    array.Add(text);
    EXPECT_EQ(3, HeaderOf(text).nRefs);
    array.SetSize(1);
    EXPECT_EQ(2, HeaderOf(text).nRefs);
    array.SetSize(0);
    EXPECT_EQ(1, HeaderOf(text).nRefs);
}

TEST(ArraySize, ZeroFreesTheMemory) {
    OpenArray array{"a", "b"};
    array.SetSize(0);
    EXPECT_FALSE(array.HasMemory());
    EXPECT_EQ(0, array.MaxSize());
    array.Add("c");
    array.RemoveAll();
    EXPECT_FALSE(array.HasMemory());
    array.RemoveAll();
    EXPECT_EQ(0, array.GetSize());
}

struct Growth {
    const char* situation;
    int size;
    int growBy;
    int newSize;
    int newMaxSize;
};

TEST(ArraySize, GrowsByAStep) {
    const Growth cases[] = {
        {"an eighth is less than four", 16, 0, 17, 20},
        {"still no more than four", 39, 0, 40, 43},
        {"an eighth", 80, 0, 81, 90},
        {"an eighth is more than 1024", 16000, 0, 16001, 17024},
        {"an eighth of the size, not of the new one", 40, 0, 46, 46},
        {"more is needed than the step", 16, 0, 100, 100},
        {"exactly the step", 16, 0, 20, 20},
        {"a step that is stored", 16, 7, 17, 23},
        {"a stored step below four", 16, 1, 17, 17},
        {"a stored step that is not enough", 16, 7, 30, 30},
        {"a negative step", 16, -5, 17, 17},
    };
    for (const Growth& each : cases) {
        OpenArray array;
        array.SetSize(each.size, each.growBy);
        array.SetSize(each.newSize);
        EXPECT_EQ(each.newMaxSize, array.MaxSize()) << each.situation;
        EXPECT_EQ(each.newSize, array.GetSize()) << each.situation;
    }
}

TEST(ArraySize, StepGoesByTheElementsInUse) {
    OpenArray array;
    array.SetSize(80);
    array.SetSize(40);
    array.SetSize(81);
    EXPECT_EQ(80 + 5, array.MaxSize());
}

TEST(ArraySize, StoresTheStepUnlessItIsMinusOne) {
    OpenArray array;
    array.SetSize(1, 7);
    EXPECT_EQ(7, array.GrowBy());
    array.SetSize(2, -1);
    EXPECT_EQ(7, array.GrowBy());
    array.SetSize(0, 0);
    EXPECT_EQ(0, array.GrowBy());
}

TEST(ArraySize, KeepsTheElementsWhenTheyMove) {
    const CString text("abc");
    OpenArray array;
    array.Add(text);
    array.SetSize(100);
    EXPECT_TRUE(Share(text, array[0]));
    EXPECT_EQ(2, HeaderOf(text).nRefs);
    EXPECT_EQ("", TextsOf(array)[99]);
}

TEST(ArraySize, FreeExtraLeavesNoMoreMemoryThanElements) {
    OpenArray array;
    array.SetSize(16);
    array.SetSize(17);
    array.SetAt(16, "last");
    array.FreeExtra();
    EXPECT_EQ(17, array.MaxSize());
    EXPECT_EQ("last", TextsOf(array)[16]);

    array.RemoveAt(0, 17);
    EXPECT_TRUE(array.HasMemory());
    array.FreeExtra();
    EXPECT_FALSE(array.HasMemory());
    array.FreeExtra();
    EXPECT_EQ(0, array.MaxSize());
}

TEST(ArraySize, FreeExtraLeavesElementsWhereThereIsNothingToFree) {
    OpenArray array{"a", "b"};
    array.FreeExtra();
    const CString* first = &array.GetAt(0);
    array.FreeExtra();
    EXPECT_EQ(first, &array.GetAt(0));
}

TEST(ArraySizeDeathTest, IsNotNegative) {
    CStringArray array;
    EXPECT_ASSERTION(array.SetSize(-1), "./XString", "nNewSize >= 0");
}

// ---- Elements

TEST(ArrayElement, IsReadAndWrittenByIndex) {
    OpenArray array{"a", "b"};
    array.SetAt(1, "B");
    array[0] += "A";
    EXPECT_STREQ("aA", array.GetAt(0));
    EXPECT_STREQ("B", array.GetAt(1));
}

TEST(ArrayElement, SharesTheBufferOfTheTextGiven) {
    const CString text("abc");
    OpenArray array;
    EXPECT_EQ(0, array.Add(text));
    EXPECT_EQ(1, array.Add(text));
    EXPECT_TRUE(Share(text, array[0]));
    EXPECT_TRUE(Share(text, array[1]));
}

TEST(ArrayElementDeathTest, ThatIsNotThereIsNotReached) {
    OpenArray array{"a", "b"};
    const CStringArray& readOnly = array;
    EXPECT_ASSERTION((void)readOnly[-1], "./XString", "nIndex >= 0");
    EXPECT_ASSERTION((void)readOnly[2], "./XString", "nIndex < m_nSize");
    EXPECT_ASSERTION((void)array[-1], "./XString", "nIndex >= 0");
    EXPECT_ASSERTION((void)array[2], "./XString", "nIndex < m_nSize");
    EXPECT_ASSERTION(array.SetAt(2, "x"), "./XString", "nIndex < m_nSize");
}

TEST(SetAtGrow, ReplacesOrLengthens) {
    OpenArray array{"a"};
    array.SetAtGrow(0, "A");
    array.SetAtGrow(2, CString("C"));
    EXPECT_EQ((List{"A", "", "C"}), TextsOf(array));
    array.SetAtGrow(3, static_cast<const char*>(nullptr));
    EXPECT_EQ((List{"A", "", "C", ""}), TextsOf(array));
}

TEST(SetAtGrow, TakesAnElementOfItsOwn) {
    OpenArray array{"a"};
    array.SetAtGrow(50, array[0]);
    array.SetAtGrow(200, static_cast<const char*>(array[50]));
    EXPECT_STREQ("a", array[50]);
    EXPECT_STREQ("a", array[200]);
}

TEST(SetAtGrowDeathTest, RefusesImpossibleIndices) {
    CStringArray array;
    EXPECT_ASSERTION(array.SetAtGrow(-1, "x"), "./XString", "nIndex >= 0");
    EXPECT_ASSERTION(array.SetAtGrow(INT_MAX, "x"), "./XString", "nIndex < kMostElements");
}

// ---- Insert and remove

TEST(InsertAt, MakesRoomForAnElement) {
    OpenArray array{"a", "c"};
    array.InsertAt(1, "b");
    EXPECT_EQ((List{"a", "b", "c"}), TextsOf(array));
    array.InsertAt(0, "x", 2);
    EXPECT_EQ((List{"x", "x", "a", "b", "c"}), TextsOf(array));
    array.InsertAt(5, "end");
    EXPECT_EQ((List{"x", "x", "a", "b", "c", "end"}), TextsOf(array));
}

TEST(InsertAt, BeyondTheEndLengthens) {
    OpenArray array{"a"};
    array.InsertAt(3, "b", 2);
    EXPECT_EQ((List{"a", "", "", "b", "b"}), TextsOf(array));
}

TEST(InsertAt, KeepsTheCountsOfSharers) {
    const CString text("abc");
    OpenArray array;
    array.InsertAt(0, text, 3);
    EXPECT_EQ(4, HeaderOf(text).nRefs);
    array.InsertAt(1, "x", 50);
    EXPECT_EQ(4, HeaderOf(text).nRefs);
    EXPECT_TRUE(Share(text, array[52]));
}

TEST(InsertAt, TakesAnElementOfItsOwn) {
    OpenArray array{"a", "b"};
    array.InsertAt(0, array[1], 20);
    EXPECT_STREQ("b", array[0]);
    EXPECT_STREQ("b", array[19]);
    EXPECT_STREQ("a", array[20]);
}

TEST(InsertAt, MakesRoomForAnArray) {
    const OpenArray added{"x", "y"};
    OpenArray array{"a", "b"};
    array.InsertAt(1, added);
    EXPECT_EQ((List{"a", "x", "y", "b"}), TextsOf(array));
    array.InsertAt(5, added);
    EXPECT_EQ((List{"a", "x", "y", "b", "", "x", "y"}), TextsOf(array));
    EXPECT_TRUE(Share(added[0], array[1]));
    array.InsertAt(9, OpenArray());
    EXPECT_EQ(7, array.GetSize());
}

TEST(InsertAtDeathTest, RefusesImpossiblePlacesAndCounts) {
    OpenArray array{"a"};
    const OpenArray added{"x"};
    EXPECT_ASSERTION(array.InsertAt(-1, "x"), "./XString", "nIndex >= 0");
    EXPECT_ASSERTION(array.InsertAt(-1, added), "./XString", "nIndex >= 0");
    EXPECT_ASSERTION(array.InsertAt(0, "x", 0), "./XString", "nCount > 0");
    EXPECT_ASSERTION(array.InsertAt(1, "x", INT_MAX), "./XString",
                     "nCount <= kMostElements - nStart");
    EXPECT_ASSERTION(array.InsertAt(0, array), "./XString", "this != &src");
}

TEST(RemoveAt, ClosesTheGap) {
    OpenArray array{"a", "b", "c", "d", "e"};
    const int maxSize = array.MaxSize();
    array.RemoveAt(1, 2);
    EXPECT_EQ((List{"a", "d", "e"}), TextsOf(array));
    array.RemoveAt(2);
    EXPECT_EQ((List{"a", "d"}), TextsOf(array));
    array.RemoveAt(0);
    EXPECT_EQ((List{"d"}), TextsOf(array));
    array.RemoveAt(1, 0);
    EXPECT_EQ((List{"d"}), TextsOf(array));
    EXPECT_EQ(maxSize, array.MaxSize());
}

TEST(RemoveAt, ReleasesWhatItRemovesAndNothingElse) {
    const CString removed("removed");
    const CString kept("kept");
    OpenArray array;
    array.Add(removed);
    array.Add(kept);
    array.RemoveAt(0);
    EXPECT_EQ(1, HeaderOf(removed).nRefs);
    EXPECT_EQ(2, HeaderOf(kept).nRefs);
}

TEST(RemoveAtDeathTest, RefusesWhatIsNotThere) {
    OpenArray array{"a", "b"};
    EXPECT_ASSERTION(array.RemoveAt(-1), "./XString", "nIndex >= 0");
    EXPECT_ASSERTION(array.RemoveAt(0, -1), "./XString", "nCount >= 0");
    EXPECT_ASSERTION(array.RemoveAt(1, 2), "./XString", "nCount <= m_nSize - nIndex");
    EXPECT_ASSERTION(array.RemoveAt(1, INT_MAX), "./XString", "nCount <= m_nSize - nIndex");
}

// ---- Whole arrays

TEST(Append, AddsTheOtherArrayAtTheEnd) {
    const OpenArray added{"x", "y"};
    OpenArray array{"a"};
    EXPECT_EQ(1, array.Append(added));
    EXPECT_EQ((List{"a", "x", "y"}), TextsOf(array));
    EXPECT_EQ(3, array.Append(OpenArray()));
    EXPECT_EQ(3, array.GetSize());
}

TEST(ArrayCopy, BecomesEqual) {
    const OpenArray src{"x", "y"};
    OpenArray array{"a", "b", "c"};
    array.Copy(src);
    EXPECT_EQ((List{"x", "y"}), TextsOf(array));
    EXPECT_TRUE(Share(src[0], array[0]));
    array.Copy(OpenArray());
    EXPECT_EQ(0, array.GetSize());
}

TEST(WholeArrayDeathTest, IsNotAddedToItself) {
    OpenArray array{"a"};
    EXPECT_ASSERTION(array.Append(array), "./XString", "this != &src");
    EXPECT_ASSERTION(array.Copy(array), "./XString", "this != &src");
}

TEST(ArrayElements, AreMadeAndEndedInPlace) {
    const CString text("abc");
    alignas(CString) unsigned char memory[2 * sizeof(CString)];
    auto* elements = reinterpret_cast<CString*>(memory);
    CStringArray::ConstructElements(elements, 2);
    EXPECT_TRUE(IsSharedEmptyText(elements[1]));
    const CString source[] = {text, text};
    CStringArray::CopyElements(elements, source, 2);
    EXPECT_EQ(5, HeaderOf(text).nRefs);
    CStringArray::DestructElements(elements, 2);
    EXPECT_EQ(3, HeaderOf(text).nRefs);
}

}  // namespace
