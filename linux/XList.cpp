// CPtrList and CPlex.
// Tested by tests/unit/linux/list_test.cpp.

#include "linux/XList.h"

#include <limits>
#include <new>

#include "linux/xassert.h"

namespace {

constexpr const char* kUnit = "./XList";

// As constants: an assertion would show what a macro stands for instead of its name.
constexpr int kMostElements = std::numeric_limits<int>::max();
constexpr size_t kMostMemory = std::numeric_limits<ptrdiff_t>::max();

}  // namespace

CPlex* CPlex::Create(CPlex*& head, unsigned nMax, unsigned cbElement) {
    XASSERT(kUnit, nMax > 0 && cbElement > 0);
    XASSERT(kUnit, nMax <= (kMostMemory - sizeof(CPlex)) / cbElement);
    void* block = ::operator new (sizeof(CPlex) + size_t{nMax} * cbElement);
    head = new (block) CPlex{head};
    return head;
}

void CPlex::FreeDataChain() {
    CPlex* pBlock = this;
    while (pBlock != nullptr) {
        CPlex* pNextBlock = pBlock->pNext;
        ::operator delete(pBlock);
        pBlock = pNextBlock;
    }
}

CPtrList::CPtrList(int nBlockSize) : m_nBlockSize(nBlockSize) {
    XASSERT(kUnit, nBlockSize > 0);
}

CPtrList::~CPtrList() {
    RemoveAll();
}

void* CPtrList::GetHead() const {
    XASSERT(kUnit, m_nCount > 0);
    return m_pNodeHead->data;
}

void* CPtrList::GetTail() const {
    XASSERT(kUnit, m_nCount > 0);
    return m_pNodeTail->data;
}

void* CPtrList::RemoveHead() {
    void* removed = GetHead();
    RemoveAt(GetHeadPosition());
    return removed;
}

void* CPtrList::RemoveTail() {
    void* removed = GetTail();
    RemoveAt(GetTailPosition());
    return removed;
}

POSITION CPtrList::AddHead(void* newElement) {
    return LinkBetween(nullptr, m_pNodeHead, newElement);
}

POSITION CPtrList::AddTail(void* newElement) {
    return LinkBetween(m_pNodeTail, nullptr, newElement);
}

// By the count at the start, since a list may be added to itself.
void CPtrList::AddHead(const CPtrList* pNewList) {
    XASSERT(kUnit, pNewList != nullptr);
    POSITION position = pNewList->GetTailPosition();
    for (int nLeft = pNewList->m_nCount; nLeft > 0; --nLeft) {
        AddHead(pNewList->GetPrev(position));
    }
}

void CPtrList::AddTail(const CPtrList* pNewList) {
    XASSERT(kUnit, pNewList != nullptr);
    POSITION position = pNewList->GetHeadPosition();
    for (int nLeft = pNewList->m_nCount; nLeft > 0; --nLeft) {
        AddTail(pNewList->GetNext(position));
    }
}

void CPtrList::RemoveAll() {
    for (CNode* pNode = m_pNodeHead; pNode != nullptr; pNode = pNode->pNext) {
        --m_nCount;
    }
    XASSERT(kUnit, m_nCount == 0);
    m_pNodeHead = nullptr;
    m_pNodeTail = nullptr;
    m_pNodeFree = nullptr;
    if (m_pBlocks != nullptr) {
        m_pBlocks->FreeDataChain();
    }
    m_pBlocks = nullptr;
}

POSITION CPtrList::GetHeadPosition() const {
    return PositionOf(m_pNodeHead);
}
POSITION CPtrList::GetTailPosition() const {
    return PositionOf(m_pNodeTail);
}

void* CPtrList::GetNext(POSITION& position) const {
    const CNode* pNode = NodeAt(position);
    position = PositionOf(pNode->pNext);
    return pNode->data;
}

void* CPtrList::GetPrev(POSITION& position) const {
    const CNode* pNode = NodeAt(position);
    position = PositionOf(pNode->pPrev);
    return pNode->data;
}

void* CPtrList::GetAt(POSITION position) const {
    return NodeAt(position)->data;
}

void CPtrList::SetAt(POSITION position, void* newElement) {
    NodeAt(position)->data = newElement;
}

void CPtrList::RemoveAt(POSITION position) {
    CNode* pNode = NodeAt(position);
    CNode* pPrev = pNode->pPrev;
    CNode* pNext = pNode->pNext;
    (pPrev != nullptr ? pPrev->pNext : m_pNodeHead) = pNext;
    (pNext != nullptr ? pNext->pPrev : m_pNodeTail) = pPrev;
    FreeNode(pNode);
}

POSITION CPtrList::InsertBefore(POSITION position, void* newElement) {
    if (position == nullptr) {
        return AddHead(newElement);
    }
    CNode* pNode = NodeAt(position);
    return LinkBetween(pNode->pPrev, pNode, newElement);
}

POSITION CPtrList::InsertAfter(POSITION position, void* newElement) {
    if (position == nullptr) {
        return AddTail(newElement);
    }
    CNode* pNode = NodeAt(position);
    return LinkBetween(pNode, pNode->pNext, newElement);
}

POSITION CPtrList::FindIndex(int nIndex) const {
    XASSERT(kUnit, nIndex >= 0);
    if (nIndex >= m_nCount) {
        return nullptr;
    }
    CNode* pNode = m_pNodeHead;
    for (; nIndex > 0; --nIndex) {
        pNode = pNode->pNext;
    }
    return PositionOf(pNode);
}

POSITION CPtrList::Find(void* searchValue, POSITION startAfter) const {
    CNode* pNode = startAfter != nullptr ? NodeAt(startAfter)->pNext : m_pNodeHead;
    while (pNode != nullptr && pNode->data != searchValue) {
        pNode = pNode->pNext;
    }
    return PositionOf(pNode);
}

CPtrList::CNode* CPtrList::NodeAt(POSITION position) {
    XASSERT(kUnit, position != nullptr);
    return reinterpret_cast<CNode*>(position);
}

POSITION CPtrList::PositionOf(CNode* pNode) {
    return reinterpret_cast<POSITION>(pNode);
}

// Links a new block's nodes so that the first of the block is handed out first.
void CPtrList::AddBlock() {
    const auto nNodes = static_cast<unsigned>(m_nBlockSize);
    CPlex* pBlock = CPlex::Create(m_pBlocks, nNodes, sizeof(CNode));
    auto* pNodes = static_cast<CNode*>(pBlock->data());
    for (unsigned i = nNodes; i-- > 0;) {
        m_pNodeFree = new (pNodes + i) CNode{m_pNodeFree, nullptr, nullptr};
    }
}

CPtrList::CNode* CPtrList::NewNode(CNode* pPrev, CNode* pNext) {
    XASSERT(kUnit, m_nCount < kMostElements);
    if (m_pNodeFree == nullptr) {
        AddBlock();
    }
    CNode* pNode = m_pNodeFree;
    m_pNodeFree = pNode->pNext;
    *pNode = CNode{pNext, pPrev, nullptr};
    ++m_nCount;
    return pNode;
}

// Requires: the node is linked to nothing any more.
void CPtrList::FreeNode(CNode* pNode) {
    pNode->pNext = m_pNodeFree;
    m_pNodeFree = pNode;
    --m_nCount;
    XASSERT(kUnit, m_nCount >= 0);
    if (m_nCount == 0) {
        RemoveAll();
    }
}

POSITION CPtrList::LinkBetween(CNode* pPrev, CNode* pNext, void* newElement) {
    CNode* pNode = NewNode(pPrev, pNext);
    pNode->data = newElement;
    (pPrev != nullptr ? pPrev->pNext : m_pNodeHead) = pNode;
    (pNext != nullptr ? pNext->pPrev : m_pNodeTail) = pNode;
    return PositionOf(pNode);
}
