// Events written as they happen to a file or a pipe, one line of JSON each.
#ifndef PAGERFWD_SIM_RECORD_EVENT_STREAM_H
#define PAGERFWD_SIM_RECORD_EVENT_STREAM_H

#include <string>

#include "sim/record/event.h"

namespace pagersim {

// Each event is written by opening, writing and closing: a program that closes every descriptor it
// doesn't know, or is killed, takes nothing away, and the programs of one command share a file.
// Behind an event that ends a connection it waits until a pipe's reader has shown all (at most a
// second of real time), so that what the program prints next comes after the dialogue.
//
// Errors     What can't be written is lost: the simulation goes on.
// Threads    As in sim/far_end.h.
class EventStream : public Recorder {
 public:
    // `path` may be empty: nothing is written. `begun` is added to every event's time.
    EventStream(std::string path, Milliseconds begun);

    void Record(const Event& event) override;

 private:
    const std::string path_;
    const Milliseconds begun_;
};

}  // namespace pagersim

#endif
