// The paging trace: the file "pageprot.txt" in the working directory, opened and closed for every
// line, so that it may be read or deleted at any time.
// Tested by tests/unit/modem/trace_test.cpp.

#include "modem/trace.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "linux/CTime.h"
#include "linux/XStringView.h"
#include "linux/out_of_memory.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"

namespace {

constexpr char kSwitch[] = "NX_PAGEPROT";  // an environment variable; its value is never read
constexpr char kFileName[] = "pageprot.txt";
constexpr mode_t kFileMode = 0644;

// Hour, minute and second, padded with blanks: " 7: 5: 9". Converted once for all three, since each
// conversion looks whether the time zone has changed.
std::string TimePrefix() {
    tm now{};
    CTime::GetCurrentTime().GetLocalTm(&now);
    char prefix[40];
    const int length =
        snprintf(prefix, sizeof prefix, "%2d:%2d:%2d\t", now.tm_hour, now.tm_min, now.tm_sec);
    return {prefix, static_cast<size_t>(length)};
}

// Holds the trace's lock for a scope, or for good.
class TraceLock {
 public:
    TraceLock() { CCOMHdl::LockTrace(); }
    ~TraceLock() {
        if (m_ends) {
            CCOMHdl::UnlockTrace();
        }
    }
    TraceLock(const TraceLock&) = delete;
    TraceLock& operator=(const TraceLock&) = delete;

    void HoldForGood() { m_ends = false; }

 private:
    bool m_ends = true;
};

// Past 2 GiB too, where the system refuses a file of a 32-bit program that doesn't ask for it.
int OpenFile(int flags) {
    return open(kFileName, O_WRONLY | O_LARGEFILE | O_CLOEXEC | flags, kFileMode);
}

// Negative when the file can neither be opened nor made.
int OpenToAppend() {
    const int file = OpenFile(O_APPEND);
    return file >= 0 ? file : OpenFile(O_CREAT);
}

void AppendLine(const CString& text) {
    TraceLock held;
    const std::string line = TimePrefix().append(View(text)) + '\n';
    const int file = OpenToAppend();
    if (file < 0) {
        // Kept: the lock stays taken. This thread goes on, its trace calls re-enter the lock; every
        // other thread's next trace call waits for good.
        held.HoldForGood();
        return;
    }
    [[maybe_unused]] const ssize_t written = write(file, line.data(), line.size());
    close(file);
}

// What every trace call comes to: a line of the text that makeText makes, or, while the trace is
// off, nothing but a pause.
template <typename MakeText>
void TraceText(MakeText makeText) {
    if (Tracing()) {
        MemorySufficesFor([&makeText] { AppendLine(makeText()); });
    } else {
        const TraceLock held;
        Sleep(CCOMHdl::MPeekWait);
    }
}

}  // namespace

void CCOMHdl::StartTrace() {
    PageProtocol = getenv(kSwitch) != nullptr ? kTracingOn : kTracingOff;
    if (!Tracing()) {
        return;
    }
    const int file = OpenFile(O_CREAT | O_TRUNC);
    if (file >= 0) {
        close(file);
    }
}

void CCOMHdl::WritePageProtocolEntry(CString text) {
    TraceText([&text]() -> const CString& { return text; });
}

void CCOMHdl::WritePageProtocolEntry(const char* text) {
    TraceText([text] { return CString(text); });
}

bool Tracing() {
    return CCOMHdl::PageProtocol == CCOMHdl::kTracingOn;
}

void Trace(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    TraceText([&]() -> const CString& {
        CCOMHdl::trace.FormatV(format, arguments);
        return CCOMHdl::trace;
    });
    va_end(arguments);
}

void TraceUnlocked(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    TraceText([&] {
        CString text;
        text.FormatV(format, arguments);
        return text;
    });
    va_end(arguments);
}

int HandleNumber(HANDLE handle) {
    return static_cast<int>(reinterpret_cast<intptr_t>(handle));
}
