// All tables of a site, and what those may do with each who work with it: a role of the database's
// server for each kind of process.
//
//   node     `pagerfwd run`
//   line     the processes that it starts
//   web      `pagerfwd web`, and whoever raises, acknowledges and asks by command
//   reader   whoever looks: at all of it, but for what secrets are known by
//
// The tables themselves belong to whoever made them, who also imports site files and makes tokens.
//
// Tested by tests/unit/host/rights_test.cpp.
#ifndef PAGERFWD_HOST_STORE_RIGHTS_H
#define PAGERFWD_HOST_STORE_RIGHTS_H

#include <string>
#include <vector>

namespace host {

struct TableRights {
    const char* table;
    // "SIUD": to select, insert, update and delete.
    const char* node;
    const char* line;
    const char* web;
    const char* reader = "S";
};

const std::vector<TableRights>& AllTables();

// What makes all tables in an empty database of a PostgreSQL server, and gives the roles their
// rights: for its administrator.
std::string SchemaForPostgres();

}  // namespace host

#endif
