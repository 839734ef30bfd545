// Ports in the tables. Tested by tests/unit/host/line_loads_test.cpp and site_tables_test.cpp.
#include "host/store/tables/ports.h"

namespace host {
namespace {

const std::string kSelectPort =
    "SELECT Description, device, \"select\", PagerDial, SMS1Dial, SMS2Dial, Baud, Init, Reset,"
    " node, *"
    " FROM AlarmFwd_COMProperties ";

constexpr int kFirstOfAll = 10;  // the columns of the star, of which the first is the row's number

// A row that was written again as it was has another number, and is the same line.
std::string AllCells(const Statement& statement) {
    std::string cells;
    for (int column = kFirstOfAll + 1; column < statement.Columns(); ++column) {
        cells.append(statement.Text(column)).push_back('\0');
    }
    return cells;
}

PortRow PortIn(const Statement& row) {
    return {std::string(row.Text(0)),
            std::string(row.Text(1)),
            std::string(row.Text(2)),
            std::string(row.Text(3)),
            std::string(row.Text(4)),
            std::string(row.Text(5)),
            static_cast<int>(row.Number(6)),
            std::string(row.Text(7)),
            std::string(row.Text(8)),
            std::string(row.Text(9)),
            AllCells(row)};
}

}  // namespace

std::vector<PortRow> ReadPorts(Connection& connection) {
    std::vector<PortRow> ports;
    Statement statement(connection, kSelectPort + "ORDER BY row_id");
    while (statement.Step()) {
        ports.push_back(PortIn(statement));
    }
    return ports;
}

std::optional<PortRow> FindPort(Connection& connection, const std::string& name) {
    Statement statement(connection, kSelectPort + "WHERE Description = ? ORDER BY row_id LIMIT 1");
    return statement.Bind(name).Step() ? std::optional<PortRow>(PortIn(statement)) : std::nullopt;
}

std::vector<PlaceOfPort> ReadPlaces(Connection& connection) {
    std::vector<PlaceOfPort> places;
    Statement statement(connection,
                        "SELECT device, node FROM AlarmFwd_COMProperties ORDER BY row_id");
    while (statement.Step()) {
        places.push_back({std::string(statement.Text(0)), std::string(statement.Text(1))});
    }
    return places;
}

void SetPlace(Connection& connection, const std::string& port, const PlaceOfPort& place) {
    Statement(connection,
              "UPDATE AlarmFwd_COMProperties SET device = ?, node = ? WHERE Description = ?")
        .Bind(place.device)
        .Bind(place.node)
        .Bind(port)
        .Run();
}

}  // namespace host
