// A site to be measured: nodes on a server of its own, or one on a file, their modems an exchange
// in real time.
//
// Errors     std::runtime_error.
#ifndef PAGERFWD_BENCH_HOSTS_SITE_H
#define PAGERFWD_BENCH_HOSTS_SITE_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/folder.h"
#include "host/store/connection.h"
#include "tests/support/own_postgres.h"
#include "tests/unit/host/started_program.h"

namespace bench {

struct HostPrograms {
    std::string pagerfwd;
    std::string pagersim;
};

enum class SiteOn { kServer, kFile };

class HostsSite {
 public:
    // Nodes of these names, with as many lines each, "north 1" and so on. A file has one node.
    HostsSite(const HostPrograms& programs, const std::vector<std::string>& nodes, int lines,
              SiteOn on = SiteOn::kServer);

    const std::string& Database() const { return database_; }
    // The first cell of the answer; empty: there is none.
    std::string Ask(const std::string& sql) const;
    // Alarms from 1 on that are being paged, of each something in a table: what is selected for
    // alarm n.
    void Raise(int alarms) const;
    void ForEachAlarm(const std::string& insert, const std::string& selected, int alarms) const;

    // database: its name as this node is to have it; empty: as it is. Until its lines are served.
    void Start(const std::string& node, const std::string& database = "");
    // With its lines.
    void Kill(const std::string& node) { running_.erase(node); }

    static void Until(const std::string& what, const std::function<bool()>& is_so);

 private:
    void Import(const std::vector<std::string>& nodes) const;

    const Folder folder_;
    const HostPrograms programs_;
    const int lines_;
    const std::string database_;
    std::unique_ptr<host::Connection> connection_;
    std::unique_ptr<StartedProgram> exchange_;
    std::map<std::string, StartedProgram> running_;
};

}  // namespace bench

#endif
