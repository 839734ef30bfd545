// The site as the reckoning sees it. Tested by tests/unit/host/reckoning_test.cpp.
#include "host/node/reckoned_site.h"

#include <algorithm>

namespace host {
namespace {

// The column with the dial command for each type of pager.
constexpr const char* kPorts =
    "SELECT Description, \"Select\", PagerDial, SMS1Dial, SMS2Dial, coalesce(health, ''),"
    " coalesce(paused, 0), coalesce(pid, 0), coalesce(doing, '')"
    " FROM AlarmFwd_COMProperties LEFT JOIN Host_Lines ON line = Description"
    " ORDER BY AlarmFwd_COMProperties.row_id";

ReckonedLine LineIn(const Statement& row) {
    ReckonedLine line;
    line.name = row.Text(0);
    line.has_modem = row.Text(1).substr(0, 1) == "1";
    for (const char* plain : {"0", "1", "2", "3"}) {
        line.dial[plain] = row.Text(2);
    }
    line.dial["4"] = row.Text(3);
    line.dial["5"] = row.Text(4);
    line.is_sick = row.Text(5) == "sick";
    line.is_well = !line.is_sick && row.Number(6) == 0 && row.Number(7) != 0;
    line.is_idle = row.Text(8) == "idle";
    return line;
}

// A number for each line: "SELECT line, count ...".
template <typename Take>
void EachNumber(Connection& connection, const char* sql, std::vector<ReckonedLine>& lines,
                Take take) {
    Statement statement(connection, sql);
    while (statement.Step()) {
        for (ReckonedLine& line : lines) {
            if (line.name == statement.Text(0)) {
                take(line, statement.Number(1));
            }
        }
    }
}

void ReadLoads(Connection& connection, std::vector<ReckonedLine>& lines) {
    // A line that isn't among so many has sent nothing for long.
    EachNumber(connection,
               "SELECT port, max(at) FROM Host_Sends WHERE row_id >"
               " (SELECT max(row_id) FROM Host_Sends) - 5000 GROUP BY port",
               lines, [](ReckonedLine& line, int64_t at) {
                   line.last_sending = static_cast<std::time_t>(at);
               });
    EachNumber(connection,
               "SELECT line, count(*) FROM Host_Deliveries WHERE answer IS NULL GROUP BY line",
               lines, [](ReckonedLine& line, int64_t count) {
                   line.untried += count;
                   line.pending += count;
               });
    EachNumber(connection,
               "SELECT line, count(*) FROM AlarmFwd_PagerEvents WHERE PagerState = '2'"
               " GROUP BY line",
               lines, [](ReckonedLine& line, int64_t count) { line.pending += count; });
    EachNumber(connection,
               "SELECT line, count(*) FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2'"
               " AND NOT EXISTS (SELECT 1 FROM Host_Sends AS sent"
               "  WHERE sent.alarm = event.AlmLogID AND sent.pager = event.PagerDescr"
               "  AND sent.port = event.line)"
               " GROUP BY line",
               lines, [](ReckonedLine& line, int64_t count) { line.untried += count; });
}

}  // namespace

const ReckonedLine* ReckonedSite::Find(const std::string& line) const {
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&line](const ReckonedLine& one) { return one.name == line; });
    return found == lines.end() ? nullptr : &*found;
}

bool ReckonedSite::IsBound(const std::string& pager) const {
    const auto found = pagers.find(pager);
    if (found == pagers.end() || found->second.port.empty()) {
        return false;
    }
    const std::string& port = found->second.port;
    return Find(port) != nullptr || (port.front() != 'A' && port.front() != 'a');
}

std::vector<const ReckonedLine*> ReckonedSite::LinesFor(const std::string& pager) const {
    std::vector<const ReckonedLine*> able;
    const auto found = pagers.find(pager);
    if (found == pagers.end()) {
        return able;
    }
    const bool bound = IsBound(pager);
    for (const ReckonedLine& line : lines) {
        const auto dial = line.dial.find(found->second.type);
        const bool can_dial = dial != line.dial.end() && !dial->second.empty();
        if (line.is_well &&
            (bound ? line.name == found->second.port : line.has_modem && can_dial)) {
            able.push_back(&line);
        }
    }
    return able;
}

ReckonedSite ReadReckonedSite(Connection& connection) {
    ReckonedSite site;
    Statement ports(connection, kPorts);
    while (ports.Step()) {
        site.lines.push_back(LineIn(ports));
    }
    ReadLoads(connection, site.lines);
    Statement pagers(connection,
                     "SELECT description, comport, pgtype, CAST(retrydelay AS INTEGER)"
                     " FROM AlarmFwd_PagerSetting");
    while (pagers.Step()) {
        ReckonedPager& pager = site.pagers[std::string(pagers.Text(0))];
        ++pager.rows;
        pager.port = pagers.Text(1);
        pager.type = pagers.Text(2);
        pager.delay = static_cast<std::time_t>(pagers.Number(3)) * 60;
    }
    return site;
}

}  // namespace host
