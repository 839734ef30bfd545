// What happens when this library is loaded.
#include <cstdlib>

#include "sim/world/world.h"

namespace pagersim {
namespace {

[[gnu::constructor]] void Load() {
    RegisterMainThread();
    if (const char* const server = std::getenv(kWorldVariable)) {
        TheWorld().Join(server);
    }
}

[[gnu::destructor]] void Unload() {
    TheWorld().Leave();
}

}  // namespace
}  // namespace pagersim
