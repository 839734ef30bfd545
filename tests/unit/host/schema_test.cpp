// The tables of a new database.
#include "host/store/schema.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "host/store/rows.h"
#include "host/store/where.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

class Schema : public HostTest {
 protected:
    // Those steps of a statement that read a whole table. A partial index is read whole as well,
    // but holds only what is asked for.
    static std::string FullReads(Connection& connection, const std::string& sql) {
        std::string reads;
        Statement plan(connection, "EXPLAIN QUERY PLAN " + sql);
        while (plan.Step()) {
            const std::string step(plan.Text(3));
            if (step.rfind("SCAN ", 0) == 0 && step.find("USING") == std::string::npos) {
                reads += step + "; ";
            }
        }
        return reads;
    }
};

TEST_F(Schema, HasTheLibrarysColumnsInTheirOrder) {
    Connection connection(database);
    for (const Table& table : Tables()) {
        EXPECT_EQ(table.columns, ReadLayout(connection, table.name).columns) << table.name;
    }
}

TEST_F(Schema, HasEveryColumnThatTheLibraryReads) {
    EXPECT_EQ(23U, FindTable(kPorts)->columns.size());
    EXPECT_EQ(8U, FindTable(kPagers)->columns.size());
    EXPECT_EQ(7U, FindTable(kEvents)->columns.size());
    EXPECT_EQ(16U, FindTable(kAlarmLog)->columns.size());
}

TEST_F(Schema, NamesTheHoursOfTheWeekFromMondayOn) {
    const std::vector<std::string>& columns = FindTable(kTimeModels)->columns;
    ASSERT_EQ(169U, columns.size());
    EXPECT_EQ("mon_00", columns[0]);
    EXPECT_EQ("tue_00", columns[24]);
    EXPECT_EQ("sun_23", columns[167]);
    EXPECT_EQ("description", columns[168]);
    EXPECT_EQ(169U, std::set<std::string>(columns.begin(), columns.end()).size());
}

TEST_F(Schema, IsLeftAloneWhereItIs) {
    Connection connection(database);
    {
        WriteTransaction transaction(connection);
        WriteSetting(connection, "encoding", "shift_jis");
        transaction.Commit();
    }
    EXPECT_EQ(Made::kNothing, CreateTables(connection));
    EXPECT_EQ("shift_jis", ReadSetting(connection, "encoding"));
}

TEST_F(Schema, IsNotPutIntoAnotherProgramsDatabase) {
    Connection connection("other.db", Connection::Mode::kCreate);
    connection.Execute("CREATE TABLE Recipes (name TEXT)");
    EXPECT_THROW(CreateTables(connection), StoreError);
    EXPECT_EQ(nullptr, FindTable("Recipes"));
    EXPECT_THROW(ReadLayout(connection, kAlarmLog), StoreError);
}

TEST_F(Schema, OfANewerProgramIsRefused) {
    Connection connection(database);
    connection.Execute("PRAGMA user_version = 99");
    EXPECT_THROW(RequireTables(connection), StoreError);
    EXPECT_THROW(CreateTables(connection), StoreError);
}

TEST_F(Schema, IsMissedInAnEmptyDatabase) {
    Connection connection("empty.db", Connection::Mode::kCreate);
    EXPECT_THROW(RequireTables(connection), StoreError);
}

// A database of an older make.
TEST_F(Schema, ReadsATableThatLacksAColumn) {
    Connection connection(database);
    connection.Execute("ALTER TABLE AlarmFwd_COMProperties DROP COLUMN \"Select\"");
    const TableLayout layout = ReadLayout(connection, kPorts);
    EXPECT_EQ(-1, layout.IndexOf("Select"));
    EXPECT_EQ(0, layout.IndexOf("Description"));
    EXPECT_EQ(3, layout.IndexOf("Init"));
}

TEST_F(Schema, RefusesHoursThatHaveShifted) {
    Connection connection(database);
    connection.Execute("ALTER TABLE AlarmFwd_TMSetting DROP COLUMN wed_12");
    EXPECT_THROW(ReadLayout(connection, kTimeModels), StoreError);
}

TEST_F(Schema, NeverShowsTheHostsOwnColumns) {
    Connection connection(database);
    EXPECT_EQ(-1, ReadLayout(connection, kEvents).IndexOf("hidden_by"));
    EXPECT_EQ(-1, ReadLayout(connection, kEvents).IndexOf("row_id"));
}

// What is asked for every page: none of it may read a table from end to end.
TEST_F(Schema, HasAnIndexForEachQuestion) {
    Connection connection(database);
    const std::vector<std::pair<const char*, std::vector<Term>>> questions = {
        {kAlarmLog, {{"alarmlogID", "=", "7"}}},
        {kPagers, {{"description", "=", "duty"}}},
        {kEvents, {{"AlmLogID", "=", "7"}}},
        {kEvents, {{"AlmGroup", "=", "ops"}, {"AlmLogID", "=", "7"}, {"PagerDescr", "=", "duty"}}},
        {kEvents, {{"PagerState", "<>", "2"}}},
    };
    for (const auto& [table, terms] : questions) {
        const std::string clause = WhereInSight(*FindTable(table), terms);
        EXPECT_EQ("", FullReads(connection, "SELECT * FROM " + Quoted(table) + clause));
        EXPECT_EQ("", FullReads(connection, "DELETE FROM " + Quoted(table) + clause));
    }
    EXPECT_EQ("", FullReads(connection,
                            "SELECT DISTINCT hidden_by FROM AlarmFwd_PagerEvents"
                            " WHERE hidden_by IS NOT NULL"));
    EXPECT_NE("", FullReads(connection, "SELECT * FROM AlarmLog WHERE details = 'x'"));
}

// --- A database that was made before there was a service.

// Everything that the database is made of.
std::vector<std::string> Anatomy(Connection& connection) {
    std::vector<std::string> parts;
    Statement statement(connection,
                        "SELECT type || ' ' || name || ': ' || coalesce(sql, '')"
                        " FROM sqlite_schema ORDER BY type, name");
    while (statement.Step()) {
        parts.emplace_back(statement.Text(0));
    }
    return parts;
}

class OldSchema : public HostTest {
 protected:
    OldSchema() {
        for (const Table& table : Tables()) {
            std::string sql =
                "CREATE TABLE \"" + std::string(table.name) + "\" (row_id INTEGER PRIMARY KEY";
            for (const std::string& column : table.columns) {
                sql += ", \"" + column + "\" TEXT NOT NULL DEFAULT ''";
            }
            old.Execute((sql + ")").c_str());
        }
        old.Execute(
            "ALTER TABLE AlarmFwd_PagerEvents ADD COLUMN hidden_by INTEGER;"
            "CREATE INDEX AlarmLog_ByNumber ON AlarmLog (alarmlogID);"
            "CREATE TABLE Host_Settings (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
            "PRAGMA user_version = 1");
    }

    Connection old{"old.db", Connection::Mode::kCreate};
};

TEST_F(OldSchema, IsRefusedUntilItIsBroughtUpToDate) {
    EXPECT_THROW(RequireTables(old), StoreError);
    EXPECT_EQ(Made::kNewerParts, CreateTables(old));
    RequireTables(old);
    EXPECT_EQ(Made::kNothing, CreateTables(old));
}

TEST_F(OldSchema, BecomesWhatANewDatabaseIs) {
    CreateTables(old);
    Connection fresh(database);
    EXPECT_EQ(Anatomy(fresh), Anatomy(old));
}

TEST_F(OldSchema, KeepsWhatItHolds) {
    old.Execute(
        "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmName) VALUES ('7', '2', 'PLANT/1');"
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, PagerDescr, PagerState, hidden_by)"
        " VALUES ('7', 'duty', '2', 4711);"
        "INSERT INTO Host_Settings VALUES ('encoding', 'shift_jis')");
    CreateTables(old);
    EXPECT_EQ("shift_jis", ReadSetting(old, "encoding"));
    Statement statement(old,
                        "SELECT alarmName || '|' || alarm_group || '|' || PagerDescr || '|' ||"
                        " hidden_by FROM AlarmLog JOIN AlarmFwd_PagerEvents"
                        " ON AlmLogID = alarmlogID");
    ASSERT_TRUE(statement.Step());
    EXPECT_EQ("PLANT/1||duty|4711", statement.Text(0));
}

TEST_F(OldSchema, IsLeftAsItIsWhenItCantBeBroughtUpToDate) {
    old.Execute("CREATE TABLE Host_History (another TEXT)");
    const std::vector<std::string> before = Anatomy(old);
    EXPECT_THROW(CreateTables(old), StoreError);
    EXPECT_EQ(before, Anatomy(old));
    EXPECT_THROW(RequireTables(old), StoreError);
}

TEST(ColumnNames, AreTheSameInEitherCase) {
    EXPECT_TRUE(SameColumn("Pagerstate", "PagerState"));
    EXPECT_FALSE(SameColumn("Pagerstate", "Pagerstates"));
    EXPECT_FALSE(SameColumn("a[", "a{"));  // only letters have a case
}

}  // namespace
}  // namespace host
