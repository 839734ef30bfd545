// By the command line: "... run ..." and "... serve-line --line=COM 2 ...".
#include "tests/proof/process_role.h"

#include <fstream>
#include <iterator>
#include <string>

namespace proof {

ProcessRole FindRole() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string words{std::istreambuf_iterator<char>(file), {}};
    const auto has = [&](const std::string& word) {
        return words.find('\0' + word + '\0') != std::string::npos;
    };
    if (has("run")) {
        return {kNodeRole};
    }
    for (size_t line = 1; line < kRoles; ++line) {
        if (has("serve-line") && has("--line=COM " + std::to_string(line))) {
            return {line, has("--ask")};
        }
    }
    return {};
}

}  // namespace proof
