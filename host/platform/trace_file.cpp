// Tested by tests/unit/host/trace_file_test.cpp, with the library by tests/e2e/run_hostile_test.cpp
// and tests/fuzz/far_end_words.cpp.
#include "host/platform/trace_file.h"

#include <fcntl.h>

#include <cerrno>
#include <new>
#include <string>
#include <utility>

namespace host {
namespace {

constexpr std::string_view kTraceFile = "pageprot.txt";
constexpr size_t kTime = 8;  // characters, in front of the tab
constexpr int kNone = -1;

thread_local int opened = kNone;  // for the next entry

// The next line feed with a tab in the ninth place behind it, or npos.
size_t FindTime(std::string_view entry, size_t from) {
    size_t at = entry.find('\n', from);
    while (at != std::string_view::npos) {
        if (at + 1 + kTime < entry.size() && entry[at + 1 + kTime] == '\t') {
            return at;
        }
        at = entry.find('\n', at + 1);
    }
    return at;
}

std::string AsOneEntry(std::string_view bytes) {
    std::string entry(bytes);
    for (size_t at = FindTime(entry, 0); at != std::string::npos; at = FindTime(entry, at + 1)) {
        entry[at + 1 + kTime] = ' ';
    }
    return entry;
}

// Files are written to the very end of the process.
std::function<void(std::string_view)>& TheListener() {
    static auto& listener = *new std::function<void(std::string_view)>;
    return listener;
}

ssize_t WriteAndTell(SystemWrite system, int file, std::string_view entry) {
    const ssize_t written = system(file, entry.data(), entry.size());
    if (TheListener()) {
        TheListener()(entry);
    }
    return written;
}

}  // namespace

void SetTraceListener(std::function<void(std::string_view)> listener) {
    TheListener() = std::move(listener);
}

void NoteOpened(const char* path, int flags, int file) {
    if (file >= 0 && path == kTraceFile && (flags & O_ACCMODE) == O_WRONLY &&
        (flags & O_TRUNC) == 0) {
        opened = file;
    }
}

ssize_t WriteAsOneEntry(SystemWrite system, int file, std::string_view bytes) {
    const bool is_entry = file != kNone && file == opened;
    if (is_entry) {
        opened = kNone;
    }
    if (!is_entry) {
        return system(file, bytes.data(), bytes.size());
    }
    try {
        if (FindTime(bytes, 0) == std::string_view::npos) {
            return WriteAndTell(system, file, bytes);
        }
        return WriteAndTell(system, file, AsOneEntry(bytes));
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return -1;
    }
}

}  // namespace host
