// A program beside the test, by fork: posix_spawn knows no signal for the parent's death.
#include "tests/unit/host/started_program.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

std::vector<char*> Pointers(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

[[noreturn]] void Become(std::vector<std::string>& words, const std::string& output,
                         const std::vector<std::string>& more) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (file >= 0 && dup2(file, STDOUT_FILENO) >= 0 && dup2(file, STDERR_FILENO) >= 0) {
        close(file);
        for (const std::string& setting : more) {
            const size_t end = setting.find('=');
            setenv(setting.substr(0, end).c_str(), setting.substr(end + 1).c_str(), 1);
        }
        execv(words[0].c_str(), Pointers(words).data());
    }
    _exit(127);
}

}  // namespace

StartedProgram::StartedProgram(std::vector<std::string> words, const std::string& output,
                               const std::vector<std::string>& more)
    : process_(fork()) {
    if (process_ == 0) {
        Become(words, output, more);
    }
    setpgid(process_, process_);  // whoever of the two is first
}

StartedProgram::~StartedProgram() {
    Signal(SIGKILL, true);
    Await();
}

void StartedProgram::Signal(int signal, bool group) const {
    if (process_ > 0) {
        kill(group ? -process_ : process_, signal);
    }
}

void StartedProgram::Await() {
    if (process_ > 0) {
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
}
