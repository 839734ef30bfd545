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

// In a folder, where its output goes to "log". Whose end WaitFor awaits.
pid_t Start(const std::vector<std::string>& words, const fs::path& folder) {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    fs::current_path(folder);
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

void Run(const std::vector<std::string>& words, const fs::path& folder) {
    int status = 0;
    waitpid(Start(words, folder), &status, 0);
    if (status != 0) {
        throw std::runtime_error(words[0] + " ended with " + std::to_string(status));
    }
}

void MakeTemplate(const Programs& programs, const fs::path& folder) {
    const std::string pagerfwd = programs.Binary("pagerfwd");
    Run({programs.Binary("kill_site"), "make", "site.toml"}, folder);
    Run({pagerfwd, "--database", kDatabase, "init"}, folder);
    Run({pagerfwd, "--database", kDatabase, "import", "site.toml"}, folder);
}

pid_t StartWorld(const Programs& programs, const fs::path& folder,
                 const std::vector<std::string>& keeper) {
    fs::create_directory(folder);
    fs::copy_file(fs::path(kDatabase), folder / kDatabase);
    std::ofstream(folder / "exchange.toml") << kExchange;
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
    return Start(words, folder);
}

}  // namespace

void RunWorlds(const Programs& programs, int worlds, const KeeperOf& keeper, const Ended& ended) {
    if (fs::exists("/dev/shm")) {
        setenv("TMPDIR", "/dev/shm", 0);
    }
    const test_support::TempDir here;
    MakeTemplate(programs, here.Path());
    std::map<pid_t, int> running;
    const unsigned most = std::max(1U, std::thread::hardware_concurrency());
    const auto folder_of = [&](int world) {
        return fs::current_path() / ("world-" + std::to_string(world));
    };
    for (int next = 1; next <= worlds || !running.empty();) {
        while (next <= worlds && running.size() < most) {
            running[StartWorld(programs, folder_of(next), keeper(next))] = next;
            ++next;
        }
        int status = 0;
        const auto found = running.find(wait(&status));
        if (found != running.end()) {
            ended(found->second, folder_of(found->second), status);
            fs::remove_all(folder_of(found->second));
            running.erase(found);
        }
    }
}

}  // namespace proof::kills
