// The conditions by which the library changes and deletes rows.
//
// They arrive as text, and in a few forms only. A text is matched against these forms to the
// letter; the values in it are taken out, to be bound to a statement. Anything else is no
// condition, and selects nothing.
#ifndef PAGERFWD_HOST_STORE_CONDITIONS_H
#define PAGERFWD_HOST_STORE_CONDITIONS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// One comparison: a column of the library, "=" or "<>", and a value.
struct Term {
    const char* column;
    const char* sign;
    std::string_view value;
};

struct Condition {
    enum class Selects {
        kAlarm,             // WHERE alarmlogID = 7
        kEvent,             // WHERE AlmGroup = "ops" AND AlmLogID = 7 AND PagerDescr = "duty"
        kEventsNotInState,  // WHERE AlarmFwd_PagerEvents.PagerState <> 2
        kEventsOfAlarm,     // WHERE AlarmFwd_PagerEvents.AlmLogID  = 7     (two blanks)
    };

    Selects selects;
    const char* table;        // the only table that it is for
    std::vector<Term> terms;  // all of them hold; the values lie within the text
};

// Nothing in the quoted texts is escaped, so a double quote in them is a part of them. A text that
// can be read in two ways, because a value holds " AND AlmLogID = ... " itself, is none: better a
// row left alone than the wrong one deleted.
std::optional<Condition> ParseCondition(std::string_view text);

}  // namespace host

#endif
