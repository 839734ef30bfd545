// Host_Nodes. Tested by tests/unit/host/nodes_test.cpp.
#include "host/store/tables/nodes.h"

#include <algorithm>

#include "host/store/schema.h"

namespace host {
namespace {

std::string SelectNodes(const Connection& connection) {
    return "SELECT node, place, term, holder, valid_until - " + connection.Clock() +
           ", leads, drained, valid_until,"
           " EXISTS (SELECT 1 FROM Host_Lines WHERE node = Host_Nodes.node), speaks FROM "
           "Host_Nodes ";
}

std::vector<NodeState> NodesIn(Statement& statement) {
    std::vector<NodeState> nodes;
    while (statement.Step()) {
        NodeState node;
        node.node = statement.Text(0);
        node.of_site = statement.Number(1) >= 0;
        node.term = statement.Number(2);
        node.holder = statement.Text(3);
        node.left = std::chrono::milliseconds(statement.Number(4));
        node.lives = !node.holder.empty() && node.left.count() > 0;
        node.leads = statement.Number(5) != 0;
        node.drained = statement.Number(6) != 0;
        node.valid_until = statement.Number(7);
        node.owns = statement.Number(8) != 0;
        node.speaks = statement.Number(9);
        nodes.push_back(std::move(node));
    }
    return nodes;
}

void AddNode(Connection& connection, const std::string& node) {
    Statement(connection, "INSERT INTO Host_Nodes (node) VALUES (?) ON CONFLICT DO NOTHING")
        .Bind(node)
        .Run();
}

}  // namespace

std::vector<NodeState> ReadNodes(Connection& connection) {
    Statement statement(connection, SelectNodes(connection) +
                                        "ORDER BY CASE WHEN place < 0 THEN 1 ELSE 0 END, place,"
                                        " node");
    return NodesIn(statement);
}

std::optional<NodeState> FindNode(Connection& connection, const std::string& node) {
    Statement statement(connection, SelectNodes(connection) + "WHERE node = ?");
    const std::vector<NodeState> nodes = NodesIn(statement.Bind(node));
    return nodes.empty() ? std::nullopt : std::optional<NodeState>(nodes.front());
}

std::vector<std::string> NodesOfSite(Connection& connection) {
    return Statement(connection, "SELECT node FROM Host_Nodes WHERE place >= 0 ORDER BY place")
        .Texts();
}

void StoreNodes(Connection& connection, const std::vector<std::string>& nodes) {
    Statement(connection, "UPDATE Host_Nodes SET place = -1").Run();
    int64_t place = 0;
    for (const std::string& node : nodes) {
        AddNode(connection, node);
        Statement(connection, "UPDATE Host_Nodes SET place = ? WHERE node = ?")
            .Bind(place++)
            .Bind(node)
            .Run();
    }
    // What was never more than a name.
    Statement(connection, "DELETE FROM Host_Nodes WHERE place < 0 AND term = 0").Run();
}

std::optional<Tenure> TakeLease(Connection& connection, const std::string& node,
                                const std::string& holder, std::chrono::milliseconds validity,
                                const std::string& dead) {
    WriteTransaction transaction(connection);
    RequireTables(connection);  // somebody may have made newer ones by now
    AddNode(connection, node);
    Statement taken(
        connection,
        "UPDATE Host_Nodes SET speaks = ?, term = term + 1, holder = ?, valid_until = " +
            connection.Clock() + " + ? WHERE node = ? AND (holder IN ('', ?) OR valid_until <= " +
            connection.Clock() + ") RETURNING term");
    taken.Bind(NewestTables()).Bind(holder).Bind(int64_t{validity.count()}).Bind(node).Bind(dead);
    const int64_t term = taken.FirstNumber();
    taken.Run();
    transaction.Commit();
    return term == 0 ? std::nullopt : std::optional<Tenure>({node, term});
}

bool RenewLease(Connection& connection, const Tenure& tenure, std::chrono::milliseconds validity) {
    Statement(connection,
              "UPDATE Host_Nodes SET renewals = renewals + 1, valid_until = " + connection.Clock() +
                  " + ? WHERE node = ? AND term = ? AND holder <> ''")
        .Bind(int64_t{validity.count()})
        .Bind(tenure.node)
        .Bind(tenure.term)
        .Run();
    return connection.Changes() > 0;
}

void EndLease(Connection& connection, const Tenure& tenure) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "UPDATE Host_Nodes SET holder = '', leads = 0 WHERE node = ? AND term = ?")
        .Bind(tenure.node)
        .Bind(tenure.term)
        .Run();
    transaction.Commit();
}

bool TakeLeaseAway(Connection& connection, const std::string& node, int64_t term) {
    Statement(connection,
              "UPDATE Host_Nodes SET term = term + 1, holder = '', leads = 0"
              " WHERE node = ? AND term = ? AND valid_until <= " +
                  connection.Clock())
        .Bind(node)
        .Bind(term)
        .Run();
    return connection.Changes() > 0;
}

void RequireTenure(Connection& connection, const Tenure& tenure) {
    Statement holds(connection,
                    "SELECT 1 FROM Host_Nodes WHERE node = ?1 AND term = ?2 AND (?3 = '' OR EXISTS"
                    " (SELECT 1 FROM Host_Lines WHERE line = ?3 AND node = ?1))");
    if (!holds.Bind(tenure.node).Bind(tenure.term).Bind(tenure.line).Step()) {
        throw NotOurs(connection.Name() + ": the term of node \"" + tenure.node +
                      "\" is over: another has taken its pages");
    }
}

bool TakeLead(Connection& connection, const Tenure& tenure) {
    Statement leads(connection, "SELECT node FROM Host_Nodes WHERE leads <> 0");
    if (leads.Step()) {
        return leads.Text(0) == tenure.node;
    }
    WriteTransaction transaction(connection);
    Statement(connection,
              "UPDATE Host_Nodes SET leads = 1 WHERE node = ? AND term = ?"
              " AND NOT EXISTS (SELECT 1 FROM Host_Nodes WHERE leads <> 0)")
        .Bind(tenure.node)
        .Bind(tenure.term)
        .Run();
    const bool taken = connection.Changes() > 0;
    transaction.Commit();
    return taken;
}

int64_t ToldUpTo(Connection& connection) {
    return Statement(connection, "SELECT coalesce(max(told), 0) FROM Host_Nodes").FirstNumber();
}

void NoteTold(Connection& connection, const Tenure& tenure, int64_t row) {
    WriteTransaction transaction(connection);
    Statement(connection, "UPDATE Host_Nodes SET told = ? WHERE node = ? AND term = ?")
        .Bind(row)
        .Bind(tenure.node)
        .Bind(tenure.term)
        .Run();
    transaction.Commit();
}

bool AnyNodeLives(Connection& connection) {
    const std::vector<NodeState> nodes = ReadNodes(connection);
    return std::any_of(nodes.begin(), nodes.end(),
                       [](const NodeState& node) { return node.lives; });
}

std::vector<std::string> LivingHolders(Connection& connection) {
    return Statement(connection,
                     "SELECT '\"' || node || '\" (' || holder || ')' FROM Host_Nodes"
                     " WHERE holder <> '' AND valid_until > " +
                         connection.Clock() + " ORDER BY node")
        .Texts();
}

std::vector<std::string> NodesThatDontKnow(Connection& connection, int64_t version) {
    return Statement(connection,
                     "SELECT '\"' || node || '\" (' || holder || ')' FROM Host_Nodes"
                     " WHERE holder <> '' AND speaks < ? ORDER BY node")
        .Bind(version)
        .Texts();
}

bool SetDrained(Connection& connection, const std::string& node, bool drained) {
    WriteTransaction transaction(connection);
    Statement(connection, "UPDATE Host_Nodes SET drained = ? WHERE node = ?")
        .Bind(int64_t{drained})
        .Bind(node)
        .Run();
    const bool known = connection.Changes() > 0;
    transaction.Commit();
    return known;
}

void ForgetNode(Connection& connection, const std::string& node) {
    Statement(connection, "DELETE FROM Host_Nodes WHERE node = ?").Bind(node).Run();
}

}  // namespace host
