// What of a database on a server is its own: connections that are lost and come back, and tables
// made in it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "host/store/commit_risks.h"
#include "host/store/connection.h"
#include "host/store/retry_pause.h"
#include "host/store/schema.h"
#include "tests/support/own_postgres.h"

namespace host {
namespace {

using test_support::OwnPostgres;
using test_support::TheServer;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class OnAServer : public ::testing::Test {
 protected:
    std::string Refusal() const {
        try {
            Connection connection(database);
            CreateTables(connection);
            return "";
        } catch (const StoreError& error) {
            return error.what();
        }
    }

    // "site1", as SQL names it.
    static std::string NameOf(const std::string& database) {
        const size_t begin = database.find("@/") + 2;
        return database.substr(begin, database.find('?') - begin);
    }

    const std::string database = TheServer().MakeDatabase();
};

TEST_F(OnAServer, TablesAreMadeOnceThoughTwoMakeThem) {
    Made other = Made::kNothing;
    std::thread second([&] {
        Connection connection(database);
        other = CreateTables(connection);
    });
    Connection connection(database);
    const Made own = CreateTables(connection);
    second.join();
    EXPECT_NE(own, other);
    EXPECT_TRUE(own == Made::kTables || other == Made::kTables);
    EXPECT_EQ(Made::kNothing, CreateTables(connection));
    RequireTables(connection);
}

TEST_F(OnAServer, TablesAreNotMadeBesideAnotherProgramsNorByANewerOne) {
    OwnPostgres::Ask(database, "CREATE TABLE invoices (number int)");
    EXPECT_THAT(Refusal(), HasSubstr("holds tables of another program"));
    OwnPostgres::Ask(database, "DROP TABLE invoices");
    EXPECT_EQ("", Refusal());
    OwnPostgres::Ask(database, "COMMENT ON TABLE Host_Settings IS '99'");
    EXPECT_THAT(Refusal(), HasSubstr("made by a newer pagerfwd"));
}

TEST_F(OnAServer, ADatabaseMustHoldEveryByte) {
    OwnPostgres::Ask(database,
                     "CREATE DATABASE latin2 ENCODING LATIN2 TEMPLATE template0 LOCALE 'C'");
    const std::string other = std::string(database).replace(
        database.find("/site"), database.find('?') - database.find("/site"), "/latin2");
    EXPECT_THROW(Connection{other}, StoreError);
}

TEST_F(OnAServer, AnotherProgramsNumbersAndTextsAreTakenAsInAFile) {
    Connection connection(database);
    CreateTables(connection);
    for (const char* time : {"'978948000'", "' 12x'", "''", "'later'", "'-7'"}) {
        OwnPostgres::Ask(database,
                         std::string("INSERT INTO AlarmLog (timestamp) VALUES (") + time + ")");
    }
    Statement statement(connection,
                        "SELECT CAST(timestamp AS INTEGER) FROM AlarmLog ORDER BY row_id");
    EXPECT_THAT(statement.Numbers(), ::testing::ElementsAre(978948000, 12, 0, 0, -7));
}

// Where a number would be too large for the server, the question would fail, for all rows.
TEST_F(OnAServer, ATextOfManyDigitsIsANumberOfEighteen) {
    Connection connection(database);
    CreateTables(connection);
    for (const char* time : {"123456789012345678", "1234567890123456789", "-99999999999999999999",
                             "00000000000000000000000000000000000001"}) {
        OwnPostgres::Ask(database,
                         std::string("INSERT INTO AlarmLog (timestamp) VALUES ('") + time + "')");
    }
    Statement statement(connection,
                        "SELECT CAST(timestamp AS INTEGER) FROM AlarmLog ORDER BY row_id");
    EXPECT_THAT(statement.Numbers(), ::testing::ElementsAre(123456789012345678, 123456789012345678,
                                                            -999999999999999999, 0));
}

TEST_F(OnAServer, AConnectionThatWasLostIsMadeAgain) {
    Connection connection(database);
    CreateTables(connection);
    WriteSetting(connection, "encoding", "latin1");
    TheServer().Kill();
    EXPECT_THROW(ReadSetting(connection, "encoding"), StoreAway);
    EXPECT_THROW(ReadSetting(connection, "encoding"), StoreAway);
    TheServer().Start();
    std::this_thread::sleep_for(RetryPause::kFirst);  // by then it is tried again
    EXPECT_EQ("latin1", ReadSetting(connection, "encoding"));
    EXPECT_EQ("latin1", ReadSetting(connection, "encoding"));
}

// As the operator's log has it.
TEST_F(OnAServer, WhatTheServerSaysIsToldInOneLine) {
    Connection connection(database);
    TheServer().Kill();
    try {
        ReadSetting(connection, "encoding");
        FAIL();
    } catch (const StoreAway& away) {
        EXPECT_THAT(away.what(), Not(ContainsRegex("[[:cntrl:]]|  ")));
        EXPECT_THAT(away.what(), HasSubstr("server closed the connection unexpectedly This"));
    }
    TheServer().Start();
}

// What was written before would be missing.
TEST_F(OnAServer, ATransactionThatWasLostIsNotGoneOnWith) {
    Connection connection(database);
    CreateTables(connection);
    {
        WriteTransaction transaction(connection);
        WriteSetting(connection, "a", "1");
        TheServer().Kill();
        TheServer().Start();
        EXPECT_THROW(WriteSetting(connection, "b", "2"), StoreAway);
        EXPECT_THROW(WriteSetting(connection, "b", "2"), StoreAway);
        EXPECT_THROW(transaction.Commit(), StoreError);
    }
    EXPECT_FALSE(connection.InTransaction());
    EXPECT_EQ("", ReadSetting(connection, "a"));
    EXPECT_EQ("", ReadSetting(connection, "b"));
    WriteSetting(connection, "b", "3");
    EXPECT_EQ("3", ReadSetting(connection, "b"));
}

TEST_F(OnAServer, ATransactionWithAStatementThatFailedIsNoneThatSucceeds) {
    Connection connection(database);
    CreateTables(connection);
    WriteTransaction transaction(connection);
    WriteSetting(connection, "a", "1");
    EXPECT_THROW(connection.Execute("SELECT 1 FROM nowhere"), StoreError);
    EXPECT_THROW(transaction.Commit(), StoreError);
    EXPECT_EQ("", ReadSetting(connection, "a"));
}

TEST_F(OnAServer, WhoLooksCantWrite) {
    Connection connection(database);
    CreateTables(connection);
    Connection look(database, Connection::Mode::kLook);
    EXPECT_THROW(WriteSetting(look, "a", "1"), StoreError);
    EXPECT_EQ("", ReadSetting(look, "a"));
}

TEST_F(OnAServer, NothingIsWaitedForWithoutALimit) {
    Connection connection(database);
    for (const char* limit :
         {"statement_timeout", "lock_timeout", "idle_in_transaction_session_timeout"}) {
        Statement statement(connection, std::string("SHOW ") + limit);
        ASSERT_TRUE(statement.Step());
        EXPECT_NE("0", statement.Text(0)) << limit;
    }
}

// Tests' own server has fsync off.
TEST_F(OnAServer, WhatCommitsMayBeLostByIsSaid) {
    {
        Connection connection(database);
        EXPECT_THAT(CommitRisks(connection), ElementsAre(HasSubstr("fsync = off")));
    }
    OwnPostgres::Ask(database,
                     "ALTER DATABASE " + NameOf(database) + " SET synchronous_commit = off");
    Connection connection(database);
    EXPECT_THAT(CommitRisks(connection),
                ElementsAre(HasSubstr("fsync = off"), HasSubstr("synchronous_commit = off")));
    EXPECT_EQ("on", Statement(connection, "SHOW synchronous_commit").Texts().front());
}

TEST_F(OnAServer, AStandbyThatIsNotWaitedForIsARisk) {
    const auto is_said = [this] {
        Connection connection(database);
        const std::vector<std::string> risks = CommitRisks(connection);
        return std::any_of(risks.begin(), risks.end(), [](const std::string& risk) {
            return risk.find("doesn't wait for its standby") != std::string::npos;
        });
    };
    EXPECT_FALSE(is_said());
    const test_support::PostgresStandby standby(TheServer());
    EXPECT_TRUE(is_said());
    OwnPostgres::Ask(database, "ALTER SYSTEM SET synchronous_standby_names = 'other'");
    OwnPostgres::Ask(database, "SELECT pg_reload_conf()");
    for (int tries = 0; tries < 100 && is_said(); ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_FALSE(is_said());
    OwnPostgres::Ask(database, "ALTER SYSTEM RESET synchronous_standby_names");
    OwnPostgres::Ask(database, "SELECT pg_reload_conf()");
}

}  // namespace
}  // namespace host
