// A far end that follows a test's script.
#ifndef PAGERFWD_SIM_SCRIPT_H
#define PAGERFWD_SIM_SCRIPT_H

#include <string>
#include <string_view>
#include <vector>

#include "sim/far_end.h"

namespace pagersim {

// See ScriptedLine in testing.h.
//
// Threads    Every operation requires the world's lock.
class Script final : public FarEnd {
 public:
    void AddHears(std::string_view bytes);
    void AddHearsAnything(size_t count);
    void AddSays(std::string_view bytes, Milliseconds after);
    void AddVanishes(Milliseconds after);

    std::string Verdict() const;
    const std::string& AllHeard() const { return all_heard_; }

    void Opened(Wire& wire) override;
    void Heard(std::string_view bytes) override;
    void SettingsChanged(const termios&) override {}
    void Closed() override {}

 private:
    enum class Kind { kHears, kHearsAnything, kSays, kVanishes };
    struct Step {
        Kind kind;
        std::string bytes;
        size_t count;  // to be heard
        Milliseconds after;
    };

    void Add(Step step);
    bool IsAtEnd() const { return current_ == steps_.size(); }
    void Advance();
    void Proceed();
    void Play();
    size_t Match(std::string_view bytes) const;
    void Fail(std::string_view heard);
    std::string Expectation() const;

    Wire* wire_ = nullptr;  // null until the first opening
    std::vector<Step> steps_;
    size_t current_ = 0;    // steps_[current_] is being played
    std::string heard_;     // in the current step, or after the last
    bool planned_ = false;  // the current step has its time
    bool gone_ = false;     // vanished and not opened since
    bool failed_ = false;
    std::string all_heard_;
};

}  // namespace pagersim

#endif
