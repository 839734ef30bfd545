// The alarm of a page. Tested by tests/unit/host/explanation_test.cpp.
#include "host/explain/paged_alarm.h"

#include <algorithm>

#include "host/explain/fields.h"
#include "modem/COMHdl.h"

namespace host {
namespace {

bool TakesTheAlarmText(int32_t pagerType) {
    return pagerType == kAlphanumericPager || pagerType == kFirstSmsService ||
           pagerType == kSecondSmsService;
}

}  // namespace

AlarmSource::AlarmSource(const PagedAlarm& alarm) {
    for (const char* name : {"Critical", "Major", "Minor", "Informational", "Unknown"}) {
        severity_names_.SetAtGrow(severity_names_.GetSize(), name);
    }
    source_ = {alarm.group.c_str(), alarm.server.c_str(), alarm.details.c_str(),
               alarm.severity,      &severity_names_,     0};
}

std::optional<TextCut> CutOf(int32_t pagerType, const PagedAlarm& alarm) {
    const AlarmSource source(alarm);
    const size_t sent = BytesOf(ComposePage(pagerType, "", source.Source()).message).size();
    TextCut cut{sent, sent};
    if (TakesTheAlarmText(pagerType)) {
        cut.whole = BytesOf(AlarmText(source.Source())).size();
    } else if (pagerType == kNTTPager) {
        cut.kept = std::min(sent, kNttBytes);
    }
    return cut.kept < cut.whole ? std::optional<TextCut>(cut) : std::nullopt;
}

}  // namespace host
