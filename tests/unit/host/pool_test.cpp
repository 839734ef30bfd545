// Connections that are kept open.
#include "host/store/pool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "tests/unit/host/child_process.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

namespace host {
namespace {

class ConnectionPool : public HostTest {};

TEST_F(ConnectionPool, LendsAConnectionAgain) {
    const Connection* first = nullptr;
    {
        Lease lease(database);
        first = &lease.Database();
    }
    Lease again(database);
    EXPECT_EQ(first, &again.Database());
}

TEST_F(ConnectionPool, LendsEachConnectionOnce) {
    Lease one(database);
    Lease other(database);
    EXPECT_NE(&one.Database(), &other.Database());
}

// Whoever closes a file gives up all locks of its process on it, SQLite's too: another process
// would take itself for the last, and remove the journal.
TEST_F(ConnectionPool, KeepsTheLocksOfOneConnectionWhenItOpensAnother) {
    Lease one(database);
    { Lease other(database); }
    Connection more(database);
    ChildProcess process({STORE_PROCESS, database, "lock"});
    EXPECT_EQ("locked", process.ReadLine());
    EXPECT_EQ(0, process.Finish());
    EXPECT_TRUE(std::filesystem::exists(database + "-wal"));
}

TEST_F(ConnectionPool, KnowsADatabaseByAnyOfItsNames) {
    const Connection* first = nullptr;
    {
        Lease lease(database);
        first = &lease.Database();
    }
    std::filesystem::create_symlink(database, "link.db");
    Lease again("./link.db");
    EXPECT_EQ(first, &again.Database());
}

TEST_F(ConnectionPool, OpensAFileAnewThatWasReplaced) {
    { const Lease lease(database); }
    Connection other("other.db", Connection::Mode::kCreate);
    CreateTables(other);
    WriteSetting(other, "encoding", "shift_jis");
    other.Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    std::filesystem::rename("other.db", database);
    std::filesystem::remove(database + "-wal");
    std::filesystem::remove(database + "-shm");

    Lease lease(database);
    EXPECT_EQ("shift_jis", ReadSetting(lease.Database(), "encoding"));
}

TEST_F(ConnectionPool, LendsNothingOfAFileThatIsGone) {
    { const Lease lease(database); }
    std::filesystem::remove(database);
    EXPECT_THROW(Lease{database}, StoreError);
}

TEST_F(ConnectionPool, DropsAConnectionWithAStuckTransaction) {
    {
        Lease lease(database);
        lease.Database().Execute("BEGIN IMMEDIATE");
    }
    Lease again(database);
    EXPECT_FALSE(again.Database().InTransaction());
    const WriteTransaction possible(again.Database());
}

TEST_F(ConnectionPool, ClosesWhatComesBackAfterTheEnd) {
    {
        const Lease lease(database);
        CloseDatabases();
    }
    // The last connection takes the log with it.
    EXPECT_FALSE(std::filesystem::exists(database + "-wal"));
}

TEST_F(ConnectionPool, ServesManyThreads) {
    std::vector<std::thread> threads;
    for (int32_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            for (int32_t i = 0; i < 25; ++i) {
                OpenTable events(database, "AlarmFwd_PagerEvents");
                events.Insert({{"AlmLogID", thread}, {"PagerDescr", "duty"}, {"PagerState", i}});
                events.ReadAll("PagerState");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(100U, OpenTable(database, "AlarmFwd_PagerEvents").ReadAll("AlmLogID").size());
    EXPECT_TRUE(faults.empty());
}

}  // namespace
}  // namespace host
