// The site file's parts and their defaults. Tested by tests/unit/host/site_file_test.cpp.
#include "host/site/site_file.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "host/intake/alertmanager.h"
#include "host/site/toml_reader.h"

namespace host {
namespace {

// Eight bits without parity is what plain services and UCP centres take; TAP asks for seven, even.
struct LineDefaults {
    int64_t data;
    const char* parity;
};
constexpr LineDefaults kEightBits{8, "none"};
constexpr LineDefaults kSevenBits{7, "even"};

LineSettings ReadLine(TomlReader& reader, const LineDefaults& defaults) {
    LineSettings line;
    line.data = reader.Number("data", defaults.data);
    line.parity = reader.Text("parity", defaults.parity);
    line.stop = reader.Number("stop", 1);
    return line;
}

PagerService ReadPagerService(TomlReader& port) {
    TomlReader reader = port.Part("pager");
    PagerService service;
    service.dial = reader.Text("dial", "");
    service.prompt = reader.Text("prompt", ">");
    service.settings = ReadLine(reader, kEightBits);
    return service;
}

SmsService ReadSmsService(TomlReader& port, const char* name, const char* protocol) {
    TomlReader reader = port.Part(name);
    SmsService service;
    service.protocol = reader.Text("protocol", protocol);
    service.dial = reader.Text("dial", "");
    service.settings = ReadLine(reader, service.protocol.value == "TAP" ? kSevenBits : kEightBits);
    return service;
}

SiteNode ReadNode(TomlReader& reader) {
    SiteNode node;
    node.line = reader.Line();
    node.name = reader.Text("name");
    return node;
}

Port ReadPort(TomlReader& reader) {
    Port port;
    port.line = reader.Line();
    port.name = reader.Text("name");
    port.device = reader.Text("device", "");
    port.node = reader.Text("node", "");
    port.baud = reader.Number("baud", 2400);
    port.flow = reader.Text("flow", "none");
    port.modem = reader.Flag("modem", true);
    port.init = reader.Text("init", "AT&F");
    port.reset = reader.Text("reset", "ATZ");
    port.pager = ReadPagerService(reader);
    port.sms1 = ReadSmsService(reader, "sms1", "TAP");
    port.sms2 = ReadSmsService(reader, "sms2", "UCP");
    return port;
}

Pager ReadPager(TomlReader& reader) {
    Pager pager;
    pager.line = reader.Line();
    pager.description = reader.Text("description");
    pager.owner = reader.Text("owner", "");
    pager.port = reader.Text("port", "");
    pager.node = reader.Text("node", "");
    pager.type = reader.Text("type");
    pager.number = reader.Text("number");
    pager.retries = reader.Number("retries", 5);
    pager.delay = reader.Number("delay", 45);
    pager.hours = reader.Text("hours", kAlways);
    return pager;
}

TimeModel ReadTimeModel(TomlReader& reader) {
    TimeModel model;
    model.line = reader.Line();
    model.name = reader.Text("name");
    model.all = reader.Flag("all", false);
    for (const std::string& key : reader.KeysLeft()) {
        DayHours hours;
        hours.ranges = reader.Text(key.c_str(), "");
        hours.days = {key, hours.ranges.line};
        model.days.push_back(hours);
    }
    return model;
}

Route ReadRoute(TomlReader& reader) {
    Route route;
    route.line = reader.Line();
    route.groups = reader.Text("groups", kEveryGroup);
    route.severities = reader.Texts("severities");
    route.pagers = reader.Texts("pagers");
    return route;
}

SaidText ReadUnknownOutcome(TomlReader& document) {
    TomlReader reader = document.Part("site");
    return reader.Text("unknown_outcome", kSendAgain);
}

void ReadNotify(TomlReader& document, Site& site) {
    TomlReader reader = document.Part("notify");
    site.notify = reader.Texts("command");
    site.answers = reader.Flag("answers", false);
}

Command ReadHeartbeat(TomlReader& document) {
    TomlReader reader = document.Part("heartbeat");
    return reader.Texts("command");
}

Said<bool> ReadResolved(TomlReader& document) {
    TomlReader reader = document.Part("resolved");
    return reader.Flag("page", false);
}

AlertmanagerPart ReadAlertmanager(TomlReader& document) {
    TomlReader reader = document.Part("alertmanager");
    AlertmanagerPart part;
    part.group = reader.Text("group", kAlertGroup);
    part.severity = reader.Text("severity", kAlertSeverity);
    part.server = reader.Text("server", kAlertServer);
    part.text = reader.Text("text", kAlertText);
    return part;
}

void ReadDocument(std::string_view text, ReadSite& read) {
    TomlDocument document(text, read.findings);
    read.is_toml = document.IsToml();
    TomlReader reader = document.Root();
    if (read.is_toml && reader.KeysLeft().empty()) {
        read.findings.Error(1, "the file says nothing",
                            "Importing it would take every port, pager and route away.",
                            "Begin with a copy of the example, examples/site.toml.");
    }
    read.site.encoding = reader.Text("encoding", "latin1");
    ReadNotify(reader, read.site);
    read.site.heartbeat = ReadHeartbeat(reader);
    read.site.page_resolved = ReadResolved(reader);
    read.site.alertmanager = ReadAlertmanager(reader);
    read.site.unknown_outcome = ReadUnknownOutcome(reader);
    for (TomlReader& node : reader.Parts("node")) {
        read.site.nodes.push_back(ReadNode(node));
    }
    for (TomlReader& port : reader.Parts("port")) {
        read.site.ports.push_back(ReadPort(port));
    }
    for (TomlReader& pager : reader.Parts("pager")) {
        read.site.pagers.push_back(ReadPager(pager));
    }
    for (TomlReader& hours : reader.Parts("hours")) {
        read.site.timeModels.push_back(ReadTimeModel(hours));
    }
    for (TomlReader& route : reader.Parts("route")) {
        read.site.routes.push_back(ReadRoute(route));
    }
}

// Each dot of a key is a table within the one before, which the TOML library frees by recursion. No
// key goes over the end of a line, and no line of a site has so many dots, in texts or elsewhere.
// 0: there is none.
int LineThatIsTooDeep(std::string_view text) {
    constexpr std::ptrdiff_t kMostDots = 200;
    for (int line = 1; !text.empty(); ++line) {
        const std::string_view this_one = text.substr(0, text.find('\n'));
        if (std::count(this_one.begin(), this_one.end(), '.') > kMostDots) {
            return line;
        }
        text.remove_prefix(std::min(text.size(), this_one.size() + 1));
    }
    return 0;
}

}  // namespace

ReadSite ParseSite(std::string_view text) {
    ReadSite read;
    if (const int line = LineThatIsTooDeep(text); line > 0) {
        read.findings.Error(line, "a key of too many parts, with dots between them",
                            "Nothing of the file is read.",
                            "Write keys as the reference has them.");
        ReadDocument({}, read);  // what is taken for granted
        read.is_toml = false;
        return read;
    }
    ReadDocument(text, read);  // the readers have ended, and said all, when this returns
    return read;
}

}  // namespace host
