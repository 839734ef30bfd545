// Stand-ins for the line and the call, with a clock that a test moves by hand.
#ifndef PAGERFWD_TESTS_UNIT_SIM_FAKES_H
#define PAGERFWD_TESTS_UNIT_SIM_FAKES_H

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/centre.h"
#include "sim/far_end.h"
#include "sim/record/event.h"

namespace pagersim {

using namespace std::chrono_literals;

// Calls at times to come.
class FakeClock {
 public:
    Milliseconds Now() const { return now_; }

    void At(Milliseconds after, std::function<void()> what) {
        due_.emplace(now_ + after, std::move(what));
    }

    void Pass(Milliseconds time) {
        const Milliseconds end = now_ + time;
        while (!due_.empty() && due_.begin()->first <= end) {
            now_ = due_.begin()->first;
            const auto what = std::move(due_.begin()->second);
            due_.erase(due_.begin());
            what();
        }
        now_ = end;
    }

 private:
    Milliseconds now_{0};
    std::multimap<Milliseconds, std::function<void()>> due_;
};

// A line whose program is the test.
class FakeWire : public Wire {
 public:
    void Send(std::string_view bytes) override { arrived_ += bytes; }
    void At(Milliseconds after, std::function<void()> what) override {
        clock_.At(after, std::move(what));
    }
    Milliseconds Now() const override { return clock_.Now(); }
    void Vanish() override { vanished_ = true; }

    // What one read would give, now or so much later.
    std::string Read(Milliseconds after = 0ms) {
        clock_.Pass(after);
        return std::exchange(arrived_, {});
    }

    bool Vanished() const { return vanished_; }

 private:
    FakeClock clock_;
    std::string arrived_;
    bool vanished_ = false;
};

// A call whose caller is the test.
class FakeCall : public Call {
 public:
    std::string Number() const override { return "5550103"; }
    Milliseconds Now() const override { return clock_.Now(); }
    void Say(std::string_view bytes, Milliseconds after) override {
        clock_.At(after, [this, text = std::string(bytes)] { said_ += text; });
    }
    void At(Milliseconds after, std::function<void()> what) override {
        clock_.At(after, std::move(what));
    }
    void HangUp() override { hung_up_ = true; }
    void Deliver(ReceivedPage page) override {
        pages_.push_back(page.recipient + ": " + page.text);
    }
    void Note(std::string_view remark) override { notes_.emplace_back(remark); }

    // What the centre has said since the last look, now or so much later.
    std::string Hear(Milliseconds after = 0ms) {
        clock_.Pass(after);
        return std::exchange(said_, {});
    }

    bool HungUp() const { return hung_up_; }
    const std::vector<std::string>& Pages() const { return pages_; }  // "123: HELLO"
    const std::vector<std::string>& Notes() const { return notes_; }

 private:
    FakeClock clock_;
    std::string said_;
    bool hung_up_ = false;
    std::vector<std::string> pages_, notes_;
};

// Keeps what is recorded.
class FakeRecorder : public Recorder {
 public:
    void Record(const Event& event) override { events.push_back(event); }

    // The texts of one kind, in order.
    std::vector<std::string> Texts(EventKind kind) const {
        std::vector<std::string> texts;
        for (const Event& event : events) {
            if (event.kind == kind) {
                texts.push_back(event.text);
            }
        }
        return texts;
    }

    std::vector<Event> events;
};

}  // namespace pagersim

#endif
