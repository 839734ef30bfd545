// pagerfwd ports: the serial devices of the machine. Tested by tests/unit/host/cli_ports_test.cpp.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/cli/program.h"
#include "host/devices/device_lock.h"
#include "host/devices/identify_modem.h"
#include "host/devices/serial_devices.h"
#include "host/site/port_device.h"
#include "host/site/read_back.h"
#include "host/store/database_name.h"
#include "host/store/look.h"
#include "host/text/json.h"
#include "host/text/printable.h"
#include "host/text/text_table.h"

namespace host {
namespace {

struct PortsOptions {
    bool ask = false;
    bool json = false;
    std::string root;  // for tests: where /dev, /proc and the like lie
};

// A device, as it is shown. Texts in UTF-8.
struct ShownDevice {
    std::string name;
    std::string device;  // empty: it isn't there
    std::vector<std::string> ports;
    std::string holder;
    std::vector<std::string> in_the_way;
    std::optional<ModemAnswer> answer;
    int speed = 0;  // of the first port; 0: there is none
};

// Without a database there is no site yet.
std::vector<Port> PortsIn(const std::string& database) {
    std::error_code none;
    if (!IsOnServer(database) && !std::filesystem::exists(database, none)) {
        return {};
    }
    return Look(database,
                [](Connection& connection) { return ReadSiteBack(connection).site.ports; });
}

class Devices {
 public:
    Devices(const Program& program, const PortsOptions& options)
        : folders_(options.root), options_(options), locks_{program.database, program.locks} {
        for (const SerialDevice& found : FindSerialDevices(folders_)) {
            shown_.push_back({found.name, found.device, {}, {}, {}, {}, 0});
        }
        for (const Port& port : PortsIn(program.database)) {
            Add(port);
        }
        for (ShownDevice& one : shown_) {
            LookAt(one);
        }
    }

    const std::vector<ShownDevice>& Shown() const { return shown_; }

 private:
    // A port's device is shown where it is missing, too.
    void Add(const Port& port) {
        const std::string path = options_.root + DeviceOfPort(port);
        const std::string device = DeviceBehind(path);
        auto found = std::find_if(shown_.begin(), shown_.end(), [&](const ShownDevice& one) {
            return (one.device.empty() ? one.name : one.device) == device;
        });
        if (found == shown_.end()) {
            std::error_code none;
            const bool is_there = std::filesystem::exists(device, none);
            found = shown_.insert(shown_.end(), {path, is_there ? device : "", {}, {}, {}, {}, 0});
        }
        found->ports.push_back(port.name.value);
        found->speed = found->speed == 0 ? static_cast<int>(port.baud.value) : found->speed;
    }

    void LookAt(ShownDevice& one) const {
        if (one.device.empty()) {
            return;
        }
        one.holder = HolderOf(folders_, one.device);
        one.in_the_way = InTheWayOf(folders_, one.device);
        if (options_.ask && one.holder.empty()) {
            Ask(one);
        }
    }

    // Never a device that somebody has, or that a line may open at any moment.
    void Ask(ShownDevice& one) const {
        LockFile lock = LockOfDevice(locks_, one.device);
        if (lock.TryTake("ports --ask")) {
            one.answer = IdentifyModem(one.device, one.speed);
        } else {
            one.holder = lock.Holder();
        }
    }

    const SystemFolders folders_;
    const PortsOptions& options_;
    const LockFolder locks_;
    std::vector<ShownDevice> shown_;
};

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : Printable(text);
}

std::string AnswerIn(const ShownDevice& one) {
    return one.answer ? Printable(one.answer->text) : "not asked";
}

std::string TtyIn(const ShownDevice& one) {
    return one.device.empty() ? "not there"
                              : Printable(std::filesystem::path(one.device).filename().string());
}

void Print(const PortsOptions& options, const std::vector<ShownDevice>& devices) {
    if (devices.empty()) {
        std::cout << "this machine has no serial device\n";
    }
    std::vector<std::string> heading = {"TTY", "PORT", "HELD BY"};
    if (options.ask) {
        heading.emplace_back("ANSWER");
    }
    heading.emplace_back("DEVICE");
    TextTable table(heading);
    for (const ShownDevice& one : devices) {
        std::vector<std::string> row = {TtyIn(one), OrDash(Joined(one.ports)), OrDash(one.holder)};
        if (options.ask) {
            row.push_back(AnswerIn(one));
        }
        row.push_back(Printable(one.name));
        table.Add(std::move(row));
    }
    std::cout << table.Text();
    for (const ShownDevice& one : devices) {
        for (const std::string& what : one.in_the_way) {
            std::cout << TtyIn(one) << ": " << Printable(what) << "\n";
        }
        if (one.ports.size() > 1) {
            std::cout << TtyIn(one) << ": only one of its ports can have it\n";
        }
    }
}

Json ToJson(const ShownDevice& one) {
    Json json = {{"name", one.name},
                 {"device", one.device},
                 {"ports", one.ports},
                 {"held_by", one.holder},
                 {"in_the_way", one.in_the_way}};
    if (one.answer) {
        json["modem"] = one.answer->is_modem;
        json["answer"] = one.answer->text;
    }
    return json;
}

ExitCode Ports(const Program& program, const PortsOptions& options) {
    const std::vector<ShownDevice> devices = Devices(program, options).Shown();
    if (!options.json) {
        Print(options, devices);
        return kDone;
    }
    Json list = Json::array();
    for (const ShownDevice& one : devices) {
        list.push_back(ToJson(one));
    }
    std::cout << Written(list) << "\n";
    return kDone;
}

}  // namespace

void AddPorts(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("ports", "Show the serial devices that this machine has");
    const auto options = std::make_shared<PortsOptions>();
    command->add_flag("--ask", options->ask,
                      "Ask each device that nobody has what it is, as a modem: AT, then ATI");
    command->add_flag("--json", options->json, "As JSON");
    command->add_option("--root", options->root)->group("");
    command->footer(
        "Each device by the name that a site file had best use, with the ports of the site that\n"
        "use it, who has it open, and what else would take it: a getty, the kernel's console,\n"
        "ModemManager. Ports of the site whose device is not there come last. Programs of other\n"
        "users are seen by root alone. Without --ask no device is opened.\n\n"
        "Examples:\n"
        "  pagerfwd ports\n"
        "  pagerfwd ports --ask\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Ports(program, *options); };
    });
}

}  // namespace host
