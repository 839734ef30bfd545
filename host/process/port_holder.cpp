// Open descriptors of all processes. Tested by tests/unit/host/port_holder_test.cpp.
#include "host/process/port_holder.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace host {
namespace {

namespace fs = std::filesystem;

bool IsNumber(const std::string& name) {
    return !name.empty() &&
           std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Folders of other users' processes can't be read: they count as having nothing open.
bool HasOpen(const fs::path& process, const fs::path& device) {
    std::error_code none;
    for (const fs::directory_entry& file : fs::directory_iterator(process / "fd", none)) {
        if (fs::read_symlink(file.path(), none) == device) {
            return true;
        }
    }
    return false;
}

std::string NameOf(const fs::path& process) {
    std::ifstream file(process / "comm");
    std::string name;
    std::getline(file, name);
    return name.empty() ? "a program" : name;
}

}  // namespace

std::string HoldersOf(const std::string& device, const std::string& processes) {
    const std::string me = std::to_string(getpid());
    std::string holders;
    std::error_code none;
    for (const fs::directory_entry& process : fs::directory_iterator(processes, none)) {
        const std::string number = process.path().filename().string();
        if (!IsNumber(number) || number == me || !HasOpen(process.path(), device)) {
            continue;
        }
        holders += (holders.empty() ? "" : ", ") + NameOf(process.path()) + ", process " + number;
    }
    return holders;
}

}  // namespace host
