// The lines in the tables. Tested by tests/unit/host/line_loads_test.cpp.
#include "host/lines/site_lines.h"

#include <utility>

#include "host/site/port_device.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/ports.h"

namespace host {
namespace {

// Types of pagers that have a dial command of their own.
constexpr const char* kTap = "4";
constexpr const char* kUcp = "5";

SiteLine LineIn(PortRow port) {
    const std::string device = DeviceOfPort(port.name, port.device);
    return {std::move(port.name),
            device,
            port.select.substr(0, 1) == "1",
            std::move(port.pager_dial),
            std::move(port.sms1_dial),
            std::move(port.sms2_dial),
            port.baud,
            std::move(port.init),
            std::move(port.reset),
            std::move(port.node),
            std::move(port.cells)};
}

}  // namespace

bool SiteLine::CanDialFor(const std::string& type) const {
    const std::string& dial = type == kTap ? sms1_dial : type == kUcp ? sms2_dial : pager_dial;
    return modem && !dial.empty();
}

bool SiteLine::Fits(const PagerRow& pager) const {
    if (!pager.port.empty()) {
        return name == pager.port;
    }
    const bool is_there = pager.node.empty() || node.empty() || node == pager.node;
    return is_there && CanDialFor(pager.type);
}

std::vector<SiteLine> SiteLines(Connection& connection) {
    std::vector<SiteLine> lines;
    for (PortRow& port : ReadPorts(connection)) {
        lines.push_back(LineIn(std::move(port)));
    }
    return lines;
}

// A port that names no node belongs to the first.
std::vector<SiteLine> LinesOfNode(Connection& connection, const std::string& node) {
    const std::vector<std::string> nodes = NodesOfSite(connection);
    const bool is_first = nodes.empty() || nodes.front() == node;
    std::vector<SiteLine> lines;
    for (SiteLine& line : SiteLines(connection)) {
        if (line.node == node || (line.node.empty() && is_first)) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

std::optional<SiteLine> FindSiteLine(Connection& connection, const std::string& name) {
    std::optional<PortRow> port = FindPort(connection, name);
    return port ? std::optional<SiteLine>(LineIn(std::move(*port))) : std::nullopt;
}

}  // namespace host
