// A pager exchange that is dialled with tones: *2*2, two digits a character, ##.
#ifndef PAGERFWD_SIM_CENTRES_NTT_EXCHANGE_H
#define PAGERFWD_SIM_CENTRES_NTT_EXCHANGE_H

#include <string>
#include <string_view>

#include "sim/centre.h"

namespace pagersim {

// The number that was called is the pager's. Digits without *2*2 before them are shown as they are.
// Nothing is said: the caller hears only tones.
//
// Threads    As in sim/far_end.h.
class NttExchange : public Centre {
 public:
    void Answered(Call& call) override { call_ = &call; }
    void Heard(std::string_view) override {}
    void Dialled(std::string_view digits) override;
    void Ended() override;

 private:
    void Take(const std::string& message);

    Call* call_ = nullptr;  // valid from Answered to Ended
    std::string dialled_;
};

}  // namespace pagersim

#endif
