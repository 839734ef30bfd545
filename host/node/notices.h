// Tells the command of [notify] what somebody should hear of.
//
//   one command at a time, at most one a second, with a time limit (process/background_command.h)
//   of one kind and object, one an hour, and its all-clear one an hour: what comes in between is
//     held back, the latest is told when the hour is over, and says how many it stands for
//   a command that fails is told to the operator once; what it was to tell is tried again a minute
//     later, unless there is news of the same object by then
//
// Nothing here waits. What waits to be told ends with the process.
//
// Threads    One.
// Errors     None.
#ifndef PAGERFWD_HOST_NODE_NOTICES_H
#define PAGERFWD_HOST_NODE_NOTICES_H

#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/node/notice.h"
#include "host/process/background_command.h"
#include "host/process/operator_log.h"

namespace host {

class Notices {
 public:
    Notices(NoticeOrigin origin, OperatorLog& log,
            std::unique_ptr<CommandRunner> runner = std::make_unique<BackgroundCommand>());

    // Empty: nobody is told from now on, and what waits is forgotten.
    void SetCommand(std::vector<std::string> command);

    void Say(const Notice& notice, std::time_t now);

    // To be called about once a second: looks at the command that runs, starts the next.
    void Look(std::time_t now);

    // Whether a command runs, or something waits that is held back by neither hour nor failure.
    bool IsBusy(std::time_t now) const;

    // Before the process ends: tells what it can in the time that one command may take. Waits.
    void Finish();

    // So many objects may wait; further ones are only counted.
    static constexpr size_t kMostWaiting = 1000;

 private:
    struct Waiting {
        Notice notice;
        std::time_t at = 0;
        uint64_t held_back = 0;
        uint64_t turn = 0;  // the order in which they are told
    };
    // Of one kind and object.
    struct Subject {
        std::optional<Waiting> waiting;
        std::optional<std::time_t> told[2];  // the trouble, its all-clear
    };
    using Subjects = std::map<std::string, Subject>;

    static bool MayBeTold(const Subject& subject, std::time_t now);
    Subjects::iterator Next(std::time_t now);
    void Start(Subjects::iterator subject, std::time_t now);
    void Ended(const std::string& why_not, std::time_t now);
    void Told(Subject& subject);
    void Failed(Subject& subject, const std::string& why, std::time_t now);
    void Forget(std::time_t now);

    const NoticeOrigin origin_;
    OperatorLog& log_;
    const std::unique_ptr<CommandRunner> runner_;
    std::vector<std::string> command_;
    Subjects subjects_;
    size_t waiting_ = 0;  // of the subjects
    uint64_t turns_ = 0;
    uint64_t uncounted_ = 0;                                  // notices for which there was no room
    std::optional<std::pair<std::string, Waiting>> running_;  // the subject's key, and what is told
    std::time_t started_ = 0;                                 // the command, at last
    std::time_t not_before_ = 0;                              // after a failure
    bool failing_ = false;
};

}  // namespace host

#endif
