// A site, of several hosts or of one.
#include "bench/hosts_site.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "host/store/schema.h"
#include "tests/unit/host/child_process.h"

namespace bench {

HostsSite::HostsSite(const HostPrograms& programs, const std::vector<std::string>& nodes, int lines,
                     SiteOn on)
    : programs_(programs),
      lines_(lines),
      database_(on == SiteOn::kFile ? folder_.File("site.db")
                                    : test_support::TheServer().MakeDatabase()) {
    setenv("PAGERFWD_DATABASE", database_.c_str(), 1);
    setenv("PAGERFWD_STATE", folder_.Path().c_str(), 1);
    std::ofstream exchange(folder_.File("exchange.toml"));
    for (size_t line = 1; line <= nodes.size() * static_cast<size_t>(lines); ++line) {
        exchange << "[[line]]\nport = \"COM " << line << "\"\n";
    }
    exchange << "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n";
    exchange.close();
    exchange_ = std::make_unique<StartedProgram>(
        std::vector<std::string>{programs_.pagersim, "serve", "--exchange",
                                 folder_.File("exchange.toml"), "--links", folder_.File("lines")},
        folder_.File("exchange.log"));
    Until("an exchange", [this] { return access(folder_.File("lines/ttyS0").c_str(), F_OK) == 0; });
    connection_ = std::make_unique<host::Connection>(database_, host::Connection::Mode::kCreate);
    host::CreateTables(*connection_);
    Import(nodes);
}

void HostsSite::Import(const std::vector<std::string>& nodes) const {
    std::ofstream site(folder_.File("site.toml"));
    int device = 0;
    for (const std::string& node : nodes) {
        site << "[[node]]\nname = \"" << node << "\"\n";
        for (int line = 1; line <= lines_; ++line) {
            site << "[[port]]\nname = \"" << node << ' ' << line << "\"\nnode = \"" << node
                 << "\"\ndevice = \"" << folder_.File("lines/ttyS" + std::to_string(device++))
                 << "\"\n[port.sms1]\ndial = \"ATDT0,5550101\"\ndata = 8\nparity = \"none\"\n";
        }
    }
    site << "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\nnumber = \"5550111\"\n"
            "retries = 1\ndelay = 1\n[[route]]\npagers = [\"duty\"]\n";
    site.close();
    const ProgramRun run = RunProgram({programs_.pagerfwd, "import", folder_.File("site.toml")});
    if (run.exit_code != 0) {
        throw std::runtime_error(run.err);
    }
}

std::string HostsSite::Ask(const std::string& sql) const {
    host::Statement statement(*connection_, sql);
    return statement.Step() ? std::string(statement.Text(0)) : "";
}

void HostsSite::Raise(int alarms) const {
    ForEachAlarm(
        "AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group, severity, timestamp,"
        " details)",
        "n, '2', '0', 'ops', '1', '978948000', 'x'", alarms);
}

void HostsSite::ForEachAlarm(const std::string& insert, const std::string& selected,
                             int alarms) const {
    connection_->Execute("INSERT INTO " + insert +
                         " WITH RECURSIVE alarms (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM"
                         " alarms WHERE n < " +
                         std::to_string(alarms) + ") SELECT " + selected + " FROM alarms");
}

void HostsSite::Start(const std::string& node, const std::string& database) {
    const std::string state = folder_.File(node);
    std::filesystem::create_directory(state);
    running_.try_emplace(
        node,
        std::vector<std::string>{programs_.pagerfwd, "--database",
                                 database.empty() ? database_ : database, "--state", state,
                                 "--locks", state, "run", "--node", node},
        folder_.File(node + ".log"));
    Until("the lines of " + node, [&] {
        // In a file the lines are nobody's: it has no nodes.
        return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0 AND node IN ('', '" + node +
                   "')") == std::to_string(lines_);
    });
}

void HostsSite::Until(const std::string& what, const std::function<bool()>& is_so) {
    constexpr std::chrono::minutes kLongest{5};
    const auto begin = std::chrono::steady_clock::now();
    while (!is_so()) {
        if (std::chrono::steady_clock::now() - begin > kLongest) {
            throw std::runtime_error("waited in vain for " + what);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

}  // namespace bench
