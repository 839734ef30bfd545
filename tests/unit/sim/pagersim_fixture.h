// Runs pagersim around the small program sim_client, in a folder of its own.
#ifndef PAGERFWD_TESTS_UNIT_SIM_PAGERSIM_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_SIM_PAGERSIM_FIXTURE_H

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/planted.h"

namespace pagersim {

using Words = std::vector<std::string>;

inline constexpr const char* kExchange = R"(
[[line]]
port = "COM 1"

[[centre]]
name = "tap"
protocol = "tap"
numbers = ["5550101"]

[[centre]]
name = "plain"
protocol = "plain"
numbers = ["5550100"]
)";

// A page to the TAP centre, and what goes before and after it.
inline const Words kConnect = {"open:/dev/ttyS0", "send:ATDT0,5550101\\r", "wait:CONNECT"};
inline const Words kPage = {"send:\\r",
                            "wait:ID=",
                            "send:\\ePG1\\r",
                            "wait:\\e[p\\r",
                            "send:\\x02123\\rABC\\r\\x0317;\\r",
                            "wait:\\r\\x06\\r",
                            "send:\\x04\\r",
                            "wait:\\e\\x04\\r"};

inline Words operator+(Words first, const Words& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline std::string Contents(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Result {
    int status;
    std::string out, err;
};

class PagersimTest : public ::testing::Test {
 protected:
    PagersimTest() {
        std::string pattern = "/tmp/pagersim-test-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        Write("exchange.toml", kExchange);
        setenv("TZ", "UTC", 1);
    }
    ~PagersimTest() override { std::filesystem::remove_all(folder_); }

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name)) << text;
    }

    // Starts pagersim in the folder, its input a pipe, its output in files.
    pid_t Start(const Words& words, int input = -1) const { return StartAs("", words, input); }

    // Several at once have files of their own, "NAME.out".
    pid_t StartAs(const std::string& name, const Words& words, int input = -1) const {
        const pid_t child = fork();
        if (child != 0) {
            return child;
        }
        if (input >= 0) {
            dup2(input, STDIN_FILENO);
        }
        constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
        dup2(open(OutputOf(name, "out").c_str(), kFlags, 0600), STDOUT_FILENO);
        dup2(open(OutputOf(name, "err").c_str(), kFlags, 0600), STDERR_FILENO);
        std::vector<char*> arguments = {const_cast<char*>("pagersim")};
        for (const std::string& word : words) {
            arguments.push_back(const_cast<char*>(word.c_str()));
        }
        arguments.push_back(nullptr);
        if (chdir(folder_.c_str()) == 0) {
            execv(test_support::WithPlanted(PAGERSIM).c_str(), arguments.data());
        }
        _exit(99);
    }

    Result End(pid_t child, const std::string& name = "") const {
        int status = 0;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Contents(OutputOf(name, "out")),
                Contents(OutputOf(name, "err"))};
    }

    Result Run(const Words& words) const { return End(Start(words)); }

    // Runs the client with these steps.
    Result Client(const Words& steps, const Words& options = {}) const {
        return Run(options + Words{"--", SIM_CLIENT} + steps);
    }

    std::string OutputOf(const std::string& name, const std::string& stream) const {
        return Path(name.empty() ? stream : name + "." + stream);
    }

    std::string folder_;
};

}  // namespace pagersim

#endif
