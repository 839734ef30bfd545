// The process of a line, as its node has it: started, listened to, ended.
//
// Ownership  The process is killed with the object, if it still runs.
// Threads    One.
// Errors     std::system_error, where the system refuses a process or a descriptor.
#ifndef PAGERFWD_HOST_NODE_LINE_PROCESS_H
#define PAGERFWD_HOST_NODE_LINE_PROCESS_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "host/process/bell_socket.h"

namespace host {

class LineProcess {
 public:
    // Starts this program with the arguments, and "--bell" behind them, in the folder. inherited:
    // descriptors that it has, too, under their numbers.
    LineProcess(std::vector<std::string> arguments, const std::string& folder,
                const std::vector<int>& inherited);
    ~LineProcess();
    LineProcess(const LineProcess&) = delete;
    LineProcess& operator=(const LineProcess&) = delete;

    bool HasEnded() const;
    // The status that waitpid gives, when it has ended.
    std::optional<int> Ended();

    // Politely: it finishes a page on the line.
    void AskToEnd() const;
    void Kill() const;

    void Ring() const { bell_.Ring(); }
    // Whether it has rung since the last call.
    bool HasRung() const { return bell_.Listen() == BellSocket::Heard::kBell; }

    pid_t Number() const { return process_; }

 private:
    void Signal(int signal) const;

    BellSocket bell_;
    pid_t process_ = -1;
};

}  // namespace host

#endif
