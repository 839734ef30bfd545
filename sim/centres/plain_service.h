// A paging service that asks, in words, for what it wants to know.
#ifndef PAGERFWD_SIM_CENTRES_PLAIN_SERVICE_H
#define PAGERFWD_SIM_CENTRES_PLAIN_SERVICE_H

#include <string>
#include <string_view>
#include <utility>

#include "sim/centre.h"

namespace pagersim {

struct PlainOptions {
    std::string greeting = {};  // said at once, when the connection is up
    bool question = false;      // asks whether to go on before anything else, and waits for a yes
    std::string question_text = "CONTINUE (J/N)?";
    std::string prompt = ">";
    std::string confirmation = "SEND (J/N)?";  // asked behind the message
    bool echo = false;
    bool hangs_up = true;  // false: it stays on the line after the confirmation
};

// One answer a line; lines end with a carriage return, line feeds and NULs are ignored. The pager's
// number, then the message, then a yes. A yes right behind the number sends an empty page; so a
// message can't be just "j" or "jy".
//
// Threads    As in sim/far_end.h.
class PlainService : public Centre {
 public:
    explicit PlainService(PlainOptions options) : options_(std::move(options)) {}

    void Answered(Call& call) override;
    void Heard(std::string_view bytes) override;
    void Dialled(std::string_view) override {}
    void Ended() override {}

 private:
    enum class Step { kGoOn, kNumber, kMessage, kConfirmation, kOver };

    void HearLine(const std::string& line);
    void Confirm(const std::string& answer);
    void Finish();

    const PlainOptions options_;
    Call* call_ = nullptr;  // valid from Answered to Ended
    Step step_ = Step::kNumber;
    std::string line_;
    ReceivedPage page_;
};

}  // namespace pagersim

#endif
