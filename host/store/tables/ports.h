// AlarmFwd_COMProperties as the host asks of it.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_PORTS_H
#define PAGERFWD_HOST_STORE_TABLES_PORTS_H

#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Texts as the tables have them.
struct PortRow {
    std::string name;
    std::string device;  // a column of the host's own
    std::string select;
    std::string pager_dial;
    std::string sms1_dial;
    std::string sms2_dial;
    int baud = 0;
    std::string init;
    std::string reset;
    std::string node;   // likewise
    std::string cells;  // all but the row's number, as one text
};

// In the order of the site.
std::vector<PortRow> ReadPorts(Connection& connection);
// The first of this name.
std::optional<PortRow> FindPort(Connection& connection, const std::string& name);

// Where a port is: columns of the host's own.
struct PlaceOfPort {
    std::string device;
    std::string node;
};
// Of each port, in order; needs no other column.
std::vector<PlaceOfPort> ReadPlaces(Connection& connection);
// Requires a write transaction.
void SetPlace(Connection& connection, const std::string& port, const PlaceOfPort& place);

}  // namespace host

#endif
