// The site's commands, in and out of its database.
#include "host/site/stored_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/schema.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using StoredCommands = HostTest;

TEST_F(StoredCommands, ComeOutAsTheyWentIn) {
    Lease lease(database);
    Connection& connection = lease.Database();
    EXPECT_THAT(ReadCommand(connection, kNotifyCommand), IsEmpty());
    StoreCommand(connection, kNotifyCommand, {{"tell", 1}, {"J\xC3\xBCrgen's \"x\"", 1}, {"", 1}});
    EXPECT_THAT(ReadCommand(connection, kNotifyCommand),
                ElementsAre("tell", "J\xC3\xBCrgen's \"x\"", ""));
    EXPECT_THAT(ReadCommand(connection, kHeartbeatCommand), IsEmpty());
    StoreCommand(connection, kNotifyCommand, {});
    EXPECT_THAT(ReadCommand(connection, kNotifyCommand), IsEmpty());
}

TEST_F(StoredCommands, AreNoneWhereSomebodyWroteSomethingElse) {
    Lease lease(database);
    for (const char* text : {"rm -r /", "{}", "[1]", "[\"a\", [\"b\"]]", "[", ""}) {
        WriteSetting(lease.Database(), kNotifyCommand, text);
        EXPECT_THAT(ReadCommand(lease.Database(), kNotifyCommand), IsEmpty()) << text;
    }
}

}  // namespace
}  // namespace host
