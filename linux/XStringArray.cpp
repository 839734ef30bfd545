// CStringArray.
// Tested by tests/unit/linux/string_array_test.cpp.

#include "linux/XStringArray.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "linux/XStringChars.h"

using string_chars::kUnit;

namespace {

// As constants: an assertion would show what a macro stands for instead of its name.
constexpr int kMostElements = std::numeric_limits<int>::max();
constexpr size_t kMostInMemory = std::numeric_limits<ptrdiff_t>::max() / sizeof(CString);

}  // namespace

CStringArray::~CStringArray() {
    SetSize(0);
}

void CStringArray::SetSize(int nNewSize, int nGrowBy) {
    XASSERT(kUnit, nNewSize >= 0);
    if (nGrowBy != -1) {
        m_nGrowBy = nGrowBy;
    }
    if (nNewSize > m_nMaxSize) {
        MoveToNewArray(GrownMaxSize(nNewSize));
    }
    if (nNewSize > m_nSize) {
        ConstructElements(m_pData + m_nSize, nNewSize - m_nSize);
    } else {
        DestructElements(m_pData + nNewSize, m_nSize - nNewSize);
    }
    m_nSize = nNewSize;
    if (nNewSize == 0) {
        FreeArray();
    }
}

void CStringArray::FreeExtra() {
    if (m_nSize == 0) {
        FreeArray();
    } else if (m_nMaxSize > m_nSize) {
        MoveToNewArray(m_nSize);
    }
}

const CString& CStringArray::GetAt(int nIndex) const {
    XASSERT(kUnit, nIndex >= 0);
    XASSERT(kUnit, nIndex < m_nSize);
    return m_pData[nIndex];
}

CString& CStringArray::operator[](int nIndex) {
    XASSERT(kUnit, nIndex >= 0);
    XASSERT(kUnit, nIndex < m_nSize);
    return m_pData[nIndex];
}

void CStringArray::SetAt(int nIndex, const CString& newElement) {
    (*this)[nIndex] = newElement;
}

void CStringArray::SetAtGrow(int nIndex, CString newElement) {
    XASSERT(kUnit, nIndex >= 0);
    XASSERT(kUnit, nIndex < kMostElements);
    if (nIndex >= m_nSize) {
        SetSize(nIndex + 1);
    }
    m_pData[nIndex] = newElement;
}

void CStringArray::SetAtGrow(int nIndex, const char* psz) {
    SetAtGrow(nIndex, CString(psz));
}

int CStringArray::Add(const CString& newElement) {
    SetAtGrow(m_nSize, newElement);
    return m_nSize - 1;
}

int CStringArray::Append(const CStringArray& src) {
    const int nOldSize = m_nSize;
    InsertAt(nOldSize, src);
    return nOldSize;
}

void CStringArray::Copy(const CStringArray& src) {
    XASSERT(kUnit, this != &src);
    SetSize(src.m_nSize);
    CopyElements(m_pData, src.m_pData, m_nSize);
}

void CStringArray::InsertAt(int nIndex, CString newElement, int nCount) {
    XASSERT(kUnit, nIndex >= 0);
    XASSERT(kUnit, nCount > 0);
    OpenGap(nIndex, nCount);
    std::fill_n(m_pData + nIndex, nCount, newElement);
}

void CStringArray::InsertAt(int nStartIndex, const CStringArray& src) {
    XASSERT(kUnit, this != &src);
    if (src.IsEmpty()) {
        return;
    }
    OpenGap(nStartIndex, src.m_nSize);
    CopyElements(m_pData + nStartIndex, src.m_pData, src.m_nSize);
}

void CStringArray::RemoveAt(int nIndex, int nCount) {
    XASSERT(kUnit, nIndex >= 0);
    XASSERT(kUnit, nCount >= 0);
    XASSERT(kUnit, nCount <= m_nSize - nIndex);
    const int nBehind = nIndex + nCount;
    DestructElements(m_pData + nIndex, nCount);
    MoveElements(m_pData + nIndex, m_pData + nBehind, m_nSize - nBehind);
    m_nSize -= nCount;
}

void CStringArray::ConstructElements(CString* pElements, int nCount) {
    for (int i = 0; i < nCount; ++i) {
        new (pElements + i) CString;
    }
}

void CStringArray::DestructElements(CString* pElements, int nCount) {
    for (int i = 0; i < nCount; ++i) {
        pElements[i].~CString();
    }
}

void CStringArray::CopyElements(CString* pDest, const CString* pSrc, int nCount) {
    for (int i = 0; i < nCount; ++i) {
        pDest[i] = pSrc[i];
    }
}

CString* CStringArray::AllocElements(int nCount) {
    const auto count = static_cast<size_t>(nCount);
    XASSERT(kUnit, count <= kMostInMemory);
    return static_cast<CString*>(::operator new(count * sizeof(CString)));
}

// A CString is one pointer, which nothing points back to, so its bytes are all there is to move.
void CStringArray::MoveElements(CString* pDest, const CString* pSrc, int nCount) {
    if (pSrc == nullptr) {
        return;
    }
    std::memmove(static_cast<void*>(pDest), static_cast<const void*>(pSrc),
                 static_cast<size_t>(nCount) * sizeof(CString));
}

void CStringArray::FreeArray() {
    ::operator delete(m_pData);
    m_pData = nullptr;
    m_nMaxSize = 0;
}

void CStringArray::MoveToNewArray(int nMaxSize) {
    CString* pNewData = AllocElements(nMaxSize);
    MoveElements(pNewData, m_pData, m_nSize);
    ::operator delete(m_pData);
    m_pData = pNewData;
    m_nMaxSize = nMaxSize;
}

int CStringArray::GrownMaxSize(int nNewSize) const {
    if (m_nMaxSize == 0) {
        return nNewSize;
    }
    const int nStep = m_nGrowBy != 0 ? m_nGrowBy : std::clamp(m_nSize / 8, 4, 1024);
    const int64_t nGrown = std::min<int64_t>(int64_t{m_nMaxSize} + nStep, kMostElements);
    return std::max(nNewSize, static_cast<int>(nGrown));
}

void CStringArray::OpenGap(int nIndex, int nCount) {
    XASSERT(kUnit, nIndex >= 0);
    const int nOldSize = m_nSize;
    const int nStart = std::max(nIndex, nOldSize);
    XASSERT(kUnit, nCount <= kMostElements - nStart);
    SetSize(nStart + nCount);
    if (nIndex < nOldSize) {
        DestructElements(m_pData + nOldSize, nCount);
        MoveElements(m_pData + nIndex + nCount, m_pData + nIndex, nOldSize - nIndex);
        ConstructElements(m_pData + nIndex, nCount);
    }
}
