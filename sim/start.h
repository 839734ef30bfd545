// How a simulation starts around a program that knows nothing of it: when the library is preloaded
// and the environment variable PAGERSIM_EXCHANGE names an exchange file.
#ifndef PAGERFWD_SIM_START_H
#define PAGERFWD_SIM_START_H

namespace pagersim {

// Puts the lines of the exchange on the world's ports and starts its clock. Called once, before the
// program's main and before it has a second thread. Weak: a build without exchanges has none.
[[gnu::weak]] void StartExchangeFromEnvironment();

}  // namespace pagersim

#endif
