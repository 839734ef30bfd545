// The reserve. Tested by tests/proof/reserve_test.cpp, and by the kills on a full disk of
// tests/proof/crash_test.cpp.
#include "host/store/reserve.h"

#include <filesystem>
#include <system_error>

#include "host/store/connection.h"

namespace host {
namespace {

// A row; one of the longest cell would be too long itself.
constexpr int64_t kAtOnce = kLongestCell / 2;

bool IsThere(Connection& connection) {
    const int64_t free = Statement(connection, "PRAGMA freelist_count").FirstNumber() *
                         Statement(connection, "PRAGMA page_size").FirstNumber();
    std::error_code none;
    const auto log = std::filesystem::file_size(connection.Path() + "-wal", none);
    return free >= kReserve && !none && log >= static_cast<uintmax_t>(kReserve);
}

}  // namespace

// A table that is filled and dropped leaves free pages behind. The connection is none of those that
// keep what is refused: the reserve is made, or it isn't.
void ReserveRoom(const std::string& database) {
    Connection connection(database);
    if (IsThere(connection)) {
        return;
    }
    WriteTransaction filling(connection);
    connection.Execute("DROP TABLE IF EXISTS Host_Reserve; CREATE TABLE Host_Reserve (room BLOB)");
    for (int64_t room = 0; room < kReserve; room += kAtOnce) {
        Statement(connection, "INSERT INTO Host_Reserve VALUES (zeroblob(?))").Bind(kAtOnce).Run();
    }
    filling.Commit();
    WriteTransaction dropping(connection);
    connection.Execute("DROP TABLE Host_Reserve");
    dropping.Commit();
    connection.Execute("PRAGMA wal_checkpoint(PASSIVE)");
}

}  // namespace host
