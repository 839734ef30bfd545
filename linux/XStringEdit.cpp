// CString: changes within a text.
// Tested by tests/unit/linux/string_edit_test.cpp and string_random_test.cpp.

#include <pagerfwd/text_helpers.h>

#include <algorithm>
#include <cstring>

#include "linux/XString.h"
#include "linux/XStringChars.h"

using namespace string_chars;

namespace {

bool IsSpace(char ch) {
    return _ismbcspace(ByteOf(ch)) != 0;
}

// A search for the NUL would find the end of the set.
bool IsOneOf(const char* pszSet, char ch) {
    return ch != '\0' && _mbschr(BytesOf(TextOf(pszSet)), ByteOf(ch)) != nullptr;
}

// Where wanted next stands in the characters from ... end, behind a NUL among them too; or null.
const char* FindNext(const char* from, const char* end, const char* wanted) {
    for (; from < end; from += std::strlen(from) + 1) {
        if (auto* hit = _mbsstr(BytesOf(from), BytesOf(wanted))) {
            return reinterpret_cast<const char*>(hit);
        }
    }
    return nullptr;
}

int CountMatches(const char* from, const char* end, const char* wanted, int nLength) {
    int nMatches = 0;
    while ((from = FindNext(from, end, wanted)) != nullptr) {
        ++nMatches;
        from += nLength;
    }
    return nMatches;
}

}  // namespace

int CString::Insert(int nIndex, char ch) {
    InsertChars(std::clamp(nIndex, 0, GetLength()), &ch, 1);
    return GetLength();
}

int CString::Insert(int nIndex, const char* psz) {
    InsertChars(std::clamp(nIndex, 0, GetLength()), TextOf(psz), LengthOf(psz));
    return GetLength();
}

int CString::Delete(int nIndex, int nCount) {
    const int nOldLength = GetLength();
    nIndex = std::max(nIndex, 0);
    if (nCount < 1 || nIndex >= nOldLength) {
        return nOldLength;
    }

    XASSERT(kUnit, nCount <= GetData()->nDataLength - nIndex);
    CopyBeforeWrite();
    const int nBehind = nIndex + nCount;
    std::copy(m_pchData + nBehind, m_pchData + nOldLength, m_pchData + nIndex);
    CutTo(nOldLength - nCount);
    return nOldLength;  // Kept: callers reckon with the length before the deletion.
}

int CString::Replace(char chOld, char chNew) {
    const auto nCount = std::count(m_pchData, m_pchData + GetLength(), chOld);
    if (nCount > 0) {
        CopyBeforeWrite();
        std::replace(m_pchData, m_pchData + GetLength(), chOld, chNew);
    }
    return static_cast<int>(nCount);
}

int CString::Replace(const char* pszOld, const char* pszNew) {
    const int nOld = LengthOf(pszOld);
    const int nNew = LengthOf(pszNew);
    const char* from = m_pchData;
    const char* const end = m_pchData + GetLength();
    const int nMatches = nOld > 0 ? CountMatches(from, end, pszOld, nOld) : 0;
    if (nMatches == 0) {
        return 0;
    }

    CString replaced;
    const int64_t nGrowth = int64_t{nMatches} * (nNew - nOld);
    replaced.AllocBuffer(ToLength(GetLength() + nGrowth));
    char* to = replaced.m_pchData;
    while (const char* match = FindNext(from, end, pszOld)) {
        to = std::copy(from, match, to);
        to = std::copy_n(TextOf(pszNew), nNew, to);
        from = match + nOld;
    }
    std::copy(from, end, to);
    Swap(replaced);
    return nMatches;
}

int CString::Remove(char ch) {
    const int nOldLength = GetLength();
    if (std::count(m_pchData, m_pchData + nOldLength, ch) == 0) {
        return 0;
    }
    CopyBeforeWrite();
    const char* newEnd = std::remove(m_pchData, m_pchData + nOldLength, ch);
    CutTo(static_cast<int>(newEnd - m_pchData));
    return nOldLength - GetLength();
}

template <class Condition>
void CString::TrimLeftWhere(Condition isTrimmed) {
    const char* const end = m_pchData + GetLength();
    const char* const first = std::find_if_not<const char*>(m_pchData, end, isTrimmed);
    KeepOnly(static_cast<int>(first - m_pchData), static_cast<int>(end - first));
}

template <class Condition>
void CString::TrimRightWhere(Condition isTrimmed) {
    int nKept = GetLength();
    while (nKept > 0 && isTrimmed(m_pchData[nKept - 1])) {
        --nKept;
    }
    KeepOnly(0, nKept);
}

void CString::TrimLeft() {
    TrimLeftWhere(IsSpace);
}

void CString::TrimLeft(char ch) {
    TrimLeftWhere([ch](char each) { return each == ch; });
}

void CString::TrimLeft(const char* pszSet) {
    TrimLeftWhere([pszSet](char each) { return IsOneOf(pszSet, each); });
}

void CString::TrimRight() {
    TrimRightWhere(IsSpace);
}

void CString::TrimRight(char ch) {
    TrimRightWhere([ch](char each) { return each == ch; });
}

void CString::TrimRight(const char* pszSet) {
    TrimRightWhere([pszSet](char each) { return IsOneOf(pszSet, each); });
}

void CString::KeepOnly(int nFirst, int nCount) {
    if (nCount == GetLength()) {
        return;
    }
    CopyBeforeWrite();
    std::memmove(m_pchData, m_pchData + nFirst, static_cast<size_t>(nCount));
    CutTo(nCount);
}

bool CString::Holds(const char* pch) const {
    const auto first = reinterpret_cast<uintptr_t>(m_pchData);
    return reinterpret_cast<uintptr_t>(pch) - first <= static_cast<uintptr_t>(GetAllocLength());
}

void CString::InsertChars(int nIndex, const char* pch, int nCount) {
    if (nCount == 0) {
        return;
    }
    if (Holds(pch)) {  // would move, or go, while it is copied
        const CString apart(pch, nCount);
        InsertChars(nIndex, apart.m_pchData, nCount);
        return;
    }
    const int nNewLength = ToLength(int64_t{GetLength()} + nCount);
    const auto nInserted = static_cast<size_t>(nCount);
    const auto nBehind = static_cast<size_t>(GetLength() - nIndex);
    if (HasRoomFor(nNewLength)) {
        char* gap = m_pchData + nIndex;
        std::memmove(gap + nInserted, gap, nBehind);
        std::memcpy(gap, pch, nInserted);
        SetLength(nNewLength);
    } else {
        CString grown;
        grown.AllocBuffer(nNewLength);
        char* gap = std::copy_n(m_pchData, nIndex, grown.m_pchData);
        std::memcpy(gap, pch, nInserted);
        std::memcpy(gap + nInserted, m_pchData + nIndex, nBehind);
        Swap(grown);
    }
}
