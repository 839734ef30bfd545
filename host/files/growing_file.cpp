// A growing file. Tested by tests/unit/host/growing_file_test.cpp.
#include "host/files/growing_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace host {
namespace {

constexpr int kMostAside = 5;
constexpr size_t kMostAtOnce = size_t{1} << 20;

// When the file was made; where the system doesn't say, when it was last written.
std::time_t BegunAt(const std::string& path) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME | STATX_MTIME, &status) != 0) {
        return 0;
    }
    return static_cast<std::time_t>((status.stx_mask & STATX_BTIME) != 0 ? status.stx_btime.tv_sec
                                                                         : status.stx_mtime.tv_sec);
}

// Whole, or not at all.
bool Append(const std::string& path, const std::string& to) {
    std::error_code none;
    const auto before = std::filesystem::file_size(to, none);
    std::ifstream from(path, std::ios::binary);
    std::ofstream out(to, std::ios::binary | std::ios::app);
    out << from.rdbuf();
    out.close();
    if (!from || !out) {
        std::filesystem::resize_file(to, before, none);
        return false;
    }
    return true;
}

}  // namespace

GrowingFile::~GrowingFile() {
    Close();
}

bool GrowingFile::Open(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) {
        return false;
    }
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(file);
        return false;
    }
    Close();
    file_ = file;
    position_ = 0;
    return true;
}

void GrowingFile::Close() {
    if (file_ >= 0) {
        close(file_);
        file_ = -1;
    }
}

bool GrowingFile::IsOpenOne(const std::string& path) const {
    struct stat open_one {};
    struct stat named {};
    return fstat(file_, &open_one) == 0 && stat(path.c_str(), &named) == 0 &&
           open_one.st_ino == named.st_ino && open_one.st_dev == named.st_dev;
}

std::string GrowingFile::Aside(int number) const {
    return number == 0 ? path_ : path_ + "." + std::to_string(number);
}

// The file that was begun when the one that is open was moved aside.
std::string GrowingFile::Successor() const {
    for (int number = 1; number <= kMostAside; ++number) {
        if (IsOpenOne(Aside(number))) {
            return Aside(number - 1);
        }
    }
    return path_;
}

// What the open file has behind the position; all of it anew where it was emptied.
std::string GrowingFile::ReadOpenOne() {
    struct stat status {};
    if (fstat(file_, &status) != 0 || status.st_size == position_) {
        return {};  // as at most looks
    }
    if (status.st_size < position_) {
        position_ = 0;  // emptied
    }
    std::string bytes(std::min(kMostAtOnce, static_cast<size_t>(status.st_size - position_)), '\0');
    const ssize_t size = pread(file_, bytes.data(), bytes.size(), position_);
    bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
    position_ += static_cast<off_t>(bytes.size());
    return bytes;
}

std::string GrowingFile::Read() {
    if (file_ < 0 && !Open(path_)) {
        return {};
    }
    std::string bytes = ReadOpenOne();
    for (int opened = 0; bytes.empty() && opened <= kMostAside; ++opened) {
        if (IsOpenOne(path_) || !Open(Successor())) {
            break;
        }
        bytes = ReadOpenOne();
    }
    return bytes;
}

void GrowingFile::JoinAside(off_t most, std::time_t oldest) {
    if (!TryJoin(most, oldest)) {
        MoveAside();
    }
}

bool GrowingFile::TryJoin(off_t most, std::time_t oldest) const {
    const std::string aside = Aside(1);
    struct stat last {};
    struct stat named {};
    if (stat(aside.c_str(), &last) != 0 || stat(path_.c_str(), &named) != 0 ||
        last.st_size + named.st_size > most || BegunAt(aside) < std::time(nullptr) - oldest ||
        !Append(path_, aside)) {
        return false;
    }
    std::remove(path_.c_str());
    return true;
}

void GrowingFile::MoveAside() {
    struct stat named {};
    if (stat(path_.c_str(), &named) != 0 || named.st_size == 0) {
        return;
    }
    for (int number = kMostAside - 1; number >= 0; --number) {
        std::rename(Aside(number).c_str(), Aside(number + 1).c_str());
    }
}

}  // namespace host
