// Programs in the place of those that were built: scripts/mutate plants a mistake in one, and lets
// its tests run that; scripts/package lets them run what the packages hold.
#ifndef PAGERFWD_TESTS_SUPPORT_PLANTED_H
#define PAGERFWD_TESTS_SUPPORT_PLANTED_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace test_support {

// The argument of a command, with the planted programs in the place of those that lie beside the
// test.
inline std::string WithPlanted(std::string argument) {
    const char* const planted = std::getenv("PAGERFWD_PLANTED");
    if (planted == nullptr) {
        return argument;
    }
    const std::string built =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "/";
    for (size_t at = 0; (at = argument.find(built, at)) != std::string::npos; ++at) {
        const size_t begin = at + built.size();
        const size_t end = argument.find_first_of(" '\";", begin);
        const std::string name =
            argument.substr(begin, end == std::string::npos ? end : end - begin);
        const std::string other = std::string(planted) + "/" + name;
        if (!name.empty() && access(other.c_str(), X_OK) == 0) {
            argument.replace(at, built.size() + name.size(), other);
        }
    }
    return argument;
}

}  // namespace test_support

#endif
