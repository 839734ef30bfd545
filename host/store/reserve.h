// Room in the database's own files, so that a full disk doesn't stop the engine's writes.
//
// What a page comes to takes some bytes in the database and some pages in its write-ahead log. Both
// files are made larger beforehand than they need be: on a full disk the engine goes on in the room
// that is its own already, and that no other program can take. On file systems that never write
// twice to one place (copy on write) this doesn't help; held_writes.h does.
#ifndef PAGERFWD_HOST_STORE_RESERVE_H
#define PAGERFWD_HOST_STORE_RESERVE_H

#include <cstdint>
#include <string>

namespace host {

// Bytes: more than a thousand sendings need.
inline constexpr int64_t kReserve = int64_t{2} << 20;

// Makes what is missing of the reserve. The log's lasts while somebody has the database open.
// Throws StoreError, where there is no room for it.
void ReserveRoom(const std::string& database);

}  // namespace host

#endif
