// Pages from before. Tested by tests/e2e/run_test.cpp.
#include "host/node/pending_pages.h"

#include <ctime>
#include <string>

#include "host/pages/backlog.h"
#include "host/pages/history.h"
#include "host/store/large_cells.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/age.h"

namespace host {

// Nobody else's page waits for such a row.
void EmptyCells(Connection& connection, OperatorLog& log) {
    for (const std::string& row : EmptyLargeCells(connection)) {
        log.Error(row + " is off limit: it had a text of more than 1 MiB, which was emptied");
    }
}

void LookAtPendingPages(Connection& connection,
                        const std::optional<std::chrono::seconds>& discard_older,
                        OperatorLog& log) {
    EmptyCells(connection, log);
    MendTexts(connection);
    MendAlarmStates(connection);
    if (discard_older) {
        const std::time_t before =
            std::time(nullptr) - static_cast<std::time_t>(discard_older->count());
        log.Info("pages of older alarms that are given up: " +
                 std::to_string(DiscardPages(connection, before)));
    }
    const Backlog backlog = LookAtBacklog(connection);
    if (backlog.pages > 0) {
        log.Warning(std::to_string(backlog.pages) +
                    " page(s) are pending from before, the oldest of an alarm " +
                    AgeInWords(std::chrono::seconds(std::time(nullptr) - backlog.oldest)) +
                    " old; all are due now. To give up old ones: run --discard-older-than");
    }
}

}  // namespace host
