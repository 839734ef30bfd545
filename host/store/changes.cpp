// Changes. Tested by tests/unit/host/changes_test.cpp.
#include "host/store/changes.h"

namespace host {

bool Changes::AreThere(Connection& connection) {
    const Version now{connection.Version(), connection.TotalChanges()};
    return std::exchange(seen_, now) != now;
}

}  // namespace host
