// The heartbeat. Tested by tests/unit/host/heartbeat_test.cpp.
#include "host/node/heartbeat.h"

#include <optional>
#include <utility>

namespace host {
namespace {

constexpr std::time_t kBetweenBeats = 60;

std::string KeyOf(const Amiss& amiss) {
    // By its first words: the figures behind them grow.
    return amiss.alarm + '\0' + amiss.pager + '\0' + amiss.what.substr(0, amiss.what.find(','));
}

std::string Subject(const Amiss& amiss) {
    return amiss.pager.empty() ? "alarm " + amiss.alarm
                               : "page of alarm " + amiss.alarm + " to \"" + amiss.pager + "\"";
}

}  // namespace

SiteHeartbeat::SiteHeartbeat(Encoding encoding, Notices& notices, OperatorLog& log,
                             std::unique_ptr<CommandRunner> runner)
    : encoding_(encoding),
      notices_(notices),
      log_(log),
      runner_(std::move(runner)),
      pace_(kBetweenBeats) {}

void SiteHeartbeat::Look(Connection& connection, std::time_t now) {
    LookAtCommand(now);
    if (!pace_.Take(now)) {
        return;
    }
    pace_.Want();
    Findings found;
    for (Amiss& amiss : Reckon(connection, encoding_, now)) {
        std::string key = KeyOf(amiss);
        found.emplace(std::move(key), std::move(amiss));
    }
    Compare(found, now);
    before_ = std::move(found);
    if (told_.empty()) {
        Beat(now);
    }
}

// What was there a minute ago, too, is amiss; what was told and is gone has been mended.
void SiteHeartbeat::Compare(const Findings& found, std::time_t now) {
    for (auto one = told_.begin(); one != told_.end();) {
        if (found.count(one->first) == 0) {
            Tell(one->second, true, now);
            one = told_.erase(one);
        } else {
            ++one;
        }
    }
    for (const auto& [key, amiss] : found) {
        if (before_.count(key) != 0 && told_.emplace(key, amiss).second) {
            Tell(amiss, false, now);
        }
    }
}

void SiteHeartbeat::Tell(const Amiss& amiss, bool over, std::time_t now) {
    Notice notice;
    notice.kind = NoticeKind::kNotAsItShouldBe;
    notice.over = over;
    notice.alarm = amiss.alarm;
    notice.pager = amiss.pager;
    notice.text = Subject(amiss) + (over ? ": as it should be again" : ": " + amiss.what);
    over ? log_.Info(notice.text) : log_.Error("not as it should be: " + notice.text);
    notices_.Say(notice, now);
}

void SiteHeartbeat::Beat(std::time_t now) {
    last_beat_ = now;
    if (command_.empty() || running_) {
        return;
    }
    const std::string why_not = runner_->Start(command_, "", now);
    running_ = why_not.empty();
    if (!running_) {
        Ended(why_not);
    }
}

void SiteHeartbeat::LookAtCommand(std::time_t now) {
    if (!running_) {
        return;
    }
    if (const std::optional<std::string> end = runner_->Look(now)) {
        running_ = false;
        Ended(*end);
    }
}

void SiteHeartbeat::Ended(const std::string& why_not) {
    const bool failing = !why_not.empty();
    if (std::exchange(failing_, failing) == failing) {
        return;
    }
    failing ? log_.Error("the command of [heartbeat]: " + why_not + "; it is tried every minute")
            : log_.Info("the command of [heartbeat] works again");
}

}  // namespace host
