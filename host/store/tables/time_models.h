// The hours of a database.
#ifndef PAGERFWD_HOST_STORE_TABLES_TIME_MODELS_H
#define PAGERFWD_HOST_STORE_TABLES_TIME_MODELS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/connection.h"
#include "host/store/week.h"

namespace host {

// name, here and below: in the encoding of the tables.
struct NamedWeek {
    std::string name;
    Week week;
};

// In order. Of a name that is there twice, only the first counts for the library.
std::vector<NamedWeek> ReadWeeks(Connection& connection);
std::optional<Week> FindWeek(Connection& connection, std::string_view name);

std::vector<std::string> TimeModelNames(Connection& connection);

// Changes the first of this name, or adds it where there is none. An engine that runs takes it up
// with the next page.
void StoreWeek(Connection& connection, const std::string& name, const Week& week);

}  // namespace host

#endif
