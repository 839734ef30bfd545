// Whether a call to a centre that leaves hanging up to the caller comes to its end. Tested by
// tests/unit/host/hang_up_rules_test.cpp.
#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include "host/site/ports_of_pager.h"
#include "host/site/rules.h"
#include "host/site/sending_rules.h"

namespace host {
namespace {

// Of S12, in fiftieths of a second: no centre answers its caller sooner, and then +++ follows.
constexpr int kLongestGuard = 5;

std::string WithoutBlanks(std::string_view command) {
    std::string upper;
    for (const char c : command) {
        if (c != ' ') {
            upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return upper;
}

// The guard time of +++ that the command sets; none where it sets none, or factory settings behind.
std::optional<int> GuardIn(const std::string& command) {
    constexpr std::string_view kRegister = "S12=";
    const size_t at = command.rfind(kRegister);
    const size_t factory = command.rfind("&F");
    if (at == std::string::npos || (factory != std::string::npos && factory > at)) {
        return std::nullopt;
    }
    const char* const digits = command.data() + at + kRegister.size();
    int guard = 0;
    const auto read = std::from_chars(digits, command.data() + command.size(), guard);
    return read.ptr == digits ? std::nullopt : std::optional(guard);
}

bool IsReachedByUcp(const Site& site, const Port& port) {
    return std::any_of(site.pagers.begin(), site.pagers.end(), [&](const Pager& pager) {
        const auto ports = PortsOf(site, pager);
        const SmsService* const service = ServiceOf(port, pager);
        return service != nullptr && service->protocol.value == "UCP" &&
               std::find(ports.begin(), ports.end(), &port) != ports.end();
    });
}

}  // namespace

void CheckHangingUp(const Site& site, Findings& findings) {
    for (const Port& port : site.ports) {
        const auto guard = GuardIn(WithoutBlanks(port.init.value));
        if ((guard && *guard <= kLongestGuard) || !IsReachedByUcp(site, port)) {
            continue;
        }
        findings.Warning(
            port.init.line,
            "port " + InQuotes(port.name.value) + ": init leaves the modem a long guard time",
            "It takes +++ and what hangs up for data: every call to a UCP centre stays up until "
            "the port is closed. If it ignores DTR, even longer, and the next page fails (result "
            "8).",
            "Write the shortest guard time and that DTR counts, such as: init = \"AT&F&D2S12=2\"");
    }
}

}  // namespace host
