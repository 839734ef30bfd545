// The time of a trace, whose lines have only a time of day.
#ifndef PAGERFWD_HOST_TRACE_TRACE_CLOCK_H
#define PAGERFWD_HOST_TRACE_TRACE_CLOCK_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

class TraceClock {
 public:
    // The time of day of the next entry. A step back by more than half a day is midnight; by less,
    // somebody has set the clock, and no time has passed.
    void Advance(int secondOfDay);

    // Seconds since the first entry; days that passed without a line are not in it.
    int64_t Elapsed() const { return elapsed_; }

    // What the day at hand is, where a line says it: "01/08/01", as the library writes it.
    void SetDate(std::string_view date);

    // Since 1970; none until a line has said it.
    std::optional<int64_t> Day() const { return day_; }
    int SecondOfDay() const { return second_ < 0 ? 0 : second_; }

 private:
    int second_ = -1;  // of the day; none yet
    int64_t elapsed_ = 0;
    std::optional<int64_t> day_;
};

}  // namespace host

#endif
