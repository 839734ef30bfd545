// Worlds. Used by site_soak.cpp and site_scale.cpp.
#include "tests/proof/world_run.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace proof {
namespace {

namespace fs = std::filesystem;

std::vector<char*> ArgumentsOf(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    return arguments;
}

void RunToEnd(const std::vector<std::string>& words) {
    const std::vector<char*> arguments = ArgumentsOf(words);
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen("log", "w", stderr) != nullptr) {
            execv(arguments[0], arguments.data());
        }
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        throw std::runtime_error(words[0] + " ended with " + std::to_string(status));
    }
}

}  // namespace

WorldFolder::WorldFolder() {
    if (fs::exists("/dev/shm")) {
        setenv("TMPDIR", "/dev/shm", 0);
    }
    setenv("TZ", "UTC", 1);
    folder_.emplace();
}

void KeepInWorld(const std::string& how_long, const fs::path& binaries, const fs::path& libraries) {
    RunToEnd({binaries / "pagersim", "--quiet", "--exchange", kExchangeFile, "--report", kReport,
              "--", fs::read_symlink("/proc/self/exe"), "keep", how_long, binaries / "pagerfwd",
              libraries / "libPagerFwd.so"});
}

double ProcessorSecondsOfChildren() {
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

pid_t StartBeside(const std::vector<std::string>& words) {
    const std::vector<char*> arguments = ArgumentsOf(words);
    pid_t process = -1;
    if (posix_spawn(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
        throw std::runtime_error("can't be started: " + words[0]);
    }
    return process;
}

}  // namespace proof
