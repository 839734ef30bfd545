// A node among the others of its site, by two that share a database.
#include "host/node/membership.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <limits.h>
#include <unistd.h>

#include <array>

#include "host/process/database_locks.h"
#include "host/process/lease_record.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/lines.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;

class AMember : public ServiceTest {
 protected:
    void Nodes(const std::vector<std::string>& nodes) {
        WriteTransaction transaction(connection);
        StoreNodes(connection, nodes);
        transaction.Commit();
    }
    // Nothing here waits for long: nobody has a lease that is about to end.
    static bool Wait(std::chrono::milliseconds /*pause*/) {
        poll(nullptr, 0, 1);
        return true;
    }
    struct Node {
        Node(const std::string& database, const std::string& name, OperatorLog& log,
             std::chrono::seconds lease = std::chrono::seconds(60))
            : member(database, {name, lease}, Encoding::kLatin1, log), connection(database) {}
        bool Join() { return member.Join(connection, Wait); }

        Membership member;
        Connection connection;
    };
    std::string WhyNot(const std::string& name) {
        Node node(database, name, log);
        try {
            node.Join();
        } catch (const NoSuchNode& why) {
            return why.what();
        }
        return {};
    }
};

#ifndef PAGERFWD_TEST_ON_POSTGRES
TEST_F(AMember, IsTheOnlyOneOfAFile) {
    Node node(database, "", log);
    EXPECT_TRUE(node.Join());
    EXPECT_TRUE(node.member.Leads());
    EXPECT_EQ("", node.member.WhyIdle());
    EXPECT_EQ("", node.member.Name());
    Nodes({"north"});
    EXPECT_EQ("", WhyNot("north"));
    Nodes({"north", "south"});
    EXPECT_THAT(WhyNot("north"), HasSubstr("needs a database on a server"));
}

#else
TEST_F(AMember, HasANameThatTheSiteKnows) {
    EXPECT_THAT(WhyNot("west"), HasSubstr("the site names no nodes"));
    Nodes({"north", "south"});
    EXPECT_THAT(WhyNot("west"), HasSubstr("the site has no node \"west\""));
    EXPECT_THAT(WhyNot(""), HasSubstr("none is called"));
    std::array<char, HOST_NAME_MAX + 1> host{};
    gethostname(host.data(), host.size() - 1);
    Nodes({"north", host.data()});
    Node node(database, "", log);
    node.Join();
    EXPECT_EQ(host.data(), node.member.Name());
}

TEST_F(AMember, IsRefusedWhereAnotherOfItsNameRuns) {
    Nodes({"north", "south"});
    Node first(database, "north", log);
    EXPECT_TRUE(first.Join());
    RecordLease(database, {});  // on another host
    Connection other(database);
    Membership second(database, {"north", std::chrono::seconds(60)}, Encoding::kLatin1, log);
    // It sees the first one renew its lease.
    EXPECT_THROW(second.Join(other,
                             [&](std::chrono::milliseconds) {
                                 RenewLease(connection, {"north", 1}, std::chrono::seconds(60));
                                 return true;
                             }),
                 InUse);
}

// Else its first look would take the pages of its own lines for those of lines without a lease.
TEST_F(AMember, MayWorkAsSoonAsItHasItsLease) {
    Nodes({"north", "south"});
    Node north(database, "north", log);
    EXPECT_TRUE(north.Join());
    EXPECT_EQ("", north.member.WhyIdle());
}

TEST_F(AMember, TellsThatItsLeaseCannotBeRenewed) {
    Nodes({"north", "south"});
    Node north(database, "north", log, std::chrono::seconds(1));
    EXPECT_TRUE(north.Join());
    connection.Execute("ALTER TABLE Host_Nodes RENAME TO Elsewhere");
    poll(nullptr, 0, 2000);
    connection.Execute("ALTER TABLE Elsewhere RENAME TO Host_Nodes");
    poll(nullptr, 0, 2000);
    north.member.Leave(north.connection);
    EXPECT_THAT(said.str(), HasSubstr("<3>error: the node's lease can't be renewed: "));
    EXPECT_THAT(said.str(), HasSubstr("<6>the node's lease is renewed again\n"));
}

TEST_F(AMember, TakesItsOwnLeaseAtOnceFromOneThatDiedHere) {
    Nodes({"north", "south"});
    TakeLease(connection, "north", "alpha, process 71", std::chrono::seconds(60));
    RecordLease(database, {"north", 1, "alpha, process 71"});
    Node north(database, "north", log);
    EXPECT_TRUE(north.member.Join(north.connection, [](std::chrono::milliseconds) {
        ADD_FAILURE() << "waits for it";
        return false;
    }));
}

TEST_F(AMember, WaitsForALeaseThatIsOfAnotherHostOfTheSameName) {
    Nodes({"north", "south"});
    std::array<char, HOST_NAME_MAX + 1> host{};
    gethostname(host.data(), host.size() - 1);
    TakeLease(connection, "north", host.data() + std::string(", process 999999999"),
              std::chrono::seconds(60));
    Node north(database, "north", log);
    EXPECT_FALSE(
        north.member.Join(north.connection, [](std::chrono::milliseconds) { return false; }));
}

TEST_F(AMember, LeadsWhereItIsTheFirst) {
    Nodes({"north", "south"});
    Node north(database, "north", log);
    Node south(database, "south", log);
    north.Join();
    south.Join();
    EXPECT_TRUE(north.member.Leads());
    EXPECT_FALSE(south.member.Leads());
    EXPECT_TRUE(south.member.HasLivingOthers());
    north.member.Leave(north.connection);
    south.member.Look(south.connection);
    EXPECT_TRUE(south.member.Leads());
    EXPECT_FALSE(south.member.HasLivingOthers());
}

TEST_F(AMember, TakesOverFromOneThatIsGone) {
    Nodes({"north", "south"});
    AddPager("duty");
    AddAlarm("7", "2");
    AddDelivery("7", 0, "duty");
    TakeLease(connection, "north", "a process", std::chrono::seconds(0));
    ClaimLine(connection, "N", "north");
    GiveToLine(connection, DeliveriesOf(connection, "7").at(0), "N");
    Node south(database, "south", log);
    std::string gone;
    south.member.SetListener(
        [&gone](const std::string& node, const TakenOver& taken, bool /*asks*/) {
            gone += node + " " + std::to_string(taken.pages);
        });
    south.Join();
    EXPECT_EQ("north 1", gone);
    EXPECT_THAT(said.str(), HasSubstr("node \"north\" is gone (a process); 1 page(s)"));
    EXPECT_EQ("", DeliveriesOf(connection, "7").at(0).line);
}

TEST_F(AMember, HasNoWorkWhileItIsDrained) {
    Nodes({"north", "south"});
    Node north(database, "north", log);
    north.Join();
    while (!north.member.WhyIdle().empty()) {
        poll(nullptr, 0, 1);  // until the first renewal
    }
    SetDrained(connection, "north", true);
    north.member.Look(north.connection);
    EXPECT_EQ("its node is drained", north.member.WhyIdle());
    SetDrained(connection, "north", false);
    north.member.Look(north.connection);
    EXPECT_EQ("", north.member.WhyIdle());
}

TEST_F(AMember, IsLostWhenAnotherHasTakenItOver) {
    Nodes({"north", "south"});
    Node north(database, "north", log);
    north.Join();
    EXPECT_FALSE(north.member.IsLost());
    Execute("UPDATE Host_Nodes SET term = term + 1 WHERE node = 'north'");
    EXPECT_THROW(WriteTransaction transaction(north.connection), NotOurs);
    north.member.WasFoundLost();
    EXPECT_TRUE(north.member.IsLost());
    EXPECT_THROW(WriteTransaction transaction(north.connection), NotOurs);
}
#endif

}  // namespace
}  // namespace host
