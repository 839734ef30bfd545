// Worlds and their programs, for the soaks of whole sites.
//
// Errors     std::runtime_error.
#ifndef PAGERFWD_TESTS_PROOF_WORLD_RUN_H
#define PAGERFWD_TESTS_PROOF_WORLD_RUN_H

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace proof {

// Which lines and centres a world has, and what the centres received in it.
constexpr const char* kExchangeFile = "exchange.toml";
constexpr const char* kReport = "report.json";

// Where a world leaves its files, the working directory while it lives: in memory, where the system
// has a folder there. Its times are UTC.
class WorldFolder {
 public:
    WorldFolder();

 private:
    std::optional<test_support::TempDir> folder_;
};

// This program as the keeper of a site in a world of its own, "keep HOW-LONG PROGRAM LIBRARY",
// until that ends well; its errors are in the file "log".
void KeepInWorld(const std::string& how_long, const std::filesystem::path& binaries,
                 const std::filesystem::path& libraries);

// Of all such worlds.
double ProcessorSecondsOfChildren();

// Within a world: a program beside the one that starts it.
pid_t StartBeside(const std::vector<std::string>& words);

}  // namespace proof

#endif
