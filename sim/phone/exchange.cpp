// The exchange. Tested by tests/unit/sim/dial_string_test.cpp.
#include "sim/phone/exchange.h"

#include <algorithm>
#include <utility>

namespace pagersim {
namespace {

std::string Joined(const std::vector<std::string>& segments, std::size_t from, std::size_t to) {
    std::string digits;
    for (std::size_t i = from; i < to; ++i) {
        digits += segments[i];
    }
    return digits;
}

}  // namespace

void Exchange::Add(Subscriber subscriber) {
    subscribers_.push_back(std::move(subscriber));
}

std::optional<Exchange::Connection> Exchange::Find(const DialString& dial) {
    const auto& segments = dial.segments;
    for (std::size_t first = 0; first < std::min<std::size_t>(segments.size(), 2); ++first) {
        for (std::size_t end = segments.size(); end > first; --end) {
            const std::string number = Joined(segments, first, end);
            if (Subscriber* found = WithNumber(number)) {
                return Connection{found, number, Joined(segments, end, segments.size())};
            }
        }
    }
    return std::nullopt;
}

Fate Exchange::PlaceCall(Subscriber& subscriber) {
    if (subscriber.busy_calls > 0) {
        --subscriber.busy_calls;
        return Fate::kBusy;
    }
    return subscriber.fates ? subscriber.fates() : subscriber.fate;
}

Subscriber* Exchange::WithNumber(const std::string& number) {
    for (Subscriber& subscriber : subscribers_) {
        const auto& numbers = subscriber.numbers;
        if (std::find(numbers.begin(), numbers.end(), number) != numbers.end()) {
            return &subscriber;
        }
    }
    return nullptr;
}

}  // namespace pagersim
