// A short-message centre that speaks UCP: operations 01 (call input), 31 (alert), 51 (submit short
// message) and 60 (open session) of EMI-UCP 4.0.
#ifndef PAGERFWD_SIM_CENTRES_UCP_CENTRE_H
#define PAGERFWD_SIM_CENTRES_UCP_CENTRE_H

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "sim/centre.h"
#include "sim/centres/ucp_frame.h"

namespace pagersim {

struct UcpOptions {
    bool strict = false;  // false: what stands between frames is ignored, missing last fields too
    std::string password = {};             // asked for by a session; without one none is needed
    std::vector<std::string> pagers = {};  // the recipients that it knows; empty: any
    int answer = 0;         // every message gets this error code; 0: what it deserves
    bool gsm = false;       // shows a text's bytes in the alphabet of GSM 03.38, not in ASCII
    std::time_t start = 0;  // of the simulation, for the time stamps (UTC)
};

// An alert tells that a telephone can be reached again; callers send it to see whether the centre
// is still there. The answer is how many messages wait for it: none, since all are delivered at
// once.
//
// Says nothing by itself: it answers frames, and leaves it to the caller to hang up.
//
// Threads    As in sim/far_end.h.
class UcpCentre : public Centre {
 public:
    explicit UcpCentre(UcpOptions options) : options_(std::move(options)) {}

    void Answered(Call& call) override { call_ = &call; }
    void Heard(std::string_view bytes) override;
    void Dialled(std::string_view) override {}
    void Ended() override {}

 private:
    using Fields = std::vector<std::string>;  // of a result

    void HearByte(char c);
    void HearFrame(const std::string& text);
    Fields Execute(const UcpFrame& frame);
    Fields OpenSession(const UcpFrame& frame);
    Fields TakeMessage(const UcpFrame& frame);
    Fields TakeAlert(const UcpFrame& frame) const;
    bool IsKnown(const std::string& recipient) const;
    UcpError Judge(const std::string& recipient, const std::string& text) const;
    std::string TimeStamp() const;

    const UcpOptions options_;
    Call* call_ = nullptr;  // valid from Answered to Ended
    bool in_frame_ = false;
    bool stray_ = false;  // something stood between the frames
    bool session_ = false;
    std::string heard_;
};

}  // namespace pagersim

#endif
