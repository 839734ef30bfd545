// Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/programs.h"

#include "sim/runner/command_line.h"
#include "sim/runner/preload.h"
#include "sim/runner/program_file.h"
#include "sim/world/messages.h"

namespace pagersim {
namespace {

std::string CheckedPreload() {
    const auto path = FindPreload();
    if (!path) {
        throw UsageError(
            "libpagersim-preload.so is missing; it belongs beside pagersim or into "
            "../lib, or name it in the environment variable PAGERSIM_PRELOAD");
    }
    return *path;
}

}  // namespace

Environment EnvironmentFor(const std::string& socket, const std::string& links) {
    return {{kPreloads, PreloadList(CheckedPreload(), links)}, {kWorldVariable, socket}};
}

void CheckProgram(const std::string& command, const Environment& environment) {
    const auto path = FindProgram(command);
    if (!path) {
        throw UsageError(command + ": there is no such program");
    }
    const int word_size = WordSizeOf(*path);
    if (Serves(environment.at(kPreloads), word_size)) {
        return;
    }
    const int other = word_size == 32 ? 64 : 32;
    throw UsageError(command + " is " +
                     (word_size == 0 ? "no program that can be simulated"
                                     : "a " + std::to_string(word_size) + "-bit program") +
                     "; this pagersim serves " + std::to_string(other) +
                     "-bit programs. Use the pagersim of the other build");
}

}  // namespace pagersim
