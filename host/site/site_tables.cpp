// From the site file to the tables. Tested by tests/unit/host/site_tables_test.cpp.
#include "host/site/site_tables.h"

#include <utility>

#include "host/site/stored_alerts.h"
#include "host/site/stored_commands.h"
#include "host/site/time_models.h"
#include "host/site/words.h"
#include "host/store/rows.h"
#include "host/store/schema.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/ports.h"
#include "host/store/tables/routes.h"

namespace host {
namespace {

constexpr const char* kEncodingSetting = "encoding";
constexpr const char* kAnswersSetting = "notify of answers";
constexpr const char* kPageResolvedSetting = "page resolved";
constexpr const char* kUnknownOutcome = "unknown_outcome";

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

RouteRow RowOf(const Route& route, Encoding encoding) {
    RouteRow row{Encode(route.groups.value, encoding), SeveritiesCell(route), {}};
    for (const SaidText& pager : route.pagers) {
        row.pagers.push_back(Encode(pager.value, encoding));
    }
    return row;
}

void StoreRoutes(Connection& connection, const Site& site) {
    std::vector<RouteRow> rows;
    for (const Route& route : site.routes) {
        rows.push_back(RowOf(route, EncodingOf(site)));
    }
    StoreRouteRows(connection, rows);
}

// Columns of the host's own, behind those of the library.
void StorePlaces(Connection& connection, const Site& site) {
    const auto encoded = [&](const SaidText& text) { return Encode(text.value, EncodingOf(site)); };
    for (const Port& port : site.ports) {
        SetPlace(connection, encoded(port.name), {encoded(port.device), encoded(port.node)});
    }
    for (const Pager& pager : site.pagers) {
        SetNodeOfPager(connection, encoded(pager.description), encoded(pager.node));
    }
    std::vector<std::string> nodes;
    for (const SiteNode& node : site.nodes) {
        nodes.push_back(encoded(node.name));
    }
    StoreNodes(connection, nodes);
    ForgetPausesOfFormerLines(connection);
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
        DeleteAllRows(connection, table);
    }
    for (const TableRow& row : rows) {
        InsertRow(connection, ReadLayout(connection, row.table), row.cells);
    }
    StorePlaces(connection, site);
    StoreRoutes(connection, site);
    WriteSetting(connection, kEncodingSetting, WordFor(EncodingOf(site)));
    WriteSetting(connection, kUnknownOutcome,
                 site.unknown_outcome.value == kAsk ? kAsk : kSendAgain);
    StoreCommand(connection, kNotifyCommand, site.notify);
    WriteSetting(connection, kAnswersSetting, site.answers.value ? "1" : "");
    StoreCommand(connection, kHeartbeatCommand, site.heartbeat);
    StoreAlertTemplates(connection, site.alertmanager);
    WriteSetting(connection, kPageResolvedSetting, site.page_resolved.value ? "1" : "");
    transaction.Commit();
}

bool AsksForUnknownOutcomes(Connection& connection) {
    return ReadSetting(connection, kUnknownOutcome) == kAsk;
}

Encoding EncodingOf(Connection& connection) {
    return EncodingNamed(ReadSetting(connection, kEncodingSetting)).value_or(Encoding::kLatin1);
}

bool TellsAnswers(Connection& connection) {
    return !ReadSetting(connection, kAnswersSetting).empty();
}

bool PagesResolved(Connection& connection) {
    return !ReadSetting(connection, kPageResolvedSetting).empty();
}

}  // namespace host
