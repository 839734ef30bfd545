// What a port's row has to hold. Tested by tests/unit/host/site_check_test.cpp.
#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "host/site/port_device.h"
#include "host/site/ports_of_pager.h"
#include "host/site/rules.h"
#include "host/site/words.h"

namespace host {
namespace {

// Opening fails, and the port is not given back: it then counts as taken for every other page.
constexpr const char* kStaysTaken =
    "Every page over this line fails (result 5), and the port then stays taken for all others.";

std::string PortCalled(const Port& port) {
    return "port " + InQuotes(port.name.value);
}

std::string ListOfSpeeds() {
    std::string list;
    for (const int64_t speed : kSpeeds) {
        list += (list.empty() ? "" : ", ") + std::to_string(speed);
    }
    return list;
}

// In UTF-8. Its folder's name has three letters for a byte, and a folder's 255 at most.
constexpr size_t kLongestName = 80;

void CheckName(const Port& port, Findings& findings) {
    if (port.name.missing) {
        return;
    }
    if (port.name.value.size() > kLongestName) {
        findings.Error(
            port.name.line,
            "the name of a port has more than " + std::to_string(kLongestName) + " bytes",
            "The folder that its line works in is called after it, and would have too "
            "long a name.",
            "Choose a shorter one.");
    } else if (port.name.value.empty()) {
        findings.Error(port.name.line, "a port has no name", "No pager could name it.",
                       "Add a line such as: name = \"north\"");
    } else if (DeviceOfPort(port).empty()) {
        findings.Error(port.name.line, PortCalled(port) + " has no device",
                       "Only COM 1 to COM 9, with one blank, stand for a device by their name: for "
                       "/dev/ttyS0 to /dev/ttyS8.",
                       "Add a line such as: device = \"/dev/serial/by-id/...\"; pagerfwd ports "
                       "lists what there is.");
    }
}

// Whether two paths lead to one device is for the machine to say, and not looked at here.
void CheckDevice(const Port& port, Findings& findings) {
    const std::string& device = port.device.value;
    if (!device.empty() && device.front() != '/') {
        findings.Error(port.device.line,
                       PortCalled(port) + ": " + InQuotes(device) + " is no absolute path",
                       "It would be looked for in the folder where the engine happens to run.",
                       "Write the whole path, such as: device = \"/dev/ttyUSB0\"");
    }
}

void CheckDeviceTwice(const Site& site, size_t index, Findings& findings) {
    const Port& port = site.ports[index];
    const std::string device = DeviceOfPort(port);
    for (size_t before = 0; before < index && !device.empty(); ++before) {
        const Port& other = site.ports[before];
        if (DeviceOfPort(other) == device && other.name.value != port.name.value) {
            findings.Error(std::max(port.device.line, port.name.line),
                           PortCalled(port) + ": " + device + " is the device of " +
                               PortCalled(other) + " already, " + findings.Where(other.line),
                           "Only one of the two could have it.",
                           "Give each port a device of its own.");
            return;
        }
    }
}

// It costs its telephone line, and takes no page over when another is out.
void CheckUse(const Site& site, const Port& port, Findings& findings) {
    const auto uses = [&](const Pager& pager) {
        const std::vector<const Port*> ports = PortsOf(site, pager);
        return std::find(ports.begin(), ports.end(), &port) != ports.end();
    };
    if (port.modem.value && !site.pagers.empty() &&
        std::none_of(site.pagers.begin(), site.pagers.end(), uses)) {
        findings.Warning(port.line, "no pager can use " + PortCalled(port),
                         "Its modem stands idle, also while others have too much to do.",
                         "Give it a dial command for a type of pager, under [port.pager], "
                         "[port.sms1] or [port.sms2].");
    }
}

void CheckSpeed(const Port& port, Findings& findings) {
    const bool known =
        std::find(std::begin(kSpeeds), std::end(kSpeeds), port.baud.value) != std::end(kSpeeds);
    if (!known) {
        findings.Error(port.baud.line,
                       PortCalled(port) + ": " + std::to_string(port.baud.value) +
                           " is no speed of the serial line driver",
                       kStaysTaken, "Choose one of " + ListOfSpeeds() + ".");
    }
}

void CheckFlow(const Port& port, Findings& findings) {
    if (CellFor(kFlows, port.flow.value) == nullptr) {
        findings.Error(port.flow.line,
                       PortCalled(port) + ": there is no flow control " + InQuotes(port.flow.value),
                       "The line would run without flow control.", "Write " + ListOf(kFlows) + ".");
    } else if (port.flow.value == "hardware") {
        findings.Warning(port.flow.line, PortCalled(port) + ": hardware flow control",
                         "While the modem is off or its cable out, a page waits for it for ever, "
                         "and no other page leaves.",
                         "Write flow = \"none\", which is enough at these speeds.");
    }
}

// A modem dials by the D of a line that begins with AT, whatever stands between the two.
bool IsDialCommand(std::string_view command) {
    const auto at = [&](size_t place) { return std::toupper(command[place]); };
    return command.size() > 2 && at(0) == 'A' && at(1) == 'T' &&
           command.find_first_of("Dd", 2) != std::string_view::npos;
}

void CheckDial(const Port& port, const char* part, const SaidText& dial, Findings& findings) {
    if (!dial.value.empty() && !IsDialCommand(dial.value)) {
        findings.Error(
            dial.line,
            PortCalled(port) + ", " + part + ": " + InQuotes(dial.value) + " is no dial command",
            "The modem would not dial, and every page would fail (result 6).",
            "Begin it with ATD, such as: dial = \"ATDT0,5550101\"");
    }
}

void CheckLine(const Port& port, const char* part, const LineSettings& line, Findings& findings) {
    const std::string called = PortCalled(port) + ", " + part + ": ";
    if (line.data.value < 5 || line.data.value > 8) {
        findings.Error(line.data.line,
                       called + std::to_string(line.data.value) + " data bits can't be set",
                       kStaysTaken, "Write 5, 6, 7 or 8.");
    }
    if (CellFor(kParities, line.parity.value) == nullptr) {
        findings.Error(line.parity.line,
                       called + "parity " + InQuotes(line.parity.value) +
                           " is refused by the serial line driver",
                       kStaysTaken, "Write " + ListOf(kParities) + ".");
    }
    if (line.stop.value < 1 || line.stop.value > 2) {
        findings.Error(line.stop.line,
                       called + std::to_string(line.stop.value) + " stop bits can't be set",
                       kStaysTaken, "Write 1 or 2.");
    }
}

void CheckProtocol(const Port& port, const char* part, const SmsService& service,
                   Findings& findings) {
    if (CellFor(kProtocols, service.protocol.value) == nullptr) {
        findings.Error(service.protocol.line,
                       PortCalled(port) + ", " + part + ": there is no protocol " +
                           InQuotes(service.protocol.value),
                       "Pages would be reported as sent without a byte of them being sent.",
                       "Write " + ListOf(kProtocols) + ", in capitals.");
    }
}

void CheckPrompt(const Port& port, Findings& findings) {
    if (port.pager.prompt.value.empty()) {
        findings.Error(port.pager.prompt.line, PortCalled(port) + ": the prompt is empty",
                       "It could not be told when the paging service is ready.",
                       "Write what the service sends when it waits for input, such as \">\".");
    }
}

void CheckTwice(const Site& site, size_t index, Findings& findings) {
    const SaidText& name = site.ports[index].name;
    for (size_t before = 0; before < index; ++before) {
        if (site.ports[before].name.value == name.value) {
            findings.Error(name.line,
                           "port " + InQuotes(name.value) + " is there already, " +
                               findings.Where(site.ports[before].line),
                           "Only the first of the two would count.",
                           "Give this one its own name, or take it out.");
            return;
        }
    }
}

}  // namespace

void CheckPorts(const Site& site, Findings& findings) {
    for (size_t i = 0; i < site.ports.size(); ++i) {
        const Port& port = site.ports[i];
        CheckName(port, findings);
        CheckTwice(site, i, findings);
        CheckDevice(port, findings);
        CheckDeviceTwice(site, i, findings);
        CheckUse(site, port, findings);
        CheckSpeed(port, findings);
        CheckFlow(port, findings);
        CheckPrompt(port, findings);
        CheckLine(port, "pager", port.pager.settings, findings);
        CheckLine(port, "sms1", port.sms1.settings, findings);
        CheckLine(port, "sms2", port.sms2.settings, findings);
        CheckDial(port, "pager", port.pager.dial, findings);
        CheckDial(port, "sms1", port.sms1.dial, findings);
        CheckDial(port, "sms2", port.sms2.dial, findings);
        CheckProtocol(port, "sms1", port.sms1, findings);
        CheckProtocol(port, "sms2", port.sms2, findings);
    }
    if (site.ports.empty()) {
        findings.Warning(1, "there is no port", "No page can leave: every one fails (result 5).",
                         "Add a [[port]] with a name, and the device of its modem.");
    }
}

}  // namespace host
