// Tells somebody outside, every minute, that all is well, and the operator what isn't.
//
// Each minute the tables are reckoned (reckoning.h). What is found twice in a row is told, as a
// notice and in the operator's log, and told again when it is gone. Only where nothing is amiss,
// the command of [heartbeat] is run, and the time of the last beat moves on.
//
// Threads    One.
// Errors     StoreError, where the tables can't be read: no beat, and the next look tries again.
#ifndef PAGERFWD_HOST_NODE_HEARTBEAT_H
#define PAGERFWD_HOST_NODE_HEARTBEAT_H

#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/node/notices.h"
#include "host/node/pace.h"
#include "host/node/reckoning.h"
#include "host/process/background_command.h"
#include "host/process/operator_log.h"

namespace host {

class SiteHeartbeat {
 public:
    SiteHeartbeat(Encoding encoding, Notices& notices, OperatorLog& log,
                  std::unique_ptr<CommandRunner> runner = std::make_unique<BackgroundCommand>());

    // Empty: nobody outside is told.
    void SetCommand(std::vector<std::string> command) { command_ = std::move(command); }

    // To be called about once a second. Reckons once a minute.
    void Look(Connection& connection, std::time_t now);

    // When all was as it should be, at last; 0: it hasn't been yet.
    std::time_t LastBeat() const { return last_beat_; }

 private:
    using Findings = std::map<std::string, Amiss>;  // by alarm, pager and what is amiss

    void LookAtCommand(std::time_t now);
    void Compare(const Findings& found, std::time_t now);
    void Tell(const Amiss& amiss, bool over, std::time_t now);
    void Beat(std::time_t now);
    void Ended(const std::string& why_not);

    const Encoding encoding_;
    Notices& notices_;
    OperatorLog& log_;
    const std::unique_ptr<CommandRunner> runner_;
    std::vector<std::string> command_;
    bool running_ = false;
    bool failing_ = false;
    Pace pace_;
    std::time_t last_beat_ = 0;
    Findings before_;  // of the last minute
    Findings told_;
};

}  // namespace host

#endif
