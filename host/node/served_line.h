// One line as its node serves it: which process it has, whether that goes on, and what is done
// where it doesn't.
//
//   healthy   a process serves it; one that ends unasked, or makes no progress, is started anew
//   sick      no process serves it; from time to time one asks its modem
//   paused    it has no process
//
// Threads    One.
// Errors     What is refused is told; the next look tries again.
#ifndef PAGERFWD_HOST_NODE_SERVED_LINE_H
#define PAGERFWD_HOST_NODE_SERVED_LINE_H

#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/lines/site_lines.h"
#include "host/node/line_health.h"
#include "host/node/line_process.h"
#include "host/process/clock_jumps.h"
#include "host/process/operator_log.h"
#include "host/process/trouble.h"

namespace host {

// What the process of a line is started with.
struct LineCommand {
    std::vector<std::string> program;  // this program, with its options
    std::string database;
    std::vector<int> inherited;        // descriptors
    std::vector<std::string> options;  // of its own
};

class ServedLine {
 public:
    // shown: the name, for messages.
    ServedLine(SiteLine line, std::string shown, const LineCommand& command, OperatorLog& log);

    const SiteLine& Line() const { return line_; }
    const LineHealth& Health() const { return health_; }
    pid_t Process() const { return process_ ? process_->Number() : 0; }

    // Whether it can be given pages.
    bool IsServed() const { return process_ && task_ == Task::kServing && !ending_ && IsWanted(); }
    // Whether it can be soon, if it can't now.
    bool IsWanted() const { return MayBeServed() && !health_.IsSick(); }
    // Whether nobody works with its pages, and nobody will before the next look.
    bool IsAtRest() const { return !process_ || task_ != Task::kServing; }

    // Whether its process has ended, its device has come or gone, or a look is due.
    bool HasNews(std::time_t now) const;
    // Starts, watches and ends its process.
    void Look(std::time_t now);

    // What a sending over it came to.
    void Sent(const Send& send, std::time_t now);

    // On a site of several hosts only one node at a time serves it. Until this one does, nothing
    // happens to it here.
    void SetClaimed(bool claimed) { claimed_ = claimed; }
    bool IsClaimed() const { return claimed_; }
    // Why the node has no work for any line; empty: it has.
    void SetIdle(const std::string& why) { why_idle_ = why; }
    // Why it is not wanted, in words.
    std::string WhyNotWanted() const;

    void SetPaused(bool paused) { paused_ = paused; }
    // For a moment, so that something can be done with its pages.
    void SetHeld(bool held) { held_ = held; }
    // A test call is asked of it. Where no process serves it, one of its own makes the call.
    void SetToCall(bool to_call) { to_call_ = to_call; }
    // Why that process failed, if it did since the last look; else empty.
    std::string TakeFailedCall() { return std::exchange(failed_call_, {}); }
    // As the node before left it.
    void WasSick(const std::string& why, std::time_t since);
    // The site knows it no more, knows it otherwise, or the node ends.
    void Leave() { leaving_ = true; }
    bool HasLeft() const { return leaving_ && !process_; }
    void Return(SiteLine line);

    void Ring() const;

 private:
    enum class Task { kServing, kAsking, kCalling };  // the latter two are short

    bool IsDeviceThere() const;
    void LookAtClock(std::time_t now);
    void LookAtDevice(std::time_t now);
    void StartOrSay(std::time_t now);
    std::time_t NextLook(std::time_t now) const;
    std::time_t LastMoment() const;
    void Watch(std::time_t now);
    void StartOrAsk(std::time_t now);
    void CannotStart(const std::string& why, std::time_t now);
    void Start(std::time_t now);
    void StartAsking(std::time_t now);
    void StartCalling(std::time_t now);
    void Launch(Task task, const std::vector<std::string>& options, std::time_t now);
    void Called(int status, std::time_t now);
    void Ended(int status, std::time_t now);
    void BlameFor(int status, std::time_t now);
    void TellHealth(bool was_sick);
    bool MakesProgress();
    bool MayBeServed() const { return claimed_ && !leaving_ && !paused_ && why_idle_.empty(); }
    void End(std::time_t now);

    SiteLine line_;
    const std::string name_;  // "line "COM 1""
    const LineCommand& command_;
    OperatorLog& log_;
    Trouble refused_;  // the system makes no process
    LineHealth health_;
    std::unique_ptr<LineProcess> process_;
    std::string trace_;           // its file
    Task task_ = Task::kServing;  // of the process
    bool ending_ = false;         // the process has been asked to end
    bool renewing_ = false;       // ... to be started anew
    bool claimed_ = true;
    std::string why_idle_;
    bool paused_ = false;
    bool held_ = false;
    bool to_call_ = false;
    std::string failed_call_;
    bool leaving_ = false;
    bool stuck_ = false;  // the process was killed, since it made no progress
    bool there_ = true;   // the device
    ClockJumps jumps_;
    std::time_t look_at_ = 0;  // when a look is due
    std::time_t since_ = 0;    // when the process was started, or asked to end
    std::time_t alive_ = 0;    // when it last made progress
    long long traced_ = 0;     // bytes of its trace then
};

}  // namespace host

#endif
