// The SQL of the host, as PostgreSQL takes it. It is written in what SQLite and PostgreSQL have in
// common, but for a few spellings; these, and only these, are changed here:
//
//   ? and ?1                    $1: parameters
//   "AlmLogID"                  "almlogid": names are the same in upper and lower case
//   CAST(x AS INTEGER)          the number that a text begins with; 0 where it begins with none
//   CAST(x AS BLOB)             x: a text counts in characters, and each of these is a byte
//   INTEGER PRIMARY KEY         a number of its own for each row
//   INTEGER                     BIGINT
//   AUTOINCREMENT, WITHOUT ROWID  nothing
#ifndef PAGERFWD_HOST_STORE_POSTGRES_SQL_H
#define PAGERFWD_HOST_STORE_POSTGRES_SQL_H

#include <string>
#include <string_view>

namespace host {

std::string ForPostgres(std::string_view sql);

}  // namespace host

#endif
