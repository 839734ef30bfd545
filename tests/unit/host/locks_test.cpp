// One node a database, and one line a serial device.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/line/take_device.h"
#include "host/process/database_locks.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class Nodes : public HostTest {
 protected:
    // "" or why it is refused.
    static std::string Refusal(const std::string& database_file) {
        try {
            TakeNodeLock(database_file, "run");
        } catch (const InUse& taken) {
            return taken.what();
        }
        return "";
    }

    // A node in another process, with a line at /dev/ttyS8.
    struct Node {
        explicit Node(const std::string& database_file)
            : process({STORE_PROCESS, database_file, "engine"}) {
            EXPECT_EQ("taken", process.ReadLine());
        }
        ChildProcess process;
    };
};

TEST_F(Nodes, AreOneADatabase) {
    const Node node(database);
    EXPECT_THAT(Refusal(database), AllOf(HasSubstr("site.db: served already by pagerfwd a test, "
                                                   "process ")));
    EXPECT_TRUE(NodeLock(database).IsTaken());
    EXPECT_TRUE(EngineLock(database).IsTaken());
}

TEST_F(Nodes, AreOneADatabaseByWhateverName) {
    std::filesystem::create_symlink("site.db", "link.db");
    const Node node(database);
    EXPECT_NE("", Refusal("link.db"));
    EXPECT_NE("", Refusal("./site.db"));
    EXPECT_NE("", Refusal(folder.Path() / "site.db"));
}

// Of a server's database they lie on this host, where there may be no place for them yet.
TEST_F(Nodes, SayWhichFolderIsMissing) {
    setenv("PAGERFWD_STATE", "missing", 1);
    try {
        NodeLock("postgresql:///site");
        ADD_FAILURE() << "there is no folder";
    } catch (const StoreError& error) {
        EXPECT_STREQ(
            "missing: No such file or directory; files of this host's lie there: make it, or name "
            "another with --state or PAGERFWD_STATE",
            error.what());
    }
    setenv("PAGERFWD_STATE", std::filesystem::current_path().c_str(), 1);
}

TEST_F(Nodes, MayFollowEachOther) {
    {
        Node node(database);
        EXPECT_EQ(0, node.process.Finish());
    }
    EXPECT_EQ("", Refusal(database));
    EXPECT_FALSE(NodeLock(database).IsTaken());
}

TEST_F(Nodes, MayFollowOneThatWasKilled) {
    Node node(database);
    node.process.Kill();
    EXPECT_EQ("", Refusal(database));
}

class DevicesOfLines : public Nodes {
 protected:
    static std::string RefusalOf(const std::string& name, const std::string& device) {
        SiteLine line;
        line.name = name;
        line.device = device;
        try {
            TakeDevice({"other.db", "."}, line, "run");
        } catch (const InUse& taken) {
            return taken.what();
        }
        return "";
    }
};

TEST_F(DevicesOfLines, AreOneADevice) {
    const Node node(database);
    EXPECT_THAT(RefusalOf("north", "/dev/ttyS8"),
                AllOf(HasSubstr("/dev/ttyS8: used already by pagerfwd a test, process "),
                      HasSubstr(" (for another line, or another database)")));
    EXPECT_EQ("", RefusalOf("COM 1", "/dev/ttyS0"));
}

TEST_F(DevicesOfLines, MayFollowOneThatWasKilled) {
    Node node(database);
    node.process.Kill();
    EXPECT_EQ("", RefusalOf("COM 9", "/dev/ttyS8"));
}

}  // namespace
}  // namespace host
