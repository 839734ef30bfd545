// Which device the library gets when it opens a serial port. None of the machine's own is ever
// opened: without a stand-in, a port does not exist.
//
// A program that uses it is linked with -Wl,--wrap=open.
#ifndef PAGERFWD_BENCH_DEVICE_H
#define PAGERFWD_BENCH_DEVICE_H

#include <string>

namespace bench {

// From now on "/dev/ttyS0" is this device. Set before the library is used.
void StandIn(const std::string& device);

}  // namespace bench

#endif
