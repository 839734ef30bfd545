// What the processes of a shared world say to its server, and what it answers. One message is one
// packet on a Unix socket; the fields have fixed widths, so that programs of 32 and of 64 bits can
// be in one world.
//
// A process has the turn or waits for it; only one of a world has it. While it has it, it asks and
// is answered at once. kRest gives the turn up: the answer is the next turn. Up to the horizon a
// process needn't ask for every step of time.
#ifndef PAGERFWD_SIM_WORLD_MESSAGES_H
#define PAGERFWD_SIM_WORLD_MESSAGES_H

#include <termios.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "sim/world/line_set.h"

namespace pagersim {

constexpr uint32_t kMostPayload = 4096;

// Names the server's socket to the programs of a world.
inline constexpr const char* kWorldVariable = "PAGERSIM_WORLD";

enum class Question : uint32_t {
    kJoin,      // a command joins a world: the first of all; payload: its name. No answer
    kStart,     // a program begins, or has replaced another; payload: its terminals, as uint32_t.
                // Answer: payload, a Terminal for each; as `connection` its number, and with it
                // the world's set of watched descriptors and its ClockPage, as descriptors
    kFork,      // the connection that this process has just made is for a child
    kChild,     // the pid of that child, if it is a program of its own. No answer
    kRest,      // all threads wait: the earliest deadline, RestFlags, and the lines with whose
                // input one goes on
    kWant,      // one of them could go on. No answer of its own
    kOutside,   // number: how many of its threads ask servers outside. No answer
    kSignal,    // this process has sent a signal. Answer: it has done what it does
    kOpen,      // answer: the connection; payload: the terminal's path; or an error
    kReopen,    // a descriptor of the connection more
    kClose,     // ... and less
    kTake,      // `size` bytes of input at most; answer: payload
    kDrop,      // the input is dropped
    kWrite,     // payload: the bytes
    kSettings,  // answer: payload, PackedSettings
    kSet,       // payload: PackedSettings
};

enum RestFlags : uint32_t {
    kWatches = 1,        // it waits for other processes' ends and signals, and has to look then
    kWatchesFiles = 16,  // ... for locks on files, and has to look when one has done anything
    kTouched = 2,        // it has done something itself
    kAbsent = 4,         // its threads are all in calls of the system: it can't be given the turn
    kOutside = 8,        // one of its threads waits for something outside the world
};

enum Others : uint32_t {
    kCompany = 1,    // there are other processes in the world
    kOnlookers = 2,  // ... and some that what this one does may concern
};

struct alignas(8) Request {
    Question ask;
    int32_t com;
    uint32_t connection;
    uint32_t number;  // pid, flags, size
    alignas(8) int64_t deadline;
    alignas(8) LineSet lines;
};

enum class Why : uint32_t {
    kAnswer,  // to a question, or the turn: time has come, or input
    kLook,    // the turn: another process has done something
    kTell,    // the turn: say on standard error who waits for what
};

struct alignas(8) LineState {
    alignas(8) int64_t latest_input;
    uint32_t connection;  // 0: none
    uint32_t readable;
    uint32_t settings;  // how often it has been set
    uint32_t there;     // 0: no such device, now
};

struct alignas(8) Reply {
    alignas(8) int64_t now;
    alignas(8) int64_t wall_at_start;
    alignas(8) int64_t step;
    alignas(8) int64_t horizon;  // before that nothing happens but what this process does
    Why why;
    int32_t error;
    uint32_t connection;
    uint32_t others;           // see Others
    alignas(8) LineSet input;  // lines with new input since the answer before
    std::array<LineState, kLines> lines;
};

struct Terminal {
    int32_t com;  // 0: no line
    uint32_t connection;
};

struct PackedSettings {
    std::array<uint32_t, 4> flags;  // input, output, control, local
    std::array<uint32_t, 2> speed;  // in, out
    std::array<uint8_t, NCCS> characters;
};

static_assert(sizeof(Request) == 32);
static_assert(sizeof(Reply) == 56 + 24 * kLines);
static_assert(sizeof(PackedSettings) == 24 + NCCS);

inline PackedSettings Packed(const termios& from) {
    PackedSettings to{{from.c_iflag, from.c_oflag, from.c_cflag, from.c_lflag},
                      {cfgetispeed(&from), cfgetospeed(&from)},
                      {}};
    for (std::size_t i = 0; i < to.characters.size(); ++i) {
        to.characters[i] = from.c_cc[i];
    }
    return to;
}

inline termios Unpacked(const PackedSettings& from) {
    termios to{};
    to.c_iflag = from.flags[0];
    to.c_oflag = from.flags[1];
    to.c_cflag = from.flags[2];
    to.c_lflag = from.flags[3];
    cfsetispeed(&to, from.speed[0]);
    cfsetospeed(&to, from.speed[1]);
    for (std::size_t i = 0; i < from.characters.size(); ++i) {
        to.c_cc[i] = from.characters[i];
    }
    return to;
}

}  // namespace pagersim

#endif
