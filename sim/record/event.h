// What happens in a simulation, one event at a time: the source of transcripts and reports.
#ifndef PAGERFWD_SIM_RECORD_EVENT_H
#define PAGERFWD_SIM_RECORD_EVENT_H

#include <string>

#include "sim/far_end.h"

namespace pagersim {

enum class EventKind {
    kOpens,     // the program opened the line
    kCloses,    // the program closed it
    kSets,      // the program set it; text: "2400,e,7,1"
    kSends,     // bytes on the line; who: the program, the modem or a centre
    kNotes,     // a remark; who makes it
    kDials,     // a call begins; who: the centre that is reached, text: the number
    kDelivers,  // a centre accepted a page; recipient, text
    kEnds,      // the call is over; who: the centre
};

struct Event {
    Milliseconds at{0};  // since the simulation began
    std::string line;    // "COM 1"
    std::string who;
    EventKind kind = EventKind::kNotes;
    std::string text = {};
    std::string recipient = {};
};

// The speaker that is the program under test.
inline constexpr const char* kProgram = "program";
inline constexpr const char* kModem = "modem";

// Where events go. Outlives what records.
class Recorder {
 public:
    virtual ~Recorder() = default;
    virtual void Record(const Event& event) = 0;
};

}  // namespace pagersim

#endif
