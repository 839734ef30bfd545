// The view of the lines. Tested by tests/unit/host/cli_line_test.cpp.
#include "host/cli/lines_view.h"

#include <utility>

#include "host/cli/names.h"
#include "host/text/printable.h"
#include "host/text/text_table.h"
#include "host/text/times.h"

namespace host {

std::string LinesAsTable(const std::vector<LineStatus>& lines, Encoding encoding) {
    TextTable table({"LINE", "DEVICE", "PAGES", "LAST SENT", "DOING", "HEALTH"});
    for (const LineStatus& line : lines) {
        table.Add({Shown(line.state.line, encoding), Shown(DeviceOf(line.state), encoding),
                   std::to_string(line.pages),
                   line.last_success == 0 ? "-" : LocalTime(line.last_success),
                   line.state.doing.empty() ? "-" : Shown(line.state.doing, encoding),
                   Printable(HealthOf(line.state, encoding))});
    }
    return table.Text();
}

Json LinesAsJson(const std::vector<LineStatus>& lines, Encoding encoding) {
    Json list = Json::array();
    for (const LineStatus& line : lines) {
        Json json = {{"line", Decode(line.state.line, encoding)},
                     {"device", Decode(DeviceOf(line.state), encoding)},
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
