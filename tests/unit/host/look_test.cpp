// Looking at a database leaves nothing beside it, and sees what a writer has written.
#include "host/store/look.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "tests/unit/host/another_program.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ALook : public HostTest {
 protected:
    static std::set<std::string> Files() {
        std::set<std::string> files;
        for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
            files.insert(entry.path().filename());
        }
        return files;
    }
    static std::string Setting(Connection& connection) { return ReadSetting(connection, "x"); }
    std::string Seen() const { return Look(database, Setting); }
    static void Write(Connection& connection, const char* value) {
        WriteSetting(connection, "x", value);
    }
};

TEST_F(ALook, LeavesNothingBesideADatabaseThatNobodyHasOpen) {
    const std::set<std::string> before = Files();
    EXPECT_EQ("", Seen());
    EXPECT_EQ(before, Files());
    Look(database, [&](Connection&) {
        EXPECT_EQ(before, Files());
        return 0;
    });
}

TEST_F(ALook, SeesWhatAWriterHasWritten) {
    Connection writer(database);
    Write(writer, "1");
    EXPECT_EQ("1", Seen());
    Write(writer, "2");
    EXPECT_EQ("2", Seen());
    const std::set<std::string> files = Files();
    EXPECT_EQ((std::set<std::string>{"site.db", "site.db-shm", "site.db-wal"}), files);
}

TEST_F(ALook, SeesWhatAWriterThatIsGoneHasWritten) {
    {
        Connection writer(database);
        Write(writer, "1");
    }
    EXPECT_EQ("1", Seen());
}

// As after a power cut: the journal holds what the database doesn't yet.
TEST_F(ALook, SeesWhatAWriterThatWasKilledHasWritten) {
    {
        Connection writer(database);
        Write(writer, "1");
        fs::create_directory("copy");
        for (const char* file : {"site.db", "site.db-wal", "site.db-shm"}) {
            fs::copy_file(file, std::string("copy/") + file);
        }
    }
    fs::current_path("copy");
    const std::set<std::string> before = Files();
    EXPECT_EQ("1", Seen());
    EXPECT_EQ(before, Files());
}

TEST_F(ALook, IsRefusedWhereOnlyWritingWouldPutItRight) {
    {
        Connection writer(database);
        Write(writer, "1");
        fs::create_directory("copy");
        fs::copy_file("site.db", "copy/site.db");
        fs::copy_file("site.db-wal", "copy/site.db-wal");
    }
    fs::current_path("copy");
    try {
        Seen();
        FAIL() << "seen";
    } catch (const StoreError& error) {
        EXPECT_THAT(error.what(), HasSubstr("left in the midst of a change"));
    }
    { const Connection writer(database); }
    EXPECT_EQ("1", Seen());
}

// Nothing keeps a writer away from a database that is looked at without a lock.
TEST_F(ALook, IsTakenAgainWhenAWriterCame) {
    int looks = 0;
    const std::string seen = Look(database, [&](Connection& connection) {
        const std::string value = Setting(connection);
        if (looks++ == 0) {
            Connection writer(database);
            Write(writer, "1");
        }
        return value;
    });
    EXPECT_EQ("1", seen);
    EXPECT_EQ(2, looks);
}

// As another program writes one, for which nothing is too large.
// Its last writer was closing it, and took its journal away meanwhile.
TEST_F(ALook, IsTakenAgainWhenAWriterWent) {
    fs::create_directory("site.db-wal");  // it is there, and can't be opened
    std::ofstream("site.db-shm").flush();
    Glance glance(database);
    EXPECT_THROW(glance.Open(), StoreError);
    EXPECT_FALSE(glance.WasDisturbed()) << "to try again would be in vain";
    fs::remove("site.db-wal");
    fs::remove("site.db-shm");
    EXPECT_TRUE(glance.WasDisturbed());
    EXPECT_EQ("", Seen());
}

TEST_F(ALook, SeesTheOtherRowsBesideOneThatIsTooLarge) {
    WriteAsAnother(database,
                   "INSERT INTO AlarmLog (alarmlogID, alarm_group, timestamp, pagerstate) VALUES"
                   " ('7', hex(zeroblob(600000)), '978948000', '1'),"
                   " ('8', 'ops', '978948001', '1')");
    const auto groups = Look(database, [](Connection& connection) {
        std::vector<std::string> found;
        Statement statement(connection, "SELECT alarm_group FROM AlarmLog ORDER BY row_id");
        while (statement.Step()) {
            found.emplace_back(statement.Text(0));
        }
        return found;
    });
    EXPECT_THAT(groups, ElementsAre("", "ops"));
}

TEST_F(ALook, CantWrite) {
    Look(database, [](Connection& connection) {
        EXPECT_THROW(Write(connection, "1"), StoreError);
        return 0;
    });
}

TEST_F(ALook, TakesAnyNameOfAFile) {
    const std::string name = "100%3f #1?.db";
    fs::copy_file(database, name);
    EXPECT_EQ("", Look(name, Setting));
}

TEST_F(ALook, NamesADatabaseThatIsNone) {
    try {
        Look("none.db", Setting);
        FAIL() << "seen";
    } catch (const StoreError& error) {
        EXPECT_STREQ("none.db: there is no such database; make it with: pagerfwd init",
                     error.what());
    }
    EXPECT_FALSE(fs::exists("none.db"));
}

}  // namespace
}  // namespace host
