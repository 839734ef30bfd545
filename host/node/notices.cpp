// The notices' queue. Tested by tests/unit/host/notices_test.cpp.
#include "host/node/notices.h"

#include <unistd.h>

#include <cstdlib>

#include "host/process/clock_jumps.h"

namespace host {
namespace {

constexpr std::time_t kHour = 60 * 60;
constexpr std::time_t kAfterFailure = 60;

std::string KeyOf(const Notice& notice) {
    const char kBetween = '\0';  // no text has it
    return std::string(WordOf(notice.kind)) + kBetween + notice.alarm + kBetween + notice.pager +
           kBetween + notice.line + kBetween + notice.node;
}

// A clock that was set back has not made it recent.
bool IsWithinHour(std::time_t at, std::time_t now) {
    return now >= at && now < at + kHour;
}

}  // namespace

Notices::Notices(NoticeOrigin origin, OperatorLog& log, std::unique_ptr<CommandRunner> runner)
    : origin_(std::move(origin)), log_(log), runner_(std::move(runner)) {}

void Notices::SetCommand(std::vector<std::string> command) {
    if (command != command_) {
        command_ = std::move(command);
        failing_ = false;
        not_before_ = 0;
    }
    if (command_.empty()) {
        subjects_.clear();
        waiting_ = 0;
    }
}

void Notices::Say(const Notice& notice, std::time_t now) {
    if (command_.empty()) {
        return;
    }
    const std::string key = KeyOf(notice);
    if (waiting_ >= kMostWaiting && subjects_.count(key) == 0) {
        ++uncounted_;
        return;
    }
    Subject& subject = subjects_[key];
    if (subject.waiting) {
        Waiting& waiting = *subject.waiting;
        waiting = {notice, now, waiting.held_back + 1, waiting.turn};
    } else {
        subject.waiting = {notice, now, 0, ++turns_};
        ++waiting_;
    }
}

void Notices::Look(std::time_t now) {
    if (running_) {
        const std::optional<std::string> end = runner_->Look(now);
        if (!end) {
            return;
        }
        Ended(*end, now);
    }
    if (now == started_ || !HasCome(not_before_, now, kAfterFailure)) {
        return;
    }
    const auto next = Next(now);
    if (next != subjects_.end()) {
        Start(next, now);
    }
}

bool Notices::MayBeTold(const Subject& subject, std::time_t now) {
    if (!subject.waiting) {
        return false;
    }
    const std::optional<std::time_t>& told = subject.told[subject.waiting->notice.over ? 1 : 0];
    return !told || !IsWithinHour(*told, now);
}

Notices::Subjects::iterator Notices::Next(std::time_t now) {
    auto next = subjects_.end();
    for (auto one = subjects_.begin(); one != subjects_.end(); ++one) {
        if (MayBeTold(one->second, now) &&
            (next == subjects_.end() || one->second.waiting->turn < next->second.waiting->turn)) {
            next = one;
        }
    }
    return next;
}

void Notices::Start(Subjects::iterator subject, std::time_t now) {
    running_ = {subject->first, *std::exchange(subject->second.waiting, std::nullopt)};
    --waiting_;
    started_ = now;
    Waiting& told = running_->second;
    told.held_back += std::exchange(uncounted_, 0);
    const std::string why_not =
        runner_->Start(command_, AsJson(told.notice, origin_, told.at, told.held_back) + "\n", now);
    if (!why_not.empty()) {
        Ended(why_not, now);
    }
}

void Notices::Ended(const std::string& why_not, std::time_t now) {
    if (!command_.empty()) {
        Subject& subject = subjects_[running_->first];
        why_not.empty() ? Told(subject) : Failed(subject, why_not, now);
    }
    running_.reset();
    Forget(now);
}

void Notices::Told(Subject& subject) {
    subject.told[running_->second.notice.over ? 1 : 0] = started_;
    if (std::exchange(failing_, false)) {
        log_.Info("the command of [notify] works again");
    }
}

// What is newer stands for it. It goes behind the others: they may be told all the same.
void Notices::Failed(Subject& subject, const std::string& why, std::time_t now) {
    if (subject.waiting) {
        subject.waiting->held_back += running_->second.held_back + 1;
    } else {
        subject.waiting = running_->second;
        subject.waiting->turn = ++turns_;
        ++waiting_;
    }
    not_before_ = now + kAfterFailure;
    if (!std::exchange(failing_, true)) {
        log_.Error("the command of [notify], " + command_.front() + ": " + why +
                   "; what it was to tell waits until it works: " + running_->second.notice.text);
    }
}

// Subjects of which an hour holds nothing back any more.
void Notices::Forget(std::time_t now) {
    for (auto one = subjects_.begin(); one != subjects_.end();) {
        const Subject& subject = one->second;
        const bool recent = (subject.told[0] && IsWithinHour(*subject.told[0], now)) ||
                            (subject.told[1] && IsWithinHour(*subject.told[1], now));
        one = subject.waiting || recent ? std::next(one) : subjects_.erase(one);
    }
}

bool Notices::IsBusy(std::time_t now) const {
    if (running_) {
        return true;
    }
    for (const auto& [key, subject] : subjects_) {
        if (MayBeTold(subject, now)) {
            return HasCome(not_before_, now, kAfterFailure);
        }
    }
    return false;
}

void Notices::Finish() {
    for (std::time_t left = BackgroundCommand::kLimit; left > 0; --left) {
        Look(std::time(nullptr));
        if (!IsBusy(std::time(nullptr))) {
            return;
        }
        sleep(1);
    }
}

}  // namespace host
