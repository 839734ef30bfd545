// The folder that is a world's name: its socket, and what programs are given that join it.
#ifndef PAGERFWD_SIM_RUNNER_WORLD_FOLDER_H
#define PAGERFWD_SIM_RUNNER_WORLD_FOLDER_H

#include <string>

#include "sim/descriptor.h"
#include "sim/runner/processes.h"

namespace pagersim {

// Nobody but its user can reach what is in it. One that a world has left behind which was killed is
// taken over; anything else that is in the way stays as it is.
//
// Errors     The constructor throws UsageError.
class WorldFolder {
 public:
    explicit WorldFolder(const std::string& path);
    ~WorldFolder();
    WorldFolder(const WorldFolder&) = delete;
    WorldFolder& operator=(const WorldFolder&) = delete;

    std::string Socket() const;
    std::string Links() const;

    // From now on commands find here what they need.
    void Publish(const Environment& environment) const;

 private:
    void Clear() const;

    const std::string path_;
    Descriptor lock_;
};

// A connection to the world of that name, and the environment for programs in it. Throws UsageError
// when there is none, or it is another user's.
struct FoundWorld {
    Descriptor connection;
    Environment environment;
};
FoundWorld FindWorld(const std::string& path);

}  // namespace pagersim

#endif
