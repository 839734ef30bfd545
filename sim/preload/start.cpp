// What happens when this library is loaded.
#include "sim/start.h"

#include <cstdlib>

#include "sim/world/world.h"

namespace pagersim {
namespace {

[[gnu::constructor]] void Load() {
    RegisterMainThread();
    if (StartExchangeFromEnvironment != nullptr && std::getenv("PAGERSIM_EXCHANGE") != nullptr) {
        StartExchangeFromEnvironment();
    }
}

}  // namespace
}  // namespace pagersim
