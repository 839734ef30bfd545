// An array of texts.
#ifndef PAGERFWD_LINUX_XSTRINGARRAY_H
#define PAGERFWD_LINUX_XSTRINGARRAY_H

#include "linux/XString.h"

// A growing array of CString. Elements move bitwise when the array grows or shifts, so a reference
// to an element is good only until then. What is put in may be such an element: it is taken by
// value where the array may grow.
//
// Ownership  The array owns its elements; what is put in shares the buffer of the text given.
// Threads    None: callers serialise.
// Errors     A negative index or size, or an element that isn't there, fails an assertion.
class CStringArray {
 public:
    CStringArray() = default;
    ~CStringArray();
    CStringArray(const CStringArray&) = delete;
    CStringArray& operator=(const CStringArray&) = delete;

    int GetSize() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }

    // Cuts the array or fills it up with empty texts. nGrowBy: by how many elements it grows at
    // least when it has to, 0: an eighth of its size, but 4 to 1024; -1: as it was. Size 0 frees
    // the memory.
    void SetSize(int nNewSize, int nGrowBy = -1);
    void RemoveAll() { SetSize(0); }
    void FreeExtra();  // gives memory for elements that aren't there back

    const CString& GetAt(int nIndex) const;
    CString& operator[](int nIndex);
    const CString& operator[](int nIndex) const { return GetAt(nIndex); }
    void SetAt(int nIndex, const CString& newElement);

    // An index at or beyond the end makes the array so long that it is the last.
    void SetAtGrow(int nIndex, CString newElement);
    void SetAtGrow(int nIndex, const char* psz);
    int Add(const CString& newElement);  // returns its index

    int Append(const CStringArray& src);  // returns the index of the first one appended
    void Copy(const CStringArray& src);   // becomes equal to src

    // Insert before nIndex; between the old end and an index beyond it, empty texts appear.
    void InsertAt(int nIndex, CString newElement, int nCount = 1);
    void InsertAt(int nStartIndex, const CStringArray& src);
    void RemoveAt(int nIndex, int nCount = 1);

    // On raw memory: makes nCount empty texts; ends them. And between texts: dest[i] = src[i].
    static void ConstructElements(CString* pElements, int nCount);
    static void DestructElements(CString* pElements, int nCount);
    static void CopyElements(CString* pDest, const CString* pSrc, int nCount);

 protected:
    static CString* AllocElements(int nCount);                                  // raw memory
    static void MoveElements(CString* pDest, const CString* pSrc, int nCount);  // bitwise
    void FreeArray();  // Requires: no elements.
    void MoveToNewArray(int nMaxSize);
    int GrownMaxSize(int nNewSize) const;
    void OpenGap(int nIndex, int nCount);  // of empty texts

    CString* m_pData = nullptr;
    int m_nSize = 0;     // elements in use
    int m_nMaxSize = 0;  // elements allocated
    int m_nGrowBy = 0;   // 0: worked out at each growth
};

#endif
