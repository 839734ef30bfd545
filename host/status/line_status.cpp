// The lines. Tested by tests/unit/host/cli_line_test.cpp and web_pages_test.cpp.
#include "host/status/line_status.h"

#include <map>
#include <utility>

#include "host/site/port_device.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/events.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/sends.h"
#include "host/text/times.h"

namespace host {
namespace {

template <typename Value>
Value ValueFor(const std::map<std::string, Value>& values, const std::string& line) {
    const auto found = values.find(line);
    return found == values.end() ? Value() : found->second;
}

// The line that each pager is bound to; none where it isn't, or where there are two of its name.
std::map<std::string, std::string> Bindings(Connection& connection) {
    std::map<std::string, std::string> lines;
    for (const PagerRow& pager : ReadPagers(connection)) {
        const bool is_first = lines.emplace(pager.description, pager.port).second;
        if (!is_first) {
            lines[pager.description].clear();
        }
    }
    return lines;
}

// Of pagers that are bound to a line which is out of service: it has not been given them.
void AddThoseThatWait(Connection& connection, std::map<std::string, int64_t>& pages) {
    const std::map<std::string, std::string> bindings = Bindings(connection);
    for (const Delivery& delivery : OpenDeliveries(connection)) {
        const std::string line =
            delivery.line.empty() ? ValueFor(bindings, delivery.pager) : std::string();
        if (!line.empty()) {
            ++pages[line];
        }
    }
}

}  // namespace

std::vector<LineStatus> ReadLineStatus(Connection& connection) {
    std::map<std::string, int64_t> pages = CountByLine(connection);
    AddThoseThatWait(connection, pages);
    const std::map<std::string, std::time_t> successes = LastSuccesses(connection);
    std::vector<LineStatus> lines;
    for (LineState& line : ReadLines(connection)) {
        const std::string name = line.line;
        lines.push_back({std::move(line), ValueFor(pages, name), ValueFor(successes, name)});
    }
    return lines;
}

std::string DeviceOf(const LineState& line) {
    return DeviceOfPort(line.line, line.device);
}

std::string HealthOf(const LineState& line, Encoding encoding) {
    std::string health = line.paused ? "paused" : WordOf(line.health);
    if (line.health == Health::kSick) {
        health += (line.paused ? ", sick since " : " since ") + LocalTime(line.since);
        health += line.reason.empty() ? "" : ": " + Decode(line.reason, encoding);
    }
    return health;
}

}  // namespace host
