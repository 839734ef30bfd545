// Alertmanager: a template, a line's end, and a message. Any bytes are read or refused with a
// reason, and every alert that is read is an alarm that the tables can have.
#include "host/intake/alertmanager.h"

#include <string>

#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;

void CheckInstant(const std::optional<host::AlertInstant>& instant) {
    const auto again = instant ? host::ReadInstant(host::Written(*instant)) : std::nullopt;
    Expect(!again || (!(*again < *instant) && !(*instant < *again)),
           "an instant that was written is read again");
}

void CheckAlerts(std::string_view message, const host::AlertTemplates& templates) {
    try {
        for (const host::Alert& alert : host::AlertsFromJson(message, templates)) {
            Expect(!alert.alarm.key.empty(), "an alert has a key");
            host::Checked(alert.alarm, host::Encoding::kLatin1);
            CheckInstant(alert.began);
            CheckInstant(alert.ended);
        }
    } catch (const host::BadField& error) {
        Expect(*error.what() != '\0', "a refusal has a reason");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input = fuzz::View(data, size);
    const size_t end = std::min(input.find('\n'), input.size());
    host::AlertTemplates templates;
    const std::string text(input.substr(0, end));
    if (host::WhyNoAlertTemplate(text).empty()) {
        templates.text = templates.group = text;
    }
    CheckAlerts(input.substr(std::min(end + 1, input.size())), templates);
    return 0;
}
