// The tables of a database. Tested by tests/unit/host/schema_test.cpp.
#include "host/store/schema.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

#include "host/store/driver.h"
#include "host/store/hidden_rows.h"
#include "host/store/tables/nodes.h"
#include "host/store/waiting_steps.h"

namespace host {
namespace {

// mon_00 ... sun_23, then the description: the library takes the hours by their place in the row.
std::vector<std::string> TimeModelColumns() {
    std::vector<std::string> columns;
    for (const char* day : {"mon", "tue", "wed", "thu", "fri", "sat", "sun"}) {
        for (int hour = 0; hour < 24; ++hour) {
            std::array<char, 16> name{};
            std::snprintf(name.data(), name.size(), "%s_%02d", day, hour);
            columns.emplace_back(name.data());
        }
    }
    columns.emplace_back("description");
    return columns;
}

// What the library never names stands behind its columns.
//   hidden_by   see host/store/hidden_rows.h
constexpr const char* kFirstHostParts =
    "ALTER TABLE AlarmFwd_PagerEvents ADD COLUMN hidden_by INTEGER;"
    "CREATE INDEX AlarmLog_ByNumber ON AlarmLog (alarmlogID);"
    "CREATE TABLE Host_Settings (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;";

// What a service needs besides, and an index for each question that is asked for every page, so
// that none reads a table of many pages from end to end.
//   alarm_group       of an alarm; routes go by it
//   Host_Routes       see host/store/tables/routes.h
//   Host_Deliveries   see host/store/tables/deliveries.h
//   Host_History      see host/store/tables/history.h
//   Host_Sends        see host/store/tables/sends.h
//   Host_TestPages    see host/store/tables/test_pages.h
constexpr const char* kServiceParts =
    "ALTER TABLE AlarmLog ADD COLUMN alarm_group TEXT NOT NULL DEFAULT '';"
    "CREATE INDEX AlarmLog_ByState ON AlarmLog (pagerstate);"
    "CREATE INDEX Pagers_ByDescription ON AlarmFwd_PagerSetting (description);"
    "CREATE INDEX Events_ByAlarm ON AlarmFwd_PagerEvents (AlmLogID);"
    "CREATE INDEX Events_ByState ON AlarmFwd_PagerEvents (PagerState);"
    "CREATE INDEX Events_Hidden ON AlarmFwd_PagerEvents (hidden_by) WHERE hidden_by IS NOT NULL;"
    "CREATE TABLE Host_Routes (route INTEGER PRIMARY KEY, alarm_groups TEXT NOT NULL,"
    " severities TEXT NOT NULL);"
    "CREATE TABLE Host_RoutePagers (route INTEGER NOT NULL, place INTEGER NOT NULL,"
    " pager TEXT NOT NULL, PRIMARY KEY (route, place)) WITHOUT ROWID;"
    "CREATE TABLE Host_Deliveries (alarm TEXT NOT NULL, place INTEGER NOT NULL,"
    " alarm_group TEXT NOT NULL, pager TEXT NOT NULL, since INTEGER NOT NULL, answer INTEGER,"
    " PRIMARY KEY (alarm, place)) WITHOUT ROWID;"
    "CREATE INDEX Host_OpenDeliveries ON Host_Deliveries (alarm) WHERE answer IS NULL;"
    "CREATE TABLE Host_History (row_id INTEGER PRIMARY KEY AUTOINCREMENT, at INTEGER NOT NULL,"
    " change TEXT NOT NULL, alarm TEXT NOT NULL, alarm_group TEXT NOT NULL, pager TEXT NOT NULL,"
    " state TEXT NOT NULL, tries TEXT NOT NULL);"
    "CREATE INDEX Host_HistoryOfPage ON Host_History (alarm, pager);"
    "CREATE TABLE Host_Sends (row_id INTEGER PRIMARY KEY, at INTEGER NOT NULL,"
    " seconds INTEGER NOT NULL, alarm TEXT NOT NULL, pager TEXT NOT NULL, port TEXT NOT NULL,"
    " outcome TEXT NOT NULL, result INTEGER NOT NULL, reason TEXT NOT NULL);"
    "CREATE INDEX Host_SendsOfAlarm ON Host_Sends (alarm);"
    "CREATE TABLE Host_TestPages (row_id INTEGER PRIMARY KEY, asked_by INTEGER NOT NULL,"
    " pager TEXT NOT NULL, answer INTEGER);";

// What a site of many lines needs besides.
//   line, device        of an event, a delivery, a port: see host/store/line_view.h
//   tries               of a page, by the lines that it was taken from
//   Host_Lines          see host/store/tables/lines.h
//   Host_PageRequests   see host/store/tables/page_requests.h
constexpr const char* kLineParts =
    "ALTER TABLE AlarmFwd_PagerEvents ADD COLUMN line TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE AlarmFwd_COMProperties ADD COLUMN device TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Deliveries ADD COLUMN line TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Deliveries ADD COLUMN tries INTEGER NOT NULL DEFAULT 0;"
    "CREATE INDEX Host_MovedDeliveries ON Host_Deliveries (alarm) WHERE tries > 0;"
    "ALTER TABLE Host_History ADD COLUMN line TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_History ADD COLUMN note TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_TestPages ADD COLUMN line TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_TestPages ADD COLUMN number TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_TestPages ADD COLUMN said TEXT NOT NULL DEFAULT '';"
    "CREATE TABLE Host_Lines (line TEXT PRIMARY KEY, health TEXT NOT NULL DEFAULT '',"
    " since INTEGER NOT NULL DEFAULT 0, reason TEXT NOT NULL DEFAULT '',"
    " paused INTEGER NOT NULL DEFAULT 0, doing TEXT NOT NULL DEFAULT '',"
    " doing_since INTEGER NOT NULL DEFAULT 0, pid INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID;"
    "CREATE TABLE Host_PageRequests (row_id INTEGER PRIMARY KEY, alarm TEXT NOT NULL,"
    " alarm_group TEXT NOT NULL, pager TEXT NOT NULL, line TEXT NOT NULL,"
    " note TEXT NOT NULL);";

// What alarms need that monitoring raises and withdraws.
//   alarm_source ... last_word_of   see host/store/tables/alarm_keys.h
//   Host_Trail                      see host/store/tables/trail.h
constexpr const char* kKeyParts =
    "ALTER TABLE AlarmLog ADD COLUMN alarm_source TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE AlarmLog ADD COLUMN alarm_key TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE AlarmLog ADD COLUMN times_raised INTEGER NOT NULL DEFAULT 1;"
    "ALTER TABLE AlarmLog ADD COLUMN raised_last INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE AlarmLog ADD COLUMN withdrawn INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE AlarmLog ADD COLUMN last_word_of TEXT NOT NULL DEFAULT '';"
    "CREATE UNIQUE INDEX AlarmLog_OpenKeys ON AlarmLog (alarm_source, alarm_key)"
    " WHERE alarm_key <> '' AND withdrawn = 0;"
    "CREATE INDEX AlarmLog_ByKey ON AlarmLog (alarm_source, alarm_key) WHERE alarm_key <> '';"
    "CREATE INDEX AlarmLog_LastWords ON AlarmLog (last_word_of) WHERE last_word_of <> '';"
    "CREATE TABLE Host_Trail (row_id INTEGER PRIMARY KEY, at INTEGER NOT NULL,"
    " who TEXT NOT NULL, what TEXT NOT NULL, alarm TEXT NOT NULL, note TEXT NOT NULL);"
    "CREATE INDEX Host_TrailOfAlarm ON Host_Trail (alarm);";

//   Host_Spooled   see host/store/tables/spooled.h
constexpr const char* kSpoolParts =
    "CREATE TABLE Host_Spooled (name TEXT PRIMARY KEY, at INTEGER NOT NULL) WITHOUT ROWID;";

//   Host_Tokens   see host/store/tables/tokens.h
constexpr const char* kTokenParts =
    "CREATE TABLE Host_Tokens (name TEXT PRIMARY KEY, may TEXT NOT NULL, expires INTEGER NOT NULL,"
    " made INTEGER NOT NULL, used INTEGER NOT NULL, id TEXT NOT NULL UNIQUE, hash TEXT NOT NULL)"
    " WITHOUT ROWID;";

// What a site of several hosts needs besides.
//   node                of a port: whose line it is; of a pager: whose lines it is paged by; of a
//                       line: who serves it, see tables/nodes.h
//   page_alarm ...      of a line: the page that may be on it
//   unknown             of a delivery: its page may have left, and an operator is to say
//   asked_on            of a test page: the host
constexpr const char* kNodeParts =
    "ALTER TABLE AlarmFwd_COMProperties ADD COLUMN node TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE AlarmFwd_PagerSetting ADD COLUMN node TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Lines ADD COLUMN node TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Lines ADD COLUMN page_alarm TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Lines ADD COLUMN page_group TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Lines ADD COLUMN page_pager TEXT NOT NULL DEFAULT '';"
    "ALTER TABLE Host_Deliveries ADD COLUMN unknown INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE Host_TestPages ADD COLUMN asked_on TEXT NOT NULL DEFAULT '';"
    "CREATE TABLE Host_Nodes (node TEXT PRIMARY KEY, place INTEGER NOT NULL DEFAULT -1,"
    " term INTEGER NOT NULL DEFAULT 0, holder TEXT NOT NULL DEFAULT '',"
    " valid_until INTEGER NOT NULL DEFAULT 0, leads INTEGER NOT NULL DEFAULT 0,"
    " drained INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID;";

// Of a node:
//   renewals   of its lease, so far, see postgres_questions.cpp
//   told       the last row of the history of which it has told how pages ended
// And an index for the pages that a line is to hand over, however many wait for none.
constexpr const char* kRenewalParts =
    "ALTER TABLE Host_Nodes ADD COLUMN renewals INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE Host_Nodes ADD COLUMN told INTEGER NOT NULL DEFAULT 0;"
    "CREATE INDEX Host_DeliveriesOfLine ON Host_Deliveries (line) WHERE answer IS NULL;";

// What many pages need that wait at once: the severity that the alarm of each had when it was taken
// up, and an index by which the first of a pager are found, however many wait behind them. Those
// that a line has are apart from them.
constexpr const char* kOrderParts =
    "ALTER TABLE Host_Deliveries ADD COLUMN severity INTEGER NOT NULL DEFAULT 9;"
    "UPDATE Host_Deliveries SET severity = coalesce((SELECT min(nullif(CAST(severity AS INTEGER),"
    " 0)) FROM AlarmLog WHERE alarmlogID = Host_Deliveries.alarm), 9) WHERE answer IS NULL;"
    "DROP INDEX Host_DeliveriesOfLine;"
    "CREATE INDEX Host_DeliveriesOfLine ON Host_Deliveries (line)"
    " WHERE answer IS NULL AND line > '';"
    "CREATE INDEX Host_WaitingDeliveries ON Host_Deliveries (pager, severity,"
    " (CAST(alarm AS INTEGER)), place) WHERE answer IS NULL AND line = '' AND unknown = 0;";

// What nodes need that are upgraded one by one.
//   speaks   of a node: the newest version of the tables that it knows
constexpr const char* kVersionParts =
    "ALTER TABLE Host_Nodes ADD COLUMN speaks INTEGER NOT NULL DEFAULT 0;";

// They wrote the history.
constexpr const char* kFormerTriggers =
    "DROP TRIGGER IF EXISTS Events_Written;"
    "DROP TRIGGER IF EXISTS Events_Changed;"
    "DROP TRIGGER IF EXISTS Events_TakenOut;"
    "DROP TRIGGER IF EXISTS Events_BroughtBack;"
    "DROP TRIGGER IF EXISTS Events_Removed;";

// No column is unique: which of two rows with one name counts is the library's decision.
std::string CreateStatement(const Table& table) {
    std::string sql = "CREATE TABLE " + Quoted(table.name) + " (row_id INTEGER PRIMARY KEY";
    for (const std::string& column : table.columns) {
        sql += ", " + Quoted(column) + " TEXT NOT NULL DEFAULT ''";
    }
    return sql + ")";
}

// What makes the tables of a version from those of the one before. The first two are more than a
// text each: see StepsFrom.
struct Step {
    int64_t version;
    const char* statements;
};
constexpr Step kSteps[] = {
    {3, kLineParts}, {4, kKeyParts},     {5, kSpoolParts}, {6, kTokenParts},
    {7, kNodeParts}, {8, kRenewalParts}, {9, kOrderParts}, {10, kVersionParts},
};
constexpr int64_t kFirstWithNodes = 7;

// Without its tables nothing works.
constexpr int64_t kNeeded = std::end(kSteps)[-1].version;

void RefuseNewer(Connection& connection, int64_t version) {
    if (version > NewestTables()) {
        throw StoreError(connection.Name() +
                         ": made by a newer pagerfwd, which this one doesn't understand");
    }
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// What makes the tables of a version those of the present one, in order.
std::vector<std::string> StepsFrom(int64_t version, const std::string& stays_acknowledged,
                                   const std::string& makes_clock) {
    std::vector<std::string> steps;
    if (version < 1) {
        for (const Table& table : Tables()) {
            steps.push_back(CreateStatement(table));
        }
        steps.emplace_back(kFirstHostParts);
    }
    if (version < 2) {
        steps.emplace_back(kServiceParts);
        // The fold of an alarm's pages, written when a page on the line ends, would otherwise say
        // again that it is being paged, and the next page would leave.
        steps.emplace_back(stays_acknowledged);
    } else if (version < 3) {
        steps.emplace_back(kFormerTriggers);
    }
    for (const Step& step : kSteps) {
        if (version < step.version) {
            steps.emplace_back(step.statements);
        }
        if (version < step.version && step.version == kFirstWithNodes && !makes_clock.empty()) {
            steps.push_back(makes_clock);
        }
    }
    const std::vector<const char*>& waiting = WaitingSteps();
    for (size_t step = 0; step < waiting.size(); ++step) {
        if (version <= kNeeded + static_cast<int64_t>(step)) {
            steps.emplace_back(waiting[step]);
        }
    }
    return steps;
}

}  // namespace

const std::vector<Table>& Tables() {
    static const std::vector<Table> tables = {
        {kPorts,
         {"Description", "Baud",        "Flow",      "Select",       "Init",          "Reset",
          "PagerData",   "PagerParity", "PagerStop", "PagerDial",    "PagerActivity", "SMS1Data",
          "SMS1Parity",  "SMS1Stop",    "SMS1Dial",  "SMS1Protocol", "SMS1Restrict",  "SMS2Data",
          "SMS2Parity",  "SMS2Stop",    "SMS2Dial",  "SMS2Protocol", "SMS2Restrict"},
         false,
         nullptr},
        {kPagers,
         {"description", "owner", "comport", "pgtype", "pgnumber", "numretries", "retrydelay",
          "timemodel"},
         false,
         nullptr},
        {kTimeModels, TimeModelColumns(), true, nullptr},
        {kEvents,
         {"AlmLogID", "AlmGroup", "PagerDescr", "PagerState", "PagerRetries", "Severity",
          "ServerN"},
         false,
         kInSight},
        {kAlarmLog,
         {"alarmlogID", "acktime", "alarmack", "alarmName", "alarmnote", "broadcaststate",
          "details", "eventlogstate", "execstate", "mailstate", "monitoronly", "pagerstate",
          "server", "severity", "stationstate", "timestamp"},
         false,
         nullptr},
    };
    return tables;
}

const Table* FindTable(std::string_view name) {
    for (const Table& table : Tables()) {
        if (table.name == name) {
            return &table;
        }
    }
    return nullptr;
}

bool SameColumn(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string Quoted(std::string_view name) {
    return "\"" + std::string(name) + "\"";
}

int64_t NewestTables() {
    return kNeeded + static_cast<int64_t>(WaitingSteps().size());
}

namespace {

// A node that runs knows the tables as they are. One that died is over in a moment.
void RefuseWhileOldNodesRun(Connection& connection) {
    const std::string running = Joined(LivingHolders(connection));
    if (!running.empty()) {
        throw StoreError(connection.Name() + ": an older pagerfwd still serves it: node " +
                         running + "; end that first, and then: pagerfwd init");
    }
}

// Whether they are to be left as they are until somebody has gone.
bool MustWait(Connection& connection, int64_t version) {
    if (version >= kNeeded) {
        return !NodesThatDontKnow(connection, NewestTables()).empty();
    }
    if (version >= kFirstWithNodes) {
        RefuseWhileOldNodesRun(connection);
    }
    return false;
}

}  // namespace

std::string Joined(const std::vector<std::string>& names) {
    std::string joined;
    for (const std::string& name : names) {
        joined += (joined.empty() ? "" : ", ") + name;
    }
    return joined;
}

Made CreateTables(Connection& connection) {
    WriteTransaction transaction(connection);
    const int64_t version = connection.MadeBy();
    RefuseNewer(connection, version);
    if (version == NewestTables()) {
        return Made::kNothing;
    }
    if (version == 0 && connection.HasTables()) {
        throw StoreError(connection.Name() + ": holds tables of another program");
    }
    if (MustWait(connection, version)) {
        return Made::kLater;
    }
    for (const std::string& step :
         StepsFrom(version, connection.StaysAcknowledged(), connection.MakesClock())) {
        connection.Execute(step);
    }
    connection.SetMadeBy(NewestTables());
    transaction.Commit();
    return version == 0 ? Made::kTables : Made::kNewerParts;
}

std::vector<std::string> NewTables(const Questions& questions) {
    std::vector<std::string> steps =
        StepsFrom(0, questions.stays_acknowledged, questions.makes_clock);
    steps.push_back(questions.set_made_by(NewestTables()));
    return steps;
}

bool IsOutdated(Connection& connection) {
    const int64_t version = connection.MadeBy();
    return version > 0 && version < NewestTables();
}

bool LacksTables(Connection& connection) {
    return connection.MadeBy() < kNeeded;
}

void RequireTables(Connection& connection) {
    const int64_t version = connection.MadeBy();
    RefuseNewer(connection, version);
    if (version == 0) {
        throw StoreError(connection.Name() + ": has no tables yet; make them with: pagerfwd init");
    }
    if (version < kNeeded) {
        throw StoreError(connection.Name() +
                         ": made by an older pagerfwd; bring it up to date with: pagerfwd init");
    }
}

std::string ReadSetting(Connection& connection, std::string_view name) {
    Statement statement(connection, "SELECT value FROM Host_Settings WHERE name = ?");
    return statement.Bind(name).Step() ? std::string(statement.Text(0)) : std::string();
}

void WriteSetting(Connection& connection, std::string_view name, std::string_view value) {
    Statement(connection,
              "INSERT INTO Host_Settings VALUES (?, ?)"
              " ON CONFLICT (name) DO UPDATE SET value = excluded.value")
        .Bind(name)
        .Bind(value)
        .Run();
}

}  // namespace host
