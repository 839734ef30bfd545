// Two short questions. Tested by tests/unit/host/identify_modem_test.cpp.
#include "host/devices/identify_modem.h"

#include "host/devices/at_dialogue.h"

namespace host {
namespace {

constexpr AtDialogue::Milliseconds kLongestAnswer{1000};

}  // namespace

ModemAnswer IdentifyModem(const std::string& device, int speed) {
    AtDialogue modem(device, speed);
    if (!modem.WhyNot().empty()) {
        return {false, modem.WhyNot()};
    }
    if (!modem.Ask("AT", kLongestAnswer).IsOk() && !modem.Ask("AT", kLongestAnswer).IsOk()) {
        return {false, "no answer"};
    }
    std::string said;
    for (const std::string& line : modem.Ask("ATI", kLongestAnswer).said) {
        said += (said.empty() ? "" : ", ") + line;
    }
    return {true, said.empty() ? "OK" : said};
}

}  // namespace host
