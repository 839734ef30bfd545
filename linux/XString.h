// The text class of the whole library: single-byte characters behind a shared, counted buffer.
#ifndef PAGERFWD_LINUX_XSTRING_H
#define PAGERFWD_LINUX_XSTRING_H

#include <cstdarg>
#include <cstdint>

#include "linux/xassert.h"

// The header in front of every text. One heap block holds it and, right behind it, nAllocLength + 1
// characters, of which the one at nDataLength is always a NUL.
struct CStringData {
    int32_t nRefs;  // how many CStrings share the buffer; -1: locked, or the shared empty text
    int32_t nDataLength;   // characters in use, without the terminator
    int32_t nAllocLength;  // characters that fit, without the terminator

    char* data() { return reinterpret_cast<char*>(this + 1); }
};

// The shared empty text. Every empty CString points at its characters; nobody frees or writes it.
struct CEmptyString {
    CStringData header;
    char text[1];
};
extern CEmptyString _afxInitData;
extern CStringData* const _afxDataNil;
extern char* const _afxPchNil;

class CString;
const CString& AfxGetEmptyString();

// A text of single-byte characters. Copies share one buffer until one of them is changed.
//
// Ownership  The last CString that shares a buffer frees it. A pointer into a text (conversion,
//            GetBuffer, LockBuffer) is good until the text is next changed or destroyed.
// Threads    None. The count of sharers is a plain integer, so that even copying a text writes to
//            the buffer of the original: a text that two threads reach needs a lock. Empty texts
//            are the exception, they share nothing that is written.
// Errors     A null pointer given as a text is an empty text. A broken rule (an index outside the
//            text, a length beyond the buffer) fails an assertion and stops the process. No
//            operation throws on its own; memory that runs out is std::bad_alloc.
//
// There is no spare room: a text that outgrows its buffer gets one of exactly the size it needs. An
// argument may be, or point into, the text that is worked on.
//
// Searching stops at a NUL inside the text, as the C functions do; building, cutting, replacing and
// removing go by the length.
class CString {
 public:
    constexpr CString() noexcept : m_pchData(_afxInitData.text) {}
    CString(const CString& src);  // shares the buffer; copies the characters if it is locked
    CString(const char* psz);
    CString(char ch, int nRepeat);          // nRepeat < 1: empty
    CString(const char* pch, int nLength);  // NULs inside are kept; nLength < 1: empty
    ~CString() { Release(); }

    CString& operator=(const CString& src);
    CString& operator=(const char* psz);
    CString& operator+=(const CString& added);
    CString& operator+=(const char* psz);

    operator const char*() const { return m_pchData; }
    int GetLength() const { return GetData()->nDataLength; }
    int GetAllocLength() const { return GetData()->nAllocLength; }
    bool IsEmpty() const { return GetLength() == 0; }

    char GetAt(int nIndex) const {
        CheckIndex(nIndex);
        return m_pchData[nIndex];
    }
    char operator[](int nIndex) const { return GetAt(nIndex); }
    void SetAt(int nIndex, char ch);
    void Empty() { Release(); }

    // A buffer of its own with room for at least nMinLength characters, to be written to; the text
    // and its length stay. ReleaseBuffer ends the writing and says how long the text now is.
    char* GetBuffer(int nMinLength);
    void ReleaseBuffer(int nNewLength = -1);   // -1: up to the first NUL
    char* GetBufferSetLength(int nNewLength);  // characters beyond the old text: yet to be written
    void FreeExtra();                          // gives room not in use back; not of a locked buffer

    // Keeps the buffer from being shared: copies made while it is locked have buffers of their own.
    // A change that needs another buffer ends the lock, as does one that empties the text.
    char* LockBuffer();
    void UnlockBuffer();

    // All return the index of the find, or -1. nStart < 0 is 0. The terminating NUL can be found as
    // a character, by a search that starts within the text.
    int Find(char ch, int nStart = 0) const;          // -1 also for a start at or beyond the end
    int Find(const char* psz, int nStart = 0) const;  // -1 also for a start beyond the end
    int ReverseFind(char ch) const;
    // Not the leftmost hit: the first hit of the first character of the set that occurs at all.
    int FindOneOf(const char* pszSet) const;

    // Counts and indices below 0 are 0; counts are cut to what remains. A result that is the whole
    // text shares its buffer.
    CString Mid(int nFirst) const;
    CString Mid(int nFirst, int nCount) const;
    CString Left(int nCount) const;
    CString Right(int nCount) const;

    // Return the new length. nIndex is clamped to 0 ... length.
    int Insert(int nIndex, char ch);
    int Insert(int nIndex, const char* psz);

    // Removes nCount characters and returns the length before that, not the new one. nIndex < 0 is
    // 0; without effect unless nCount >= 1 and nIndex < length. Not cut: more than remain from
    // nIndex on are a mistake of the caller's, an assertion.
    int Delete(int nIndex, int nCount = 1);

    // Return how many they replaced or removed. Matches don't overlap; an empty pszOld has none.
    int Replace(char chOld, char chNew);
    int Replace(const char* pszOld, const char* pszNew);
    int Remove(char ch);

    void TrimLeft();
    void TrimLeft(char ch);
    void TrimLeft(const char* pszSet);  // removes any character of the set
    void TrimRight();
    void TrimRight(char ch);
    void TrimRight(const char* pszSet);

    // The text becomes what printf would print. Conversions: d i u x X o p, c C, s S, e f g G, n;
    // any other fails an assertion, as does a negative width or precision from the arguments. What
    // the C library refuses to print gives an empty text.
    [[gnu::format(printf, 2, 3)]] void Format(const char* pszFormat, ...);
    [[gnu::format(printf, 2, 0)]] void FormatV(const char* pszFormat, va_list args);

 protected:
    CStringData* GetData() const { return reinterpret_cast<CStringData*>(m_pchData) - 1; }
    void CheckIndex(int nIndex) const {
        XASSERT("linux/XString", nIndex >= 0);
        XASSERT("linux/XString", nIndex < GetData()->nDataLength);
    }

    void Swap(CString& other) noexcept;
    void AllocBuffer(int nLength);  // Requires: points at the shared empty text.
    void Release() noexcept;
    void CopyBeforeWrite();
    bool HasRoomFor(int nLength) const;  // in a buffer that is not shared
    bool Holds(const char* pch) const;   // whether pch points into the buffer
    void SetLength(int nNewLength);      // Requires: a buffer that is not shared.
    void CutTo(int nNewLength);  // the same; with nothing left, back to the shared empty text
    void Assign(const char* pch, int nLength);
    void InsertChars(int nIndex, const char* pch, int nCount);
    void KeepOnly(int nFirst, int nCount);
    template <class Condition>
    void TrimLeftWhere(Condition isTrimmed);
    template <class Condition>
    void TrimRightWhere(Condition isTrimmed);
    int Print(const char* format, va_list args);  // as vsnprintf, into the buffer as it is
    CString Part(int nFirst, int nCount) const;

    char* m_pchData;  // the first character, just behind the buffer's header
};

CString operator+(const CString& left, const CString& right);
CString operator+(const CString& left, const char* right);
CString operator+(const char* left, const CString& right);
// A character is no text; without these, text + 'x' would move a pointer.
CString operator+(const CString& left, char right) = delete;
CString operator+(char left, const CString& right) = delete;

bool operator==(const CString& left, const CString& right);
bool operator==(const CString& left, const char* right);
bool operator==(const char* left, const CString& right);
bool operator!=(const CString& left, const CString& right);
bool operator!=(const CString& left, const char* right);
bool operator!=(const char* left, const CString& right);

#endif
