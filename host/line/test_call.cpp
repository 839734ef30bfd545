// Calling for a test. Tested by tests/unit/host/test_call_test.cpp and
// tests/e2e/run_line_call_test.cpp.
#include "host/line/test_call.h"

#include "host/devices/at_dialogue.h"
#include "host/line/ask_modem.h"
#include "host/text/controls.h"

namespace host {
namespace {

constexpr AtDialogue::Milliseconds kCall{120000};  // as long as the library waits for a page's
constexpr size_t kLongestNumber = 60;              // what dial buffers of old modems take

std::string Words(const AtAnswer& answer) {
    return WithoutControls(answer.result);
}

bool HasHungUp(AtDialogue& modem) {
    const AtAnswer answer = modem.Ask("ATH", kModemAnswers);
    return answer.IsOk() || answer.result == "NO CARRIER";
}

// Nobody is to be left on the line, whatever the modem was told of escapes and DTR.
bool HangUp(AtDialogue& modem, const AtAnswer& call) {
    if (call.IsConnect()) {
        modem.Escape();
    }
    if (call.result.empty()) {
        modem.Ask("", kModemAnswers);  // any character ends the dialling
    }
    if (HasHungUp(modem)) {
        return true;
    }
    modem.DropDtr();
    return HasHungUp(modem);
}

TestCall SetUp(AtDialogue& modem, const SiteLine& line) {
    if (!Wakes(modem)) {
        return {kModemFails, "the modem doesn't answer"};
    }
    const AtAnswer answer = modem.Ask(line.init + "V1", kModemAnswers);
    if (answer.IsOk()) {
        return {kConnected, ""};
    }
    return {kModemFails, answer.result.empty()
                             ? std::string("the modem doesn't answer its init command")
                             : "the modem refuses its init command: " + Words(answer)};
}

TestCall Call(AtDialogue& modem, const std::string& dial, int stop) {
    const AtAnswer call = modem.Ask(dial, kCall, stop);
    const bool hung_up = HangUp(modem, call);
    if (!hung_up) {
        const std::string what = call.result.empty() ? "" : Words(call) + ", but ";
        return {kModemFails, what + "the modem doesn't say that it has hung up"};
    }
    if (call.IsConnect()) {
        return {kConnected, Words(call)};
    }
    return {kNotConnected, call.result.empty() ? "nobody answered" : Words(call)};
}

}  // namespace

bool IsDialString(std::string_view number) {
    constexpr std::string_view kDialled = "0123456789ABCDabcd*#+,WwTtPp!@ -.()";
    return number.size() <= kLongestNumber &&
           number.find_first_not_of(kDialled) == std::string_view::npos &&
           number.find_first_of("0123456789") != std::string_view::npos;
}

// From the first of the port's dial commands: to its D, and whether it says tone or pulse.
std::string DialCommand(const SiteLine& line, const std::string& number) {
    for (const std::string& dial : {line.pager_dial, line.sms1_dial, line.sms2_dial}) {
        const size_t letter = dial.size() > 2 ? dial.find_first_of("Dd", 2) : std::string::npos;
        if (letter != std::string::npos) {
            const size_t rest = dial.find_first_not_of("TtPp", letter + 1);
            return dial.substr(0, rest) + number;
        }
    }
    return "ATDT" + number;
}

TestCall MakeTestCall(const std::string& device, const SiteLine& line, const std::string& number,
                      int stop) {
    if (!IsDialString(number)) {
        return {kNotConnected, "no number that can be dialled"};
    }
    AtDialogue modem(device, line.baud);
    if (!modem.WhyNot().empty()) {
        return {kLineNotOpened, line.device + " " + modem.WhyNot()};
    }
    TestCall call = SetUp(modem, line);
    if (call.result == kConnected) {
        call = Call(modem, DialCommand(line, number), stop);
        modem.Ask(line.reset, kModemAnswers);
    }
    return call;
}

}  // namespace host
