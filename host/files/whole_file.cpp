// Whole files. Tested by tests/unit/host/shared_file_test.cpp.
#include "host/files/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/files/shared_file.h"

namespace host {
namespace {

bool WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<size_t>(written));
    }
    return fsync(file) == 0;
}

}  // namespace

void WriteWhole(const std::string& path, const std::string& text, mode_t mode) {
    std::string name = path + ".XXXXXX";
    const Descriptor file(mkostemp(name.data(), O_CLOEXEC));
    const bool done = file.IsOpen() && fchmod(file.Number(), mode) == 0 &&
                      WriteAll(file.Number(), text) && std::rename(name.c_str(), path.c_str()) == 0;
    if (!done) {
        const int error = errno;
        if (file.IsOpen()) {
            unlink(name.c_str());
        }
        throw FileError(path + ": can't be written: " + std::strerror(error));
    }
}

}  // namespace host
