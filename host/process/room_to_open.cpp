// Room to open a database. Tested by tests/e2e/run_refused_test.cpp.
#include "host/process/room_to_open.h"

#include "host/files/last_room.h"
#include "host/store/schema.h"

namespace host {

// Whatever is in the way: who opens it next says what, if it is something else.
void MakeRoomToOpen(const std::string& database) {
    try {
        Connection connection(database);
        IsOutdated(connection);  // reads
    } catch (const StoreError&) {
        GiveLastRoom(database);
    }
}

}  // namespace host
