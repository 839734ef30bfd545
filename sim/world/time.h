// Virtual time: microseconds since the simulation began.
#ifndef PAGERFWD_SIM_WORLD_TIME_H
#define PAGERFWD_SIM_WORLD_TIME_H

#include <chrono>

namespace pagersim {

using Micros = std::chrono::microseconds;

constexpr Micros kNever = Micros::max();

}  // namespace pagersim

#endif
