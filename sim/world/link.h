// A process's connection to the world that it shares with others.
#ifndef PAGERFWD_SIM_WORLD_LINK_H
#define PAGERFWD_SIM_WORLD_LINK_H

#include <array>
#include <string>
#include <string_view>

#include "sim/world/clock_page.h"
#include "sim/world/messages.h"
#include "sim/world/own_descriptors.h"
#include "sim/world/watched_descriptors.h"

namespace pagersim {

// Order      Questions only with the turn. Rest gives it up; ReceiveTurn brings it back.
// Threads    Every operation requires the world's lock.
// Errors     A process whose world is gone can't go on: it ends at once.
class Link {
 public:
    // The connection that this program has inherited, or a new one. `path` is the server's socket.
    explicit Link(std::string path);
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    bool HasTurn() const { return has_turn_; }
    int Descriptor() const { return socket_; }  // readable when the turn comes

    // Asks and waits for the answer. `payload` receives what comes with it, if given.
    Reply Ask(const Request& request, std::string_view sent = {}, std::string* payload = nullptr);

    // The first question of a program, without the turn: the answer comes with it, and the world's
    // set of watched descriptors.
    Reply Start(std::string_view terminals, std::string* payload);

    void Tell(const Request& request);  // a question that isn't answered
    void Rest(int64_t deadline, uint32_t flags, LineSet lines);
    void Want();  // once for each rest

    // Around a thread's wait for a server outside, which the process has the turn for.
    void BeginAskingOutside() { TellAsking(+1); }
    void EndAskingOutside() { TellAsking(-1); }

    // Where the process has gone on to by itself.
    void SetNow(Micros now) { clock_.Set(now); }

    // Later than that when this process was set aside meanwhile, see WorldServer.
    Micros Now() const { return clock_.Get(); }

    // The turn, if it has come; or, with `wait`, when it comes.
    bool ReceiveTurn(Reply& reply, bool wait);

    // Waits for the turn or a signal that is handled. False: that.
    bool AwaitTurn(Reply& reply);

    // Around the making of a child. The child's end is inherited by a program that takes this one's
    // place or that is started from here; Adopt makes it ours, in a child of fork.
    Reply PrepareChild();
    void ForgetChild();       // in the parent, when the child has it
    void Adopt();             // in the child
    void StayInherited();     // whatever the program has set for its descriptors
    bool Owns(int fd) const;  // not the program's to close
    void MoveAway(int fd);    // one of ours, since the program wants that number for itself

    WatchedDescriptors& Watched() { return watched_; }

 private:
    // The world's set of watched descriptors, and its clock.
    using Given = std::array<int, 2>;

    void Send(const Request& request, std::string_view payload);
    void TellAsking(int more);
    ssize_t Receive(Reply& reply, std::string* payload, int flags, Given* given = nullptr);
    int Connect() const;
    int FindInherited() const;

    const std::string path_;
    int socket_ = -1;
    int child_ = -1;
    ClockPage clock_;
    bool has_turn_ = false;
    bool wanted_ = false;
    uint32_t asking_ = 0;
    WatchedDescriptors watched_;
};

// The same descriptor above those that a program usually has, as far as there is room.
int MovedUp(int fd, int least = kFirstOfOurs);

}  // namespace pagersim

#endif
