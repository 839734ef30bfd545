// The last room. Tested by tests/unit/host/shared_file_test.cpp.
#include "host/files/last_room.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>

#include "host/files/whole_file.h"

namespace host {
namespace {

std::string NameOf(const std::string& database) {
    return database + "-room";
}

bool IsKept(const std::string& name) {
    struct stat status {};
    return lstat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_size == kLastRoom;
}

// That no file system makes less of.
std::string Bytes() {
    std::string bytes(kLastRoom, '\0');
    std::minstd_rand any;
    std::generate(bytes.begin(), bytes.end(), [&any] { return static_cast<char>(any() >> 8); });
    return bytes;
}

}  // namespace

void KeepLastRoom(const std::string& database) {
    const std::string name = NameOf(database);
    if (!IsKept(name)) {
        WriteWhole(name, Bytes(), kPrivate);
    }
}

void GiveLastRoom(const std::string& database) {
    unlink(NameOf(database).c_str());
}

}  // namespace host
