// The paging trace: the file "pageprot.txt" in the working directory, opened and closed for every
// line, so that it may be read or deleted at any time.
// Tested by tests/unit/modem/trace_test.cpp.

#include "modem/trace.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>

#include "linux/CTime.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"

namespace {

constexpr char kSwitch[] = "NX_PAGEPROT";  // an environment variable; its value is never read
constexpr char kFileName[] = "pageprot.txt";
constexpr mode_t kFileMode = 0644;

// Hour, minute and second, padded with blanks: " 7: 5: 9".
CString TimePrefix() {
    const CTime now = CTime::GetCurrentTime();
    CString prefix;
    prefix.Format("%2d:%2d:%2d\t", now.GetHour(), now.GetMinute(), now.GetSecond());
    return prefix;
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
    LockTrace();
    if (!Tracing()) {
        Sleep(MPeekWait);
        UnlockTrace();
        return;
    }
    const CString line = TimePrefix() + text + "\n";
    const int file = OpenFile();
    if (file < 0) {
        // Kept: the lock stays taken. This thread goes on, its trace calls re-enter the lock; every
        // other thread's next trace call waits for good.
        return;
    }
    [[maybe_unused]] const ssize_t written =
        write(file, static_cast<const char*>(line), static_cast<size_t>(line.GetLength()));
    close(file);
    UnlockTrace();
}

bool Tracing() {
    return CCOMHdl::PageProtocol == CCOMHdl::kTracingOn;
}

void Trace(const char* format, ...) {
    if (Tracing()) {
        va_list arguments;
        va_start(arguments, format);
        CCOMHdl::trace.FormatV(format, arguments);
        va_end(arguments);
    }
    CCOMHdl::WritePageProtocolEntry(CCOMHdl::trace);
}

void TraceUnlocked(const char* format, ...) {
    CString text;
    if (Tracing()) {
        va_list arguments;
        va_start(arguments, format);
        text.FormatV(format, arguments);
        va_end(arguments);
    }
    CCOMHdl::WritePageProtocolEntry(text);
}

int HandleNumber(HANDLE handle) {
    return static_cast<int>(reinterpret_cast<intptr_t>(handle));
}
