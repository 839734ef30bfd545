// The tables that the library names, and what the host keeps beside them.
#ifndef PAGERFWD_HOST_STORE_SCHEMA_H
#define PAGERFWD_HOST_STORE_SCHEMA_H

#include <string>
#include <string_view>
#include <vector>

#include "host/store/connection.h"

namespace host {

inline constexpr const char* kPorts = "AlarmFwd_COMProperties";
inline constexpr const char* kPagers = "AlarmFwd_PagerSetting";
inline constexpr const char* kTimeModels = "AlarmFwd_TMSetting";
inline constexpr const char* kEvents = "AlarmFwd_PagerEvents";
inline constexpr const char* kAlarmLog = "AlarmLog";

// Behind the library's columns of kEvents: the line that the event belongs to.
inline constexpr const char* kLineColumn = "line";

constexpr int kHoursInWeek = 168;

// A table as the library knows it. Every cell is a text; rows are in order of insertion.
struct Table {
    const char* name;
    std::vector<std::string> columns;  // in the order in which rows are handed out
    bool positional;       // the library reads cells by their place, so no column may be missing
    const char* in_sight;  // which rows are there for the library; null when all are
};

const std::vector<Table>& Tables();
// Null when the library names no such table.
const Table* FindTable(std::string_view name);

// Column names are the same in upper and lower case: "Pagerstate" is "PagerState".
bool SameColumn(std::string_view left, std::string_view right);

// The name as it stands in a statement. The name comes from the schema, never from outside.
std::string Quoted(std::string_view name);

// How Host_History names the changes of a page.
inline constexpr const char* kWritten = "written";
inline constexpr const char* kChanged = "changed";
inline constexpr const char* kTakenOut = "taken out";  // hidden, see hidden_rows.h
inline constexpr const char* kBroughtBack = "brought back";
inline constexpr const char* kRemoved = "removed";
inline constexpr const char* kMoved = "moved";          // taken from a line, to be given to another
inline constexpr const char* kCancelled = "cancelled";  // given up by hand
// ... and what isn't one, but explains those that follow.
inline constexpr const char* kEngineStarts = "engine starts";

// Makes the tables in a new database, or what a database of an older make lacks; later, where that
// may wait (waiting_steps.h) and a node still runs that doesn't know it. Throws StoreError where
// the database is another program's, or where such a node runs and it may not wait.
enum class Made { kNothing, kTables, kNewerParts, kLater };
Made CreateTables(Connection& connection);

// The version that it makes.
int64_t NewestTables();

// The statements that CreateTables runs in a new database of a kind.
struct Questions;
std::vector<std::string> NewTables(const Questions& questions);

// Whether its tables were made by an older pagerfwd, and CreateTables would change them.
bool IsOutdated(Connection& connection);
// ... and whether this program can't do without.
bool LacksTables(Connection& connection);

// Throws StoreError unless the database has tables that this program understands.
void RequireTables(Connection& connection);

// "one, two".
std::string Joined(const std::vector<std::string>& names);

// What holds for the whole site, such as the encoding of its texts: kept by the host.
std::string ReadSetting(Connection& connection, std::string_view name);  // "" when not set
void WriteSetting(Connection& connection, std::string_view name, std::string_view value);

}  // namespace host

#endif
