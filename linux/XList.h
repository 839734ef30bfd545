// A doubly linked list of pointers, and the blocks its nodes are cut from.
#ifndef PAGERFWD_LINUX_XLIST_H
#define PAGERFWD_LINUX_XLIST_H

#include <cstddef>

// A block of memory for elements of one size, chained to the blocks made before it.
//
// Ownership  Whoever holds the head of the chain frees it with FreeDataChain.
// Threads    None: callers serialise.
struct CPlex {
    CPlex* pNext;

    void* data() { return this + 1; }  // the first element

    // Makes a block for nMax elements of cbElement bytes and puts it in front of the chain.
    static CPlex* Create(CPlex*& head, unsigned nMax, unsigned cbElement);
    void FreeDataChain();  // this block and all behind it
};

// A place in a list, from the list and for the list: good until its element is removed. Null is the
// place before the first and behind the last.
using POSITION = struct CListPosition*;

// A doubly linked list of pointers. Its nodes come from blocks that are freed together, when the
// last element goes.
//
// Ownership  The list never touches what its elements point to.
// Threads    None: callers serialise.
// Errors     Taking from an empty list, or a null POSITION where an element is needed, fails an
//            assertion. A POSITION that this list did not hand out can't be told and breaks it.
class CPtrList {
 public:
    explicit CPtrList(int nBlockSize = 10);  // nodes a block
    ~CPtrList();
    CPtrList(const CPtrList&) = delete;
    CPtrList& operator=(const CPtrList&) = delete;

    int GetCount() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }

    void* GetHead() const;
    void* GetTail() const;
    void* RemoveHead();
    void* RemoveTail();
    POSITION AddHead(void* newElement);
    POSITION AddTail(void* newElement);
    // Add all elements of another list in their order; the other stays as it is.
    void AddHead(const CPtrList* pNewList);
    void AddTail(const CPtrList* pNewList);
    void RemoveAll();

    POSITION GetHeadPosition() const;  // null if empty
    POSITION GetTailPosition() const;
    void* GetNext(
        POSITION& position) const;  // the element there; position moves on, null at the end
    void* GetPrev(POSITION& position) const;
    void* GetAt(POSITION position) const;
    void SetAt(POSITION position, void* newElement);
    void RemoveAt(POSITION position);
    POSITION InsertBefore(POSITION position, void* newElement);  // before null: as the head
    POSITION InsertAfter(POSITION position, void* newElement);   // behind null: as the tail

    POSITION FindIndex(int nIndex) const;  // null if there are no more than nIndex elements
    // The first that equals searchValue behind startAfter (null: from the head on), or null.
    POSITION Find(void* searchValue, POSITION startAfter = nullptr) const;

 protected:
    struct CNode {
        CNode* pNext;
        CNode* pPrev;
        void* data;
    };

    static CNode* NodeAt(POSITION position);
    static POSITION PositionOf(CNode* pNode);
    void AddBlock();
    CNode* NewNode(CNode* pPrev, CNode* pNext);
    void FreeNode(CNode* pNode);
    POSITION LinkBetween(CNode* pPrev, CNode* pNext, void* newElement);

    CNode* m_pNodeHead = nullptr;
    CNode* m_pNodeTail = nullptr;
    int m_nCount = 0;
    CNode* m_pNodeFree = nullptr;  // nodes not in use, chained by pNext
    CPlex* m_pBlocks = nullptr;
    int m_nBlockSize;
};

#endif
