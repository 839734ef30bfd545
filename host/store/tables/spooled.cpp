// Files taken up. Tested by tests/unit/host/spool_test.cpp.
#include "host/store/tables/spooled.h"

namespace host {

bool WasSpooled(Connection& connection, const std::string& name) {
    Statement statement(connection, "SELECT 1 FROM Host_Spooled WHERE name = ?");
    return statement.Bind(name).Step();
}

void AddSpooled(Connection& connection, const std::string& name, std::time_t at) {
    Statement(connection, "INSERT INTO Host_Spooled (name, at) VALUES (?, ?)")
        .Bind(name)
        .Bind(static_cast<int64_t>(at))
        .Run();
}

void ForgetSpooled(Connection& connection, std::time_t before) {
    Statement(connection, "DELETE FROM Host_Spooled WHERE at < ?")
        .Bind(static_cast<int64_t>(before))
        .Run();
}

}  // namespace host
