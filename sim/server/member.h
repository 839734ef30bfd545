// A process of a shared world, as the server knows it.
#ifndef PAGERFWD_SIM_SERVER_MEMBER_H
#define PAGERFWD_SIM_SERVER_MEMBER_H

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/descriptor.h"
#include "sim/world/messages.h"
#include "sim/world/time.h"

namespace pagersim {

bool IsReadable(int fd, int timeout_ms = 0);

struct Received {
    Request request;
    pid_t sender;  // as the system has it
    std::string payload;
};

// How many descriptors of which connection of which line.
using Holdings = std::map<std::pair<int32_t, uint32_t>, int>;

struct Member {
    Descriptor socket;
    uint32_t number = 0;
    bool is_audible = true;   // it may have said something, or ended
    std::string name;         // of the command that has joined
    pid_t pid = 0;            // 0: not known yet
    Descriptor process;       // readable when the process has ended
    bool has_spoken = false;  // else its program is none of ours, or hasn't begun yet

    // Runs: it has the turn, or could go on with it. Else it rests as its latest kRest says.
    bool runs = true;
    bool is_owed_turn = false;  // its kRest hasn't been answered
    bool is_aside =
        false;  // it runs and has no turn: others go on beside it, and time stands still
    bool asks_outside = false;  // it waits for a server, and mustn't find another time than it left
    uint64_t since = 0;         // when it last began to run or to rest: a count of such beginnings
    uint64_t looked = 0;        // how many deeds there had been when it last looked
    uint64_t ends_seen = 0;     // ... and ends and signals
    bool is_ready = false;      // a descriptor that it waits for is
    Micros deadline = kNever;
    uint32_t flags = 0;
    LineSet lines = 0;  // it waits for input on

    LineSet input = 0;  // lines with input that it hasn't been told of
    Holdings holdings;
};

// Whether a message is there, or will never be any more.
enum class Voice { kSilent, kSpeaks, kEnded };
Voice ListenTo(const Member& member);

// The next message; none when there isn't any.
std::optional<Received> ReceiveFrom(const Member& member);

// A member that doesn't take it is one whose end hasn't been noticed yet.
// `given`: descriptors that it gets, too.
void SendTo(const Member& member, const Reply& reply, std::string_view payload = {},
            const std::vector<int>& given = {});

// The process's name and number for messages: "1234 (pagerfwd)".
std::string NameOf(const Member& member);

// Sends it a signal, if it still is.
void SignalTo(const Member& member, int signal);

// Whether the process runs without our library, as far as can be seen: it has none of its files.
bool RunsWithoutUs(const Member& member);

// Whether it has made this process, as far as can be seen.
bool IsParentOf(const Member& member, pid_t other);

// Whether all its threads sleep in the system, and no signal is on its way to one.
bool IsAsleep(const Member& member);

}  // namespace pagersim

#endif
