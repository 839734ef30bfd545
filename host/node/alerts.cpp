// Notices, their sources and the heartbeat, together. Tested by tests/e2e/alerts_test.cpp.
#include "host/node/alerts.h"

#include "host/site/site_tables.h"
#include "host/site/stored_commands.h"

namespace host {

Alerts::Alerts(const std::string& database, Encoding encoding, OperatorLog& log)
    : database_(database),
      notices_(OriginOf(database), log),
      news_(encoding, notices_),
      heartbeat_(encoding, notices_, log) {}

void Alerts::ReadCommands(Connection& connection) {
    notices_.SetCommand(ReadCommand(connection, kNotifyCommand));
    news_.TellAnswers(TellsAnswers(connection));
    heartbeat_.SetCommand(ReadCommand(connection, kHeartbeatCommand));
}

void Alerts::Begin(Connection& connection, std::time_t now) {
    ReadCommands(connection);
    news_.Look(connection, now);
}

void Alerts::Look(Connection& connection, std::time_t now) {
    news_.Look(connection, now);
}

}  // namespace host
