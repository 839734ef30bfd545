// The part of a statement that says which rows it is about.
#ifndef PAGERFWD_HOST_STORE_WHERE_H
#define PAGERFWD_HOST_STORE_WHERE_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"
#include "host/store/schema.h"

namespace host {

// " WHERE "a" = ? AND ("b" < ? OR "b" > ?)": those rows for which all terms hold and which are in
// sight.
std::string WhereInSight(const Table& table, const std::vector<Term>& terms);

// Binds the values of the terms to the parameters of that clause.
void BindTerms(Statement& statement, const std::vector<Term>& terms);

// Runs a statement whose only parameters are those of the terms. Returns how many rows it changed.
int32_t ChangeRows(Connection& connection, const std::string& sql, const std::vector<Term>& terms);

}  // namespace host

#endif
