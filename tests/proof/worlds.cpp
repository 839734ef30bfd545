// Worlds. Used by kill_test.cpp and fault_test.cpp.
#include "tests/proof/worlds.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <stdexcept>
#include <thread>

#include "tests/proof/kill_scenario.h"
#include "tests/support/temp_dir.h"

namespace proof::kills {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExchange = R"([[line]]
port = "COM 1"
[[line]]
port = "COM 2"
[[line]]
port = "COM 3"
[[centre]]
name = "tap"
protocol = "tap"
numbers = ["5550101"]
[[centre]]
name = "ucp"
protocol = "ucp"
numbers = ["5550102"]
[[centre]]
name = "plain"
protocol = "plain"
numbers = ["5550100"]
)";

// A site's folder, and its database.
struct Place {
    fs::path folder;
    SiteDatabases& databases;
    std::string database;
};

// In the site's folder, where its output goes to "log".
pid_t Start(const std::vector<std::string>& words, const Place& site) {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    const fs::path& folder = site.folder;
    fs::current_path(folder);
    site.databases.Show(site.database);
    setenv("PAGERFWD_LOCKS", folder.c_str(), 1);
    setenv("TZ", "UTC", 1);
    const int log = open("log", O_WRONLY | O_CREAT | O_APPEND, 0644);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

void Run(const std::vector<std::string>& words, const Place& site) {
    int status = 0;
    waitpid(Start(words, site), &status, 0);
    if (status != 0) {
        throw std::runtime_error(words[0] + " ended with " + std::to_string(status));
    }
}

void MakeTemplate(const Programs& programs, const Place& site) {
    const std::string pagerfwd = programs.Binary("pagerfwd");
    Run({programs.Binary("kill_site"), "make", "site.toml"}, site);
    Run({pagerfwd, "init"}, site);
    Run({pagerfwd, "import", "site.toml"}, site);
}

pid_t StartWorld(const Programs& programs, const Place& site,
                 const std::vector<std::string>& keeper) {
    std::ofstream(site.folder / "exchange.toml") << kExchange;
    std::vector<std::string> words = {"/usr/bin/timeout",
                                      "-k",
                                      "1",
                                      "300",
                                      programs.Binary("pagersim"),
                                      "--quiet",
                                      "--exchange",
                                      "exchange.toml",
                                      "--report",
                                      kReport,
                                      "--"};
    words.insert(words.end(), keeper.begin(), keeper.end());
    return Start(words, site);
}

}  // namespace

void RunWorlds(const Programs& programs, SiteDatabases& databases, int worlds,
               const KeeperOf& keeper, const Ended& ended) {
    if (fs::exists("/dev/shm")) {
        setenv("TMPDIR", "/dev/shm", 0);
    }
    const test_support::TempDir here;
    const Place first{here.Path(), databases, databases.Make(here.Path())};
    MakeTemplate(programs, first);
    struct Running {
        int world;
        Place site;
    };
    std::map<pid_t, Running> running;
    const unsigned most = std::max(1U, std::thread::hardware_concurrency());
    for (int next = 1; next <= worlds || !running.empty();) {
        while (next <= worlds && running.size() < most) {
            const fs::path folder = first.folder / ("world-" + std::to_string(next));
            fs::create_directory(folder);
            const Place site{folder, databases, databases.Copy(first.database, folder)};
            running.emplace(StartWorld(programs, site, keeper(next)), Running{next, site});
            ++next;
        }
        int status = 0;
        const auto found = running.find(wait(&status));
        if (found != running.end()) {
            const Running& world = found->second;
            ended(world.world, world.site.folder, status);
            databases.Forget(world.site.database);
            fs::remove_all(world.site.folder);
            running.erase(found);
        }
    }
}

}  // namespace proof::kills
