// Conditions of the table store: one that is understood reads back to the same bytes, its values
// lie within the text, and no second reading of it fits; one made from any texts is understood as
// these texts or not at all.
#include "host/store/conditions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;
using host::Condition;

std::string KeyText(std::string_view group, std::string_view alarm, std::string_view pager) {
    return "WHERE AlmGroup = \"" + std::string(group) + "\" AND AlmLogID = " + std::string(alarm) +
           " AND PagerDescr = \"" + std::string(pager) + "\"";
}

// The text that a condition was read from.
std::string TextOf(const Condition& condition) {
    const std::string value(condition.terms.at(0).value);
    switch (condition.selects) {
        case Condition::Selects::kAlarm:
            return "WHERE alarmlogID = " + value;
        case Condition::Selects::kEvent:
            return KeyText(value, condition.terms.at(1).value, condition.terms.at(2).value);
        case Condition::Selects::kEventsNotInState:
            return "WHERE AlarmFwd_PagerEvents.PagerState <> " + value;
        case Condition::Selects::kEventsOfAlarm:
            return "WHERE AlarmFwd_PagerEvents.AlmLogID  = " + value;
    }
    return {};
}

bool LiesWithin(std::string_view text, std::string_view part) {
    return part.data() >= text.data() && part.data() + part.size() <= text.data() + text.size();
}

bool IsDecimal(const std::string& text) {
    try {
        return std::to_string(std::stol(text)) == text &&
               std::stol(text) == static_cast<int32_t>(std::stol(text));
    } catch (const std::exception&) {
        return false;
    }
}

// How many keys of an event are written like this text: every way to divide it is tried.
int ReadingsAsKey(const std::string& text) {
    const std::string sign = "\" AND AlmLogID = ";
    const std::string pager = " AND PagerDescr = \"";
    const std::string begin = "WHERE AlmGroup = \"";
    int readings = 0;
    for (size_t at = text.find(sign); at != std::string::npos; at = text.find(sign, at + 1)) {
        const size_t number = at + sign.size();
        const size_t behind = text.find(' ', number);
        if (at < begin.size() || behind == std::string::npos || behind - number > 11) {
            continue;
        }
        const std::string alarm = text.substr(number, behind - number);
        const size_t from = behind + pager.size();
        if (IsDecimal(alarm) && text.compare(behind, pager.size(), pager) == 0 &&
            text.size() > from &&
            text == KeyText(text.substr(begin.size(), at - begin.size()), alarm,
                            text.substr(from, text.size() - from - 1))) {
            ++readings;
        }
    }
    return readings;
}

void Check(const std::string& text) {
    const std::optional<Condition> condition = host::ParseCondition(text);
    const int keys = ReadingsAsKey(text);
    const bool isKey = condition && condition->selects == Condition::Selects::kEvent;
    Expect(isKey == (keys == 1), "a key is what can be read as one in exactly one way");
    if (!condition) {
        return;
    }
    Expect(TextOf(*condition) == text, "what was read is what was written");
    for (const host::Term& term : condition->terms) {
        Expect(LiesWithin(text, term.value), "a value lies within the text");
    }
}

// As the library makes it, from texts of any kind.
void CheckKey(const std::string& group, int32_t alarm, const std::string& pager) {
    const std::string text = KeyText(group, std::to_string(alarm), pager);
    Check(text);
    if (const std::optional<Condition> condition = host::ParseCondition(text)) {
        Expect(condition->terms.at(0).value == group &&
                   condition->terms.at(1).value == std::to_string(alarm) &&
                   condition->terms.at(2).value == pager,
               "a key is understood as what it was made of, or not at all");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Check(std::string(fuzz::View(data, size)));
    fuzz::Input input(data, size);
    const std::string group = input.Text();
    const auto alarm = static_cast<int32_t>(static_cast<uint32_t>(input.Byte()) << 24U |
                                            static_cast<uint32_t>(input.Byte()));
    CheckKey(group, alarm, input.Rest());
    return 0;
}
