// A simulation's events as a dialogue to read, and to compare with another.
//
//      7.330  COM 1  program  > ATDT0,5550101<cr>
//     14.930  COM 1  modem    < ATDT0,5550101<cr><cr><lf>CONNECT 2400<cr><lf>
//     14.930  COM 1  sms      # answers 5550101
//     14.930  COM 1  program  > <cr><nul>
//     14.930  COM 1  sms      < ID=
#ifndef PAGERFWD_SIM_RECORD_TRANSCRIPT_H
#define PAGERFWD_SIM_RECORD_TRANSCRIPT_H

#include <optional>
#include <string>

#include "sim/record/event.h"

namespace pagersim {

// What one speaker says in one go is one line, whatever pieces it comes in: it ends when somebody
// else speaks or a quarter of a second passes.
class Transcript {
 public:
    // Returns the lines that this event completes, each with its end; often none.
    std::string Add(const Event& event);

    // Returns the line that is still open. To be called at the end.
    std::string Finish();

 private:
    bool Continues(const Event& event) const;

    std::optional<Event> open_;  // what is being said
    Milliseconds latest_{0};     // when its latest piece came
};

}  // namespace pagersim

#endif
