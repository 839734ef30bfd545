// From the tables to a site. Tested by tests/unit/host/site_writer_test.cpp and
// database_check_test.cpp.
#include "host/site/read_back.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <utility>

#include "host/pages/routes.h"
#include "host/site/hours.h"
#include "host/site/rules.h"
#include "host/site/site_tables.h"
#include "host/site/stored_alerts.h"
#include "host/site/stored_commands.h"
#include "host/site/time_models.h"
#include "host/site/words.h"
#include "host/store/schema.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/ports.h"
#include "host/text/encoding.h"

namespace host {
namespace {

constexpr const char* kPortStaysTaken =
    "Every page over this line fails (result 5), and the port then stays taken for all others.";

// By the letter that decides, as the library does it.
const char* WordForFlow(const std::string& cell) {
    if (cell == "None" || cell.empty()) {
        return "none";
    }
    switch (cell.front()) {
        case 'H':
        case 'h':
            return "hardware";
        case 'X':
        case 'x':
            return "xon/xoff";
        default:
            return nullptr;
    }
}

const char* WordForParity(const std::string& cell) {
    const char letter = cell.empty() ? ' ' : cell.front();
    for (const Word& parity : kParities) {
        if (letter == parity.word[0] || letter == parity.cell[0]) {
            return parity.word;
        }
    }
    return nullptr;
}

// One row, its cells converted as they are taken.
class RowReader {
 public:
    RowReader(const StoredTable& table, const StoredRow& row, Encoding encoding, Findings& findings)
        : table_(table), row_(row), encoding_(encoding), findings_(findings) {}

    int Line() const { return row_.line; }
    std::string Cell(const std::string& column) const { return table_.Cell(row_, column); }

    SaidText Text(const std::string& column) const {
        return {Decode(Cell(column), encoding_), row_.line};
    }

    // word: null where none stands for the cell.
    SaidText Worded(const std::string& column, const char* word) const {
        return word == nullptr ? Text(column) : SaidText{word, row_.line};
    }

    SaidNumber Number(const std::string& column, const char* consequence) const {
        const std::string cell = Cell(column);
        int64_t number = 0;
        const char* const end = cell.data() + cell.size();
        const auto [stop, error] = std::from_chars(cell.data(), end, number);
        if (stop != end || error != std::errc()) {
            number = std::atoi(cell.c_str());  // NOLINT(cert-err34-c): as the library does
            findings_.Error(
                row_.line,
                column + " is " + InQuotes(Decode(cell, encoding_)) + ", which is no number",
                consequence, "Export the site, write a number, and import it.");
        }
        return {number, row_.line};
    }

    LineSettings Settings(const std::string& prefix) const {
        return {Number(prefix + "Data", kPortStaysTaken),
                Worded(prefix + "Parity", WordForParity(Cell(prefix + "Parity"))),
                Number(prefix + "Stop", kPortStaysTaken)};
    }

    SmsService Service(const std::string& prefix) const {
        return {Text(prefix + "Protocol"), Text(prefix + "Dial"), Settings(prefix)};
    }

 private:
    const StoredTable& table_;
    const StoredRow& row_;
    Encoding encoding_;
    Findings& findings_;
};

Port PortOf(const RowReader& row) {
    Port port;
    port.line = row.Line();
    port.name = row.Text("Description");
    port.baud = row.Number("Baud", kPortStaysTaken);
    port.flow = row.Worded("Flow", WordForFlow(row.Cell("Flow")));
    port.modem = {row.Cell("Select").substr(0, 1) == "1", row.Line()};
    port.init = row.Text("Init");
    port.reset = row.Text("Reset");
    port.pager = {row.Text("PagerDial"), row.Text("PagerActivity"), row.Settings("Pager")};
    port.sms1 = row.Service("SMS1");
    port.sms2 = row.Service("SMS2");
    return port;
}

// Of each port, in order: columns of the host's own.
void ReadPlaces(Connection& connection, Encoding encoding, std::vector<Port>& ports) {
    const std::vector<PlaceOfPort> places = ReadPlaces(connection);
    for (size_t at = 0; at < std::min(ports.size(), places.size()); ++at) {
        ports[at].device = {Decode(places[at].device, encoding), ports[at].line};
        ports[at].node = {Decode(places[at].node, encoding), ports[at].line};
    }
}

// Likewise.
void ReadNodesOfPagers(Connection& connection, Encoding encoding, std::vector<Pager>& pagers) {
    const std::vector<PagerRow> rows = ReadPagers(connection);
    for (size_t at = 0; at < std::min(pagers.size(), rows.size()); ++at) {
        pagers[at].node = {Decode(rows[at].node, encoding), pagers[at].line};
    }
}

std::vector<SiteNode> NodesOf(Connection& connection, Encoding encoding) {
    std::vector<SiteNode> nodes;
    for (const std::string& name : NodesOfSite(connection)) {
        nodes.push_back({0, {Decode(name, encoding), 0}});
    }
    return nodes;
}

// A port by its name. Empty, or any other word with an A: any port.
SaidText PortOfPager(const RowReader& row, const std::vector<Port>& ports) {
    SaidText port = row.Text("comport");
    const bool is_name = std::any_of(ports.begin(), ports.end(), [&port](const Port& one) {
        return one.name.value == port.value;
    });
    if (!is_name && !port.value.empty() && (port.value[0] == 'A' || port.value[0] == 'a')) {
        port.value.clear();
    }
    return port;
}

Pager PagerOf(const RowReader& row, const std::vector<Port>& ports) {
    const char* const kReadAsNumber = "The library takes the digits that it begins with, or 0.";
    Pager pager;
    pager.line = row.Line();
    pager.description = row.Text("description");
    pager.owner = row.Text("owner");
    pager.port = PortOfPager(row, ports);
    const std::string type = std::to_string(row.Number("pgtype", kReadAsNumber).value);
    pager.type = {WordFor(kPagerTypes, type) != nullptr ? WordFor(kPagerTypes, type) : type,
                  row.Line()};
    pager.number = row.Text("pgnumber");
    pager.retries = row.Number("numretries", kReadAsNumber);
    pager.delay = row.Number("retrydelay", kReadAsNumber);
    pager.hours = row.Text("timemodel");
    return pager;
}

// Hours by their place in the row, as the library takes them.
TimeModel TimeModelOf(const RowReader& row, const StoredRow& stored) {
    Week week;
    for (size_t hour = 0; hour < week.size(); ++hour) {
        week.set(hour, stored.cells.at(hour).substr(0, 1) == "1");
    }
    TimeModel model;
    model.line = row.Line();
    model.name = row.Text("description");
    model.all = {week.all(), row.Line()};
    if (!week.all()) {
        for (const WrittenHours& hours : WriteWeek(week)) {
            model.days.push_back({{hours.days, row.Line()}, {hours.hours, row.Line()}});
        }
    }
    return model;
}

std::vector<Route> RoutesOf(Connection& connection, Encoding encoding) {
    std::vector<Route> routes;
    for (const StoredRoute& stored : ReadRoutes(connection, encoding)) {
        Route route;
        route.groups.value = stored.groups;
        for (const std::string& severity : stored.severities) {
            const char* const word = WordFor(kSeverities, severity);
            route.severities.push_back({word == nullptr ? severity : word, 0});
        }
        for (const std::string& pager : stored.pagers) {
            route.pagers.push_back({Decode(pager, encoding), 0});
        }
        routes.push_back(std::move(route));
    }
    return routes;
}

Command CommandOf(Connection& connection, const char* name) {
    Command command;
    for (std::string& word : ReadCommand(connection, name)) {
        command.push_back({std::move(word), 0});
    }
    return command;
}

AlertmanagerPart AlertmanagerOf(Connection& connection) {
    const AlertTemplates templates = ReadAlertTemplates(connection);
    return {
        {templates.group, 0}, {templates.severity, 0}, {templates.server, 0}, {templates.text, 0}};
}

// A site file has these hours without saying so, a database only where it has their row.
void CheckAlways(const Site& site, Findings& findings) {
    if (FindTimeModel(site, kAlways) != nullptr) {
        return;
    }
    for (const Pager& pager : site.pagers) {
        if (pager.hours.value == kAlways) {
            findings.Error(pager.line,
                           "pager " + InQuotes(pager.description.value) + ": there are no hours " +
                               InQuotes(kAlways),
                           "Every page to it fails. This pager can never be reached.",
                           "Export the site and import it: that adds them.");
        }
    }
}

}  // namespace

ReadBack ReadSiteBack(Connection& connection) {
    StoredTables tables(connection);
    return ReadSiteBack(connection, tables);
}

ReadBack ReadSiteBack(Connection& connection, StoredTables& tables) {
    ReadBack read{{}, tables.MakeFindings()};
    const Encoding encoding = EncodingOf(connection);
    read.site.encoding.value = WordFor(encoding);
    read.site.unknown_outcome.value = AsksForUnknownOutcomes(connection) ? kAsk : kSendAgain;
    read.site.notify = CommandOf(connection, kNotifyCommand);
    read.site.answers.value = TellsAnswers(connection);
    read.site.heartbeat = CommandOf(connection, kHeartbeatCommand);
    read.site.page_resolved.value = PagesResolved(connection);
    read.site.alertmanager = AlertmanagerOf(connection);
    const auto each = [&](const char* name, auto&& take) {
        const StoredTable table = tables.Read(name, read.findings);
        for (const StoredRow& row : table.rows) {
            take(RowReader(table, row, encoding, read.findings), row);
        }
    };
    each(kPorts,
         [&](const RowReader& row, const StoredRow&) { read.site.ports.push_back(PortOf(row)); });
    if (!read.site.ports.empty()) {
        ReadPlaces(connection, encoding, read.site.ports);
    }
    each(kTimeModels, [&](const RowReader& row, const StoredRow& stored) {
        read.site.timeModels.push_back(TimeModelOf(row, stored));
    });
    each(kPagers, [&](const RowReader& row, const StoredRow&) {
        read.site.pagers.push_back(PagerOf(row, read.site.ports));
    });
    if (!read.site.pagers.empty()) {
        ReadNodesOfPagers(connection, encoding, read.site.pagers);
    }
    read.site.nodes = NodesOf(connection, encoding);
    read.site.routes = RoutesOf(connection, encoding);
    CheckAlways(read.site, read.findings);
    return read;
}

}  // namespace host
