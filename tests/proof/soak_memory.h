// What a process has of the machine, and whether that stays the same.
#ifndef PAGERFWD_TESTS_PROOF_SOAK_MEMORY_H
#define PAGERFWD_TESTS_PROOF_SOAK_MEMORY_H

#include <string>
#include <vector>

namespace proof::soak {

struct Sample {
    int hour = 0;           // since the beginning
    bool engine_up = true;  // false: taken while it was stopped and the database closed
    long pages_sent = 0;
    // But for what is kept by rule, which grows with the pages that were sent:
    long bytes_in_use = 0;  // of the heap
    long resident_pages = 0;
    int descriptors = 0;
};

// A process's, by its number; without a heap, which only it itself knows. Zero: there is none.
Sample TakeSampleOf(const std::string& process, int hour);

// What a process that is up has more of on the last day than on the one that begins with this hour.
std::vector<std::string> GrowthSince(int hour, const std::vector<Sample>& up,
                                     const std::string& name = {});

// Now. `kept_bytes` is what is kept by rule, such as the records of closed ports and what SQLite
// keeps of a database that grows.
Sample TakeSample(int hour, bool engine_up, long pages_sent, long kept_bytes);

// What has grown from the first hour to the last, in words; empty: nothing.
//   - while the engine is down: the heap by less than half a smallest block a page, descriptors not
//     at all;
//   - while it is up: resident memory and descriptors of the last day no more than those of the
//     first, but for what the system's own allotting varies by.
std::vector<std::string> Growth(const std::vector<Sample>& samples);

}  // namespace proof::soak

#endif
