// The serial devices of the machine, and what stands between them and a line.
//
// Nothing is opened: the folders of the system are read.
#ifndef PAGERFWD_HOST_DEVICES_SERIAL_DEVICES_H
#define PAGERFWD_HOST_DEVICES_SERIAL_DEVICES_H

#include <string>
#include <vector>

namespace host {

// Where the system shows itself; a test has folders of its own.
struct SystemFolders {
    explicit SystemFolders(const std::string& root = "")
        : dev(root + "/dev"),
          sys(root + "/sys"),
          proc(root + "/proc"),
          run(root + "/run"),
          etc(root + "/etc") {}

    std::string dev;
    std::string sys;
    std::string proc;
    std::string run;
    std::string etc;
};

struct SerialDevice {
    // By which a site file had best name it: it stays the same wherever the device is plugged in
    // (/dev/serial/by-id) or whatever is found before it (by-path). The device itself where it has
    // no such name, and is part of the machine.
    std::string name;
    std::string device;  // "/dev/ttyUSB0"
};

// Adapters and modems at USB, and serial ports of the machine behind which there is something; in
// the order of the devices' names.
std::vector<SerialDevice> FindSerialDevices(const SystemFolders& folders);

// What a path leads to; the path itself where there is nothing.
std::string DeviceBehind(const std::string& path);

// Who has the device open, or has locked it in the way of terminal programs; empty: nobody, or this
// user may not know.
std::string HolderOf(const SystemFolders& folders, const std::string& device);

// What would take the device, now or later, each a sentence: a getty, the kernel's console, a modem
// manager.
std::vector<std::string> InTheWayOf(const SystemFolders& folders, const std::string& device);

}  // namespace host

#endif
