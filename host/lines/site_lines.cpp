// The lines in the tables. Tested by tests/unit/host/line_loads_test.cpp.
#include "host/lines/site_lines.h"

#include "host/site/port_device.h"

namespace host {
namespace {

constexpr const char* kSelect =
    "SELECT Description, device, \"Select\", PagerDial, SMS1Dial, SMS2Dial, Baud, Init, Reset, * "
    "FROM "
    "AlarmFwd_COMProperties ";
// Types of pagers that have a dial command of their own.
constexpr const char* kTap = "4";
constexpr const char* kUcp = "5";

constexpr int kFirstOfAll = 9;  // the columns of the star

// A row that was written again as it was has another number, and is the same line.
std::string AllCells(const Statement& statement) {
    std::string cells;
    for (int column = kFirstOfAll + 1; column < statement.Columns(); ++column) {
        cells.append(statement.Text(column)).push_back('\0');
    }
    return cells;
}

SiteLine LineIn(const Statement& statement) {
    const std::string name(statement.Text(0));
    return {name,
            DeviceOfPort(name, std::string(statement.Text(1))),
            statement.Text(2).substr(0, 1) == "1",
            std::string(statement.Text(3)),
            std::string(statement.Text(4)),
            std::string(statement.Text(5)),
            static_cast<int>(statement.Number(6)),
            std::string(statement.Text(7)),
            std::string(statement.Text(8)),
            AllCells(statement)};
}

}  // namespace

bool SiteLine::CanDialFor(const std::string& type) const {
    const std::string& dial = type == kTap ? sms1_dial : type == kUcp ? sms2_dial : pager_dial;
    return modem && !dial.empty();
}

std::vector<SiteLine> SiteLines(Connection& connection) {
    std::vector<SiteLine> lines;
    Statement statement(connection, std::string(kSelect) + "ORDER BY row_id");
    while (statement.Step()) {
        lines.push_back(LineIn(statement));
    }
    return lines;
}

std::optional<SiteLine> FindSiteLine(Connection& connection, const std::string& name) {
    Statement statement(connection,
                        std::string(kSelect) + "WHERE Description = ? ORDER BY row_id LIMIT 1");
    return statement.Bind(name).Step() ? std::optional<SiteLine>(LineIn(statement)) : std::nullopt;
}

}  // namespace host
