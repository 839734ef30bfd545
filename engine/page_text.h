// What a page says and whom it dials, made from the pager's settings and the alarm: pure functions.
#ifndef PAGERFWD_ENGINE_PAGE_TEXT_H
#define PAGERFWD_ENGINE_PAGE_TEXT_H

#include <cstdint>

#include "linux/XString.h"
#include "linux/XStringArray.h"

// What a page tells of its alarm. The texts are borrowed.
struct PageSource {
    const char* almGroup;
    const char* serverN;
    const char* details;
    int32_t severity;
    const CStringArray* severityNames;  // from severity 1 on; null counts as empty
    uint32_t serverId;
};

// A page, ready for the modem.
struct PageContent {
    CString dialPrefix;  // dialled behind the port's dial command
    CString number;      // empty: the dial is the page
    CString message;
    CString numericCode;         // of a numeric page; not sent
    bool waitForConnect = true;  // false: the modem stays in command state after dialling
};

// What a pager type is called in the trace. Kept: two of the labels bring a closing parenthesis.
const char* PagerTypeLabel(int32_t pagerType);

// The display name of a severity. 0 reads as 1; one beyond the last name has the last; without any
// name, and below 0, it is the text given.
CString SeverityName(const CStringArray* names, int32_t severity, const char* ifNone);

// "PREFIX@NUMBER" into its two parts, at the first '@'; without one, all of it is the number.
void SplitPagerNumber(const char* pagerNumber, PageContent* page);

// "group/severity name/server/details"; of the group, all up to its first '/'.
CString AlarmText(const PageSource& source);

// Three characters of the group behind its first '/', filled up with '0' from the left ("999" when
// there is none), the severity as a digit, and the low byte of the server's identifier.
CString NumericCode(const PageSource& source);

PageContent ComposePage(int32_t pagerType, const char* pagerNumber, const PageSource& source);

#endif
