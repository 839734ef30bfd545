// A line's health. Tested by tests/unit/host/line_health_test.cpp.
#include "host/node/line_health.h"

#include <algorithm>
#include <string_view>

namespace host {
namespace {

// Results of the library.
constexpr int64_t kNoLine = 5;
constexpr int64_t kDialFailed = 6;
constexpr int64_t kNoModem = 8;

constexpr int kFailuresOfASickLine = 2;
constexpr size_t kDeathsOfASickLine = 3;
constexpr std::time_t kDeathsCountFor = 10 * 60;

constexpr const char* kNoTone = "its modem hears no dial tone";

bool Delivered(const Send& send) {
    return send.outcome == TracedPage::Outcome::kSent ||
           send.outcome == TracedPage::Outcome::kDialled;
}

// It never came to the line, or to its end.
bool SaysNothing(const Send& send) {
    return send.outcome == TracedPage::Outcome::kOutsideHours ||
           send.outcome == TracedPage::Outcome::kCutOff;
}

// As modems write it.
bool SaysNoTone(const std::string& reason) {
    return reason.find("NO DIAL") != std::string::npos;
}

}  // namespace

const char* BlameOf(const Send& send) {
    if (send.outcome != TracedPage::Outcome::kNotSent) {
        return nullptr;
    }
    switch (send.result) {
        case kNoLine:
            return "its device can't be opened";
        case kNoModem:
            return "its modem doesn't answer";
        case kDialFailed:
            return SaysNoTone(send.reason) ? kNoTone : nullptr;
        default:
            return nullptr;
    }
}

void LineHealth::Sent(const Send& send, std::time_t now) {
    const char* const blame = BlameOf(send);
    if (SaysNothing(send)) {
        return;
    }
    if (blame == nullptr) {
        failures_ = 0;
        if (Delivered(send)) {
            pause_ = 0;
        }
        return;
    }
    Fail(blame, now);
}

void LineHealth::Stuck(std::time_t now) {
    Fail("it gets stuck", now);
}

void LineHealth::Fail(const char* why, std::time_t now) {
    if (++failures_ >= kFailuresOfASickLine && !sick_) {
        BecomeSick(why, now);
    }
}

void LineHealth::Died(const std::string& why, std::time_t now) {
    deaths_.push_back(now);
    while (deaths_.front() <= now - kDeathsCountFor) {
        deaths_.pop_front();
    }
    if (deaths_.size() >= kDeathsOfASickLine && !sick_) {
        BecomeSick(why, now);
    }
}

void LineHealth::FallSick(const std::string& why, std::time_t now) {
    if (!sick_) {
        BecomeSick(why, now);
        ask_at_ = now;
    }
}

void LineHealth::BecomeSick(const std::string& why, std::time_t now) {
    sick_ = true;
    lacks_tone_ = why == kNoTone;
    since_ = now;
    reason_ = why;
    pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
    ask_at_ = now + pause_;
}

void LineHealth::Answered(std::time_t now) {
    sick_ = false;
    lacks_tone_ = false;
    since_ = now;
    reason_.clear();
    failures_ = 0;
    deaths_.clear();
}

void LineHealth::DidNotAnswer(const std::string& why, std::time_t now) {
    reason_ = why;
    pause_ = std::min(2 * pause_, kLongestPause);
    ask_at_ = now + pause_;
}

}  // namespace host
