// The calls of write and read on a line, watched, and with what they can answer besides bytes.
//
// For one program at a time: the faults are the process's.
#ifndef PAGERFWD_TESTS_PROOF_LINE_CALLS_H
#define PAGERFWD_TESTS_PROOF_LINE_CALLS_H

#include <string>
#include <vector>

namespace proof {

// A line that blocks: the first so many writes are as ever; then the device takes nothing for so
// many tries, and after that three bytes at a time.
struct Blocking {
    int writes_before = -1;  // negative: never
    int tries = 0;
    int writes = 0;  // that took something
};
extern Blocking blocking;

// Calls on the line that answer EIO, of one kind, though the device is there.
struct InputOutputErrors {
    int first = -1;  // from the so manyth call on, counted from 0; negative: none
    int count = 0;
    int calls = 0;

    bool MeetsOne() {
        const int nth = calls++;
        return first >= 0 && nth >= first && nth - first < count;
    }
};
extern InputOutputErrors read_errors;
extern InputOutputErrors write_errors;

// What was written to the line, and how many reads there had been before.
struct LineWrite {
    std::string bytes;
    int reads_before;
};
extern std::vector<LineWrite> line_writes;

}  // namespace proof

#endif
