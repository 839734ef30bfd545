// From the exchange file's entries to what they describe.
#ifndef PAGERFWD_SIM_FILE_BUILD_EXCHANGE_H
#define PAGERFWD_SIM_FILE_BUILD_EXCHANGE_H

#include <ctime>
#include <memory>
#include <string>

#include "sim/file/exchange_file.h"

namespace pagersim {

// A subscriber whose calls reach a centre as the entry says, faults included. `start` is the wall
// clock's instant at which the simulation begins.
Subscriber BuildSubscriber(const CentreEntry& entry, std::time_t start);

// "COM 1".
std::string PortName(int com);

}  // namespace pagersim

#endif
