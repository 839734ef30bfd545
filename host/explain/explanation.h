// What the library would do on the line for one page, without a line: settings, dial command, and
// every byte that would be sent, field by field.
//
// The bytes come from the library's own builders, which this program links for the purpose; here
// they are only cut into fields. The pieces of a step, one behind the other, are exactly what goes
// over the line.
#ifndef PAGERFWD_HOST_EXPLAIN_EXPLANATION_H
#define PAGERFWD_HOST_EXPLAIN_EXPLANATION_H

#include <string>
#include <vector>

#include "host/explain/paged_alarm.h"
#include "modem/COMHdl.h"
#include "tables/pager_settings.h"

namespace host {

struct ExplainedPiece {
    std::string bytes;
    std::string meaning;
};

struct ExplainedStep {
    std::string what;  // "log on; then waits for ..."
    std::vector<ExplainedPiece> pieces;

    std::string Bytes() const;
};

struct Explanation {
    std::string type;      // "first SMS service, TAP"
    std::string mode;      // "COM1:2400,n,8,1", as the line is set
    std::string settings;  // the same for people
    std::vector<ExplainedStep> steps;
    std::vector<std::string> notes;  // what the pager's user will not see as it was written
};

// All texts are in the encoding of the tables.
Explanation ExplainPage(const ::Pager& pager, const ComPort& port, const PagedAlarm& alarm);

}  // namespace host

#endif
