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

// What a trace call does while nothing is written.
void PauseUnwritten() {
    CCOMHdl::LockTrace();
    Sleep(CCOMHdl::MPeekWait);
    CCOMHdl::UnlockTrace();
}

// The line as the file gets it; false when there is no memory for it.
bool MakeLine(const CString& text, std::string* line) {
    return MemorySufficesFor([&] {
        *line = TimePrefix();
        line->append(text, static_cast<size_t>(text.GetLength())).push_back('\n');
    });
}

// Negative when the file can neither be opened nor made.
int OpenFile() {
    const int file = open(kFileName, O_WRONLY | O_APPEND | O_CLOEXEC);
    return file >= 0 ? file : open(kFileName, O_WRONLY | O_CREAT | O_CLOEXEC, kFileMode);
}

}  // namespace

void CCOMHdl::StartTrace() {
    PageProtocol = getenv(kSwitch) != nullptr ? kTracingOn : kTracingOff;
    if (!Tracing()) {
        return;
    }
    const int file = open(kFileName, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode);
    if (file >= 0) {
        close(file);
    }
}

void CCOMHdl::WritePageProtocolEntry(CString text) {
    if (!Tracing()) {
        PauseUnwritten();
        return;
    }
    LockTrace();
    std::string line;
    if (!MakeLine(text, &line)) {
        UnlockTrace();
        return;
    }
    const int file = OpenFile();
    if (file < 0) {
        // Kept: the lock stays taken. This thread goes on, its trace calls re-enter the lock; every
        // other thread's next trace call waits for good.
        return;
    }
    [[maybe_unused]] const ssize_t written = write(file, line.data(), line.size());
    close(file);
    UnlockTrace();
}

void CCOMHdl::WritePageProtocolEntry(const char* text) {
    if (!Tracing()) {
        PauseUnwritten();
        return;
    }
    MemorySufficesFor([text] { WritePageProtocolEntry(CString(text)); });
}

bool Tracing() {
    return CCOMHdl::PageProtocol == CCOMHdl::kTracingOn;
}

void Trace(const char* format, ...) {
    if (!Tracing()) {
        PauseUnwritten();
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    const bool formatted = MemorySufficesFor([&] { CCOMHdl::trace.FormatV(format, arguments); });
    va_end(arguments);
    if (formatted) {
        CCOMHdl::WritePageProtocolEntry(CCOMHdl::trace);
    }
}

void TraceUnlocked(const char* format, ...) {
    if (!Tracing()) {
        PauseUnwritten();
        return;
    }
    CString text;
    va_list arguments;
    va_start(arguments, format);
    const bool formatted = MemorySufficesFor([&] { text.FormatV(format, arguments); });
    va_end(arguments);
    if (formatted) {
        CCOMHdl::WritePageProtocolEntry(text);
    }
}

int HandleNumber(HANDLE handle) {
    return static_cast<int>(reinterpret_cast<intptr_t>(handle));
}
