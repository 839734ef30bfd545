// Failures of the serial calls that no line can bring about, for the dialogue tests: the calls are
// replaced at the modem handler's border, and pass through unless a test says otherwise.
#ifndef PAGERFWD_TESTS_DIALOGUE_FAULTS_H
#define PAGERFWD_TESTS_DIALOGUE_FAULTS_H

#include <cstddef>

#include "linux/win_types.h"

namespace faults {

// The nth write from now on fails, without sending anything. 1 is the next.
void FailWrite(int nth);

// Whether the write that failed was followed at once by a look at the line's error state.
bool ErrorStateWasAskedFor();

// GetLastError answers this code.
void SetLastError(int code);

// GetCommMask fails this often, from the next on.
void FailCommMask(int times);

// The modem strings of the next port that has none can't be allocated.
void FailNextModemSet();

// No block of memory so large, or larger, can be had by the program.
void FailAllocationsFrom(size_t size);

// The control block that a line was set with last.
DCB LatestControlBlock();

// Everything passes through again.
void Reset();

}  // namespace faults

#endif
