// A paging centre that speaks the Telocator Alphanumeric Protocol (TAP 1.8).
#ifndef PAGERFWD_SIM_CENTRES_TAP_CENTRE_H
#define PAGERFWD_SIM_CENTRES_TAP_CENTRE_H

#include <string>
#include <string_view>
#include <vector>

#include "sim/centre.h"
#include "sim/centres/tap_block.h"
#include "sim/centres/tap_codes.h"
#include "sim/centres/tap_message.h"

namespace pagersim {

struct TapOptions {
    bool strict = false;        // false: a NUL or LF that doesn't belong there is ignored
    bool text_lines = false;    // a line of text before what is positive, too: "211 Page accepted"
    bool bare_ack = false;      // no CR before an ACK without a text line
    unsigned knocks = 1;        // carriage returns until ID=
    std::string password = {};  // asked for at log-on
    std::vector<std::string> pagers = {};  // those that it knows; empty: any
    int answer = 0;                        // every block gets this code; 0: what it deserves
    bool ends = true;                      // false: it never says ESC EOT
};

// What it says, in order, in a call that goes well: ID=, the log-on's ACK, the go-ahead, the answer
// to the block, the goodbye.
//
// A message may come in several blocks; each is answered, and the last one delivers it.
//
// A strict one answers a NUL behind the first carriage return with 507, and a line feed behind the
// log-on with 502.
//
// Threads    As in sim/far_end.h.
class TapCentre : public Centre {
 public:
    explicit TapCentre(TapOptions options) : options_(std::move(options)) {}

    void Answered(Call& call) override { call_ = &call; }
    void Heard(std::string_view bytes) override;
    void Dialled(std::string_view) override {}
    void Ended() override;

 private:
    enum class State { kKnock, kLogOn, kBlock, kEnd, kOver };

    void HearByte(char c);
    void HearKnock(char c);
    void HearLogOn(char c);
    void HearBlock(char c);
    void HearOutsideBlock(char c);
    void HearEnd(char c);

    void AskForId();
    void CheckLogOn(const std::string& line);
    int LogOnFault(const std::string& line) const;
    void AnswerBlock(const std::string& block);
    int Verdict(const TapBlock& block, const TapMessage& message);
    int VerdictOnPager(const std::string& pager) const;
    void Accept(int code, const TapMessage& message);
    void ForgetParts();
    void Complain();

    // Says a control sequence behind the code's text line, if there is one.
    void SayCode(int code, std::string_view control);
    void SayBehind(std::string line, std::string_view control);
    std::string TextLine(int code) const;
    void SayGoodbye(int code);

    const TapOptions options_;
    Call* call_ = nullptr;  // valid from Answered to Ended
    State state_ = State::kKnock;
    std::string heard_;   // of the line or the block so far
    TapMessage message_;  // its accepted blocks
    unsigned knocks_ = 0;
    unsigned bad_log_ons_ = 0;
    unsigned bad_sums_ = 0;
    bool complained_ = false;  // of what stands before the next block
};

}  // namespace pagersim

#endif
