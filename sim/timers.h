// Delayed calls that die with their owner: what is asked of a Wire can't be taken back.
#ifndef PAGERFWD_SIM_TIMERS_H
#define PAGERFWD_SIM_TIMERS_H

#include <functional>
#include <memory>
#include <utility>

#include "sim/far_end.h"

namespace pagersim {

// Calls that are still due when the Timers is cleared or destroyed are never made.
//
// Threads    As in far_end.h.
class Timers {
 public:
    explicit Timers(Wire& wire) : wire_(wire) {}

    void After(Milliseconds delay, std::function<void()> what) {
        wire_.At(delay, [alive = std::weak_ptr<char>(alive_), what = std::move(what)] {
            if (!alive.expired()) {
                what();
            }
        });
    }

    void Clear() { alive_ = std::make_shared<char>(); }

 private:
    Wire& wire_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace pagersim

#endif
