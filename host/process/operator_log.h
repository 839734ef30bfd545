// What a running service tells its operator: a line a message, on standard error.
//
// Under a journal (the environment variable JOURNAL_STREAM is set) each line begins with its level,
// "<4>", as journals take it; elsewhere with the local time. A trouble that lasts doesn't bury the
// rest: a warning or an error that says the same as the line before is written once a minute, and
// how often it came in between before the next line.
//
// Threads    Any.
#ifndef PAGERFWD_HOST_PROCESS_OPERATOR_LOG_H
#define PAGERFWD_HOST_PROCESS_OPERATOR_LOG_H

#include <ctime>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>

#include "host/text/printable.h"

namespace host {

class OperatorLog {
 public:
    // who: stands before every message; empty in a process that speaks for itself.
    OperatorLog(std::ostream& out, bool journal, const std::string& who = {})
        : out_(out), journal_(journal), who_(Printable(who)) {}

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
    // The lock is held.
    bool IsRepeated(const Level& level, std::string_view message, std::time_t now) const;
    void Put(const Level& level, std::string_view message, std::time_t now);

    std::mutex mutex_;  // guards all that follows
    std::ostream& out_;
    const bool journal_;
    const std::string who_;
    std::string latest_;
    std::time_t latest_at_ = 0;
    int unsaid_ = 0;  // times the latest came again
};

}  // namespace host

#endif
