// Alarms as JSON: any text is read or refused with a place and a reason; what is read is what the
// tables can have, and is the same when it was written and read again.
#include "host/intake/alarm_json.h"

#include <string>

#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;

void CheckWithdrawals(std::string_view text) {
    try {
        for (const host::ToWithdraw& withdrawal : host::WithdrawalsFromJson(text)) {
            Expect(withdrawal.number.empty() != withdrawal.key.key.empty(),
                   "what is withdrawn is named, and in one way");
        }
    } catch (const host::BadField& error) {
        Expect(*error.what() != '\0', "a refusal has a reason");
    }
}

void CheckAlarm(const host::IncomingAlarm& came, host::Encoding encoding) {
    const host::NewAlarm alarm = host::Checked(came, encoding);
    Expect(alarm.severity.size() == 1, "a severity is a cell");
    for (const std::string* text : {&alarm.group, &alarm.server, &alarm.details, &alarm.key}) {
        for (const char c : *text) {
            Expect(static_cast<unsigned char>(c) >= 0x20, "no text has control characters");
        }
    }
    const auto again = host::AlarmsFromJson(host::WrittenInOneLine(host::ToJson(came)), "").front();
    Expect(again.text == came.text && again.key == came.key && again.group == came.group,
           "what was written is read again");
}

void CheckAlarms(std::string_view text, host::Encoding encoding) {
    try {
        for (const host::IncomingAlarm& alarm : host::AlarmsFromJson(text, "server")) {
            CheckAlarm(alarm, encoding);
        }
    } catch (const host::BadField& error) {
        Expect(*error.what() != '\0', "a refusal has a reason");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = fuzz::View(data, size);
    CheckAlarms(text, host::Encoding::kLatin1);
    CheckAlarms(text, host::Encoding::kShiftJis);
    CheckWithdrawals(text);
    return 0;
}
