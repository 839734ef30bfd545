// Opening a database on a disk that is full.
#ifndef PAGERFWD_HOST_PROCESS_ROOM_TO_OPEN_H
#define PAGERFWD_HOST_PROCESS_ROOM_TO_OPEN_H

#include <string>

namespace host {

// On a full disk not even what lies beside an open database can be made: an engine that is started
// then gets the room that the one before has kept for its last writes. Does nothing where the
// database can be opened, or no room is kept.
void MakeRoomToOpen(const std::string& database);

}  // namespace host

#endif
