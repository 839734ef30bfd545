// The alarm of a page, as the library takes it, and how much of it a pager gets.
#ifndef PAGERFWD_HOST_EXPLAIN_PAGED_ALARM_H
#define PAGERFWD_HOST_EXPLAIN_PAGED_ALARM_H

#include <cstdint>
#include <optional>
#include <string>

#include "engine/page_text.h"
#include "linux/XStringArray.h"

namespace host {

// Unless it is told otherwise, that of a test page. Texts are in the encoding of the tables.
struct PagedAlarm {
    std::string group = "TEST/000";
    std::string server = "TESTSERVER";
    std::string details = "test";
    int32_t severity = 4;  // 1 critical ... 5 unknown
};

// For the library's builders. Borrows the texts of the alarm.
class AlarmSource {
 public:
    explicit AlarmSource(const PagedAlarm& alarm);
    AlarmSource(const AlarmSource&) = delete;
    AlarmSource& operator=(const AlarmSource&) = delete;

    const PageSource& Source() const { return source_; }

 private:
    CStringArray severity_names_;
    PageSource source_{};
};

// Where a pager of this type gets only the beginning of the text: so many characters of so many.
struct TextCut {
    size_t kept;
    size_t whole;
};
std::optional<TextCut> CutOf(int32_t pagerType, const PagedAlarm& alarm);

}  // namespace host

#endif
