// A growing file. Tested by tests/unit/host/growing_file_test.cpp.
#include "host/service/growing_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace host {
namespace {

constexpr int kMostAside = 5;
constexpr size_t kMostAtOnce = size_t{1} << 20;

}  // namespace

GrowingFile::~GrowingFile() {
    Close();
}

bool GrowingFile::Open() {
    if (file_ < 0) {
        file_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        position_ = 0;
    }
    return file_ >= 0;
}

void GrowingFile::Close() {
    if (file_ >= 0) {
        close(file_);
        file_ = -1;
    }
}

bool GrowingFile::IsReplaced() const {
    struct stat open_one {};
    struct stat named {};
    return fstat(file_, &open_one) == 0 && stat(path_.c_str(), &named) == 0 &&
           (open_one.st_ino != named.st_ino || open_one.st_dev != named.st_dev);
}

std::string GrowingFile::Read() {
    if (!Open()) {
        return {};
    }
    struct stat status {};
    if (fstat(file_, &status) == 0 && status.st_size < position_) {
        position_ = 0;  // emptied
    }
    std::string bytes(kMostAtOnce, '\0');
    const ssize_t size = pread(file_, bytes.data(), bytes.size(), position_);
    bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
    position_ += static_cast<off_t>(bytes.size());
    if (bytes.empty() && IsReplaced()) {
        Close();
        return Read();
    }
    return bytes;
}

void GrowingFile::MoveAside() {
    struct stat named {};
    if (stat(path_.c_str(), &named) != 0 || named.st_size == 0) {
        return;
    }
    for (int number = kMostAside - 1; number >= 0; --number) {
        const std::string from = number == 0 ? path_ : path_ + "." + std::to_string(number);
        std::rename(from.c_str(), (path_ + "." + std::to_string(number + 1)).c_str());
    }
}

}  // namespace host
