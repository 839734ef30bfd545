// A modem with paging services behind it, as simple as tests of the engine need them: it answers
// every command with OK and every call as planned, and keeps what was sent.
//
// The service is known by the dial command: "ATDT1..." is a plain paging service, "ATDT2..." speaks
// TAP, "ATDT3..." UCP. A dial command that ends with ';' dials and stays in command state.
//
// Threads    The plan and the records may be used from any thread at any time.
#ifndef PAGERFWD_TESTS_ENGINE_PAGING_MODEM_H
#define PAGERFWD_TESTS_ENGINE_PAGING_MODEM_H

#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "sim/far_end.h"

class PagingModem : public pagersim::FarEnd {
 public:
    enum class Answer {
        kDelivers,         // CONNECT, and the service takes the page
        kBusy,             // BUSY
        kFallsSilent,      // CONNECT, and then nothing any more
        kIgnoresInit,      // the modem doesn't answer to its initialisation, so nothing is dialled
        kDeliversAndDies,  // as kDelivers, but then the modem doesn't answer until it is opened
                           // anew
        kBusyAndDies,      // likewise
    };

    // What the next pages meet, in order. When all are used up: the other one.
    void Plan(std::deque<Answer> next, Answer otherwise = Answer::kDelivers);

    struct Call {
        pagersim::Milliseconds at;  // since the clock began
        std::string command;        // as dialled
    };
    std::vector<Call> Calls() const;

    // What came over each delivered call, without the dialogue around it: "number|message" for the
    // plain service and TAP, the frame's body for UCP.
    std::vector<std::string> Pages() const;

    void Opened(pagersim::Wire& wire) override;
    void Heard(std::string_view bytes) override;
    void SettingsChanged(const termios&) override {}
    void Closed() override {}

 private:
    enum class State { kCommand, kPlain, kTAP, kUCP, kSilent };

    Answer CurrentAnswer() const;
    void EndAnswer();
    void Hear(char byte);
    void HearCommand();
    void HearDial();
    void HearPlain();
    void HearTAP();
    void HearUCP();
    bool HeardEndsWith(std::string_view end) const;
    void Say(std::string_view bytes, pagersim::Milliseconds after = pagersim::Milliseconds{0});

    mutable std::mutex lock_;
    // Guarded by lock_.
    std::deque<Answer> plan_;
    Answer otherwise_ = Answer::kDelivers;
    std::vector<Call> calls_;
    std::vector<std::string> pages_;

    // The line's.
    pagersim::Wire* wire_ = nullptr;
    State state_ = State::kCommand;
    std::string heard_;   // since the last answer
    std::string number_;  // of the plain dialogue
    bool dies_ = false;   // after this call
    bool is_dead_ = false;
};

#endif
