// What the pagerfwd of a version to come has besides: a step of the tables, which nodes can do
// without. It changes a table that each node asks every second.
#include "host/store/waiting_steps.h"

namespace host {

const std::vector<const char*>& WaitingSteps() {
    static const std::vector<const char*> steps = {
        "ALTER TABLE Host_Lines ADD COLUMN serial_number TEXT NOT NULL DEFAULT '';"
        "CREATE INDEX Host_LinesBySerialNumber ON Host_Lines (serial_number);"};
    return steps;
}

}  // namespace host
