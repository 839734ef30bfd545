// Terminals that are open. Tested by tests/unit/sim/shared_world_test.cpp.
#include "sim/world/open_terminals.h"

#include <dirent.h>
#include <limits.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "sim/world/descriptors.h"

namespace pagersim {
namespace {

constexpr size_t kMost = 100;

std::string TargetOf(const std::string& link) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    return {target.data(), length < 0 ? 0 : static_cast<size_t>(length)};
}

}  // namespace

bool IsTerminalName(const char* path, uint32_t& number) {
    return std::sscanf(path, "/dev/pts/%u", &number) == 1;
}

std::vector<OpenTerminal> OpenTerminals() {
    const std::string folder = "/proc/self/fd";
    const std::unique_ptr<DIR, int (*)(DIR*)> list(opendir(folder.c_str()), closedir);
    std::vector<OpenTerminal> found;
    while (list != nullptr && found.size() < kMost) {
        const dirent* const entry = readdir(list.get());
        if (entry == nullptr) {
            break;
        }
        uint32_t number = 0;
        const int fd = std::atoi(entry->d_name);
        if (fd < kDescriptorLimit &&
            IsTerminalName(TargetOf(folder + "/" + entry->d_name).c_str(), number)) {
            found.push_back({fd, number});
        }
    }
    return found;
}

}  // namespace pagersim
