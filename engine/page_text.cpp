// Texts and numbers of pages.
// Tested by tests/unit/engine/page_text_test.cpp.
#include "engine/page_text.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "engine/chars.h"
#include "modem/COMHdl.h"

namespace {

constexpr int kNoText = 0;

struct TypeFacts {
    const char* label;
    int textLength;  // characters of the alarm text that the pager takes
};

// By pager type.
constexpr TypeFacts kTypes[] = {
    {"signal", kNoText}, {"numeric", kNoText}, {"alphanumeric", 80},
    {"NTT", kNoText},    {"SMS1(TAP) )", 140}, {"SMS2(UCP) )", 140},
};
constexpr TypeFacts kUnknownType = {"UNKNOWN", kNoText};

const TypeFacts& FactsOf(int32_t pagerType) {
    const bool known = pagerType >= 0 && pagerType < static_cast<int32_t>(std::size(kTypes));
    return known ? kTypes[pagerType] : kUnknownType;
}

constexpr int kNumericCodeLength = 3;
constexpr char kNoNumericCode[] = "999";

// The group up to and including its first '/', which one without it gets.
CString GroupPart(const CString& almGroup) {
    const int slash = almGroup.Find('/');
    return slash >= 0 ? almGroup.Left(slash + 1) : almGroup + "/";
}

}  // namespace

const char* PagerTypeLabel(int32_t pagerType) {
    return FactsOf(pagerType).label;
}

CString SeverityName(const CStringArray* names, int32_t severity, const char* ifNone) {
    const int count = names != nullptr ? names->GetSize() : 0;
    if (severity < 0 || count == 0) {
        return ifNone;
    }
    return Chars(names->GetAt(std::clamp(severity - 1, 0, count - 1)));
}

void SplitPagerNumber(const char* pagerNumber, PageContent* page) {
    const CString whole(pagerNumber);
    const int at = whole.Find('@');
    page->dialPrefix = whole.Left(at);  // nothing where there is no '@', at -1
    page->number = whole.Mid(at + 1);
}

CString AlarmText(const PageSource& source) {
    CString text = GroupPart(source.almGroup);
    text += SeverityName(source.severityNames, source.severity, "unknown severity");
    text += "/";
    text += source.serverN;
    text += "/";
    text += source.details;
    return text;
}

CString NumericCode(const PageSource& source) {
    const CString group(source.almGroup);
    const int slash = group.Find('/');
    CString code = slash >= 0 ? group.Mid(slash + 1, kNumericCodeLength) : CString();
    code = code.IsEmpty() ? CString(kNoNumericCode)
                          : CString('0', kNumericCodeLength - code.GetLength()) + code;
    code += CString(static_cast<char>('0' + source.severity), 1);
    code += CString(static_cast<char>(source.serverId), 1);
    return code;
}

PageContent ComposePage(int32_t pagerType, const char* pagerNumber, const PageSource& source) {
    PageContent page;
    SplitPagerNumber(pagerNumber, &page);
    if (const int length = FactsOf(pagerType).textLength; length != kNoText) {
        page.message = AlarmText(source).Left(length);
    } else if (pagerType == kNumericPager) {
        page.numericCode = NumericCode(source);
    } else if (pagerType == kNTTPager) {
        page.message.Format("%d/%s", source.severity, source.serverN);
        page.dialPrefix = CString(pagerNumber) + ";";
        page.waitForConnect = false;
    }
    return page;
}
