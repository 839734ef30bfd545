// CString: searching and cutting.
// Tested by tests/unit/linux/string_search_test.cpp and string_random_test.cpp.

#include <pagerfwd/text_helpers.h>

#include <algorithm>

#include "linux/XString.h"
#include "linux/XStringChars.h"

using namespace string_chars;

namespace {

int IndexOf(const char* text, const unsigned char* hit) {
    return hit == nullptr ? -1 : static_cast<int>(hit - BytesOf(text));
}

}  // namespace

int CString::Find(char ch, int nStart) const {
    nStart = std::max(nStart, 0);
    if (nStart >= GetLength()) {
        return -1;
    }
    return IndexOf(m_pchData, _mbschr(BytesOf(m_pchData + nStart), ByteOf(ch)));
}

int CString::Find(const char* psz, int nStart) const {
    nStart = std::max(nStart, 0);
    if (nStart > GetLength()) {
        return -1;
    }
    return IndexOf(m_pchData, _mbsstr(BytesOf(m_pchData + nStart), BytesOf(TextOf(psz))));
}

int CString::ReverseFind(char ch) const {
    return IndexOf(m_pchData, _mbsrchr(BytesOf(m_pchData), ByteOf(ch)));
}

// Kept: the order of the set decides, not that of the text; callers list what they prefer first.
int CString::FindOneOf(const char* pszSet) const {
    for (auto* wanted = BytesOf(TextOf(pszSet)); *wanted != '\0'; wanted = _mbsinc(wanted)) {
        if (auto* hit = _mbschr(BytesOf(m_pchData), *wanted)) {
            return IndexOf(m_pchData, hit);
        }
    }
    return -1;
}

CString CString::Mid(int nFirst) const {
    return Mid(nFirst, GetLength());
}

CString CString::Mid(int nFirst, int nCount) const {
    nFirst = std::clamp(nFirst, 0, GetLength());
    nCount = std::clamp(nCount, 0, GetLength() - nFirst);
    return Part(nFirst, nCount);
}

CString CString::Left(int nCount) const {
    return Mid(0, nCount);
}

CString CString::Right(int nCount) const {
    nCount = std::clamp(nCount, 0, GetLength());
    return Part(GetLength() - nCount, nCount);
}

CString CString::Part(int nFirst, int nCount) const {
    XASSERT(kUnit, nFirst >= 0);
    XASSERT(kUnit, nFirst + nCount <= GetData()->nDataLength);
    return nCount == GetLength() ? *this : CString(m_pchData + nFirst, nCount);
}
