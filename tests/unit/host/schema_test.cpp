// The tables of a new database.
#include "host/store/schema.h"
#include "host/store/tables/nodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "host/store/rows.h"
#include "host/store/where.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

namespace host {
namespace {

using ::testing::ElementsAre;

class Schema : public HostTest {
 protected:
    // Those steps of a statement that read a whole table. A partial index is read whole as well,
    // but holds only what is asked for.
    static std::string FullReads(Connection& connection, const std::string& sql) {
        std::string reads;
        for (const std::string& step : Plan(connection, sql)) {
            if (step.rfind("SCAN ", 0) == 0 && step.find("USING") == std::string::npos) {
                reads += step + "; ";
            }
        }
        return reads;
    }
    static std::vector<std::string> Plan(Connection& connection, const std::string& sql) {
        std::vector<std::string> steps;
        Statement plan(connection, "EXPLAIN QUERY PLAN " + sql);
        while (plan.Step()) {
            steps.emplace_back(plan.Text(3));
        }
        return steps;
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
    EXPECT_EQ("", FullReads(connection,
                            "SELECT 1 FROM Host_Deliveries AS moved CROSS JOIN AlarmFwd_PagerEvents"
                            " ON AlmLogID = moved.alarm WHERE moved.tries > 0"));
    EXPECT_EQ("", FullReads(connection,
                            "SELECT 1 FROM Host_Deliveries WHERE answer IS NULL AND line > ''"
                            " AND line = 'x'"));
    EXPECT_NE("", FullReads(connection, "SELECT * FROM AlarmLog WHERE details = 'x'"));
}

// What is asked in every pass, however many pages wait.
TEST_F(Schema, HasThePagesThatWaitInTheirOrder) {
    Connection connection(database);
    const std::string waits =
        "FROM Host_Deliveries WHERE answer IS NULL AND line = '' AND unknown = 0 AND pager ";
    const auto by_index = ElementsAre(
        ::testing::StartsWith("SEARCH Host_Deliveries USING INDEX Host_WaitingDeliveries (pager"));
    EXPECT_THAT(Plan(connection, "SELECT * " + waits +
                                     "= 'x' ORDER BY severity, CAST(alarm AS INTEGER), place"
                                     " LIMIT 3"),
                by_index);
    EXPECT_THAT(Plan(connection, "SELECT min(pager) " + waits + "> 'x'"),
                ElementsAre(::testing::HasSubstr("Host_WaitingDeliveries (pager>?)")));
}

// --- Databases of older makes.

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

class OldDatabase : public HostTest {
 protected:
    void Run(const std::string& sql) { old.Execute(sql); }

    std::vector<std::string> Rows(const std::string& sql) {
        std::vector<std::string> rows;
        Statement statement(old, "SELECT " + sql);
        while (statement.Step()) {
            rows.emplace_back(statement.Text(0));
        }
        return rows;
    }

    // As pagerfwd made it before there was a service.
    void MakeVersionOne() {
        for (const Table& table : Tables()) {
            std::string sql =
                "CREATE TABLE \"" + std::string(table.name) + "\" (row_id INTEGER PRIMARY KEY";
            for (const std::string& column : table.columns) {
                sql += ", \"" + column + "\" TEXT NOT NULL DEFAULT ''";
            }
            Run(sql + ")");
        }
        Run("ALTER TABLE AlarmFwd_PagerEvents ADD COLUMN hidden_by INTEGER;"
            "CREATE INDEX AlarmLog_ByNumber ON AlarmLog (alarmlogID);"
            "CREATE TABLE Host_Settings (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
            "PRAGMA user_version = 1");
    }

    // As it made it before there were lines: 2; before alarms had keys: 3.
    void MakeVersion(int version) {
        if (version == 1) {
            return MakeVersionOne();
        }
        Run(ReadFile(DATABASES "/version_" + std::to_string(version) + ".sql"));
    }

    Connection old{"old.db", Connection::Mode::kCreate};
};

class AnyOldDatabase : public OldDatabase, public ::testing::WithParamInterface<int> {
 protected:
    AnyOldDatabase() { MakeVersion(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(OfVersion, AnyOldDatabase, ::testing::Values(1, 2, 3, 4));

TEST_P(AnyOldDatabase, IsRefusedUntilItIsBroughtUpToDate) {
    EXPECT_TRUE(IsOutdated(old));
    EXPECT_THROW(RequireTables(old), StoreError);
    EXPECT_EQ(Made::kNewerParts, CreateTables(old));
    RequireTables(old);
    EXPECT_FALSE(IsOutdated(old));
    EXPECT_EQ(Made::kNothing, CreateTables(old));
}

TEST_P(AnyOldDatabase, BecomesWhatANewDatabaseIs) {
    CreateTables(old);
    Connection fresh(database);
    EXPECT_EQ(Anatomy(fresh), Anatomy(old));
}

TEST_P(AnyOldDatabase, IsLeftAsItIsWhenItCantBeBroughtUpToDate) {
    Run("CREATE TABLE Host_Nodes (another TEXT)");
    const std::vector<std::string> before = Anatomy(old);
    EXPECT_THROW(CreateTables(old), StoreError);
    EXPECT_EQ(before, Anatomy(old));
    EXPECT_THROW(RequireTables(old), StoreError);
}

// A database as the version before has it, with a node's row as that one writes it.
TEST_F(OldDatabase, IsBroughtUpToDateWhenTheLastNodeThatKnowsOnlyItHasGone) {
    CreateTables(old);
    Run("ALTER TABLE Host_Nodes DROP COLUMN speaks; ALTER TABLE Host_Nodes DROP COLUMN renewals; "
        "ALTER TABLE Host_Nodes DROP COLUMN told; "
        "DROP INDEX Host_DeliveriesOfLine; DROP INDEX Host_WaitingDeliveries;"
        " ALTER TABLE Host_Deliveries DROP COLUMN severity;"
        " PRAGMA user_version = 7");
    Run("INSERT INTO Host_Nodes (node, term, holder, valid_until) VALUES ('north', 3,"
        " 'a host, process 7', " +
        old.Clock() + " + 5000)");
    const std::vector<std::string> before = Anatomy(old);
    try {
        CreateTables(old);
        FAIL();
    } catch (const StoreError& refused) {
        EXPECT_STREQ(
            "old.db: an older pagerfwd still serves it: node \"north\" (a host, process 7);"
            " end that first, and then: pagerfwd init",
            refused.what());
    }
    EXPECT_EQ(before, Anatomy(old));
    Run("UPDATE Host_Nodes SET holder = ''");  // at its orderly end
    EXPECT_EQ(Made::kNewerParts, CreateTables(old));
    EXPECT_EQ(3, FindNode(old, "north")->term);
}

TEST_F(OldDatabase, OfVersionOneKeepsWhatItHolds) {
    MakeVersionOne();
    Run("INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmName) VALUES ('7', '2', 'PLANT/1');"
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, PagerDescr, PagerState, hidden_by)"
        " VALUES ('7', 'duty', '2', 4711);"
        "INSERT INTO Host_Settings VALUES ('encoding', 'shift_jis')");
    CreateTables(old);
    EXPECT_EQ("shift_jis", ReadSetting(old, "encoding"));
    EXPECT_THAT(Rows("alarmName || '|' || alarm_group || '|' || PagerDescr || '|' || hidden_by"
                     " || '|' || line FROM AlarmLog JOIN AlarmFwd_PagerEvents"
                     " ON AlmLogID = alarmlogID"),
                ElementsAre("PLANT/1||duty|4711|"));
}

TEST_F(OldDatabase, OfVersionTwoKeepsItsPagesAndTheirHistory) {
    MakeVersion(2);
    const std::string pages =
        "AlmLogID || ' ' || PagerDescr || ' ' || PagerState || '/' || PagerRetries"
        " FROM AlarmFwd_PagerEvents ORDER BY row_id";
    const std::string history =
        "row_id || ' ' || at || ' ' || change || ' ' || alarm || ' ' || alarm_group || ' ' || pager"
        " || ' ' || state || '/' || tries FROM Host_History ORDER BY row_id";
    const std::string deliveries =
        "alarm || ' ' || place || ' ' || pager || ' ' || since || ' ' || answer"
        " FROM Host_Deliveries ORDER BY alarm, place";
    const std::vector<std::string> pages_before = Rows(pages);
    const std::vector<std::string> history_before = Rows(history);
    const std::vector<std::string> deliveries_before = Rows(deliveries);
    CreateTables(old);
    EXPECT_EQ(4U, pages_before.size());
    EXPECT_EQ(pages_before, Rows(pages));
    EXPECT_EQ(12U, history_before.size());
    EXPECT_EQ(history_before, Rows(history));
    EXPECT_EQ(4U, deliveries_before.size());
    EXPECT_EQ(deliveries_before, Rows(deliveries));
    EXPECT_THAT(Rows("alarmlogID || ' ' || pagerstate FROM AlarmLog"),
                ElementsAre("978948000 2", "978948720 1", "978948900 2"));
    EXPECT_THAT(Rows("count(*) || line FROM AlarmFwd_PagerEvents GROUP BY line"), ElementsAre("4"))
        << "no line owns them yet";
}

TEST_F(OldDatabase, OfVersionThreeKeepsItsAlarms) {
    MakeVersion(3);
    CreateTables(old);
    EXPECT_THAT(Rows("details || ' ' || alarmack || ' ' || times_raised || ' ' || withdrawn"
                     " || alarm_key FROM AlarmLog"),
                ElementsAre("Pump 3 stands still 0 1 0", "Pump 4 1 1 0"));
}

TEST_F(OldDatabase, OfVersionTwoHasItsHistoryWrittenOnce) {
    MakeVersion(2);
    CreateTables(old);
    OpenTable("old.db", kEvents)
        .Delete(
            "WHERE AlmGroup = \"PLANT/18\" AND AlmLogID = 978948900 AND PagerDescr = \"porter\"");
    EXPECT_THAT(Rows("change FROM Host_History WHERE row_id > 13"), ElementsAre(kTakenOut));
}

TEST(ColumnNames, AreTheSameInEitherCase) {
    EXPECT_TRUE(SameColumn("Pagerstate", "PagerState"));
    EXPECT_FALSE(SameColumn("Pagerstate", "Pagerstates"));
    EXPECT_TRUE(SameColumn("AZ@", "az@"));
    EXPECT_FALSE(SameColumn("a[", "a{"));  // only letters have a case
}

}  // namespace
}  // namespace host
