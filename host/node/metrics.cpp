// Figures for monitoring. Tested by tests/unit/host/metrics_test.cpp.
#include "host/node/metrics.h"

#include <sstream>

namespace host {
namespace {

// Backslashes, quotes and line ends are all that the format asks to be escaped.
std::string Label(const std::string& text) {
    std::string label;
    for (const char c : text) {
        if (c == '\n') {
            label += "\\n";
            continue;
        }
        if (c == '\\' || c == '"') {
            label += '\\';
        }
        label += c;
    }
    return label;
}

void Head(std::ostream& out, const char* name, const char* type, const char* help) {
    out << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << "\n";
}

void Figure(std::ostream& out, const char* name, const char* type, const char* help,
            uint64_t value) {
    Head(out, name, type, help);
    out << name << ' ' << value << "\n";
}

// A sending that found no port has none.
std::string PortLabel(const std::string& port, Encoding encoding) {
    return "port=\"" + Label(port.empty() ? "none" : Decode(port, encoding)) + "\"";
}

const char* ResultOf(TracedPage::Outcome outcome) {
    switch (outcome) {
        case TracedPage::Outcome::kSent:
            return kResultSent;
        case TracedPage::Outcome::kDialled:
            return kResultDialled;
        case TracedPage::Outcome::kOutsideHours:
            return kResultOutsideHours;
        case TracedPage::Outcome::kNotSent:
        case TracedPage::Outcome::kCutOff:
            break;
    }
    return kResultFailed;
}

}  // namespace

void Metrics::Count(const Send& send) {
    line_seconds += static_cast<uint64_t>(send.seconds);
    const std::string result = ResultOf(send.outcome);
    ++sendings[result][send.port];
    if (result == kResultSent || result == kResultDialled) {
        last_success[send.port] = send.at;
    }
}

uint64_t Metrics::Total(const std::string& result) const {
    uint64_t total = 0;
    if (const auto found = sendings.find(result); found != sendings.end()) {
        for (const auto& [port, count] : found->second) {
            total += count;
        }
    }
    return total;
}

std::string AsText(const Metrics& metrics, Encoding encoding) {
    std::ostringstream out;
    constexpr const char* kPages = "pagerfwd_pages_total";
    Head(out, kPages, "counter",
         "Sendings of pages since the engine started, by result and by the port that was used.");
    for (const auto& [result, ports] : metrics.sendings) {
        for (const auto& [port, count] : ports) {
            out << kPages << "{result=\"" << result << "\"," << PortLabel(port, encoding) << "} "
                << count << "\n";
        }
    }
    constexpr const char* kEnded = "pagerfwd_pages_ended_total";
    Head(out, kEnded, "counter",
         "Pages that ended since the engine started, by what they came to.");
    for (const auto& [end, count] : metrics.ended) {
        out << kEnded << "{end=\"" << end << "\"} " << count << "\n";
    }
    Figure(out, "pagerfwd_pages_given_up_total", "counter",
           "Pages whose tries were used up since the engine started.", metrics.given_up);
    Figure(out, "pagerfwd_line_seconds_total", "counter",
           "Seconds that sending has taken since the engine started.", metrics.line_seconds);
    Figure(out, "pagerfwd_pages_pending", "gauge", "Pages that are pending.", metrics.pending);
    Figure(out, "pagerfwd_start_time_seconds", "gauge", "When the engine started, since 1970.",
           static_cast<uint64_t>(metrics.started));
    Figure(out, "pagerfwd_heartbeat_timestamp_seconds", "gauge",
           "When all was as it should be, at last, since 1970; 0: not yet.",
           static_cast<uint64_t>(metrics.heartbeat));
    constexpr const char* kLast = "pagerfwd_last_success_timestamp_seconds";
    Head(out, kLast, "gauge",
         "When a page last got through, since 1970, by the port that was used.");
    for (const auto& [port, at] : metrics.last_success) {
        out << kLast << '{' << PortLabel(port, encoding) << "} " << at << "\n";
    }
    return out.str();
}

}  // namespace host
