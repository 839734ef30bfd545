// Reading conditions. Tested by tests/unit/support/memory_condition_test.cpp.
#include "tests/support/memory_condition.h"

#include <string>
#include <vector>

namespace test_support {
namespace {

// In a pattern # stands for an integer and @ for a text without double quotes, one for each column.
struct Form {
    std::string_view table;
    std::string_view pattern;
    std::vector<std::string> columns;
    bool differs = false;
};

const std::vector<Form>& Forms() {
    static const std::vector<Form> forms = {
        {"AlarmLog", "WHERE alarmlogID = #", {"alarmlogID"}},
        {"AlarmFwd_PagerEvents",
         "WHERE AlmGroup = \"@\" AND AlmLogID = # AND PagerDescr = \"@\"",
         {"AlmGroup", "AlmLogID", "PagerDescr"}},
        {"AlarmFwd_PagerEvents",
         "WHERE AlarmFwd_PagerEvents.PagerState <> #",
         {"PagerState"},
         true},
        {"AlarmFwd_PagerEvents", "WHERE AlarmFwd_PagerEvents.AlmLogID  = #", {"AlmLogID"}},
    };
    return forms;
}

// The integer at the start of the text, as it is written.
std::string_view LeadingInteger(std::string_view text) {
    const size_t sign = !text.empty() && text[0] == '-' ? 1 : 0;
    const size_t end = text.find_first_not_of("0123456789", sign);
    const std::string_view integer = text.substr(0, end);
    return integer.size() > sign ? integer : std::string_view();
}

// The values of # and @ in order; nothing when the text is not the pattern.
std::optional<std::vector<std::string>> Match(std::string_view pattern, std::string_view text) {
    std::vector<std::string> values;
    for (const char expected : pattern) {
        std::string_view value;
        if (expected == '#') {
            value = LeadingInteger(text);
            if (value.empty()) {
                return std::nullopt;
            }
            values.emplace_back(value);
        } else if (expected == '@') {
            value = text.substr(0, text.find('"'));
            values.emplace_back(value);
        } else {
            value = text.substr(0, 1);
            if (value.empty() || value[0] != expected) {
                return std::nullopt;
            }
        }
        text.remove_prefix(value.size());
    }
    return text.empty() ? std::optional(values) : std::nullopt;
}

}  // namespace

std::optional<Condition> ParseCondition(std::string_view table, std::string_view text) {
    for (const Form& form : Forms()) {
        if (form.table != table) {
            continue;
        }
        if (const auto values = Match(form.pattern, text)) {
            Condition condition;
            for (size_t i = 0; i < form.columns.size(); ++i) {
                condition.push_back({form.columns[i], (*values)[i], form.differs});
            }
            return condition;
        }
    }
    return std::nullopt;
}

}  // namespace test_support
