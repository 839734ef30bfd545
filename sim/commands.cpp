// Running a planned command. Tested by tests/unit/sim/pagersim_commands_test.cpp.
#include "sim/commands.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

namespace pagersim {
namespace {

constexpr std::string_view kPreload = "LD_PRELOAD=";

// The shell may have another word size than this library, and would complain of it at its start.
constexpr const char* kPreloadForPrograms = "LD_PRELOAD=$PAGERSIM_PROGRAMS; export LD_PRELOAD; ";
constexpr std::string_view kPrograms = "PAGERSIM_PROGRAMS=";

std::vector<std::string> ShellEnvironment() {
    std::vector<std::string> environment = {std::string(kIsCommand) + "=1"};
    for (char** each = environ; *each != nullptr; ++each) {
        const std::string_view variable = *each;
        if (variable.substr(0, kPreload.size()) == kPreload) {
            environment.emplace_back(kPrograms).append(variable.substr(kPreload.size()));
        } else {
            environment.emplace_back(variable);
        }
    }
    return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

void RunShell(const std::string& command) {
    std::vector<std::string> arguments = {"sh", "-c", kPreloadForPrograms + command};
    std::vector<std::string> environment = ShellEnvironment();
    pid_t child = 0;
    const int error = posix_spawn(&child, "/bin/sh", nullptr, nullptr, Pointers(arguments).data(),
                                  Pointers(environment).data());
    if (error != 0) {
        std::fprintf(stderr, "pagersim: %s can't be run: %s\n", command.c_str(),
                     std::strerror(error));
        return;
    }
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace pagersim
