// Room on a disk that is kept for the last writes of an engine.
//
// A file beside the database that holds nothing of worth. On a disk that has become full, it is
// taken away by who is to end with something still to write (process/last_writes.h), or can't even
// begin (process/room_to_open.h): what they write has the room that it has had.
//
// Errors     FileError, naming the file, where there is none to keep.
#ifndef PAGERFWD_HOST_FILES_LAST_ROOM_H
#define PAGERFWD_HOST_FILES_LAST_ROOM_H

#include <sys/types.h>

#include <string>

namespace host {

// Bytes: what some hundred pages come to, in each of some lines.
inline constexpr off_t kLastRoom = off_t{2} << 20;

// Does nothing where it is kept already.
void KeepLastRoom(const std::string& database);

void GiveLastRoom(const std::string& database);

}  // namespace host

#endif
