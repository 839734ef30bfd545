// Processes of lines. Tested by tests/unit/host/line_process_test.cpp and
// tests/e2e/run_lines_test.cpp.
#include "host/node/line_process.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace host {
namespace {

constexpr const char* kThisProgram = "/proc/self/exe";

void Require(int error, const char* what) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), what);
    }
}

// What happens in the new process before the program starts.
class Actions {
 public:
    Actions() { Require(posix_spawn_file_actions_init(&actions_), "the process of a line"); }
    ~Actions() { posix_spawn_file_actions_destroy(&actions_); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    void GoTo(const std::string& folder) {
        Require(posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()),
                "the folder of a line");
    }
    // A descriptor on itself: it stays open in the new program.
    void Give(int descriptor) {
        Require(posix_spawn_file_actions_adddup2(&actions_, descriptor, descriptor),
                "the process of a line");
    }

    pid_t Start(std::vector<std::string>& arguments) const {
        std::vector<char*> words;
        words.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) {
            words.push_back(argument.data());
        }
        words.push_back(nullptr);
        pid_t process = -1;
        Require(posix_spawn(&process, kThisProgram, &actions_, nullptr, words.data(), environ),
                "the process of a line");
        return process;
    }

 private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace

LineProcess::LineProcess(std::vector<std::string> arguments, const std::string& folder,
                         const std::vector<int>& inherited) {
    auto [mine, its] = BellSocket::Pair();
    bell_ = std::move(mine);
    arguments.insert(arguments.end(), {"--bell", std::to_string(its.Number())});
    Actions actions;
    actions.GoTo(folder);
    actions.Give(its.Number());
    for (const int descriptor : inherited) {
        actions.Give(descriptor);
    }
    process_ = actions.Start(arguments);
}

LineProcess::~LineProcess() {
    if (process_ > 0) {
        Kill();
        waitpid(process_, nullptr, 0);
    }
}

bool LineProcess::HasEnded() const {
    siginfo_t end{};
    return process_ <= 0 ||
           (waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
            end.si_pid == process_);
}

std::optional<int> LineProcess::Ended() {
    int status = 0;
    if (process_ > 0 && waitpid(process_, &status, WNOHANG) != process_) {
        return std::nullopt;
    }
    process_ = -1;
    return status;
}

void LineProcess::AskToEnd() const {
    Signal(SIGTERM);
}

void LineProcess::Kill() const {
    Signal(SIGKILL);
}

// Of one that has ended, the number is none any more.
void LineProcess::Signal(int signal) const {
    if (process_ > 0) {
        kill(process_, signal);
    }
}

}  // namespace host
