// Connections, and the settings that make a commit last.
#include "host/store/connection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/unit/host/as_nobody.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

// A system that opens no file to be written, as long as it lives.
class NothingToBeWritten {
 public:
    NothingToBeWritten() : vfs_(sqlite3_vfs_find(nullptr)) {
        before_ = vfs_->xGetSystemCall(vfs_, kOpen);
        vfs_->xSetSystemCall(vfs_, kOpen, reinterpret_cast<sqlite3_syscall_ptr>(OpenToRead));
    }
    ~NothingToBeWritten() { vfs_->xSetSystemCall(vfs_, kOpen, before_); }
    NothingToBeWritten(const NothingToBeWritten&) = delete;
    NothingToBeWritten& operator=(const NothingToBeWritten&) = delete;

 private:
    static constexpr const char* kOpen = "open";

    static int OpenToRead(const char* path, int flags, int mode) {
        if ((flags & O_ACCMODE) != O_RDONLY) {
            errno = EMFILE;
            return -1;
        }
        return open(path, flags, mode);
    }

    sqlite3_vfs* const vfs_;
    sqlite3_syscall_ptr before_ = nullptr;
};

class StoreConnection : public HostTest {
 protected:
    static std::string Ask(Connection& connection, const std::string& question) {
        Statement statement(connection, question);
        return statement.Step() ? std::string(statement.Text(0)) : "(nothing)";
    }

    static mode_t ModeOf(const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    }

    static gid_t GroupOf(const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_gid : static_cast<gid_t>(-1);
    }

    static std::string WhyNotOpened(const std::string& path) {
        try {
            const Connection connection(path);
            return "opened";
        } catch (const StoreError& reason) {
            return reason.what();
        }
    }
};

TEST_F(StoreConnection, KeepsEachCommitThroughAPowerCut) {
    constexpr const char* kFull = "2";
    Connection connection(database);
    EXPECT_EQ("wal", Ask(connection, "PRAGMA journal_mode"));
    EXPECT_EQ(kFull, Ask(connection, "PRAGMA synchronous"));
}

TEST_F(StoreConnection, WaitsForAnotherWriter) {
    Connection connection(database);
    EXPECT_EQ("10000", Ask(connection, "PRAGMA busy_timeout"));
}

TEST_F(StoreConnection, MakesNoDatabaseByOpeningOne) {
    EXPECT_EQ("none.db: there is no such database; make it with: pagerfwd init",
              WhyNotOpened("none.db"));
    EXPECT_FALSE(std::filesystem::exists("none.db"));
}

TEST_F(StoreConnection, SaysWhyADatabaseCanNotBeMade) {
    try {
        const Connection connection("none/site.db", Connection::Mode::kCreate);
        FAIL();
    } catch (const StoreError& reason) {
        EXPECT_STREQ("none/site.db: can't be made: No such file or directory", reason.what());
    }
}

TEST_F(StoreConnection, NamesAFileThatIsNoDatabase) {
    WriteFile("letter.txt", std::string(4096, 'x'));
    EXPECT_EQ("letter.txt: file is not a database", WhyNotOpened("letter.txt"));
}

TEST_F(StoreConnection, NamesAFolder) {
    EXPECT_EQ("/tmp: unable to open database file", WhyNotOpened("/tmp"));
}

// It would refuse every write for as long as it lives, whatever the reason was.
// SQLite would give it the group of whoever opens the database first.
TEST_F(StoreConnection, GivesItsJournalTheGroupOfTheDatabase) {
    constexpr gid_t kOperators = 12345;
    chmod(folder.Path().c_str(), 0777);
    static_cast<void>(chown(database.c_str(), kNobody, kOperators));  // root's alone
    const AsNobody nobody(kOperators);
    const Connection connection(database);
    EXPECT_EQ(GroupOf(database), GroupOf(database + "-wal"));
}

// It would give the journal's own group the rights of the database's, too.
TEST_F(StoreConnection, GivesItsJournalToNoGroupWhereTheDatabasesCantHaveIt) {
    constexpr gid_t kOperators = 12345;
    chmod(folder.Path().c_str(), 0777);
    chmod(database.c_str(), 0660);
    static_cast<void>(chown(database.c_str(), kNobody, kOperators));  // root's alone
    const AsNobody nobody;
    Connection connection(database);
    for (const char* before_and_after : {"PRAGMA user_version", "CREATE TABLE Any (column)"}) {
        connection.Execute(before_and_after);
        for (const std::string& journal : {database + "-wal", database + "-shm"}) {
            const bool has_group = GroupOf(journal) == GroupOf(database);
            EXPECT_EQ(has_group ? 0660U : 0600U, ModeOf(journal)) << journal;
        }
    }
}

TEST_F(StoreConnection, IsNoneThatCouldOnlyRead) {
    {
        const NothingToBeWritten now;
        EXPECT_EQ("site.db: can't be opened to be written", WhyNotOpened(database));
    }
    EXPECT_EQ("opened", WhyNotOpened(database));
}

TEST_F(StoreConnection, NamesTheReasonOfAFailedStatement) {
    Connection connection(database);
    try {
        connection.Execute("SELECT 1 FROM Nonesuch");
        FAIL();
    } catch (const StoreError& reason) {
        EXPECT_STREQ("site.db: no such table: Nonesuch", reason.what());
    }
}

TEST_F(StoreConnection, BindsTheEmptyTextAsAText) {
    Connection connection(database);
    Statement statement(connection, "SELECT typeof(?1) || ':' || typeof(?2)");
    statement.Bind(std::string_view()).Bind(std::string());
    ASSERT_TRUE(statement.Step());
    EXPECT_EQ("text:text", statement.Text(0));
}

TEST_F(StoreConnection, AKeptStatementRemembersNothingOfItsLastUse) {
    Connection connection(database);
    const std::string question = "SELECT ifnull(?1, 'nothing') UNION ALL SELECT 'more'";
    {
        Statement first(connection, question);
        first.Bind("something").Step();
        EXPECT_EQ("something", first.Text(0));
    }
    Statement again(connection, question);
    again.Step();
    EXPECT_EQ("nothing", again.Text(0));
}

TEST_F(StoreConnection, RunsAStatementInTheMidstOfItsOwnRows) {
    Connection connection(database);
    const std::string question = "SELECT 'one' UNION ALL SELECT 'two'";
    for (int round = 0; round < 2; ++round) {
        Statement outer(connection, question);
        outer.Step();
        EXPECT_EQ("one", Ask(connection, question));
        outer.Step();
        EXPECT_EQ("two", outer.Text(0));
    }
}

TEST_F(StoreConnection, KeepsAStatementThatHasFailed) {
    Connection connection(database);
    const std::string write = "INSERT INTO Host_Settings VALUES ('encoding', 'latin1')";
    Statement(connection, write).Run();
    EXPECT_THROW(Statement(connection, write).Run(), StoreError);
    connection.Execute("DELETE FROM Host_Settings");
    Statement(connection, write).Run();
    EXPECT_EQ("latin1", ReadSetting(connection, "encoding"));
}

TEST_F(StoreConnection, ServesMoreStatementsThanItKeeps) {
    Connection connection(database);
    for (int round = 0; round < 2; ++round) {
        for (int number = 0; number < 200; ++number) {
            const std::string text = std::to_string(number);
            ASSERT_EQ(text, Ask(connection, "SELECT " + text));
        }
    }
}

TEST_F(StoreConnection, UndoesWhatWasNotCommitted) {
    Connection connection(database);
    {
        const WriteTransaction transaction(connection);
        WriteSetting(connection, "encoding", "shift_jis");
        EXPECT_EQ("shift_jis", ReadSetting(connection, "encoding"));
    }
    EXPECT_FALSE(connection.InTransaction());
    EXPECT_EQ("", ReadSetting(connection, "encoding"));
}

TEST_F(StoreConnection, OneWritersCommitIsReadByAnother) {
    Connection writer(database);
    Connection reader(database);
    WriteTransaction transaction(writer);
    WriteSetting(writer, "encoding", "shift_jis");
    EXPECT_EQ("", ReadSetting(reader, "encoding"));
    transaction.Commit();
    EXPECT_EQ("shift_jis", ReadSetting(reader, "encoding"));
}

}  // namespace
}  // namespace host
