// A far end that answers each thing it hears with pieces of the fuzzer's input, at any time, and
// may vanish; silent when the input is used up.
//
// An answer: how many pieces (0 to 3), and for each the number of a delay and a text. Or 4: the
// device vanishes. The first answer comes unasked, when the line is opened.
#ifndef PAGERFWD_TESTS_FUZZ_ANY_FAR_END_H
#define PAGERFWD_TESTS_FUZZ_ANY_FAR_END_H

#include <chrono>
#include <string>
#include <string_view>

#include "sim/far_end.h"
#include "tests/fuzz/input.h"

namespace fuzz {

class AnyFarEnd : public pagersim::FarEnd {
 public:
    // What it says goes to the end of `said`, which outlives it.
    AnyFarEnd(Input input, std::string& said) : input_(input), said_(said) {}

    void Opened(pagersim::Wire& wire) override {
        wire_ = &wire;
        Answer();
    }
    void Heard(std::string_view) override { Answer(); }
    void SettingsChanged(const termios&) override {}
    void Closed() override {}

 private:
    void Answer() {
        using namespace std::chrono_literals;
        static constexpr pagersim::Milliseconds kDelays[] = {0ms,    0ms, 1ms,     100ms,
                                                             1000ms, 5s,  29990ms, 60s};
        const int pieces = input_.Upto(4);
        if (pieces == 4) {
            wire_->Vanish();
            return;
        }
        for (int i = 0; i < pieces; ++i) {
            const pagersim::Milliseconds after = kDelays[input_.Upto(7)];
            wire_->At(after, [this, text = input_.Text()] {
                said_ += text;
                wire_->Send(text);
            });
        }
    }

    Input input_;
    std::string& said_;
    pagersim::Wire* wire_ = nullptr;
};

}  // namespace fuzz

#endif
