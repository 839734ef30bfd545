// A pager that beeps when its number is called: the call is the page.
#ifndef PAGERFWD_SIM_CENTRES_SIGNAL_SERVICE_H
#define PAGERFWD_SIM_CENTRES_SIGNAL_SERVICE_H

#include <string_view>

#include "sim/centre.h"

namespace pagersim {

class SignalService : public Centre {
 public:
    void Answered(Call& call) override { call.Deliver({call.Number(), {}}); }
    void Heard(std::string_view) override {}
    void Dialled(std::string_view) override {}
    void Ended() override {}
};

}  // namespace pagersim

#endif
