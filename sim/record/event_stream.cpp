// Writing events. Tested by tests/unit/sim/record_test.cpp.
#include "sim/record/event_stream.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>
#include <utility>
#include <vector>

namespace pagersim {
namespace {

// A pipe takes a line whole only up to PIPE_BUF; a byte takes at most six characters of JSON.
constexpr std::size_t kLongestText = 512;

constexpr int kPatienceMs = 1000;

class Descriptor {
 public:
    // Without waiting: a pipe that nobody reads isn't opened.
    explicit Descriptor(const std::string& path)
        : fd_(open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644)) {}
    ~Descriptor() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return fd_ >= 0; }
    void WriteAll(std::string_view text) const;
    void WaitUntilShown() const;

 private:
    const int fd_;
};

void ShortPause() {
    const timespec millisecond{0, 1'000'000};
    nanosleep(&millisecond, nullptr);
}

// Long bytes on a line in several events, everything else in one.
std::vector<Event> Parts(const Event& event) {
    if (event.kind != EventKind::kSends || event.text.size() <= kLongestText) {
        return {event};
    }
    std::vector<Event> parts;
    for (std::size_t from = 0; from < event.text.size(); from += kLongestText) {
        parts.push_back(event);
        parts.back().text = event.text.substr(from, kLongestText);
    }
    return parts;
}

void Descriptor::WriteAll(std::string_view text) const {
    for (int tries = 0; !text.empty() && tries < kPatienceMs; ++tries) {
        const ssize_t written = write(fd_, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            ShortPause();
        } else if (errno != EINTR) {
            return;
        }
    }
}

// Until the pipe is empty and its reader, who holds its lock from the reading to the showing, is
// done.
void Descriptor::WaitUntilShown() const {
    struct stat status {};
    if (fstat(fd_, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return;
    }
    int unread = 0;
    for (int tries = 0; tries < kPatienceMs; ++tries) {
        if (ioctl(fd_, FIONREAD, &unread) != 0) {
            return;
        }
        if (unread == 0 && flock(fd_, LOCK_SH | LOCK_NB) == 0) {
            return;
        }
        ShortPause();
    }
}

}  // namespace

EventStream::EventStream(std::string path, Milliseconds begun)
    : path_(std::move(path)), begun_(begun) {}

void EventStream::Record(const Event& event) {
    if (path_.empty()) {
        return;
    }
    const Descriptor stream(path_);
    if (!stream.IsOpen()) {
        return;
    }
    Event timed = event;
    timed.at += begun_;
    for (const Event& part : Parts(timed)) {
        stream.WriteAll(ToJson(part) + "\n");
    }
    if (event.kind == EventKind::kCloses) {
        stream.WaitUntilShown();
    }
}

}  // namespace pagersim
