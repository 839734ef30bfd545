// The lines of a world: how many there can be, and several of them at once.
#ifndef PAGERFWD_SIM_WORLD_LINE_SET_H
#define PAGERFWD_SIM_WORLD_LINE_SET_H

#include <cstdint>

namespace pagersim {

// COM 1 to COM 64, that is /dev/ttyS0 to /dev/ttyS63.
constexpr int kLines = 64;

// Bit n: COM n+1.
using LineSet = uint64_t;

constexpr LineSet SetOf(int com) {
    return com > 0 ? LineSet{1} << (com - 1) : 0;
}

}  // namespace pagersim

#endif
