// A far end that follows a test's script. Tested by tests/unit/sim/scripted_line_test.cpp.
#include "sim/script.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace pagersim {
namespace {

// Bytes as a verdict shows them: <0d> for what can't be printed.
std::string Shown(std::string_view bytes) {
    if (bytes.empty()) {
        return "nothing";
    }
    std::string shown;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (value >= 0x20 && value < 0x7f && byte != '<') {
            shown += byte;
            continue;
        }
        char hexadecimal[8];
        std::snprintf(hexadecimal, sizeof hexadecimal, "<%02x>", value);
        shown += hexadecimal;
    }
    return shown;
}

}  // namespace

void Script::AddHears(std::string_view bytes) {
    Add({Kind::kHears, std::string(bytes), bytes.size(), {}});
}

void Script::AddHearsAnything(size_t count) {
    Add({Kind::kHearsAnything, "", count, {}});
}

void Script::AddSays(std::string_view bytes, Milliseconds after) {
    Add({Kind::kSays, std::string(bytes), 0, after});
}

void Script::AddVanishes(Milliseconds after) {
    Add({Kind::kVanishes, "", 0, after});
}

void Script::Add(Step step) {
    steps_.push_back(std::move(step));
    Proceed();
}

void Script::Opened(Wire& wire) {
    wire_ = &wire;
    gone_ = false;
    Proceed();
}

void Script::Heard(std::string_view bytes) {
    all_heard_ += bytes;
    while (!bytes.empty() && !failed_) {
        const size_t fitting = Match(bytes);
        if (fitting == 0) {
            Fail(bytes);
            return;
        }
        heard_ += bytes.substr(0, fitting);
        bytes.remove_prefix(fitting);
        if (heard_.size() == steps_[current_].count) {
            Advance();
            Proceed();
        }
    }
    // What follows a mistake helps to understand it.
    if (failed_ && !IsAtEnd() && heard_.size() < steps_[current_].count) {
        heard_ += bytes.substr(0, steps_[current_].count - heard_.size());
    }
}

// How many of these bytes the current step takes: as far as they go on as expected.
size_t Script::Match(std::string_view bytes) const {
    if (IsAtEnd()) {
        return 0;
    }
    const Step& step = steps_[current_];
    const size_t room = std::min(bytes.size(), step.count - heard_.size());
    switch (step.kind) {
        case Kind::kHears: {
            const auto expected = step.bytes.begin() + static_cast<std::ptrdiff_t>(heard_.size());
            const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(room);
            return static_cast<size_t>(std::mismatch(bytes.begin(), end, expected).first -
                                       bytes.begin());
        }
        case Kind::kHearsAnything:
            return room;
        case Kind::kSays:
        case Kind::kVanishes:
            return 0;
    }
    return 0;
}

void Script::Fail(std::string_view heard) {
    failed_ = true;
    heard_ += heard;
}

void Script::Advance() {
    ++current_;
    heard_.clear();
    planned_ = false;
}

// Plays the steps that are the far end's own, as far as their time has come.
void Script::Proceed() {
    while (!failed_ && !IsAtEnd() && !planned_ && wire_ != nullptr && !gone_) {
        const Step& step = steps_[current_];
        if (step.kind != Kind::kSays && step.kind != Kind::kVanishes) {
            return;
        }
        if (step.after > Milliseconds{0}) {
            planned_ = true;
            wire_->At(step.after, [this] {
                Play();
                Proceed();
            });
            return;
        }
        Play();
    }
}

void Script::Play() {
    if (failed_) {
        return;
    }
    const Step step = steps_[current_];
    Advance();
    if (step.kind == Kind::kSays) {
        wire_->Send(step.bytes);
    } else {
        gone_ = true;
        wire_->Vanish();
    }
}

std::string Script::Verdict() const {
    if (IsAtEnd()) {
        return failed_ ? "after the last step: heard " + Shown(heard_) : "";
    }
    const std::string expectation =
        "step " + std::to_string(current_ + 1) + ": expected " + Expectation();
    const Kind kind = steps_[current_].kind;
    if (!failed_ && (kind == Kind::kSays || kind == Kind::kVanishes)) {
        return expectation + ", not done yet";
    }
    return expectation + ", heard " + Shown(heard_);
}

std::string Script::Expectation() const {
    const Step& step = steps_[current_];
    switch (step.kind) {
        case Kind::kHears:
            return Shown(step.bytes);
        case Kind::kHearsAnything:
            return std::to_string(step.count) + " bytes";
        case Kind::kSays:
            return "to say " + Shown(step.bytes);
        case Kind::kVanishes:
            return "to vanish";
    }
    return "";
}

}  // namespace pagersim
