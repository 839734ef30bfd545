// CString: its buffers, how they are shared, and assignment. Searching and cutting are in
// XStringSearch.cpp, changes within a text in XStringEdit.cpp, printing in XStringFormat.cpp.
// Tested by tests/unit/linux/string_buffer_test.cpp and string_random_test.cpp.

#include "linux/XString.h"

#include <pagerfwd/text_helpers.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "linux/XStringChars.h"

CEmptyString _afxInitData = {{-1, 0, 0}, {'\0'}};
CStringData* const _afxDataNil = &_afxInitData.header;
char* const _afxPchNil = _afxInitData.text;

using namespace string_chars;

namespace {

const CString emptyString;

// The platform's names, but plain arithmetic: whoever shares texts between threads has a lock.
int32_t InterlockedIncrement(int32_t* value) {
    return ++*value;
}
int32_t InterlockedDecrement(int32_t* value) {
    return --*value;
}

}  // namespace

const CString& AfxGetEmptyString() {
    return emptyString;
}

CString::CString(const CString& src) : CString() {
    if (src.IsEmpty()) {
        return;
    }
    if (src.GetData()->nRefs < 0) {
        Assign(src.m_pchData, src.GetLength());
        return;
    }
    m_pchData = src.m_pchData;
    InterlockedIncrement(&GetData()->nRefs);
}

CString::CString(const char* psz) : CString() {
    Assign(TextOf(psz), LengthOf(psz));
}

CString::CString(char ch, int nRepeat) : CString() {
    AllocBuffer(std::max(nRepeat, 0));
    std::fill_n(m_pchData, GetLength(), ch);
}

CString::CString(const char* pch, int nLength) : CString() {
    if (pch != nullptr) {
        Assign(pch, std::max(nLength, 0));
    }
}

CString& CString::operator=(const CString& src) {
    if (m_pchData == src.m_pchData) {
        return *this;
    }
    if (src.GetData()->nRefs < 0) {
        Assign(src.m_pchData, src.GetLength());
    } else {
        CString shared(src);
        Swap(shared);
    }
    return *this;
}

CString& CString::operator=(const char* psz) {
    Assign(TextOf(psz), LengthOf(psz));
    return *this;
}

CString& CString::operator+=(const CString& added) {
    InsertChars(GetLength(), added.m_pchData, added.GetLength());
    return *this;
}

CString& CString::operator+=(const char* psz) {
    InsertChars(GetLength(), TextOf(psz), LengthOf(psz));
    return *this;
}

void CString::SetAt(int nIndex, char ch) {
    XASSERT(kUnit, nIndex >= 0);
    XASSERT(kUnit, nIndex < GetData()->nDataLength);
    CopyBeforeWrite();
    m_pchData[nIndex] = ch;
}

char* CString::GetBuffer(int nMinLength) {
    if (!HasRoomFor(nMinLength)) {
        const int nLength = GetLength();
        CString own;
        own.AllocBuffer(std::max(nMinLength, nLength));
        std::memcpy(own.m_pchData, m_pchData, static_cast<size_t>(nLength));
        own.SetLength(nLength);
        Swap(own);
    }
    return m_pchData;
}

void CString::ReleaseBuffer(int nNewLength) {
    CopyBeforeWrite();
    CutTo(nNewLength == -1 ? LengthOf(m_pchData) : nNewLength);
}

char* CString::GetBufferSetLength(int nNewLength) {
    GetBuffer(nNewLength);
    CutTo(nNewLength);
    return m_pchData;
}

void CString::FreeExtra() {
    const bool isLocked = GetData()->nRefs < 0;
    if (isLocked || GetData()->nDataLength == GetData()->nAllocLength) {
        return;
    }
    CString tight(m_pchData, GetLength());
    Swap(tight);
}

char* CString::LockBuffer() {
    GetBuffer(0);
    if (GetData() != _afxDataNil) {
        GetData()->nRefs = -1;
    }
    return m_pchData;
}

void CString::UnlockBuffer() {
    XASSERT(kUnit, GetData()->nRefs == -1);
    if (GetData() != _afxDataNil) {
        GetData()->nRefs = 1;
    }
}

void CString::Swap(CString& other) noexcept {
    std::swap(m_pchData, other.m_pchData);
}

void CString::AllocBuffer(int nLength) {
    XASSERT(kUnit, nLength >= 0);
    XASSERT(kUnit, nLength <= kMostCharacters);
    if (nLength == 0) {
        return;
    }
    void* block = ::operator new(sizeof(CStringData) + static_cast<size_t>(nLength) + 1);
    m_pchData = (new (block) CStringData{1, nLength, nLength})->data();
    m_pchData[nLength] = '\0';
}

void CString::Release() noexcept {
    CStringData* pData = GetData();
    if (pData == _afxDataNil) {
        return;
    }
    if (InterlockedDecrement(&pData->nRefs) < 1) {
        ::operator delete(pData);
    }
    m_pchData = _afxPchNil;
}

void CString::CopyBeforeWrite() {
    if (GetData()->nRefs <= 1) {
        return;
    }
    CString own(m_pchData, GetLength());
    Swap(own);
}

bool CString::HasRoomFor(int nLength) const {
    return GetData()->nRefs <= 1 && nLength <= GetData()->nAllocLength;
}

void CString::SetLength(int nNewLength) {
    XASSERT(kUnit, GetData()->nRefs <= 1);
    XASSERT(kUnit, nNewLength >= 0);
    XASSERT(kUnit, nNewLength <= GetData()->nAllocLength);
    if (GetData() == _afxDataNil) {
        return;
    }
    GetData()->nDataLength = nNewLength;
    m_pchData[nNewLength] = '\0';
}

void CString::CutTo(int nNewLength) {
    SetLength(nNewLength);
    if (nNewLength == 0) {
        Release();
    }
}

void CString::Assign(const char* pch, int nLength) {
    if (nLength == 0) {
        Release();
    } else if (HasRoomFor(nLength)) {
        std::memmove(m_pchData, pch, static_cast<size_t>(nLength));
        SetLength(nLength);
    } else {
        CString own;
        own.AllocBuffer(nLength);
        std::memcpy(own.m_pchData, pch, static_cast<size_t>(nLength));
        Swap(own);
    }
}

CString operator+(const CString& left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
}

CString operator+(const CString& left, const char* right) {
    CString sum(left);
    sum += right;
    return sum;
}

CString operator+(const char* left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
}

bool operator==(const CString& left, const CString& right) {
    return _mbscmp(BytesOf(left), BytesOf(right)) == 0;
}

bool operator==(const CString& left, const char* right) {
    return _mbscmp(BytesOf(left), BytesOf(TextOf(right))) == 0;
}

bool operator==(const char* left, const CString& right) {
    return right == left;
}
bool operator!=(const CString& left, const CString& right) {
    return !(left == right);
}
bool operator!=(const CString& left, const char* right) {
    return !(left == right);
}
bool operator!=(const char* left, const CString& right) {
    return !(left == right);
}
