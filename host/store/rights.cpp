// Rights. Tested by tests/unit/host/rights_test.cpp, and against a server by
// postgres_rights_test.cpp.
#include "host/store/rights.h"

#include "host/store/postgres_questions.h"
#include "host/store/postgres_sql.h"
#include "host/store/schema.h"

namespace host {
namespace {

constexpr const char* kRoles[] = {"pagerfwd_node", "pagerfwd_line", "pagerfwd_web",
                                  "pagerfwd_reader"};

constexpr const char* kHead =
    "-- The tables of pagerfwd, for an empty database of PostgreSQL, and four roles with the "
    "least\n"
    "-- rights that they need. For its administrator:\n"
    "--   pagerfwd init --print | psql -v ON_ERROR_STOP=1 NAME\n"
    "BEGIN;\n";

constexpr const char* kRightsHead =
    "\n-- Roles, for users to be made members of: GRANT pagerfwd_node TO somebody. From here on it "
    "may\n"
    "-- be run again, such as for tables that a newer version has added.\n"
    "BEGIN;\n";

// A statement a line.
std::string Lines(const std::string& statements) {
    std::string lines;
    bool quoted = false;
    for (const char c : statements) {
        quoted = quoted != (c == '\'');
        lines += c;
        if (c == ';' && !quoted) {
            lines += '\n';
        }
    }
    return lines.back() == '\n' ? lines : lines + ";\n";
}

std::string Words(const std::string& letters) {
    std::string words;
    for (const char letter : letters) {
        words += words.empty() ? "" : ", ";
        words += letter == 'S'   ? "SELECT"
                 : letter == 'I' ? "INSERT"
                 : letter == 'U' ? "UPDATE"
                                 : "DELETE";
    }
    return words;
}

std::string MakeRole(const std::string& role) {
    return "DO 'BEGIN CREATE ROLE " + role +
           " NOLOGIN; EXCEPTION WHEN duplicate_object THEN NULL; END';\n";
}

std::string Grant(const TableRights& rights) {
    const char* const letters[] = {rights.node, rights.line, rights.web, rights.reader};
    std::string grants;
    for (size_t role = 0; role < std::size(kRoles); ++role) {
        if (*letters[role] != '\0') {
            grants += "GRANT " + Words(letters[role]) + " ON " + rights.table + " TO " +
                      kRoles[role] + ";\n";
        }
    }
    return grants;
}

}  // namespace

const std::vector<TableRights>& AllTables() {
    static const std::vector<TableRights> tables = {
        // The site, as it is imported. A node empties cells that are too large.
        {kPorts, "SU", "S", "S"},
        {kPagers, "SU", "S", "S"},
        {kTimeModels, "SU", "S", "S"},
        {"Host_Settings", "S", "S", "S"},
        {"Host_Routes", "S", "", "S"},
        {"Host_RoutePagers", "S", "", "S"},
        // Alarms, and what becomes of them.
        {kAlarmLog, "SIU", "SU", "SIU"},
        {"Host_Trail", "SID", "S", "SI"},
        {"Host_Spooled", "SID", "", "SI"},
        {"Host_Tokens", "", "", "SU", ""},
        {"Host_Deliveries", "SIUD", "SU", "SID"},  // last pages of alarms that are over
        {kEvents, "SIUD", "SIUD", "S"},
        {"Host_History", "SIUD", "SI", "S"},
        {"Host_Sends", "SD", "SI", "S"},
        // Lines, and what is asked of them.
        {"Host_Lines", "SIUD", "SIU", "SIU"},
        {"Host_Nodes", "SIU", "S", "S"},
        {"Host_PageRequests", "SD", "", "SID"},
        {"Host_TestPages", "SUD", "SU", "SID"},
    };
    return tables;
}

std::string SchemaForPostgres() {
    std::string schema = kHead;
    for (const std::string& step : NewTables(PostgresQuestions())) {
        schema += Lines(ForPostgres(step));
    }
    schema += "COMMIT;\n";
    schema += kRightsHead;
    for (const char* const role : kRoles) {
        schema += MakeRole(role);
    }
    for (const TableRights& rights : AllTables()) {
        schema += Grant(rights);
    }
    return schema + "COMMIT;\n";
}

}  // namespace host
