// What commits may be lost by. Tested by tests/unit/host/commit_risks_test.cpp and
// postgres_test.cpp.
#include "host/store/commit_risks.h"

#include <sys/vfs.h>

#include <algorithm>
#include <iterator>

namespace host {
namespace {

// Of statfs(2): NFS, SMB, SMB 2, CIFS, AFS, Ceph, 9P, Coda, GFS2, OCFS2.
constexpr unsigned long kNetworks[] = {0x6969,     0x517B,     0xFE534D42, 0xFF534D42, 0x5346414F,
                                       0x00C36400, 0x01021997, 0x73757245, 0x01161970, 0x7461636F};

struct Risk {
    const char* where;  // a condition on the server's settings
    const char* words;
};

constexpr Risk kRisks[] = {
    {"current_setting('fsync') <> 'on'",
     "the server has fsync = off: a power cut may cost anything, the whole database too"},
    {"current_setting('full_page_writes') <> 'on'",
     "the server has full_page_writes = off: a power cut may damage the database"},
    {"EXISTS (SELECT 1 FROM pg_settings WHERE name = 'synchronous_commit' AND reset_val = 'off')",
     "the server has synchronous_commit = off: what other programs write, such as alarms, may be "
     "lost when it crashes"},
    {"EXISTS (SELECT 1 FROM pg_stat_replication)"
     " AND (current_setting('synchronous_standby_names') = ''"
     " OR current_setting('synchronous_commit') = 'local')",
     "the server doesn't wait for its standby: one that is promoted lacks the last commits"},
};

std::vector<std::string> OfFile(const Connection& connection) {
    struct statfs status {};
    if (statfs(connection.Path().c_str(), &status) == 0 &&
        IsOfANetwork(static_cast<unsigned long>(status.f_type))) {
        return {
            "the file lies on a disk of a network, where it can be damaged: a file of SQLite "
            "stays on one host, and on a disk of its own"};
    }
    return {};
}

}  // namespace

bool IsOfANetwork(unsigned long kind) {
    constexpr unsigned long kBits = 0xFFFFFFFF;  // on some machines it has a sign
    return std::count(std::begin(kNetworks), std::end(kNetworks), kind & kBits) > 0;
}

std::vector<std::string> CommitRisks(Connection& connection) {
    if (connection.Can().is_file) {
        return OfFile(connection);
    }
    std::vector<std::string> risks;
    for (const Risk& risk : kRisks) {
        if (Statement(connection, std::string("SELECT 1 WHERE ") + risk.where).Step()) {
            risks.emplace_back(risk.words);
        }
    }
    return risks;
}

}  // namespace host
