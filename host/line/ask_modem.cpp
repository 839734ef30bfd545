// Asking a modem. Tested by tests/e2e/run_lines_test.cpp.
#include "host/line/ask_modem.h"

#include "host/devices/at_dialogue.h"

namespace host {
namespace {

constexpr int kTimesAsked = 3;  // the first letters after a pause may be lost
constexpr AtDialogue::Milliseconds kTone{10000};

}  // namespace

bool Wakes(AtDialogue& modem) {
    for (int asked = 0; asked < kTimesAsked; ++asked) {
        if (modem.Ask("ATV1", kModemAnswers).IsOk()) {
            return true;
        }
    }
    return false;
}

LineExit AskModem(const std::string& device, bool dial_tone) {
    AtDialogue modem(device, 0);
    if (!modem.WhyNot().empty()) {
        return LineExit::kNoDevice;
    }
    if (!Wakes(modem)) {
        return LineExit::kSilent;
    }
    if (!dial_tone) {
        return LineExit::kDone;
    }
    const bool tone = modem.Ask("ATX4DT;", kTone).IsOk();
    modem.Ask("ATH", kModemAnswers);
    return tone ? LineExit::kDone : LineExit::kNoTone;
}

}  // namespace host
