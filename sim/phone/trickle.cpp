// Paced bytes. Tested by tests/unit/sim/modem_test.cpp and faults_test.cpp.
#include "sim/phone/trickle.h"

#include <algorithm>
#include <utility>

namespace pagersim {

Pace PaceOfLine(unsigned bits_per_second) {
    if (bits_per_second == 0) {
        return {};
    }
    constexpr unsigned kBitsPerByte = 10;
    return {1, std::chrono::microseconds{kBitsPerByte * 1'000'000 / bits_per_second}};
}

Trickle::Trickle(Wire& wire, Pace pace, Sink sink)
    : pace_(pace), sink_(std::move(sink)), timers_(wire) {}

void Trickle::Push(std::string_view bytes) {
    waiting_ += bytes;
    Pump();
}

void Trickle::Clear() {
    waiting_.clear();
    timers_.Clear();
    resting_ = false;
}

void Trickle::Finally(std::function<void()> what) {
    finally_ = std::move(what);
    Pump();
}

void Trickle::Pump() {
    while (!resting_ && !waiting_.empty()) {
        SendChunk();
    }
    if (!resting_ && finally_) {
        std::exchange(finally_, nullptr)();
    }
}

void Trickle::SendChunk() {
    const std::size_t size = pace_.chunk == 0 ? waiting_.size() : pace_.chunk;
    const std::string chunk = waiting_.substr(0, size);
    waiting_.erase(0, chunk.size());
    if (pace_.chunk != 0) {
        Rest();
    }
    sink_(chunk);
}

void Trickle::Rest() {
    owed_ += pace_.interval;
    const auto pause = std::chrono::duration_cast<Milliseconds>(owed_);
    if (pause.count() == 0) {
        return;
    }
    owed_ -= pause;
    resting_ = true;
    timers_.After(pause, [this] {
        resting_ = false;
        Pump();
    });
}

}  // namespace pagersim
