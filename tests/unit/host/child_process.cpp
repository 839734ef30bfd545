// Child processes by posix_spawn.
#include "tests/unit/host/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/planted.h"
#include "tests/unit/host/files.h"

namespace {

std::vector<char*> Arguments(std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    return arguments;
}

pid_t Spawn(std::vector<std::string> command, const posix_spawn_file_actions_t& actions) {
    pid_t process = -1;
    std::transform(command.begin(), command.end(), command.begin(), test_support::WithPlanted);
    if (posix_spawn(&process, command[0].c_str(), &actions, nullptr, Arguments(command).data(),
                    environ) != 0) {
        throw std::runtime_error("can't be started: " + command[0]);
    }
    return process;
}

int ExitCodeOf(pid_t process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

struct Pipe {
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
    }
    int ends[2] = {-1, -1};
};

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
    const Pipe in;
    const Pipe out;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.ends[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
    process_ = Spawn(command, actions);
    posix_spawn_file_actions_destroy(&actions);
    close(in.ends[0]);
    close(out.ends[1]);
    input_ = in.ends[1];
    output_ = out.ends[0];
}

ChildProcess::~ChildProcess() {
    Kill();
    if (input_ >= 0) {
        close(input_);
    }
    close(output_);
}

std::string ChildProcess::ReadLine() {
    std::string line;
    char c = 0;
    while (read(output_, &c, 1) == 1 && c != '\n') {
        line += c;
    }
    return line;
}

int ChildProcess::Finish() {
    close(input_);
    input_ = -1;
    return Wait();
}

void ChildProcess::Kill() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        Wait();
    }
}

int ChildProcess::Wait() {
    const int code = ExitCodeOf(process_);
    process_ = -1;
    return code;
}

ProgramRun RunProgram(const std::vector<std::string>& command) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "stdout.txt", flags, 0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "stderr.txt", flags, 0644);
    const pid_t process = Spawn(command, actions);
    posix_spawn_file_actions_destroy(&actions);
    const int code = ExitCodeOf(process);
    return {code, ReadFile("stdout.txt"), ReadFile("stderr.txt")};
}
