// The matching of conditions. Tested by tests/unit/host/conditions_test.cpp.
#include "host/store/conditions.h"

#include <charconv>
#include <cstdint>

#include "host/store/schema.h"

namespace host {
namespace {

// Takes a text off the front of another, piece by piece.
class Scanner {
 public:
    explicit Scanner(std::string_view rest) : rest_(rest) {}

    bool Take(std::string_view expected) {
        if (rest_.substr(0, expected.size()) != expected) {
            return false;
        }
        rest_.remove_prefix(expected.size());
        return true;
    }

    // A number as "%d" writes it: 32 bits, no plus sign, no leading zeros. Else the empty text.
    std::string_view TakeNumber() {
        int32_t number = 0;
        const char* begin = rest_.data();
        const auto [end, error] = std::from_chars(begin, begin + rest_.size(), number);
        const std::string_view digits = rest_.substr(0, static_cast<size_t>(end - begin));
        if (error != std::errc() || digits != std::to_string(number)) {
            return {};
        }
        rest_.remove_prefix(digits.size());
        return digits;
    }

    bool AtEnd() const { return rest_.empty(); }
    std::string_view Rest() const { return rest_; }

 private:
    std::string_view rest_;
};

// The forms whose one value is a number at their end.
struct NumberForm {
    std::string_view text;
    Condition::Selects selects;
    const char* table;
    const char* column;
    const char* sign;
};
constexpr NumberForm kNumberForms[] = {
    {"WHERE alarmlogID = ", Condition::Selects::kAlarm, kAlarmLog, "alarmlogID", "="},
    {"WHERE AlarmFwd_PagerEvents.PagerState <> ", Condition::Selects::kEventsNotInState, kEvents,
     "PagerState", "<>"},
    {"WHERE AlarmFwd_PagerEvents.AlmLogID  = ", Condition::Selects::kEventsOfAlarm, kEvents,
     "AlmLogID", "="},
};

std::optional<Condition> ParseNumberForm(const NumberForm& form, std::string_view text) {
    Scanner scanner(text);
    if (!scanner.Take(form.text)) {
        return std::nullopt;
    }
    const std::string_view number = scanner.TakeNumber();
    if (number.empty() || !scanner.AtEnd()) {
        return std::nullopt;
    }
    return Condition{form.selects, form.table, {{form.column, form.sign, number}}};
}

constexpr std::string_view kGroup = "WHERE AlmGroup = \"";
constexpr std::string_view kAlarm = "\" AND AlmLogID = ";
constexpr std::string_view kPager = " AND PagerDescr = \"";
constexpr std::string_view kEnd = "\"";

// The key of an event when its group ends at `at`, where kAlarm stands.
std::optional<Condition> SplitKey(std::string_view texts, size_t at) {
    Scanner scanner(texts.substr(at + kAlarm.size()));
    const std::string_view alarm = scanner.TakeNumber();
    if (alarm.empty() || !scanner.Take(kPager)) {
        return std::nullopt;
    }
    return Condition{Condition::Selects::kEvent,
                     kEvents,
                     {{"AlmGroup", "=", texts.substr(0, at)},
                      {"AlmLogID", "=", alarm},
                      {"PagerDescr", "=", scanner.Rest()}}};
}

std::optional<Condition> ParseEventForm(std::string_view text) {
    Scanner scanner(text);
    if (!scanner.Take(kGroup)) {
        return std::nullopt;
    }
    std::string_view texts = scanner.Rest();
    if (texts.size() < kEnd.size() || texts.substr(texts.size() - kEnd.size()) != kEnd) {
        return std::nullopt;
    }
    texts.remove_suffix(kEnd.size());

    std::optional<Condition> found;
    for (size_t at = texts.find(kAlarm); at != std::string_view::npos;
         at = texts.find(kAlarm, at + 1)) {
        std::optional<Condition> key = SplitKey(texts, at);
        if (key && found) {
            return std::nullopt;  // two readings
        }
        if (key) {
            found = std::move(key);
        }
    }
    return found;
}

}  // namespace

std::optional<Condition> ParseCondition(std::string_view text) {
    for (const NumberForm& form : kNumberForms) {
        if (std::optional<Condition> condition = ParseNumberForm(form, text)) {
            return condition;
        }
    }
    return ParseEventForm(text);
}

}  // namespace host
