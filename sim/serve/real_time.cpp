// The machine's clock for far ends. Tested by tests/unit/sim/serve_test.cpp.
#include "sim/serve/real_time.h"

#include <algorithm>
#include <utility>

namespace pagersim {

Milliseconds RealTime::Now() const {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start_);
}

void RealTime::At(Milliseconds after, std::function<void()> what) {
    due_.emplace(Now() + after, std::move(what));
}

void RealTime::RunDue() {
    while (!due_.empty() && due_.begin()->first <= Now()) {
        const auto what = std::move(due_.begin()->second);
        due_.erase(due_.begin());
        what();
    }
}

Milliseconds RealTime::UntilNext(Milliseconds most) const {
    if (due_.empty()) {
        return most;
    }
    return std::clamp(due_.begin()->first - Now(), Milliseconds{0}, most);
}

}  // namespace pagersim
