// Where the simulation's own descriptors lie: above those that a program usually has, so that its
// own keep their numbers.
#ifndef PAGERFWD_SIM_WORLD_OWN_DESCRIPTORS_H
#define PAGERFWD_SIM_WORLD_OWN_DESCRIPTORS_H

namespace pagersim {

constexpr int kFirstOfOurs = 700;

}  // namespace pagersim

#endif
