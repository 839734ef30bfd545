// CPtrList and CPlex.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <set>
#include <vector>

#include "linux/XList.h"
#include "tests/unit/linux/assertions.h"

namespace {

int values[40];

class OpenList : public CPtrList {
 public:
    using CPtrList::CPtrList;
    using CPtrList::m_nCount;
    explicit OpenList(std::initializer_list<int> elements) {
        for (int element : elements) {
            AddTail(&values[element]);
        }
    }
    int Blocks() const {
        int count = 0;
        for (const CPlex* block = m_pBlocks; block != nullptr; block = block->pNext) {
            ++count;
        }
        return count;
    }
    void* DataOfANewNode() { return NewNode(nullptr, nullptr)->data; }
    static size_t NodeSize() { return sizeof(CNode); }
};

int ValueOf(void* element) {
    return static_cast<int>(static_cast<int*>(element) - values);
}

using Elements = std::vector<int>;

// The elements as they stand; reads the list in both directions.
Elements ElementsOf(const CPtrList& list) {
    Elements forward;
    for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
        forward.push_back(ValueOf(list.GetNext(position)));
    }
    Elements backward;
    for (POSITION position = list.GetTailPosition(); position != nullptr;) {
        backward.push_back(ValueOf(list.GetPrev(position)));
    }
    std::reverse(backward.begin(), backward.end());
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(forward.size(), static_cast<size_t>(list.GetCount()));
    return forward;
}

// ---- Adding and taking

TEST(List, IsEmptyAtFirst) {
    const OpenList list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(0, list.GetCount());
    EXPECT_EQ(nullptr, list.GetHeadPosition());
    EXPECT_EQ(nullptr, list.GetTailPosition());
    EXPECT_EQ(0, list.Blocks());
}

TEST(List, AddsAtBothEnds) {
    OpenList list;
    list.AddTail(&values[2]);
    list.AddTail(&values[3]);
    list.AddHead(&values[1]);
    EXPECT_EQ((Elements{1, 2, 3}), ElementsOf(list));
    EXPECT_EQ(&values[1], list.GetHead());
    EXPECT_EQ(&values[3], list.GetTail());
    EXPECT_FALSE(list.IsEmpty());
}

TEST(List, TakesFromBothEnds) {
    OpenList list{1, 2, 3, 4};
    EXPECT_EQ(&values[1], list.RemoveHead());
    EXPECT_EQ(&values[4], list.RemoveTail());
    EXPECT_EQ((Elements{2, 3}), ElementsOf(list));
    EXPECT_EQ(&values[3], list.RemoveTail());
    EXPECT_EQ(&values[2], list.RemoveHead());
    EXPECT_TRUE(list.IsEmpty());
    list.AddHead(&values[5]);
    EXPECT_EQ((Elements{5}), ElementsOf(list));
}

TEST(List, AddsAWholeListInItsOrder) {
    const OpenList added{7, 8, 9};
    OpenList list{1, 2};
    list.AddTail(&added);
    EXPECT_EQ((Elements{1, 2, 7, 8, 9}), ElementsOf(list));
    list.AddHead(&added);
    EXPECT_EQ((Elements{7, 8, 9, 1, 2, 7, 8, 9}), ElementsOf(list));
    EXPECT_EQ((Elements{7, 8, 9}), ElementsOf(added));
    const OpenList empty;
    list.AddHead(&empty);
    list.AddTail(&empty);
    EXPECT_EQ(8, list.GetCount());
}

TEST(List, AddsItself) {
    OpenList list{1, 2};
    list.AddTail(&list);
    EXPECT_EQ((Elements{1, 2, 1, 2}), ElementsOf(list));
    OpenList other{3, 4};
    other.AddHead(&other);
    EXPECT_EQ((Elements{3, 4, 3, 4}), ElementsOf(other));
}

TEST(List, RemovesAll) {
    OpenList list{1, 2, 3};
    list.RemoveAll();
    EXPECT_EQ((Elements{}), ElementsOf(list));
    list.AddTail(&values[4]);
    EXPECT_EQ((Elements{4}), ElementsOf(list));
}

TEST(ListDeathTest, HasNothingToTakeWhenEmpty) {
    OpenList list;
    EXPECT_ASSERTION(list.RemoveHead(), "./XList", "m_nCount > 0");
    EXPECT_ASSERTION(list.RemoveTail(), "./XList", "m_nCount > 0");
    EXPECT_ASSERTION((void)list.GetHead(), "./XList", "m_nCount > 0");
    EXPECT_ASSERTION((void)list.GetTail(), "./XList", "m_nCount > 0");
}

// ---- Positions

TEST(Position, ReachesTheElement) {
    OpenList list{1, 2, 3};
    const POSITION second = list.FindIndex(1);
    EXPECT_EQ(&values[2], list.GetAt(second));
    list.SetAt(second, &values[9]);
    EXPECT_EQ((Elements{1, 9, 3}), ElementsOf(list));
}

TEST(Position, StaysGoodWhileOthersComeAndGo) {
    OpenList list{1, 2, 3};
    const POSITION second = list.FindIndex(1);
    list.RemoveHead();
    list.RemoveTail();
    list.AddHead(&values[8]);
    EXPECT_EQ(&values[2], list.GetAt(second));
}

TEST(Position, OfTheNewElementIsReturned) {
    OpenList list;
    const POSITION head = list.AddHead(&values[1]);
    const POSITION tail = list.AddTail(&values[2]);
    EXPECT_EQ(head, list.GetHeadPosition());
    EXPECT_EQ(tail, list.GetTailPosition());
    EXPECT_EQ(&values[3], list.GetAt(list.InsertAfter(head, &values[3])));
    EXPECT_EQ(&values[4], list.GetAt(list.InsertBefore(head, &values[4])));
}

TEST(Position, IsWhereOthersAreInserted) {
    OpenList list{1, 3};
    list.InsertAfter(list.FindIndex(0), &values[2]);
    EXPECT_EQ((Elements{1, 2, 3}), ElementsOf(list));
    list.InsertAfter(list.FindIndex(2), &values[4]);
    EXPECT_EQ((Elements{1, 2, 3, 4}), ElementsOf(list));
    list.InsertBefore(list.FindIndex(0), &values[0]);
    EXPECT_EQ((Elements{0, 1, 2, 3, 4}), ElementsOf(list));
    list.InsertBefore(list.FindIndex(4), &values[9]);
    EXPECT_EQ((Elements{0, 1, 2, 3, 9, 4}), ElementsOf(list));
}

TEST(Position, OfNoneInsertsAtTheEnds) {
    OpenList list{1, 2};
    list.InsertBefore(nullptr, &values[0]);
    list.InsertAfter(nullptr, &values[3]);
    EXPECT_EQ((Elements{0, 1, 2, 3}), ElementsOf(list));
}

TEST(Position, IsWhereAnElementIsRemoved) {
    OpenList list{1, 2, 3, 4};
    list.RemoveAt(list.FindIndex(1));
    EXPECT_EQ((Elements{1, 3, 4}), ElementsOf(list));
    list.RemoveAt(list.FindIndex(0));
    EXPECT_EQ((Elements{3, 4}), ElementsOf(list));
    list.RemoveAt(list.FindIndex(1));
    EXPECT_EQ((Elements{3}), ElementsOf(list));
    list.RemoveAt(list.FindIndex(0));
    EXPECT_EQ((Elements{}), ElementsOf(list));
}

TEST(Position, IsFoundByIndex) {
    const OpenList list{1, 2, 3};
    EXPECT_EQ(list.GetHeadPosition(), list.FindIndex(0));
    EXPECT_EQ(list.GetTailPosition(), list.FindIndex(2));
    EXPECT_EQ(nullptr, list.FindIndex(3));
    EXPECT_EQ(nullptr, OpenList().FindIndex(0));
}

TEST(Position, IsFoundByElement) {
    const OpenList list{1, 2, 1, 3};
    const POSITION first = list.Find(&values[1]);
    EXPECT_EQ(list.FindIndex(0), first);
    EXPECT_EQ(list.FindIndex(2), list.Find(&values[1], first));
    EXPECT_EQ(nullptr, list.Find(&values[1], list.FindIndex(2)));
    EXPECT_EQ(list.FindIndex(3), list.Find(&values[3], first));
    EXPECT_EQ(nullptr, list.Find(&values[3], list.FindIndex(3)));
    EXPECT_EQ(nullptr, list.Find(&values[9]));
    EXPECT_EQ(nullptr, OpenList().Find(nullptr));
}

TEST(PositionDeathTest, OfNoneHasNoElement) {
    OpenList list{1};
    POSITION none = nullptr;
    EXPECT_ASSERTION(list.GetAt(none), "./XList", "position != nullptr");
    EXPECT_ASSERTION(list.SetAt(none, nullptr), "./XList", "position != nullptr");
    EXPECT_ASSERTION(list.GetNext(none), "./XList", "position != nullptr");
    EXPECT_ASSERTION(list.GetPrev(none), "./XList", "position != nullptr");
    EXPECT_ASSERTION(list.RemoveAt(none), "./XList", "position != nullptr");
    EXPECT_ASSERTION((void)list.FindIndex(-1), "./XList", "nIndex >= 0");
}

// ---- Nodes and blocks

TEST(ListBlock, HoldsTenNodesUnlessToldOtherwise) {
    OpenList list;
    for (int i = 0; i < 10; ++i) {
        list.AddTail(&values[i]);
    }
    EXPECT_EQ(1, list.Blocks());
    list.AddTail(&values[10]);
    EXPECT_EQ(2, list.Blocks());
    for (int i = 11; i < 20; ++i) {
        list.AddTail(&values[i]);
    }
    EXPECT_EQ(2, list.Blocks());
    list.AddTail(&values[20]);
    EXPECT_EQ(3, list.Blocks());

    OpenList small(1);
    small.AddHead(&values[0]);
    small.AddHead(&values[1]);
    EXPECT_EQ(2, small.Blocks());
}

TEST(ListBlock, IsFreedWithAllOthersWhenTheLastElementGoes) {
    OpenList list;
    for (int i = 0; i < 11; ++i) {
        list.AddTail(&values[i]);
    }
    for (int i = 0; i < 10; ++i) {
        list.RemoveHead();
    }
    EXPECT_EQ(2, list.Blocks());
    list.RemoveHead();
    EXPECT_EQ(0, list.Blocks());

    list.AddTail(&values[0]);
    list.RemoveTail();
    EXPECT_EQ(0, list.Blocks());
    list.AddTail(&values[0]);
    list.RemoveAt(list.GetHeadPosition());
    EXPECT_EQ(0, list.Blocks());
}

TEST(ListBlock, HandsOutItsFirstNodeFirst) {
    OpenList list(4);
    const auto* first = reinterpret_cast<const char*>(list.AddTail(&values[0]));
    for (size_t i = 1; i < 4; ++i) {
        const auto* node = reinterpret_cast<const char*>(list.AddTail(&values[i]));
        EXPECT_EQ(first + i * OpenList::NodeSize(), node);
    }
}

TEST(ListBlock, TakesFreedNodesBack) {
    OpenList list;
    for (int i = 0; i < 10; ++i) {
        list.AddTail(&values[i]);
    }
    const POSITION freed = list.FindIndex(4);
    list.RemoveAt(freed);
    EXPECT_EQ(freed, list.AddHead(&values[20]));
    EXPECT_EQ(1, list.Blocks());
}

TEST(ListBlock, TakesNoNodeBackThatIsInUse) {
    OpenList list{1, 2, 3};
    list.RemoveAt(list.FindIndex(1));
    list.AddTail(&values[4]);
    list.AddTail(&values[5]);
    EXPECT_EQ((Elements{1, 3, 4, 5}), ElementsOf(list));
}

TEST(ListNode, IsThreeWordsAndHoldsNothingAtFirst) {
    EXPECT_EQ(3 * sizeof(void*), OpenList::NodeSize());
    OpenList list{1, 2};
    list.RemoveHead();  // its node, with an element, is the next to be used
    EXPECT_EQ(nullptr, list.DataOfANewNode());
    list.m_nCount = 1;
}

TEST(ListDeathTest, NeedsABlockSize) {
    EXPECT_ASSERTION(CPtrList(0), "./XList", "nBlockSize > 0");
    EXPECT_ASSERTION(CPtrList(-1), "./XList", "nBlockSize > 0");
}

TEST(ListDeathTest, NoticesACountThatDoesNotFitItsNodes) {
    OpenList list{1, 2};
    EXPECT_ASSERTION((list.m_nCount = 3, list.RemoveAll()), "./XList", "m_nCount == 0");
    EXPECT_ASSERTION((list.m_nCount = 0, list.RemoveAt(list.GetHeadPosition())), "./XList",
                     "m_nCount >= 0");
}

TEST(ListDeathTest, HasNoMoreElementsThanItCanCount) {
    OpenList list;
    EXPECT_ASSERTION((list.m_nCount = std::numeric_limits<int>::max(), list.AddTail(&values[0])),
                     "./XList", "m_nCount < kMostElements");
}

// ---- CPlex

TEST(Plex, IsPutInFrontOfItsChain) {
    CPlex* head = nullptr;
    CPlex* first = CPlex::Create(head, 2, 8);
    EXPECT_EQ(first, head);
    EXPECT_EQ(nullptr, first->pNext);
    CPlex* second = CPlex::Create(head, 3, 4);
    EXPECT_EQ(second, head);
    EXPECT_EQ(first, second->pNext);
    head->FreeDataChain();
}

TEST(Plex, HasItsElementsBehindThePointerToTheNext) {
    CPlex* head = nullptr;
    CPlex* block = CPlex::Create(head, 3, 4);
    EXPECT_EQ(reinterpret_cast<char*>(block) + sizeof(void*), block->data());
    std::fill_n(static_cast<char*>(block->data()), 3 * 4, 'x');
    block->FreeDataChain();
}

TEST(PlexDeathTest, NeedsElements) {
    CPlex* head = nullptr;
    EXPECT_ASSERTION(CPlex::Create(head, 0, 4), "./XList", "nMax > 0 && cbElement > 0");
    EXPECT_ASSERTION(CPlex::Create(head, 4, 0), "./XList", "nMax > 0 && cbElement > 0");
}

TEST(PlexDeathTest, HasNoMoreElementsThanMemory) {
    constexpr size_t kMemory = std::numeric_limits<ptrdiff_t>::max() - sizeof(CPlex);
    // As large that an unsigned can count them.
    constexpr unsigned kSize = sizeof(size_t) > 4 ? std::numeric_limits<unsigned>::max() : 4;
    CPlex* head = nullptr;
    EXPECT_ASSERTION(CPlex::Create(head, static_cast<unsigned>(kMemory / kSize + 1), kSize),
                     "./XList", "nMax <= (kMostMemory - sizeof(CPlex)) / cbElement");
}

}  // namespace
