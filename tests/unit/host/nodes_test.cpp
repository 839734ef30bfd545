// The leases of nodes, and what is written for them.
#include "host/store/tables/nodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/store/schema.h"
#include "host/store/tables/deliveries.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::chrono::seconds kValid{5};

class ANode : public ServiceTest {
 protected:
    ANode() {
        // The server's clock is put in the hands of the test; that of a file is virtual already.
        if (!connection.Can().is_file) {
            Execute("CREATE TABLE Test_Clock (ms BIGINT)");
            Execute("INSERT INTO Test_Clock VALUES (1000)");
            Execute(
                "CREATE OR REPLACE FUNCTION Host_Now() RETURNS BIGINT LANGUAGE sql VOLATILE AS"
                " 'SELECT ms FROM Test_Clock'");
        }
    }

    void Pass(int seconds) {
        if (connection.Can().is_file) {
            sleep(static_cast<unsigned>(seconds));
        } else {
            Execute("UPDATE Test_Clock SET ms = ms + " + std::to_string(seconds * 1000));
        }
    }

    Tenure Take(const std::string& node) {
        return TakeLease(connection, node, "somebody", kValid).value();
    }
    bool TakeAway(const Tenure& tenure) {
        WriteTransaction transaction(connection);
        const bool taken = TakeLeaseAway(connection, tenure.node, tenure.term);
        transaction.Commit();
        return taken;
    }
    // A write by the process that this tenure is of.
    void WriteFor(const Tenure& tenure) {
        Connection writer(database);
        writer.WriteAs(tenure);
        WriteTransaction transaction(writer);
        Statement(writer, "INSERT INTO Host_Routes VALUES (1, 'x', '')").Run();
        transaction.Commit();
    }
    std::vector<std::string> Over() {
        std::vector<std::string> names;
        for (const NodeState& node : ReadNodes(connection)) {
            if (node.IsOver()) {
                names.push_back(node.node);
            }
        }
        return names;
    }
    void Serve(const char* line, const char* node) {
        Execute(std::string("INSERT INTO Host_Lines (line, node) VALUES ('") + line + "', '" +
                node + "')");
    }
};

TEST_F(ANode, HasItsNameAlone) {
    EXPECT_EQ(1, Take("north").term);
    EXPECT_EQ(std::nullopt, TakeLease(connection, "north", "another", kValid));
    EXPECT_EQ(1, Take("south").term);
    const NodeState node = FindNode(connection, "north").value();
    EXPECT_EQ("somebody", node.holder);
    EXPECT_TRUE(node.lives);
    EXPECT_EQ(kValid, node.left);
}

TEST_F(ANode, LosesItsNameWhenItsLeaseIsOver) {
    Take("north");
    Pass(4);
    EXPECT_EQ(std::nullopt, TakeLease(connection, "north", "another", kValid));
    Pass(1);
    EXPECT_FALSE(FindNode(connection, "north")->lives);
    EXPECT_EQ(2, TakeLease(connection, "north", "another", kValid)->term);
}

TEST_F(ANode, KeepsItsNameAsLongAsItRenewsIt) {
    const Tenure north = Take("north");
    for (int second = 0; second < 20; second += 4) {
        Pass(4);
        EXPECT_TRUE(RenewLease(connection, north, kValid));
    }
    EXPECT_FALSE(TakeAway(north));
    EXPECT_TRUE(FindNode(connection, "north")->lives);
}

// Its database was away, and nobody has noticed.
TEST_F(ANode, MayRenewALeaseThatIsOver) {
    const Tenure north = Take("north");
    Pass(60);
    EXPECT_TRUE(RenewLease(connection, north, kValid));
    EXPECT_TRUE(FindNode(connection, "north")->lives);
}

TEST_F(ANode, CannotRenewWhatWasTakenAway) {
    const Tenure north = Take("north");
    Pass(5);
    EXPECT_TRUE(TakeAway(north));
    EXPECT_FALSE(RenewLease(connection, north, kValid));
    EXPECT_FALSE(TakeAway(north)) << "of two that see it, one takes it away";
    EXPECT_EQ(3, Take("north").term);
    EXPECT_FALSE(RenewLease(connection, north, kValid));
}

TEST_F(ANode, GivesItsNameBackAtItsEnd) {
    const Tenure north = Take("north");
    EndLease(connection, north);
    EXPECT_FALSE(RenewLease(connection, north, kValid));
    EXPECT_EQ(2, Take("north").term);
}

// --- What is left behind.

TEST_F(ANode, IsOverWhenItsLeaseIs) {
    Take("north");
    Take("south");
    EXPECT_THAT(Over(), IsEmpty());
    Pass(3);
    RenewLease(connection, {"south", 1}, kValid);
    Pass(2);
    EXPECT_THAT(Over(), ElementsAre("north"));
    TakeAway({"north", 1});
    EXPECT_THAT(Over(), IsEmpty());
}

// It may be back soon: an orderly end is often one of a restart.
TEST_F(ANode, IsOverAWhileBehindItsOrderlyEndWhereLinesAreItsOwn) {
    const Tenure north = Take("north");
    const Tenure south = Take("south");
    Serve("COM 1", "north");
    EndLease(connection, north);
    EndLease(connection, south);
    EXPECT_THAT(Over(), IsEmpty());
    Pass(5);
    EXPECT_THAT(Over(), ElementsAre("north"));
}

// --- Writes.

TEST_F(ANode, WritesInItsTerm) {
    const Tenure north = Take("north");
    WriteFor(north);
    EXPECT_THAT(Rows("route FROM Host_Routes"), ElementsAre("1"));
}

TEST_F(ANode, WritesNothingInATermThatIsOver) {
    const Tenure north = Take("north");
    Pass(5);
    TakeAway(north);
    EXPECT_THROW(WriteFor(north), NotOurs);
    Take("north");
    EXPECT_THROW(WriteFor(north), NotOurs) << "the name is its own again, the term isn't";
    EXPECT_THAT(Rows("route FROM Host_Routes"), IsEmpty());
}

// Nobody has taken anything over yet, and so it is right.
TEST_F(ANode, WritesWhereOnlyItsLeaseIsOver) {
    const Tenure north = Take("north");
    Pass(60);
    WriteFor(north);
    EXPECT_THAT(Rows("route FROM Host_Routes"), ElementsAre("1"));
}

TEST_F(ANode, WritesForALineThatItServes) {
    Tenure line = Take("north");
    Take("south");
    Serve("COM 1", "north");
    line.line = "COM 1";
    WriteFor(line);
    Execute("UPDATE Host_Lines SET node = 'south'");
    EXPECT_THROW(WriteFor(line), NotOurs);
    EXPECT_THAT(Rows("route FROM Host_Routes"), ElementsAre("1"));
}

TEST_F(ANode, WritesSoOverEveryConnectionOfItsProcess) {
    const Tenure north = Take("north");
    WriteAs(database, north);
    Lease lease(database);
    { WriteTransaction transaction(lease.Database()); }
    Pass(5);
    TakeAway(north);
    EXPECT_THROW(WriteTransaction transaction(lease.Database()), NotOurs);
    EXPECT_FALSE(lease.Database().InTransaction());
}

// --- Once a site.

TEST_F(ANode, LeadsWhereNobodyDoes) {
    const Tenure north = Take("north");
    const Tenure south = Take("south");
    EXPECT_TRUE(TakeLead(connection, north));
    EXPECT_FALSE(TakeLead(connection, south));
    EXPECT_TRUE(TakeLead(connection, north));
    Pass(5);
    EXPECT_FALSE(TakeLead(connection, south)) << "nobody has ended the first one's term yet";
    TakeAway(north);
    EXPECT_TRUE(TakeLead(connection, south));
    EXPECT_FALSE(TakeLead(connection, Take("north")));
}

TEST_F(ANode, LeadsNoMoreAtItsEnd) {
    const Tenure north = Take("north");
    const Tenure south = Take("south");
    TakeLead(connection, north);
    EndLease(connection, north);
    EXPECT_TRUE(TakeLead(connection, south));
}

// --- In the site file.

TEST_F(ANode, StaysWhatItIsWhenTheSiteIsImportedAnew) {
    const auto store = [this](const std::vector<std::string>& nodes) {
        WriteTransaction transaction(connection);
        StoreNodes(connection, nodes);
        transaction.Commit();
    };
    store({"south", "north", "east"});
    Take("north");
    store({"north", "south"});
    EXPECT_THAT(NodesOfSite(connection), ElementsAre("north", "south"));
    EXPECT_EQ(std::nullopt, FindNode(connection, "east"));
    EXPECT_TRUE(FindNode(connection, "north")->lives);
    store({"south"});
    EXPECT_TRUE(FindNode(connection, "north")->lives) << "who has run is to be taken over";
    EXPECT_FALSE(FindNode(connection, "north")->of_site);
}

TEST_F(ANode, CanBeTakenOutOfService) {
    Take("north");
    EXPECT_TRUE(SetDrained(connection, "north", true));
    EXPECT_TRUE(FindNode(connection, "north")->drained);
    EXPECT_TRUE(SetDrained(connection, "north", false));
    EXPECT_FALSE(FindNode(connection, "north")->drained);
    EXPECT_FALSE(SetDrained(connection, "west", true));
}

// Who leads next goes on behind what was told, whoever told it.
TEST_F(ANode, NotesUpToWhereItHasToldHowPagesEnded) {
    EXPECT_EQ(0, ToldUpTo(connection));
    const Tenure north = Take("north");
    const Tenure south = Take("south");
    NoteTold(connection, north, 7);
    NoteTold(connection, south, 5);
    EXPECT_EQ(7, ToldUpTo(connection));
    Pass(6);
    TakeAway(north);
    NoteTold(connection, north, 9);
    EXPECT_EQ(7, ToldUpTo(connection)) << "its term is over";
}

// --- What tables it knows.

TEST_F(ANode, IsNamedWhereItDoesntKnowNewerTables) {
    const Tenure north = Take("north");
    EXPECT_THAT(NodesThatDontKnow(connection, NewestTables()), IsEmpty());
    EXPECT_THAT(NodesThatDontKnow(connection, NewestTables() + 1),
                ElementsAre("\"north\" (somebody)"));
    Pass(60);
    EXPECT_THAT(NodesThatDontKnow(connection, NewestTables() + 1),
                ElementsAre("\"north\" (somebody)"))
        << "until another takes its lease away, it may be back";
    EXPECT_TRUE(TakeAway(north));
    EXPECT_THAT(NodesThatDontKnow(connection, NewestTables() + 1), IsEmpty());
}

// They were made while it came up.
TEST_F(ANode, TakesNoLeaseOnTablesThatItDoesntKnow) {
    connection.SetMadeBy(NewestTables() + 1);
    EXPECT_THROW(Take("north"), StoreError);
    EXPECT_THAT(ReadNodes(connection), IsEmpty());
}

}  // namespace
}  // namespace host
