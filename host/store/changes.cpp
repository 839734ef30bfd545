// Changes. Tested by tests/unit/host/changes_test.cpp.
#include "host/store/changes.h"

namespace host {

bool Changes::AreThere(Connection& connection) {
    Statement statement(connection, "PRAGMA data_version");
    statement.Step();
    const Version now{statement.Number(0), connection.TotalChanges()};
    return std::exchange(seen_, now) != now;
}

}  // namespace host
