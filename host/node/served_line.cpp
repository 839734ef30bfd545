// A line and its process. Tested by tests/e2e/run_lines_test.cpp.
#include "host/node/served_line.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/lines/line_exit.h"
#include "host/lines/line_folder.h"

namespace host {
namespace {

// No page takes longer (engine/longest_page.h), and so nothing that a line does.
constexpr std::time_t kLongest = 10 * 60;
constexpr std::time_t kLongestQuestion = 60;
constexpr std::time_t kLongestCall = 4 * 60;
constexpr std::time_t kLongestWithoutDevice = 5;  // nothing on the line can be finished then
constexpr int kNoLineResult = 5;                  // of the library

// So long it isn't looked at where nothing happens and nothing is due.
constexpr std::time_t kLongestUnseen = 60;

}  // namespace

ServedLine::ServedLine(SiteLine line, std::string shown, const LineCommand& command,
                       OperatorLog& log)
    : line_(std::move(line)),
      name_("line \"" + std::move(shown) + "\""),
      command_(command),
      log_(log),
      refused_(log, name_ + ": its process could be made again") {}

bool ServedLine::HasNews(std::time_t now) const {
    return HasCome(look_at_, now, kLongestUnseen) || (to_call_ && !process_) ||
           IsDeviceThere() != there_ || (process_ && process_->HasEnded());
}

void ServedLine::Look(std::time_t now) {
    look_at_ = now;  // where the look fails
    LookAtClock(now);
    LookAtDevice(now);
    if (process_) {
        if (const std::optional<int> status = process_->Ended()) {
            Ended(*status, now);
        } else {
            Watch(now);
        }
    }
    if (!process_ && !held_ && !leaving_ && claimed_) {
        StartOrSay(now);
    }
    look_at_ = NextLook(now);
}

// The process is as old as before. What its library is to send later was to be due by the clock as
// it was: one that starts takes all of it for due.
void ServedLine::LookAtClock(std::time_t now) {
    const std::time_t jump = jumps_.Look(now);
    since_ += jump;
    alive_ += jump;
    if (jump < -kLongestUnseen && IsServed()) {
        renewing_ = true;
    }
}

std::time_t ServedLine::NextLook(std::time_t now) const {
    std::time_t due = now + kLongestUnseen;
    if (process_ && (task_ != Task::kServing || ending_)) {
        due = LastMoment() + 1;
    } else if (health_.IsSick() && there_ && MayBeServed()) {
        due = health_.AskAt();
    }
    return std::min(due, now + kLongestUnseen);
}

void ServedLine::StartOrSay(std::time_t now) {
    try {
        StartOrAsk(now);
        refused_.Is("", now);
    } catch (const StoreError& error) {
        CannotStart(error.what(), now);
    } catch (const std::system_error& error) {
        refused_.Is(name_ + ": " + error.what(), now);
    }
}

void ServedLine::StartOrAsk(std::time_t now) {
    if (IsWanted()) {
        Start(now);
    } else if (to_call_) {
        StartCalling(now);
    } else if (MayBeServed() && there_ && health_.IsToBeAsked(now)) {
        StartAsking(now);
    }
}

// Its folder can't be used. The other lines notice nothing.
void ServedLine::CannotStart(const std::string& why, std::time_t now) {
    failed_call_ = why;
    const bool was_sick = health_.IsSick();
    was_sick ? health_.DidNotAnswer(why, now) : health_.FallSick(why, now);
    TellHealth(was_sick);
}

// Its path is looked at; nothing is opened.
bool ServedLine::IsDeviceThere() const {
    return access(line_.device.c_str(), F_OK) == 0;
}

// What has come back is asked before it is served again.
void ServedLine::LookAtDevice(std::time_t now) {
    const bool was_sick = health_.IsSick();
    const bool was_there = std::exchange(there_, IsDeviceThere());
    if (line_.device.empty()) {
        health_.FallSick("the site names no device for it", now);
    } else if (!there_) {
        health_.FallSick("its device is missing", now);
    } else if (!was_there) {
        health_.AskNow(now);
    }
    TellHealth(was_sick);
}

void ServedLine::Watch(std::time_t now) {
    if (MakesProgress()) {
        alive_ = now;
    }
    if (now > LastMoment()) {
        log_.Error(name_ + (there_ ? " makes no progress" : ": its page can't be finished") +
                   "; its process is killed");
        stuck_ = true;
        process_->Kill();
    } else if (!ending_ && task_ == Task::kServing && (!IsWanted() || renewing_ || held_)) {
        End(now);
    }
}

// From then on the process is overdue.
std::time_t ServedLine::LastMoment() const {
    switch (task_) {
        case Task::kAsking:
            return since_ + kLongestQuestion;
        case Task::kCalling:
            return since_ + kLongestCall;
        case Task::kServing:
            break;
    }
    return ending_ ? since_ + (there_ ? kLongest : kLongestWithoutDevice) : alive_ + kLongest;
}

void ServedLine::End(std::time_t now) {
    ending_ = true;
    since_ = now;
    process_->AskToEnd();
}

// It rings with each turn of its loop; while a page of its own keeps it, it only traces.
bool ServedLine::MakesProgress() {
    struct stat trace {};
    const long long traced = stat(trace_.c_str(), &trace) == 0 ? trace.st_size : 0;
    const bool has_traced = std::exchange(traced_, traced) != traced;
    return process_->HasRung() || has_traced;
}

void ServedLine::Ended(int status, std::time_t now) {
    const bool was_sick = health_.IsSick();
    process_.reset();
    if (task_ == Task::kAsking) {
        status == 0 ? health_.Answered(now) : health_.DidNotAnswer(ReasonOf(status), now);
    } else if (task_ == Task::kCalling) {
        Called(status, now);
    } else if (!ending_) {
        log_.Warning(name_ + ": " + ReasonOf(status) + "; it is started anew");
        BlameFor(status, now);
    }
    stuck_ = false;
    ending_ = false;
    TellHealth(was_sick);
}

void ServedLine::BlameFor(int status, std::time_t now) {
    if (WasFenced(status)) {
        return;  // neither modem nor library
    }
    stuck_ || WasStuck(status) ? health_.Stuck(now) : health_.Died(ReasonOf(status), now);
}

std::string ServedLine::WhyNotWanted() const {
    if (health_.IsSick()) {
        return health_.Reason();
    }
    return paused_ ? "it is paused" : why_idle_;
}

// The modem of a sick line that has answered is asked at once, so that the line is soon back.
void ServedLine::Called(int status, std::time_t now) {
    if (status == 0) {
        health_.AskNow(now);
    } else {
        failed_call_ = ReasonOf(status);
    }
}

// A device that couldn't be opened stays taken as long as the library is loaded.
void ServedLine::Sent(const Send& send, std::time_t now) {
    const bool was_sick = health_.IsSick();
    health_.Sent(send, now);
    renewing_ = renewing_ || (send.outcome == TracedPage::Outcome::kNotSent &&
                              send.result == kNoLineResult && IsServed());
    TellHealth(was_sick);
}

void ServedLine::TellHealth(bool was_sick) {
    if (was_sick == health_.IsSick()) {
        return;
    }
    if (was_sick) {
        log_.Info(name_ + " is back");
    } else {
        log_.Error(name_ + " is sick: " + health_.Reason() +
                   ". Its pages go to other lines, if these can have them; its modem is asked from "
                   "time to time");
    }
}

void ServedLine::Start(std::time_t now) {
    Launch(Task::kServing, {}, now);
}

void ServedLine::StartAsking(std::time_t now) {
    std::vector<std::string> question = {"--ask"};
    if (health_.LacksTone()) {
        question.emplace_back("--dial-tone");
    }
    Launch(Task::kAsking, question, now);
}

void ServedLine::StartCalling(std::time_t now) {
    Launch(Task::kCalling, {"--call"}, now);
}

void ServedLine::Launch(Task task, const std::vector<std::string>& options, std::time_t now) {
    task_ = task;
    since_ = now;
    alive_ = now;
    renewing_ = false;
    std::vector<std::string> arguments = command_.program;
    // In one word: a name may begin with a dash.
    arguments.insert(arguments.end(), {"serve-line", "--line=" + line_.name});
    for (const std::vector<std::string>& more : {command_.options, options}) {
        arguments.insert(arguments.end(), more.begin(), more.end());
    }
    const std::string folder = MakeLineFolder(command_.database, line_.name);
    trace_ = folder + "/" + kTraceFile;
    process_ = std::make_unique<LineProcess>(std::move(arguments), folder, command_.inherited);
}

void ServedLine::Return(SiteLine line) {
    renewing_ = renewing_ || line.settings != line_.settings;
    line_ = std::move(line);
    leaving_ = false;
}

void ServedLine::WasSick(const std::string& why, std::time_t since) {
    health_.FallSick(why, since);  // to be asked since then
    log_.Warning(name_ + " has been sick: " + why + "; it is asked now");
}

void ServedLine::Ring() const {
    if (process_) {
        process_->Ring();
    }
}

}  // namespace host
