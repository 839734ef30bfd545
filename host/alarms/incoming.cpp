// What alarms have to be. Tested by tests/unit/host/raising_test.cpp.
#include "host/alarms/incoming.h"

#include <algorithm>

#include "host/site/words.h"
#include "host/text/nearest.h"
#include "host/text/text_table.h"

namespace host {
namespace {

// Of what is said: letters.
constexpr size_t kMostOfName = 100;
constexpr size_t kMostOfWhy = 300;

void RefuseLonger(const char* field, const std::string& text, size_t most) {
    if (text.size() > most) {
        throw BadField(field, "it is longer than " + std::to_string(most) + " bytes");
    }
}

// They are compared byte by byte, and shown.
void CheckName(const char* field, const std::string& text, size_t most) {
    RefuseLonger(field, text, most);
    if (std::any_of(text.begin(), text.end(),
                    [](unsigned char c) { return c < 0x20 || c == 0x7F; })) {
        throw BadField(field, "it has control characters");
    }
}

std::string CellOfSeverity(const std::string& word) {
    const char* const cell = CellFor(kSeverities, word);
    if (cell == nullptr) {
        throw BadField("severity",
                       "there is no severity \"" + word + "\"; write " + ListOf(kSeverities));
    }
    return cell;
}

}  // namespace

BadField::BadField(std::string_view field, std::string_view why)
    : std::runtime_error(Shortened(why, kMostOfWhy)), field_(Shortened(field, kMostOfName)) {}

NewAlarm Checked(const IncomingAlarm& alarm, Encoding encoding) {
    RefuseLonger("text", alarm.text, kLongestText);
    RefuseLonger("group", alarm.group, kLongestText);
    RefuseLonger("server", alarm.server, kLongestText);
    CheckName("source", alarm.source, kLongestSource);
    CheckName("key", alarm.key, kLongestKey);
    if (!alarm.source.empty() && alarm.key.empty()) {
        throw BadField("source", "it says whose key it is, and there is no key");
    }
    NewAlarm checked{EncodeNearest(alarm.group, encoding),
                     CellOfSeverity(alarm.severity),
                     EncodeNearest(alarm.server, encoding),
                     EncodeNearest(alarm.text, encoding),
                     alarm.source,
                     alarm.key};
    if (checked.details.find_first_not_of(' ') == std::string::npos) {
        throw BadField("text", "the text is empty: say what has happened");
    }
    return checked;
}

void CheckComment(const std::string& by, const std::string& comment) {
    CheckName("by", by, kLongestComment);
    RefuseLonger("comment", comment, kLongestComment);
}

AlarmKey CheckedKey(const std::string& source, const std::string& key) {
    CheckName("source", source, kLongestSource);
    CheckName("key", key, kLongestKey);
    if (key.empty()) {
        throw BadField("key", "it is missing: only an alarm with a key can be told by it");
    }
    return {source, key};
}

}  // namespace host
