// The tables of a database. Tested by tests/unit/host/schema_test.cpp.
#include "host/store/schema.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "host/store/hidden_rows.h"

namespace host {
namespace {

// Grows when the tables change; kept in the database's own header.
constexpr int64_t kVersion = 1;

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
constexpr const char* kHostParts =
    "ALTER TABLE AlarmFwd_PagerEvents ADD COLUMN hidden_by INTEGER;"
    "CREATE INDEX AlarmLog_ByNumber ON AlarmLog (alarmlogID);"
    "CREATE TABLE Host_Settings (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;";

// No column is unique: which of two rows with one name counts is the library's decision.
std::string CreateStatement(const Table& table) {
    std::string sql = "CREATE TABLE " + Quoted(table.name) + " (row_id INTEGER PRIMARY KEY";
    for (const std::string& column : table.columns) {
        sql += ", " + Quoted(column) + " TEXT NOT NULL DEFAULT ''";
    }
    return sql + ")";
}

int64_t ReadNumber(Connection& connection, const std::string& sql) {
    Statement statement(connection, sql);
    statement.Step();
    return statement.Number(0);
}

int64_t VersionOf(Connection& connection) {
    return ReadNumber(connection, "PRAGMA user_version");
}

void RefuseNewer(Connection& connection, int64_t version) {
    if (version > kVersion) {
        throw StoreError(connection.Path() +
                         ": made by a newer pagerfwd, which this one doesn't understand");
    }
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
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

bool CreateTables(Connection& connection) {
    WriteTransaction transaction(connection);
    const int64_t version = VersionOf(connection);
    RefuseNewer(connection, version);
    if (version != 0) {
        return false;
    }
    if (ReadNumber(connection, "SELECT count(*) FROM sqlite_schema") != 0) {
        throw StoreError(connection.Path() + ": holds tables of another program");
    }
    for (const Table& table : Tables()) {
        connection.Execute(CreateStatement(table).c_str());
    }
    connection.Execute(kHostParts);
    connection.Execute(("PRAGMA user_version = " + std::to_string(kVersion)).c_str());
    transaction.Commit();
    return true;
}

void RequireTables(Connection& connection) {
    const int64_t version = VersionOf(connection);
    RefuseNewer(connection, version);
    if (version == 0) {
        throw StoreError(connection.Path() + ": has no tables yet; make them with: pagerfwd init");
    }
}

std::string ReadSetting(Connection& connection, std::string_view name) {
    Statement statement(connection, "SELECT value FROM Host_Settings WHERE name = ?");
    return statement.Bind(name).Step() ? std::string(statement.Text(0)) : std::string();
}

void WriteSetting(Connection& connection, std::string_view name, std::string_view value) {
    Statement(connection, "INSERT OR REPLACE INTO Host_Settings VALUES (?, ?)")
        .Bind(name)
        .Bind(value)
        .Run();
}

}  // namespace host
