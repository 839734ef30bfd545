// Lock files of serial lines. Tested by tests/unit/linux/tty_lock_test.cpp.
//
// The file is created exclusively and holds the process number of its owner. A file whose owner is
// gone is stale: it is removed and its place taken. A file without a sensible number is held by
// somebody, since its owner may be just about to write it.
#include "linux/tty_lock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "linux/tty.h"

namespace {

enum class LetterCase { kKept, kLower, kUpper };

struct LockOptions {
    bool binary = false;
    LetterCase letterCase = LetterCase::kKept;
    bool deviceNumbers = false;
    int32_t timeoutSeconds = 0;
};

int32_t ReadSeconds(const char* value) {
    const long seconds = value == nullptr ? 0 : strtol(value, nullptr, 10);
    return static_cast<int32_t>(std::clamp(seconds, 0L, static_cast<long>(INT32_MAX)));
}

struct LockKeyword {
    const char* keyword;
    void (*apply)(LockOptions* options, const char* value);
};

// In this order: a shortened keyword, the empty one too, means the first that it begins.
constexpr LockKeyword lckmth[] = {
    {"ascii", [](LockOptions* o, const char*) { o->binary = false; }},
    {"binary", [](LockOptions* o, const char*) { o->binary = true; }},
    {"lower", [](LockOptions* o, const char*) { o->letterCase = LetterCase::kLower; }},
    {"upper", [](LockOptions* o, const char*) { o->letterCase = LetterCase::kUpper; }},
    {"sysv4", [](LockOptions* o, const char*) { o->deviceNumbers = true; }},
    {"timeout", [](LockOptions* o, const char* v) { o->timeoutSeconds = ReadSeconds(v); }},
};

void ApplyOption(LockOptions* options, const char* item, const char* value) {
    for (const LockKeyword& entry : lckmth) {
        if (strncmp(entry.keyword, item, strlen(item)) == 0) {
            entry.apply(options, value);
            return;
        }
    }
}

LockOptions ParseOptions(const char* text) {
    LockOptions options;
    if (text == nullptr) {
        return options;
    }
    std::string items = text;
    for (char* item = items.data(); item != nullptr;) {
        char* const next = skipch(item, ',');
        const char* const value = skipch(item, '=');
        ApplyOption(&options, item, value);
        item = next;
    }
    return options;
}

bool IsCharacterDevice(const char* path, struct stat* status) {
    return stat(path, status) == 0 && S_ISCHR(status->st_mode);
}

std::string NameOfNumbers(const struct stat& status) {
    char name[3 * 11 + 3];  // three numbers of any size, two dots, the NUL
    snprintf(name, sizeof name, "%03d.%03d.%03d", static_cast<int>(major(status.st_dev)),
             static_cast<int>(major(status.st_rdev)), static_cast<int>(minor(status.st_rdev)));
    return name;
}

std::string LastComponent(const char* path) {
    const char* const slash = strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string LockName(const char* device, const LockOptions& options) {
    struct stat status {};
    std::string name = options.deviceNumbers && IsCharacterDevice(device, &status)
                           ? NameOfNumbers(status)
                           : LastComponent(device);
    switch (options.letterCase) {
        case LetterCase::kKept:
            break;
        case LetterCase::kLower:
            std::transform(name.begin(), name.end(), name.begin(), ToLower);
            break;
        case LetterCase::kUpper:
            std::transform(name.begin(), name.end(), name.begin(), ToUpper);
            break;
    }
    return name;
}

// The process number in the bytes of a lock file; 0 when there is none.
int32_t ParseOwner(char* bytes, size_t count, bool binary) {
    if (binary) {
        int32_t owner = 0;
        if (count >= sizeof owner) {
            memcpy(&owner, bytes, sizeof owner);
        }
        return owner;
    }
    if (count == 0) {
        return 0;
    }
    // Kept: the last byte is dropped unseen; every writer ends the number with a line feed.
    bytes[count - 1] = '\0';
    const long long owner = strtoll(bytes, nullptr, 10);
    return owner > INT32_MAX ? 0 : static_cast<int32_t>(std::max<long long>(owner, 0));
}

int32_t ReadOwner(const char* path, bool binary) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return 0;
    }
    char bytes[31];
    const ssize_t count = read(fd, bytes, binary ? sizeof(int32_t) : sizeof bytes);
    close(fd);
    return ParseOwner(bytes, static_cast<size_t>(std::max<ssize_t>(count, 0)), binary);
}

bool IsStale(int32_t owner) {
    return owner >= 1 && kill(owner, 0) != 0 && errno == ESRCH;
}

int Create(const char* path) {
    return open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
}

// One round: the descriptor of the new lock file, or -1.
int TryCreate(const char* path, bool binary) {
    const int fd = Create(path);
    if (fd >= 0 || errno != EEXIST || !IsStale(ReadOwner(path, binary))) {
        return fd;
    }
    unlink(path);
    return Create(path);
}

// Everyone may read who holds the line.
bool WriteOwner(int fd, bool binary) {
    const int32_t owner = getpid();
    char text[16];
    const int length = binary ? int{sizeof owner} : snprintf(text, sizeof text, "%10d\n", owner);
    const void* const bytes = binary ? static_cast<const void*>(&owner) : text;
    return write(fd, bytes, static_cast<size_t>(length)) == length && fchmod(fd, 0644) == 0 &&
           fchown(fd, geteuid(), getegid()) == 0;
}

// Fills in the new lock file; an incomplete one would look held for ever, so it goes.
bool Complete(int fd, const char* path, bool binary) {
    const bool written = WriteOwner(fd, binary);
    if (close(fd) == 0 && written) {
        return true;
    }
    unlink(path);
    return false;
}

}  // namespace

TtyLock::~TtyLock() {
    if (!m_path.empty()) {
        unlink(m_path.c_str());
    }
}

bool TtyLock::Take(const char* device, const char* prefix, const char* options) {
    if (prefix == nullptr) {
        return true;
    }
    const LockOptions how = ParseOptions(options);
    std::string path = prefix + LockName(device, how);
    for (int64_t round = 0; round <= how.timeoutSeconds; ++round) {
        const int fd = TryCreate(path.c_str(), how.binary);
        if (fd >= 0) {
            if (!Complete(fd, path.c_str(), how.binary)) {
                return false;
            }
            m_path = std::move(path);
            return true;
        }
        if (how.timeoutSeconds > 0) {
            sleep(1);
        }
    }
    return false;
}
