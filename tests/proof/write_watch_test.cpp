// Does the judge of writes notice one that comes too late? Sessions here say what those of nodes
// say.
#include "tests/proof/write_watch.h"

#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <memory>
#include <string>

#include "host/store/connection.h"
#include "host/store/schema.h"
#include "tests/support/own_postgres.h"

namespace proof {
namespace {

class WatchedSite : public ::testing::Test {
 protected:
    WatchedSite() {
        host::Connection connection(database);
        host::CreateTables(connection);
        WatchWrites(database);
        Write("import", "INSERT INTO Host_Nodes (node, term) VALUES ('north', 1), ('south', 1)");
    }

    void Write(const std::string& whose, const std::string& sql) const {
        test_support::OwnPostgres::Ask(database, "SET application_name = '" + whose + "'; " + sql);
    }
    void WriteAlarm(const std::string& whose) const {
        Write(whose, "INSERT INTO AlarmLog (alarmlogID) VALUES ('1')");
    }
    void TakeNorthAway() const {
        Write("pagerfwd, term 1 of south",
              "UPDATE Host_Nodes SET term = term + 1 WHERE node = 'north'");
    }

    const std::string database = test_support::TheServer().MakeDatabase();
};

TEST_F(WatchedSite, MayBeWrittenInATermUntilAnotherBegins) {
    WriteAlarm("pagerfwd, term 1 of north, line a");
    TakeNorthAway();
    WriteAlarm("pagerfwd, term 2 of north");
    WriteAlarm("pagerfwd, term 1 of south");
    WriteAlarm("somebody else");
    EXPECT_EQ("", LateWrites(database));
    EXPECT_EQ(4, WritesInTerms(database));
}

TEST_F(WatchedSite, IsWrittenTooLateInATermThatIsOver) {
    TakeNorthAway();
    WriteAlarm("pagerfwd, term 1 of north, line a");
    EXPECT_EQ("insert of alarmlog by pagerfwd, term 1 of north, line a", LateWrites(database));
}

// What counts is when it was committed.
TEST_F(WatchedSite, IsWrittenTooLateByATransactionThatBeganBefore) {
    const std::unique_ptr<PGconn, decltype(&PQfinish)> north(PQconnectdb(database.c_str()),
                                                             PQfinish);
    PQclear(PQexec(north.get(),
                   "SET application_name = 'pagerfwd, term 1 of north';"
                   "BEGIN; INSERT INTO AlarmLog (alarmlogID) VALUES ('1')"));
    TakeNorthAway();
    PQclear(PQexec(north.get(), "COMMIT"));
    EXPECT_EQ("insert of alarmlog by pagerfwd, term 1 of north", LateWrites(database));
}

}  // namespace
}  // namespace proof
