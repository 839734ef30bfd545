// How the process of a line ends, for the node that has started it.
#ifndef PAGERFWD_HOST_LINES_LINE_EXIT_H
#define PAGERFWD_HOST_LINES_LINE_EXIT_H

namespace host {

enum class LineExit : int {
    kDone = 0,        // as it was asked to; or, when it was to ask the modem: it answers
    kCannot = 3,      // the database, the library or a file can't be used
    kTaken = 10,      // the device is locked by another
    kStuck = 11,      // the library doesn't go on
    kNoDevice = 12,   // when it was to ask the modem: the device can't be opened
    kSilent = 13,     // ... the modem doesn't answer
    kNoTone = 14,     // ... it hears no dial tone
    kLeaseOver = 15,  // its node's lease was over: others may take its pages
    kNotOurs = 16,    // they have
};

// In words: "its device can't be opened". status: of waitpid.
const char* ReasonOf(int status);
bool WasStuck(int status);
// Whether it ended since its node had no lease any more: neither modem nor library are to blame.
bool WasFenced(int status);

}  // namespace host

#endif
