// Simulated worlds, each with a site of three lines that a program keeps: made, run side by side,
// and shown to whoever judges them.
#ifndef PAGERFWD_TESTS_PROOF_WORLDS_H
#define PAGERFWD_TESTS_PROOF_WORLDS_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/proof/site_databases.h"

namespace proof::kills {

struct Programs {
    std::string binaries, libraries;

    std::string Binary(const char* name) const { return binaries + "/" + name; }
    std::string Library(const char* name) const { return libraries + "/lib" + name + ".so"; }
};

// The command that keeps a world, which are numbered from 1; in the world's folder.
using KeeperOf = std::function<std::vector<std::string>(int world)>;
// status: of the world's end, as waitpid has it. The folder goes when this returns.
using Ended = std::function<void(int world, const std::filesystem::path& folder, int status)>;

// As many at once as there are processors. A world that hangs is killed after five minutes.
void RunWorlds(const Programs& programs, SiteDatabases& databases, int worlds,
               const KeeperOf& keeper, const Ended& ended);

}  // namespace proof::kills

#endif
