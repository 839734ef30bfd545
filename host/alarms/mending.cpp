// Mending rows of other programs. Tested by tests/unit/host/alarms_test.cpp and intake_test.cpp.
#include "host/alarms/mending.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/site/words.h"
#include "host/text/nearest.h"

namespace host {
namespace {

constexpr long kUnknown = 5;

std::string SeverityCell(const std::string& severity) {
    for (const Word& known : kSeverities) {
        if (strcasecmp(known.word, severity.c_str()) == 0) {
            return known.cell;
        }
    }
    const long number = std::strtol(severity.c_str(), nullptr, 10);
    return std::to_string(number < 0 ? kUnknown : std::clamp(number, 1L, kUnknown));
}

bool IsSame(const Alarm& left, const Alarm& right) {
    return left.severity == right.severity && left.group == right.group &&
           left.server == right.server && left.details == right.details;
}

}  // namespace

Alarm Mended(Alarm alarm, Encoding encoding) {
    alarm.severity = SeverityCell(alarm.severity);
    for (std::string* text : {&alarm.group, &alarm.server, &alarm.details}) {
        *text = MendEncoded(*text, encoding);
    }
    return alarm;
}

Alarm MendAlarm(Connection& connection, const Alarm& alarm, Encoding encoding) {
    Alarm mended = Mended(alarm, encoding);
    if (!IsSame(mended, alarm)) {
        WriteTransaction transaction(connection);
        RewriteAlarm(connection, mended);
        transaction.Commit();
    }
    return mended;
}

}  // namespace host
