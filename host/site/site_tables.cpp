// From the site file to the tables. Tested by tests/unit/host/site_tables_test.cpp.
#include "host/site/site_tables.h"

#include <utility>

#include "host/site/stored_commands.h"
#include "host/site/time_models.h"
#include "host/site/words.h"
#include "host/store/rows.h"
#include "host/store/schema.h"

namespace host {
namespace {

constexpr const char* kEncodingSetting = "encoding";

std::string Cell(const SaidNumber& number) {
    return std::to_string(number.value);
}

template <size_t count>
std::string Cell(const Word (&words)[count], const SaidText& text) {
    const char* cell = CellFor(words, text.value);
    return cell == nullptr ? std::string() : cell;
}

// One row, its texts converted as they are put in.
class RowMaker {
 public:
    RowMaker(const char* table, Encoding encoding) : row_{table, {}}, encoding_(encoding) {}

    RowMaker& Set(const std::string& column, const std::string& cell) {
        row_.cells.Set(column, cell);
        return *this;
    }
    RowMaker& SetText(const std::string& column, const SaidText& text) {
        return Set(column, Encode(text.value, encoding_));
    }
    RowMaker& SetLine(const std::string& prefix, const LineSettings& line) {
        return Set(prefix + "Data", Cell(line.data))
            .Set(prefix + "Parity", Cell(kParities, line.parity))
            .Set(prefix + "Stop", Cell(line.stop));
    }
    RowMaker& SetService(const std::string& prefix, const SmsService& service) {
        return SetLine(prefix, service.settings)
            .SetText(prefix + "Dial", service.dial)
            .Set(prefix + "Protocol", Cell(kProtocols, service.protocol));
    }

    TableRow Take() { return std::move(row_); }

 private:
    TableRow row_;
    Encoding encoding_;
};

TableRow RowOf(const Port& port, Encoding encoding) {
    return RowMaker(kPorts, encoding)
        .SetText("Description", port.name)
        .Set("Baud", Cell(port.baud))
        .Set("Flow", Cell(kFlows, port.flow))
        .Set("Select", port.modem.value ? "1" : "0")
        .SetText("Init", port.init)
        .SetText("Reset", port.reset)
        .SetLine("Pager", port.pager.settings)
        .SetText("PagerDial", port.pager.dial)
        .SetText("PagerActivity", port.pager.prompt)
        .SetService("SMS1", port.sms1)
        .SetService("SMS2", port.sms2)
        .Take();
}

TableRow RowOf(const Pager& pager, Encoding encoding) {
    return RowMaker(kPagers, encoding)
        .SetText("description", pager.description)
        .SetText("owner", pager.owner)
        .SetText("comport", pager.port)
        .Set("pgtype", Cell(kPagerTypes, pager.type))
        .SetText("pgnumber", pager.number)
        .Set("numretries", Cell(pager.retries))
        .Set("retrydelay", Cell(pager.delay))
        .SetText("timemodel", pager.hours)
        .Take();
}

TableRow RowOf(const TimeModel& model, Encoding encoding) {
    RowMaker row(kTimeModels, encoding);
    const std::vector<std::string>& columns = FindTable(kTimeModels)->columns;
    const Week week = WeekOf(model);
    for (size_t hour = 0; hour < week.size(); ++hour) {
        row.Set(columns[hour], week.test(hour) ? "1" : "0");
    }
    return row.SetText("description", model.name).Take();
}

// What a pager without hours of its own refers to.
TimeModel AllHours() {
    TimeModel model;
    model.name.value = kAlways;
    model.all.value = true;
    return model;
}

Encoding EncodingOf(const Site& site) {
    return EncodingNamed(site.encoding.value).value_or(Encoding::kLatin1);
}

// "1,2": the cells of the severities; empty for all.
std::string SeveritiesCell(const Route& route) {
    std::string cell;
    for (const SaidText& severity : route.severities) {
        cell += (cell.empty() ? "" : ",") + Cell(kSeverities, severity);
    }
    return cell;
}

void StoreRoute(Connection& connection, int64_t number, const Route& route, Encoding encoding) {
    const std::string groups = Encode(route.groups.value, encoding);
    const std::string severities = SeveritiesCell(route);
    Statement(connection, "INSERT INTO Host_Routes VALUES (?, ?, ?)")
        .Bind(number)
        .Bind(groups)
        .Bind(severities)
        .Run();
    int64_t place = 0;
    for (const SaidText& name : route.pagers) {
        const std::string pager = Encode(name.value, encoding);
        Statement(connection, "INSERT INTO Host_RoutePagers VALUES (?, ?, ?)")
            .Bind(number)
            .Bind(place++)
            .Bind(pager)
            .Run();
    }
}

void StoreRoutes(Connection& connection, const Site& site) {
    connection.Execute("DELETE FROM Host_RoutePagers; DELETE FROM Host_Routes");
    int64_t number = 0;
    for (const Route& route : site.routes) {
        StoreRoute(connection, ++number, route, EncodingOf(site));
    }
}

// A column of the host's own, behind those of the library.
void StoreDevices(Connection& connection, const Site& site) {
    for (const Port& port : site.ports) {
        const std::string device = Encode(port.device.value, EncodingOf(site));
        const std::string name = Encode(port.name.value, EncodingOf(site));
        Statement(connection, "UPDATE AlarmFwd_COMProperties SET device = ? WHERE Description = ?")
            .Bind(device)
            .Bind(name)
            .Run();
    }
}

std::vector<std::string> ReadColumn(Connection& connection, const char* table) {
    std::vector<std::string> names;
    Statement statement(connection,
                        "SELECT description FROM " + Quoted(table) + " ORDER BY row_id");
    while (statement.Step()) {
        names.emplace_back(statement.Text(0));
    }
    return names;
}

}  // namespace

std::vector<TableRow> RowsOf(const Site& site) {
    const Encoding encoding = EncodingOf(site);
    std::vector<TableRow> rows;
    for (const Port& port : site.ports) {
        rows.push_back(RowOf(port, encoding));
    }
    for (const Pager& pager : site.pagers) {
        rows.push_back(RowOf(pager, encoding));
    }
    for (const TimeModel& model : site.timeModels) {
        rows.push_back(RowOf(model, encoding));
    }
    if (FindTimeModel(site, kAlways) == nullptr) {
        rows.push_back(RowOf(AllHours(), encoding));
    }
    return rows;
}

void StoreSite(Connection& connection, const Site& site) {
    const std::vector<TableRow> rows = RowsOf(site);
    WriteTransaction transaction(connection);
    for (const char* table : {kPorts, kPagers, kTimeModels}) {
        connection.Execute(("DELETE FROM " + Quoted(table)).c_str());
    }
    for (const TableRow& row : rows) {
        InsertRow(connection, ReadLayout(connection, row.table), row.cells);
    }
    StoreDevices(connection, site);
    StoreRoutes(connection, site);
    WriteSetting(connection, kEncodingSetting, WordFor(EncodingOf(site)));
    StoreCommand(connection, kNotifyCommand, site.notify);
    StoreCommand(connection, kHeartbeatCommand, site.heartbeat);
    transaction.Commit();
}

Encoding EncodingOf(Connection& connection) {
    return EncodingNamed(ReadSetting(connection, kEncodingSetting)).value_or(Encoding::kLatin1);
}

std::vector<PagerRow> FindPagers(Connection& connection, std::string_view description) {
    std::vector<PagerRow> pagers;
    Statement statement(connection,
                        "SELECT description, comport, pgtype, pgnumber, timemodel"
                        " FROM AlarmFwd_PagerSetting WHERE description = ? ORDER BY row_id");
    statement.Bind(description);
    while (statement.Step()) {
        pagers.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                          std::string(statement.Text(2)), std::string(statement.Text(3)),
                          std::string(statement.Text(4))});
    }
    return pagers;
}

std::vector<std::string> PagerNames(Connection& connection) {
    return ReadColumn(connection, kPagers);
}

std::vector<std::string> TimeModelNames(Connection& connection) {
    return ReadColumn(connection, kTimeModels);
}

}  // namespace host
