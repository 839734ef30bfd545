// What a running service tells its operator: a line a message, on standard error.
//
// Under a journal (the environment variable JOURNAL_STREAM is set) each line begins with its level,
// "<4>", as journals take it; elsewhere with the local time.
//
// Threads    Any.
#ifndef PAGERFWD_HOST_SERVICE_OPERATOR_LOG_H
#define PAGERFWD_HOST_SERVICE_OPERATOR_LOG_H

#include <mutex>
#include <ostream>
#include <string_view>

namespace host {

class OperatorLog {
 public:
    OperatorLog(std::ostream& out, bool journal) : out_(out), journal_(journal) {}

    // Texts from outside are made fit for a terminal.
    void Info(std::string_view message) { Write(kInfo, message); }
    void Warning(std::string_view message) { Write(kWarning, message); }
    void Error(std::string_view message) { Write(kError, message); }

 private:
    struct Level {
        int number;  // of syslog
        const char* word;
    };
    static constexpr Level kError{3, "error: "};
    static constexpr Level kWarning{4, "warning: "};
    static constexpr Level kInfo{6, ""};

    void Write(const Level& level, std::string_view message);

    std::mutex mutex_;
    std::ostream& out_;  // guarded by mutex_
    const bool journal_;
};

}  // namespace host

#endif
