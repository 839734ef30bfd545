// The site as the reckoning sees it. Tested by tests/unit/host/reckoning_test.cpp.
#include "host/node/reckoned_site.h"

#include <algorithm>
#include <utility>

#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/ports.h"
#include "host/store/tables/sends.h"

namespace host {
namespace {

ReckonedLine LineAt(const PortRow& port) {
    ReckonedLine line;
    line.name = port.name;
    line.has_modem = port.select.substr(0, 1) == "1";
    for (const char* plain : {"0", "1", "2", "3"}) {
        line.dial[plain] = port.pager_dial;
    }
    line.dial["4"] = port.sms1_dial;
    line.dial["5"] = port.sms2_dial;
    return line;
}

void SetState(ReckonedLine& line, const LineState& state) {
    line.is_sick = state.health == Health::kSick;
    line.is_well = !line.is_sick && !state.paused && state.process != 0;
    line.is_idle = state.doing == "idle";
}

// What is known by the names of lines.
template <typename Known, typename Take>
void Each(std::vector<ReckonedLine>& lines, const Known& known, Take take) {
    for (ReckonedLine& line : lines) {
        const auto found = known.find(line.name);
        if (found != known.end()) {
            take(line, found->second);
        }
    }
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
    for (const PortRow& port : ReadPorts(connection)) {
        site.lines.push_back(LineAt(port));
    }
    std::map<std::string, LineState> states;
    for (LineState& state : ReadLines(connection)) {
        states.emplace(state.line, std::move(state));
    }
    Each(site.lines, states, SetState);
    for (const PagerRow& row : ReadPagers(connection)) {
        ReckonedPager& pager = site.pagers[row.description];
        ++pager.rows;
        pager.port = row.port;
        pager.type = row.type;
        pager.delay = static_cast<std::time_t>(row.delay) * 60;
    }
    return site;
}

void ReadLoads(Connection& connection, ReckonedSite& site) {
    Each(site.lines, LastSendings(connection),
         [](ReckonedLine& line, std::time_t at) { line.last_sending = at; });
    Each(site.lines, PagesByLine(connection), [](ReckonedLine& line, const LinePages& pages) {
        line.untried = pages.untried;
        line.pending = pages.all;
    });
}

}  // namespace host
