// How far a reading of a long file has come, on a terminal.
#ifndef PAGERFWD_HOST_CLI_PROGRESS_H
#define PAGERFWD_HOST_CLI_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace host {

// Shows itself on standard error once a second has passed, where that is a terminal and standard
// output is not: there the output shows that something happens. Ends with a clear line.
class Progress {
 public:
    // what: the file, say. whole: how much there is; 0 where that isn't known.
    Progress(std::string what, uint64_t whole);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Add(uint64_t amount);

 private:
    using Clock = std::chrono::steady_clock;

    std::string what_;
    uint64_t whole_;
    uint64_t done_ = 0;
    bool on_terminal_;
    bool shown_ = false;
    Clock::time_point next_;
};

}  // namespace host

#endif
