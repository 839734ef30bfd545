// Pausing lines. Tested by tests/unit/host/lines_test.cpp.
#include "host/lines/pausing.h"

#include <optional>

#include "host/site/site_tables.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/trail.h"

namespace host {

bool PauseLine(Connection& connection, const std::string& line, bool pause, const Doer& doer) {
    WriteTransaction transaction(connection);
    const std::optional<LineState> state = FindLine(connection, line);
    if (!state || state->paused == pause) {
        return false;
    }
    SetPaused(connection, line, pause);
    NoteInTrail(connection, {0, doer.now, doer.name, pause ? "line paused" : "line resumed", "",
                             Decode(line, EncodingOf(connection))});
    transaction.Commit();
    return true;
}

}  // namespace host
