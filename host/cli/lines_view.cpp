// The view of the lines. Tested by tests/unit/host/cli_line_test.cpp.
#include "host/cli/lines_view.h"
#include "host/store/tables/events.h"

#include <map>
#include <utility>

#include "host/cli/names.h"
#include "host/cli/times.h"
#include "host/pages/page_owner.h"
#include "host/site/port_device.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/sends.h"
#include "host/text/text_table.h"

namespace host {
namespace {

template <typename Value>
Value ValueFor(const std::map<std::string, Value>& values, const std::string& line) {
    const auto found = values.find(line);
    return found == values.end() ? Value() : found->second;
}

std::string DeviceOfLine(const LineState& line) {
    return DeviceOfPort(line.line, line.device);
}

// "sick since 2001-01-08 10:05:00: no dial tone".
std::string HealthOf(const LineState& line, Encoding encoding) {
    std::string health = line.paused ? "paused" : WordOf(line.health);
    if (line.health == Health::kSick) {
        health += (line.paused ? ", sick since " : " since ") + LocalTime(line.since);
        health += line.reason.empty() ? "" : ": " + Shown(line.reason, encoding);
    }
    return health;
}

// Of pagers that are bound to a line which is out of service: it has not been given them.
void AddThoseThatWait(Connection& connection, std::map<std::string, int64_t>& pages) {
    for (const Delivery& delivery : OpenDeliveries(connection)) {
        if (!delivery.line.empty()) {
            continue;
        }
        const std::vector<PagerRow> pagers = FindPagers(connection, delivery.pager);
        if (pagers.size() == 1 && !pagers.front().port.empty()) {
            ++pages[pagers.front().port];
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

std::string LinesAsTable(const std::vector<LineStatus>& lines, Encoding encoding) {
    TextTable table({"LINE", "DEVICE", "PAGES", "LAST SENT", "DOING", "HEALTH"});
    for (const LineStatus& line : lines) {
        table.Add({Shown(line.state.line, encoding), Shown(DeviceOfLine(line.state), encoding),
                   std::to_string(line.pages),
                   line.last_success == 0 ? "-" : LocalTime(line.last_success),
                   line.state.doing.empty() ? "-" : Shown(line.state.doing, encoding),
                   HealthOf(line.state, encoding)});
    }
    return table.Text();
}

Json LinesAsJson(const std::vector<LineStatus>& lines, Encoding encoding) {
    Json list = Json::array();
    for (const LineStatus& line : lines) {
        Json json = {{"line", Decode(line.state.line, encoding)},
                     {"device", Decode(DeviceOfLine(line.state), encoding)},
                     {"health", WordOf(line.state.health)},
                     {"reason", Decode(line.state.reason, encoding)},
                     {"paused", line.state.paused},
                     {"doing", Decode(line.state.doing, encoding)},
                     {"pages", line.pages}};
        const std::pair<const char*, std::time_t> instants[] = {
            {"since", line.state.since},
            {"doing_since", line.state.doing.empty() ? 0 : line.state.doing_since},
            {"last_sent", line.last_success}};
        for (const auto& [name, instant] : instants) {
            json[name] = instant == 0 ? Json() : Json(LocalTime(instant));
        }
        list.push_back(std::move(json));
    }
    return list;
}

}  // namespace host
