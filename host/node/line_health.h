// Whether a line is fit to be given pages: by what its sendings came to, and by how its process
// ends. A sick line is asked again with growing pauses, by a question to its modem and never by a
// page.
//
// Threads    One.
#ifndef PAGERFWD_HOST_NODE_LINE_HEALTH_H
#define PAGERFWD_HOST_NODE_LINE_HEALTH_H

#include <ctime>
#include <deque>
#include <string>

#include "host/process/clock_jumps.h"
#include "host/store/tables/sends.h"

namespace host {

class LineHealth {
 public:
    bool IsSick() const { return sick_; }
    // Since when it is as it is, and why it is sick.
    std::time_t Since() const { return since_; }
    const std::string& Reason() const { return reason_; }

    // A sending over the line has ended. Two in a row that the line is to blame for make it sick.
    void Sent(const Send& send, std::time_t now);

    // Its process has ended unasked. Three times in ten minutes make it sick.
    void Died(const std::string& why, std::time_t now);

    // Its library didn't go on for longer than any page takes. Twice in a row make it sick, too:
    // such a line would try the same page for ever.
    void Stuck(std::time_t now);

    // It can't be served at all, or was known to be sick before: it is asked at once.
    void FallSick(const std::string& why, std::time_t now);

    // Its device is back: whoever is sick is asked at once.
    void AskNow(std::time_t now) { ask_at_ = now; }

    // Whether its modem is to be asked now.
    bool IsToBeAsked(std::time_t now) const {
        return sick_ && HasCome(ask_at_, now, kLongestPause);
    }
    std::time_t AskAt() const { return ask_at_; }
    // Whether it is to be asked for a dial tone, too.
    bool LacksTone() const { return lacks_tone_; }
    void Answered(std::time_t now);
    void DidNotAnswer(const std::string& why, std::time_t now);

    // The pauses between two questions grow from one to the other, in seconds.
    static constexpr std::time_t kFirstPause = 60;
    static constexpr std::time_t kLongestPause = 30 * 60;

 private:
    void Fail(const char* why, std::time_t now);
    void BecomeSick(const std::string& why, std::time_t now);

    bool sick_ = false;
    bool lacks_tone_ = false;
    std::time_t since_ = 0;
    std::string reason_;
    int failures_ = 0;                // in a row
    std::deque<std::time_t> deaths_;  // of the last ten minutes
    std::time_t pause_ = 0;           // before it is asked next; until a page gets through
    std::time_t ask_at_ = 0;
};

// Why a sending failed, if the line is to blame: "its modem doesn't answer". Null: it isn't.
const char* BlameOf(const Send& send);

}  // namespace host

#endif
