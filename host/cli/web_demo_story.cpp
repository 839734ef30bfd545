// The story of the demo. Tested by tests/browser/pages_test.py.
#include "host/cli/web_demo_story.h"

#include <iterator>

#include "host/text/times.h"

namespace host {
namespace {

constexpr std::time_t kMinute = 60;
constexpr std::time_t kHour = 60 * kMinute;

struct Incident {
    const char* group;
    const char* severity;
    const char* server;
    const char* text;
    int acknowledged;  // after so many minutes; 0: never
    const char* by;
    const char* comment;
};
constexpr Incident kIncidents[] = {
    {"PLANT/pumps", "critical", "pump3", "Pump 3 stands still", 4, "maria", "on my way"},
    {"PLANT/boiler", "critical", "boiler1", "Pressure above 9 bar", 2, "anna",
     "valve opened by hand"},
    {"IT/web1", "major", "web1", "Disk 95 % full", 12, "boris", "old logs removed"},
    {"IT/db", "critical", "db2", "Replication has stopped", 0, "", ""},
    {"OFFICE/door", "minor", "door4", "Side door open for 10 minutes", 7, "emil", ""},
    {"PLANT/pumps", "major", "pump1", "Bearing at 92 degrees", 15, "maria", "oil ordered"},
    {"IT/backup", "minor", "backup", "Nightly backup not finished", 0, "", ""},
    {"OFFICE/lift", "major", "lift2", "Lift 2 stands between two floors", 3, "emil",
     "the maker is called"},
    {"PLANT/cold", "critical", "cold1", "Cold store at -12 degrees", 6, "anna", "door was open"},
};

const Incident& IncidentOf(int number) {
    return kIncidents[static_cast<size_t>(number) % std::size(kIncidents)];
}

std::string InQuotes(const std::string& text) {
    return "'" + text + "'";
}

std::string Raising(const Incident& incident) {
    return std::string("pagerfwd alarm raise --group ") + incident.group + " --severity " +
           incident.severity + " --server " + incident.server + " " + InQuotes(incident.text) +
           " >/dev/null 2>&1";
}

std::string AtTime(std::time_t when, const std::string& command) {
    return "\n[[at]]\ntime = \"" + LocalTime(when) + "\"\nrun = \"" + command + "\"\n";
}

std::string Acknowledging(const Incident& incident, std::time_t raised) {
    if (incident.acknowledged == 0) {
        return "";
    }
    return AtTime(
        raised + incident.acknowledged * kMinute,
        std::string("pagerfwd alarm ack --group ") + incident.group + " --by " + incident.by +
            (*incident.comment == '\0' ? "" : " --comment " + InQuotes(incident.comment)) +
            " >/dev/null 2>&1");
}

std::string ModemOf(int number, const char* trouble) {
    return "[[line]]\nport = \"COM " + std::to_string(number) + "\"\nunknown_number = \"BUSY\"\n" +
           trouble;
}

std::string Centre(const char* name, const char* protocol, const char* number,
                   const char* trouble) {
    return std::string("[[centre]]\nname = \"") + name + "\"\nprotocol = \"" + protocol +
           "\"\nnumbers = [\"" + number + "\"]\n" + trouble;
}

// What goes wrong at a day, besides.
struct Mishap {
    const char* line = "";
    const char* tap = "";
    const char* plain = "";
};
Mishap MishapOf(int day) {
    switch (day % 6) {
        case 1:
            return {"", "busy_calls = 1\n", ""};
        case 2:
            return {"dial_tone = false\n", "", ""};
        case 4:
            return {"", "", "silent_after = 2\n"};
        case 5:
            return {"powered = false\n", "", ""};
        default:
            return {};
    }
}

std::string Network(const Mishap& trouble) {
    return ModemOf(1, "") + ModemOf(2, trouble.line) + ModemOf(3, "") +
           Centre("tap", "tap", "5550101", trouble.tap) + Centre("ucp", "ucp", "5550102", "") +
           Centre("plain", "plain", "5550100", trouble.plain);
}

std::string PortOf(const std::string& folder, const std::string& name) {
    return "[[port]]\nname = \"" + name + "\"\ndevice = \"" + folder + "/" + name +
           "\"\ninit = \"AT&F&D2S12=2\"\n"
           "[port.pager]\ndial = \"ATDT0,\"\n"
           "[port.sms1]\ndial = \"ATDT0,5550101\"\n"
           "[port.sms2]\nprotocol = \"UCP\"\ndial = \"ATDT0,5550102\"\ndata = 8\n"
           "parity = \"none\"\n";
}

constexpr const char* kRest = R"(
[[hours]]
name = "always"
all = true

[[hours]]
name = "office"
mon-fri = "8-18"
sat = "9-12,14-16"

[[hours]]
name = "nights"
mon-sun = "0-7,19-24"

[[pager]]
description = "duty phone"
owner = "Anna"
type = "sms1"
number = "5550111"
retries = 3
delay = 5
hours = "always"

[[pager]]
description = "manager phone"
owner = "Boris"
type = "sms2"
number = "5550112"
retries = 2
delay = 5

[[pager]]
description = "technician"
owner = "Dirk"
type = "numeric"
number = "5550100@2002"
retries = 2
delay = 8
hours = "office"

[[pager]]
description = "night watch"
owner = "Emil"
type = "alphanumeric"
number = "5550100@3003"
retries = 1
delay = 8
hours = "nights"

[[pager]]
description = "old pager"
owner = "Clara"
type = "signal"
number = "5550199@1"
retries = 1
delay = 5

[[route]]
groups = "PLANT/*"
pagers = ["duty phone", "technician", "night watch"]

[[route]]
groups = "PLANT/*"
severities = ["critical"]
pagers = ["manager phone"]

[[route]]
groups = "IT/*"
pagers = ["duty phone", "old pager"]

[[route]]
groups = "OFFICE/*"
pagers = ["technician", "night watch"]
)";

}  // namespace

std::string DemoSite(const std::string& folder) {
    std::string site;
    for (const char* line : kDemoLines) {
        site += PortOf(folder, line);
    }
    return site + kRest;
}

std::time_t DemoBegin(int day, std::time_t midnight) {
    return midnight + (7 + day * 5 % 16) * kHour + day * 7 % 60 * kMinute;
}

std::string DemoFirstAlarm(int day) {
    return Raising(IncidentOf(day));
}

std::string DemoExchange(int day, std::time_t begin) {
    const std::time_t later = begin + 5 * kMinute;
    const Incident& second = IncidentOf(day * 2 + 1);
    return Network(MishapOf(day)) + Acknowledging(IncidentOf(day), begin) +
           AtTime(later, Raising(second)) + Acknowledging(second, later);
}

std::string DemoExchangeNow() {
    return Network({});
}

}  // namespace host
