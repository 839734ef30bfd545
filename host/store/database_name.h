// The name of a database: the path of a file, or what PostgreSQL's own client takes for one on a
// server, postgresql://host/name or "host=… dbname=…".
#ifndef PAGERFWD_HOST_STORE_DATABASE_NAME_H
#define PAGERFWD_HOST_STORE_DATABASE_NAME_H

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

bool IsOnServer(std::string_view name);

// Bytes. A longer one is no database's, and isn't taken apart: a Connection refuses it.
constexpr size_t kLongestDatabaseName = 4096;

// As it may be shown and logged: without the password.
std::string ShownName(const std::string& name);
bool HasPassword(const std::string& name);

// How the names of the files begin that belong to the database on this host: locks, and folders of
// lines. Beside the file itself; for one on a server, in PAGERFWD_STATE or /var/lib/pagerfwd, the
// same for all of its users.
std::string BesideName(const std::string& name);
// After which of these a new one takes its owner and rights.
std::string BesideOwner(const std::string& name);

}  // namespace host

#endif
