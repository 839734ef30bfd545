// One page as the trace tells it: a dialogue with a modem and the service behind it.
//
// Texts are bytes of the site's encoding, as the trace has them; control characters in what was
// said are named, such as <cr>.
#ifndef PAGERFWD_HOST_TRACE_TRACED_PAGE_H
#define PAGERFWD_HOST_TRACE_TRACED_PAGE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

enum class PagePhase { kOpen, kModem, kDial, kTransfer, kHangUp };
inline constexpr size_t kPagePhases = 5;
std::string_view NameOf(PagePhase phase);

// Times are whole seconds since the page's beginning: the trace has no finer ones.
struct Turn {
    enum class Kind {
        kSaid,     // by us
        kHeard,    // from the modem or the centre
        kWaited,   // for `text`, up to limit_ms
        kPaused,   // nobody was listened to
        kFailure,  // what the library says went wrong
        kUnknown,  // a line that is not the library's, as far as is known
    };
    Kind kind = Kind::kUnknown;
    PagePhase phase = PagePhase::kOpen;
    int from = 0;
    int to = 0;
    std::string text;
    bool found = false;    // kWaited
    int64_t limit_ms = 0;  // kWaited
};

// Bytes of what is said at once, of a name, of a message. Longer ones are cut.
inline constexpr size_t kTracedTextKept = 4096;

struct TracedPage {
    enum class Outcome {
        kSent,
        kDialled,  // the call was the page: nothing confirms it
        kNotSent,
        kOutsideHours,  // counts as sent
        kCutOff,        // the trace, or the process, ended before the page did
    };

    uint64_t number = 0;         // in the trace, from 1
    uint64_t first_line = 0;     // of the trace
    std::optional<int64_t> day;  // since 1970, local time; none where the trace doesn't say it
    int second = 0;              // of the day
    int seconds = 0;             // that it lasted
    bool test = false;

    // raised: the alarm's number, read as a time, "01/08/01 / 10:00:00".
    std::string raised;
    std::string pager, number_called, type, port, hours, alarm, server, severity, settings, message;
    std::string port_used;  // port is the one that the pager names, and may be empty

    // The port that was used; the one that was asked for, where none was found.
    const std::string& Port() const { return port_used.empty() ? port : port_used; }

    Outcome outcome = Outcome::kCutOff;
    PagePhase phase = PagePhase::kOpen;  // that it is in, or ended in
    int result = 0;                      // the library's, where it was not sent
    std::string reason;                  // in words, where it was not sent

    std::vector<Turn> turns;
    size_t turns_left_out = 0;  // that were too many to be kept
    std::array<int, kPagePhases> phase_seconds{};
};

// Bytes with their control characters named: "ID=<cr>". Others stay as they are.
std::string NameControls(std::string_view bytes);

// The same for what the trace shows of bytes sent: "ATZ< d>". A byte from 128 up has lost its code
// there, and becomes <?>.
std::string NameControlsOfOut(std::string_view shown);

}  // namespace host

#endif
