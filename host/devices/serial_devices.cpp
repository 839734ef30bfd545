// The machine's serial devices. Tested by tests/unit/host/serial_devices_test.cpp.
#include "host/devices/serial_devices.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

#include "host/process/port_holder.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string FirstLineOf(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}

bool BeginsWith(const std::string& text, std::string_view prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

std::vector<fs::path> EntriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code none;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, none)) {
        entries.push_back(entry.path());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

// The system has nodes for serial ports that no machine has: their type is 0.
bool IsThere(const SystemFolders& folders, const std::string& tty) {
    return FirstLineOf(fs::path(folders.sys) / "class/tty" / tty / "type") != "0";
}

bool IsSerial(const SystemFolders& folders, const std::string& tty) {
    return BeginsWith(tty, "ttyUSB") || BeginsWith(tty, "ttyACM") ||
           (BeginsWith(tty, "ttyS") && IsThere(folders, tty));
}

std::string TtyOf(const std::string& device) {
    return fs::path(device).filename().string();
}

// "ttyS10" comes behind "ttyS9".
bool ComesBefore(const SerialDevice& left, const SerialDevice& right) {
    const auto key = [](const SerialDevice& one) {
        return std::pair(one.device.size(), one.device);
    };
    return key(left) < key(right);
}

// A terminal program's word that it has the device: a file with the number of its process.
std::string LockerOf(const SystemFolders& folders, const std::string& device) {
    const std::string file = folders.run + "/lock/LCK.." + TtyOf(device);
    const std::string line = FirstLineOf(file);
    const size_t first = line.find_first_not_of(' ');
    const std::string number = first == std::string::npos ? "" : line.substr(first);
    std::error_code none;
    const bool lives = !number.empty() && number.find('/') == std::string::npos &&
                       fs::exists(fs::path(folders.proc) / number / "comm", none);
    return lives ? FirstLineOf(fs::path(folders.proc) / number / "comm") + ", process " + number +
                       " (" + file + ")"
                 : "";
}

bool HasGetty(const SystemFolders& folders, const std::string& tty) {
    const std::string unit = "getty.target.wants/serial-getty@" + tty + ".service";
    std::error_code none;
    for (const std::string& folder :
         {folders.etc + "/systemd/system/", folders.run + "/systemd/generator/"}) {
        // What a link leads to isn't asked: it may be a unit of another root.
        if (fs::symlink_status(folder + unit, none).type() != fs::file_type::not_found) {
            return true;
        }
    }
    return false;
}

// "... console=ttyS0,115200 ..."
bool IsConsole(const SystemFolders& folders, const std::string& tty) {
    const std::string line = " " + FirstLineOf(fs::path(folders.proc) / "cmdline") + " ";
    const std::string console = " console=" + tty;
    return line.find(console + " ") != std::string::npos ||
           line.find(console + ",") != std::string::npos;
}

bool IsModemManagerRunning(const SystemFolders& folders) {
    const std::vector<fs::path> processes = EntriesOf(folders.proc);
    return std::any_of(processes.begin(), processes.end(), [](const fs::path& process) {
        return FirstLineOf(process / "comm") == "ModemManager";
    });
}

// As udev keeps the properties that its rules have set.
bool IsMarked(const SystemFolders& folders, const std::string& tty) {
    const std::string number = FirstLineOf(fs::path(folders.sys) / "class/tty" / tty / "dev");
    std::ifstream properties(folders.run + "/udev/data/c" + number);
    for (std::string line; std::getline(properties, line);) {
        if (line == "E:ID_MM_DEVICE_IGNORE=1" || line == "E:ID_MM_PORT_IGNORE=1") {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<SerialDevice> FindSerialDevices(const SystemFolders& folders) {
    std::map<std::string, std::string> names;  // by device
    for (const fs::path& path : EntriesOf(folders.dev)) {
        if (IsSerial(folders, path.filename().string())) {
            const std::string device = DeviceBehind(path.string());
            names.emplace(device, device);
        }
    }
    // The better kind of name last.
    for (const char* kind : {"by-path", "by-id"}) {
        std::map<std::string, std::string> found;
        for (const fs::path& link : EntriesOf(fs::path(folders.dev) / "serial" / kind)) {
            found.emplace(DeviceBehind(link.string()), link.string());
        }
        for (const auto& [device, name] : found) {
            names[device] = name;
        }
    }
    std::vector<SerialDevice> devices;
    for (const auto& [device, name] : names) {
        std::error_code none;
        if (fs::exists(device, none)) {
            devices.push_back({name, device});
        }
    }
    std::sort(devices.begin(), devices.end(), ComesBefore);
    return devices;
}

std::string DeviceBehind(const std::string& path) {
    std::error_code failure;
    const fs::path device = fs::canonical(path, failure);
    return failure ? path : device.string();
}

std::string HolderOf(const SystemFolders& folders, const std::string& device) {
    const std::string holders = HoldersOf(device, folders.proc);
    return holders.empty() ? LockerOf(folders, device) : holders;
}

std::vector<std::string> InTheWayOf(const SystemFolders& folders, const std::string& device) {
    const std::string tty = TtyOf(device);
    std::vector<std::string> found;
    if (HasGetty(folders, tty)) {
        found.push_back("a getty waits on it; as root: systemctl mask --now serial-getty@" + tty);
    }
    if (IsConsole(folders, tty)) {
        found.push_back("the kernel writes its messages to it; take console=" + tty +
                        " off the kernel's command line");
    }
    if (!BeginsWith(tty, "ttyS") && !IsMarked(folders, tty) && IsModemManagerRunning(folders)) {
        found.emplace_back(
            "ModemManager runs, and may open it; the administrator's guide says how to keep it "
            "off");
    }
    return found;
}

}  // namespace host
