// One engine per database, and one per serial device.
#include "host/process/engine_locks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/unit/host/child_process.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class Engines : public HostTest {
 protected:
    static void AddPort(const std::string& database_file, const std::string& port) {
        Connection connection(database_file);
        Statement(connection, "INSERT INTO AlarmFwd_COMProperties (Description) VALUES (?)")
            .Bind(port)
            .Run();
    }
    static void MakeOtherSite() {
        Connection connection("other.db", Connection::Mode::kCreate);
        CreateTables(connection);
    }

    // "" or why it is refused.
    static std::string Refusal(const std::string& database_file) {
        try {
            Connection connection(database_file);
            EngineLocks locks(database_file, ".", "run");
            locks.TakeDevices(connection);
        } catch (const EngineTaken& taken) {
            return taken.what();
        }
        return "";
    }

    // An engine in another process.
    struct Engine {
        explicit Engine(const std::string& database_file)
            : process({STORE_PROCESS, database_file, "engine"}) {
            EXPECT_EQ("taken", process.ReadLine());
        }
        ChildProcess process;
    };
};

TEST_F(Engines, AreOneADatabase) {
    const Engine engine(database);
    EXPECT_THAT(Refusal(database), AllOf(HasSubstr("site.db: served already by pagerfwd a test, "
                                                   "process ")));
    EXPECT_TRUE(DatabaseLock(database).IsTaken());
}

TEST_F(Engines, AreOneADatabaseByWhateverName) {
    std::filesystem::create_symlink("site.db", "link.db");
    const Engine engine(database);
    EXPECT_NE("", Refusal("link.db"));
    EXPECT_NE("", Refusal("./site.db"));
    EXPECT_NE("", Refusal(folder.Path() / "site.db"));
}

TEST_F(Engines, MayFollowEachOther) {
    {
        Engine engine(database);
        EXPECT_EQ(0, engine.process.Finish());
    }
    EXPECT_EQ("", Refusal(database));
    EXPECT_FALSE(DatabaseLock(database).IsTaken());
}

TEST_F(Engines, MayFollowOneThatWasKilled) {
    AddPort(database, "COM 1");
    Engine engine(database);
    engine.process.Kill();
    EXPECT_EQ("", Refusal(database));
}

TEST_F(Engines, OfTwoDatabasesDontMeet) {
    MakeOtherSite();
    AddPort(database, "COM 1");
    AddPort("other.db", "COM 2");
    const Engine engine(database);
    EXPECT_EQ("", Refusal("other.db"));
}

TEST_F(Engines, AreOneADevice) {
    MakeOtherSite();
    AddPort(database, "COM 1");
    AddPort(database, "COM 9");
    AddPort("other.db", "COM 9");
    const Engine engine(database);
    EXPECT_THAT(Refusal("other.db"), AllOf(HasSubstr("\"COM 9\", /dev/ttyS8: used already"),
                                           HasSubstr("a test, process ")));
    EXPECT_FALSE(DatabaseLock("other.db").IsTaken());
}

TEST_F(Engines, TakeTheDevicesOfPortsThatAreAddedLater) {
    MakeOtherSite();
    AddPort(database, "COM 1");
    AddPort("other.db", "COM 2");
    Connection connection(database);
    EngineLocks locks(database, ".", "run");
    locks.TakeDevices(connection);
    EXPECT_EQ("", Refusal("other.db"));
    AddPort(database, "COM 2");
    locks.TakeDevices(connection);
    EXPECT_NE("", Refusal("other.db"));
}

TEST_F(Engines, NeedAFolderForTheLocksOfDevices) {
    AddPort(database, "COM 1");
    Connection connection(database);
    EngineLocks locks(database, "/nowhere/at/all", "run");
    EXPECT_THROW(locks.TakeDevices(connection), StoreError);
}

TEST(DevicesOfPorts, AreThoseThatTheLibraryOpens) {
    EXPECT_EQ("ttyS0", DeviceOf("COM 1"));
    EXPECT_EQ("ttyS8", DeviceOf("COM 9"));
    for (const char* none : {"", "COM", "COM ", "COM1", "COM 0", "COM 10", "com 1", "COM x"}) {
        EXPECT_EQ("", DeviceOf(none)) << none;
    }
}

}  // namespace
}  // namespace host
