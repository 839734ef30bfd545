// The telephone exchange: which number leads to which centre, and how a call to it goes.
#ifndef PAGERFWD_SIM_PHONE_EXCHANGE_H
#define PAGERFWD_SIM_PHONE_EXCHANGE_H

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/centre.h"
#include "sim/phone/dial_string.h"

namespace pagersim {

// What becomes of a call.
enum class Fate { kAnswered, kBusy, kNoAnswer, kNoCarrier };

// A centre with its line.
struct Subscriber {
    std::string name;
    std::vector<std::string> numbers;
    std::function<std::unique_ptr<Centre>()> make_centre;  // a fresh one for each call

    bool has_modem = true;  // false: it listens to voice and tones, no carrier ever comes up
    Fate fate = Fate::kAnswered;
    int busy_calls = 0;                // the first so many calls find it busy
    std::function<Fate()> fates = {};  // of each call behind those; fate, when there is none
    Milliseconds answers_after{4000};  // of ringing
    Milliseconds response{100};        // what it says comes so much later, but for a greeting
    unsigned speed = 0;                // bits per second of the way to it; 0: no limit
};

// Threads    As in far_end.h.
class Exchange {
 public:
    struct Connection {
        Subscriber* subscriber;
        std::string number;  // of the subscriber
        std::string tones;   // digits dialled beyond the number, after a pause
    };

    void Add(Subscriber subscriber);

    // Whom the digits reach. The first segment may be an access code to the outside line ("0,"), so
    // it is tried with it and without; segments behind the number are tones for who answers.
    std::optional<Connection> Find(const DialString& dial);

    // The fate of one more call to `subscriber`.
    static Fate PlaceCall(Subscriber& subscriber);

 private:
    Subscriber* WithNumber(const std::string& number);

    std::list<Subscriber> subscribers_;
};

}  // namespace pagersim

#endif
