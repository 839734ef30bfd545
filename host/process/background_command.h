// A program that runs beside this one. Nobody waits for it: it is looked at now and then.
//
// It is run without a shell, in a process group of its own, with the text on its standard input (a
// file in memory, so that nobody has to write to it while it reads); its output and its errors go
// where this process's errors go. Its environment is this process's, without the database's
// password.
//
// Order      Start, Look until it has ended, Start again.
// Threads    One.
// Errors     None: what goes wrong is in the answer of Start or Look.
#ifndef PAGERFWD_HOST_PROCESS_BACKGROUND_COMMAND_H
#define PAGERFWD_HOST_PROCESS_BACKGROUND_COMMAND_H

#include <sys/types.h>

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace host {

// What tests replace.
class CommandRunner {
 public:
    CommandRunner() = default;
    virtual ~CommandRunner() = default;
    CommandRunner(const CommandRunner&) = delete;
    CommandRunner& operator=(const CommandRunner&) = delete;

    // command: the program, looked for in PATH unless it has a slash, and its arguments. Returns
    // why it can't be started; empty: it runs.
    virtual std::string Start(const std::vector<std::string>& command, const std::string& input,
                              std::time_t now) = 0;

    // None: it still runs. Then, once, why it failed; empty: it ended with status 0.
    virtual std::optional<std::string> Look(std::time_t now) = 0;
};

class BackgroundCommand : public CommandRunner {
 public:
    // Seconds that a command may take; then its whole group is killed.
    static constexpr std::time_t kLimit = 30;

    // A command that still runs is killed, and its group.
    ~BackgroundCommand() override;

    std::string Start(const std::vector<std::string>& command, const std::string& input,
                      std::time_t now) override;
    std::optional<std::string> Look(std::time_t now) override;

    // -1: none runs.
    pid_t Process() const { return process_; }

 private:
    std::string EndOf(int status);

    pid_t process_ = -1;  // and its group's number
    std::time_t started_ = 0;
    bool killed_ = false;  // at the limit
};

}  // namespace host

#endif
