// Terminals that are open. Tested by tests/unit/sim/shared_world_test.cpp.
#include "sim/world/open_terminals.h"

#include <dirent.h>
#include <limits.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string>

#include "sim/world/descriptors.h"
#include "sim/world/number.h"

namespace pagersim {
namespace {

constexpr size_t kMost = 100;

std::string TargetOf(const std::string& link) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    return {target.data(), length < 0 ? 0 : static_cast<size_t>(length)};
}

}  // namespace

std::optional<uint32_t> TerminalNumber(std::string_view path) {
    constexpr std::string_view kFolder = "/dev/pts/";
    const bool is_there = path.substr(0, kFolder.size()) == kFolder;
    return is_there ? NumberIn(path.substr(kFolder.size())) : std::nullopt;
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
        const std::optional<int> fd = NumberIn(entry->d_name);
        const auto number = TerminalNumber(TargetOf(folder + "/" + entry->d_name));
        if (fd && *fd < kDescriptorLimit && number) {
            found.push_back({*fd, *number});
        }
    }
    return found;
}

}  // namespace pagersim
