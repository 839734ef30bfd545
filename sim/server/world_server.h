// The world that several processes share: its clock, its lines, and whose turn it is.
#ifndef PAGERFWD_SIM_SERVER_WORLD_SERVER_H
#define PAGERFWD_SIM_SERVER_WORLD_SERVER_H

#include <array>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "sim/far_end.h"
#include "sim/server/member.h"
#include "sim/world/clock_page.h"
#include "sim/world/line.h"
#include "sim/world/timeline.h"

namespace pagersim {

// One process has the turn at a time; so what happens in a world doesn't depend on the machine.
// When it rests or ends, the next is, of those that could go on at this instant, the one that has
// rested the longest. Could go on: a new one; one with input on a line it waits for; one that came
// back from the system; and, when a process has done something that others can see (written to a
// pipe, freed a lock, ended), each that waits for such things: it gets the turn to look. When there
// is none, time jumps to the earliest event or deadline.
//
// A process that doesn't take part (its program takes no preload) has no turn: others go on beside
// it, and time stands still. The same holds for one that has the turn and sleeps in a call of the
// system that the simulation doesn't know, once that has lasted a while of real time.
//
// Threads    One.
class WorldServer final : public Timeline {
 public:
    // Time 0 is `wall`. Errors: throws std::system_error when the socket can't be made, or the file
    // that is to show the clock (clock_page.h).
    WorldServer(const std::string& socket, std::time_t wall, Micros step);
    ~WorldServer() override;
    WorldServer(const WorldServer&) = delete;
    WorldServer& operator=(const WorldServer&) = delete;

    Micros Now() const override { return now_; }
    EventQueue& Events() override { return events_; }
    void WakeForInput(LineSet lines) override;

    void AddLine(int com, std::unique_ptr<FarEnd> far_end);
    void RemoveLine(int com) { lines_.at(static_cast<std::size_t>(com - 1)).reset(); }
    Line* LineOn(int com);

    // A connection for a process that is to be started from here, and is in the world from now on:
    // the process inherits it.
    Descriptor Invite();
    // The process that was invited last. `takes_part`: as far as is known.
    void Invited(pid_t pid, bool takes_part);

    // Nothing happens before so many commands have joined. Their order is that of their names.
    void Await(std::size_t commands) { awaited_ = commands; }

    // With the end of this process time stands still, until it is told to go on.
    void StopAtEndOf(pid_t process) { last_ = process; }
    // Also where that end has not been noticed yet.
    void Resume();

    // Goes on as far as it can, and waits a little for what comes next: from a process, or until
    // `other` is readable.
    void Serve(int other);

    bool IsEmpty() const { return members_.empty(); }

    // Nothing can happen in virtual time any more, unless something comes from outside that nobody
    // waits for.
    bool IsIdle() const { return holder_ == nullptr && idle_ && !AnyIsToComeBack(); }

    // The processes that take part.
    std::vector<pid_t> Participants() const;

    void SignalParticipants(int signal) const;

    // As VirtualClock::SetPatience; a glance of 50 ms longer at most.
    void SetPatience(Milliseconds real) { patience_ = real; }

 private:
    struct Choice {
        Member* member;
        Why why;
    };

    // Who is in the world, in membership.cpp.
    Member& Add(Descriptor socket);
    void AcceptAll();
    Member* InvitedBy(pid_t pid);
    void Watch(Member& member, pid_t pid);
    void Bury(Member& member);
    void Drop(const Holdings& holdings);

    void GoOn();
    void RunDueEvents();

    // What they say, in hearing.cpp.
    bool AllHaveJoined();
    static void HearName(Member& member);
    bool HearHolder();
    void AwaitSignals();
    void HearOthers();
    void HearEach();
    void FindAudible();
    void ListenAlso(int fd, uint32_t number);
    void HearSignal();

    // Turns, in turns.cpp.
    void LookAtDescriptors();
    Choice ChooseNext();
    Choice ChooseNow() const;
    bool CouldGoOn(const Member& member) const;
    bool MustLook(const Member& member) const;
    static Micros DeadlineOf(const Member& member);
    bool TimeStandsStill() const;
    bool AwaitsChild(const Member& member) const;
    bool AnyIsToComeBack() const;
    Member* EarliestDeadline() const;
    void GiveTurn(const Choice& choice);
    void Rest(Member& member, const Request& request);

    // Questions, in questions.cpp.
    void Hear(Member& member, const Received& received);
    void Start(Member& member, const Received& received);
    void GoOnToClock();
    void Fork(Member& member);
    void Child(const Member& member, pid_t pid);
    Micros HorizonFor(const Member& member) const;
    uint32_t OthersOf(const Member& member) const;
    Reply Message(Member& member, Why why) const;
    void SendReply(Member& member, std::string_view payload = {});
    void Refuse(Member& member, int error);

    // About lines, in line_questions.cpp.
    static bool Release(Member& member, const Holdings::key_type& what);
    void Open(Member& member, int com);
    void AskLine(Member& member, const Received& received);
    Terminal Find(uint32_t terminal);

    // Real waiting, in real_waiting.cpp.
    void WaitFor(int other);
    void LetAllLook();
    bool AnyReady() const;
    void DoubtHolder();
    void TellIfStuck();
    bool IsStuck() const;
    void ReportStuck();

    const std::string path_;
    static constexpr uint32_t kNewcomer = 0;  // among the members' numbers

    Descriptor listener_;
    const Descriptor ears_;  // the listener, and each member's socket and process (epoll(7))
    const int64_t wall_at_start_;
    const Micros step_;
    Micros now_{0};
    const Descriptor clock_file_;
    ClockPage clock_;
    EventQueue events_;
    std::array<std::unique_ptr<Line>, kLines> lines_;
    std::vector<std::unique_ptr<Member>> members_;  // by birth
    Member* holder_ = nullptr;                      // whose turn it is
    const Descriptor watched_;                      // what members wait for, see WatchedDescriptors
    std::size_t awaited_ = 0;
    uint32_t numbers_ = 0;
    uint64_t beginnings_ = 0;
    uint64_t deeds_ = 1;
    uint64_t ends_ = 1;  // of members, and signals
    bool idle_ = false;
    pid_t last_ = 0;        // with its end time stands still; 0: with none's
    bool stopped_ = false;  // it has ended
    bool signals_under_way_ = false;
    Milliseconds silence_{0};  // of the holder, in real time
    Milliseconds patience_{60'000};
    Milliseconds idle_for_{0};
};

}  // namespace pagersim

#endif
