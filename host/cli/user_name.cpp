// The user's name. Tested by tests/unit/host/cli_alarm_test.cpp.
#include "host/cli/user_name.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace host {

std::string UserName() {
    const char* const before = std::getenv("SUDO_USER");
    if (geteuid() == 0 && before != nullptr) {
        return before;
    }
    const passwd* const entry = getpwuid(getuid());
    return entry == nullptr ? "user " + std::to_string(getuid()) : entry->pw_name;
}

}  // namespace host
