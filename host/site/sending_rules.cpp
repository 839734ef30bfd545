// What would reach a pager otherwise than it was meant, and what a dead number costs. Tested by
// tests/unit/host/sending_rules_test.cpp.
#include "host/site/sending_rules.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "host/site/ports_of_pager.h"
#include "host/site/rules.h"
#include "host/text/encoding.h"

namespace host {
namespace {

// Seconds of every page, whatever its type: the port opened and purged; the modem reset and
// initialised; dialled; reset once more.
constexpr int64_t kAround = 2 + 13 + 120 + 10;

// Hours that one dead number may cost before it is worth a warning.
constexpr int64_t kMuch = 2 * 60 * 60;

// Beyond it the number is a mistake of its own.
constexpr int64_t kMostRetries = std::numeric_limits<int32_t>::max();

constexpr const char* kSampleKana = "\xEF\xBE\x8E\xEF\xBE\x9F";  // ﾎﾟ

int64_t LongestTransfer(const Port* port, const Pager& pager) {
    if (pager.type.value == "ntt") {
        return 20 + 120 + 2;
    }
    const SmsService* const service = port == nullptr ? nullptr : ServiceOf(*port, pager);
    if (service == nullptr) {
        return 3 * 30;  // a plain service: question, number, hang-up
    }
    return service->protocol.value == "UCP" ? 13 + 30 : 6 * 30;
}

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The first text of the site with an accent that pages contain; null where there is none.
const std::string* AccentedText(const Site& site) {
    for (const Route& route : site.routes) {
        if (!IsAscii(route.groups.value)) {
            return &route.groups.value;
        }
    }
    for (const Pager& pager : site.pagers) {
        if (!IsAscii(pager.number.value)) {
            return &pager.number.value;
        }
    }
    return nullptr;
}

void CheckSevenBits(const Port& port, const Pager& pager, const std::string& sample,
                    Encoding encoding, Findings& findings) {
    try {
        findings.Warning(
            pager.line,
            "pager " + InQuotes(pager.description.value) + ": seven bits of each character reach " +
                "the service behind port " + InQuotes(port.name.value),
            "A page with the text " + InQuotes(sample) + " would be sent as " +
                InQuotes(AsSevenBits(Encode(sample, encoding))) + ".",
            "Write alarms without accents, or choose a service that takes eight data bits.");
    } catch (const NotEncodable&) {
        return;  // CheckTexts tells
    }
}

void CheckAccents(const Site& site, Findings& findings) {
    const std::optional<Encoding> encoding = EncodingNamed(site.encoding.value);
    const std::string* const accented = AccentedText(site);
    if (!encoding || (accented == nullptr && *encoding == Encoding::kLatin1)) {
        return;
    }
    const std::string sample = accented != nullptr ? *accented : kSampleKana;
    std::set<std::pair<std::string, std::string>> told;
    for (const Pager& pager : site.pagers) {
        for (const Port* port : PortsOf(site, pager)) {
            if (LosesEighthBit(*port, pager) &&
                told.insert({port->name.value, pager.type.value}).second) {
                CheckSevenBits(*port, pager, sample, *encoding, findings);
            }
        }
    }
}

std::string Minutes(int64_t seconds) {
    return std::to_string((seconds + 59) / 60) + " minutes";
}

void CheckCost(const Site& site, const Pager& pager, Findings& findings) {
    const DeadNumber cost = CostOfDeadNumber(site, pager);
    if (cost.Seconds() > kMuch && pager.retries.value <= kMostRetries) {
        findings.Warning(pager.retries.line,
                         "pager " + InQuotes(pager.description.value) + ": " +
                             std::to_string(pager.retries.value) + " retries",
                         "If nobody answers its number any more, an alarm takes up to " +
                             Minutes(cost.Seconds()) + " of the line (" +
                             std::to_string(cost.calls) + " calls), in which no other page leaves.",
                         "Lower retries.");
    }
}

void CheckDelay(const Pager& pager, Findings& findings) {
    if (pager.delay.value == 0) {
        findings.Warning(pager.delay.line,
                         "pager " + InQuotes(pager.description.value) + ": delay is 0",
                         "A page that is to be repeated is sent again every minute.",
                         "Write the minutes between two pages, such as: delay = 45");
    }
}

}  // namespace

bool LosesEighthBit(const Port& port, const Pager& pager) {
    if (const SmsService* const service = ServiceOf(port, pager)) {
        return service->protocol.value == "UCP" || service->settings.data.value != 8;
    }
    return pager.type.value == "alphanumeric" && port.pager.settings.data.value != 8;
}

std::string AsSevenBits(std::string_view bytes) {
    std::string low(bytes);
    for (char& c : low) {
        c = static_cast<char>(c & 0x7F);
    }
    return low;
}

// A first failure is repeated after five minutes without being counted: so two calls for each.
DeadNumber CostOfDeadNumber(const Site& site, const Pager& pager) {
    const int64_t retries = std::clamp<int64_t>(pager.retries.value, 0, kMostRetries);
    std::vector<const Port*> ports = PortsOf(site, pager);
    if (ports.empty()) {
        ports.push_back(nullptr);
    }
    int64_t transfer = 0;
    for (const Port* port : ports) {
        transfer = std::max(transfer, LongestTransfer(port, pager));
    }
    return {2 * (retries + 1), kAround + transfer};
}

const Pager* CostliestPager(const Site& site) {
    const auto cost = [&site](const Pager& pager) {
        return CostOfDeadNumber(site, pager).Seconds();
    };
    const auto worst = std::max_element(
        site.pagers.begin(), site.pagers.end(),
        [&cost](const Pager& left, const Pager& right) { return cost(left) < cost(right); });
    return worst == site.pagers.end() ? nullptr : &*worst;
}

void CheckSending(const Site& site, Findings& findings) {
    CheckAccents(site, findings);
    for (const Pager& pager : site.pagers) {
        CheckDelay(pager, findings);
        CheckCost(site, pager, findings);
    }
}

}  // namespace host
