// Recognising what the modem, or the paging service behind it, says.
//
// The wait polls and never blocks: each pass reads what is there, adds it to what was said so far,
// and looks at the whole. A pass that brought nothing only looks at the time. The trace shows each
// step of the search, in the form below; a search takes at most three rounds, since from the second
// on the text begins with the character that is looked for.
//
// Tested by tests/dialogue/wait_string_dialogue.cpp.

#include <algorithm>
#include <string_view>

#include "linux/XStringView.h"
#include "linux/win_serial.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "modem/trace.h"

namespace {

constexpr int kTracedLength = 80;  // of the text said so far
constexpr int kKeptLength = 254;   // of the text said so far, from one pass to the next

// The modem's failure answers, in the order in which they are looked for.
struct FailureAnswer {
    const CString* text;
    const char* traceText;
};

const FailureAnswer kFailureAnswers[] = {
    {&CCOMHdl::MStrNoDial, "Modem FAILURE: NO DIALTONE"},
    {&CCOMHdl::MStrBusy, "Modem FAILURE: BUSY"},
    {&CCOMHdl::MStrNoCarrier, "Modem FAILURE: NO CARRIER"},
    {&CCOMHdl::MStrNoAnswer, "Modem FAILURE: NO ANSWER"},
    {&CCOMHdl::MStrError, "Modem FAILURE: ERROR"},
};

void TraceStep(const char* text) {
    CCOMHdl::WritePageProtocolEntry(text);
}

// What waits on the line; empty when nothing does.
CString ReadWaiting(HANDLE handle) {
    CString text;
    DWORD mask = EV_RXCHAR;
    if (GetCommMask(handle, &mask) == 0) {
        return text;
    }
    DWORD errors = 0;
    COMSTAT status{};
    ClearCommError(handle, &errors, &status);
    if (status.cbInQue > 0) {
        DWORD count = 0;
        char* buffer = text.GetBuffer(static_cast<int>(status.cbInQue));
        ReadFile(handle, buffer, status.cbInQue, &count, nullptr);
        text.ReleaseBuffer(static_cast<int>(count));
    }
    return text;
}

// Kept: the characters come from the beginning of all that was said, not from the `count` bytes
// just read, and no further than the part shown above them.
void TraceSaid(const CString& modemSays, int count) {
    const CString shown = modemSays.Left(kTracedLength);
    TraceUnlocked("WaitString [modemsay=%s] L:%%d", static_cast<const char*>(shown));
    for (int i = 0; i < std::min(count, shown.GetLength()); ++i) {
        const auto code = static_cast<signed char>(shown[i]);
        TraceUnlocked("%c:%x", code, static_cast<unsigned>(code));
    }
}

// Whether `expected` occurs in modemSays.
bool Match(const CString& modemSays, const CString& expected) {
    const std::string_view wanted = View(expected);
    std::string_view scanText = View(modemSays);
    size_t lastPos = std::string_view::npos;
    for (;;) {
        TraceStep("WaitString [3rd WHILE] L:%d");
        const size_t pos = scanText.find(wanted.substr(0, 1));
        if (pos == std::string_view::npos) {
            TraceStep("WaitString [first not found] L:%d");
            return false;
        }
        TraceStep("WaitString [tmpsay includes first letter] L:%d");
        scanText.remove_prefix(pos);
        if (scanText.size() < wanted.size()) {
            TraceStep("WaitString [not long enough] L:%d");
            return false;
        }
        TraceStep("WaitString [tmpsay still long enough] L:%d");
        if (scanText.find(wanted) != std::string_view::npos) {
            TraceStep("WaitString [!!SUCCESS!!] L:%d");
            TraceUnlocked("WaitString [modemsay=%s]", static_cast<const char*>(modemSays));
            TraceUnlocked("WaitString [tmpsay=%s]", scanText.data());
            return true;
        }
        if (pos == lastPos) {
            return false;
        }
        lastPos = pos;
    }
}

// The first of the failure answers that occurs, or null.
const FailureAnswer* FindFailureAnswer(const CString& modemSays) {
    for (const FailureAnswer& answer : kFailureAnswers) {
        if (View(modemSays).find(View(*answer.text)) != std::string_view::npos) {
            return &answer;
        }
    }
    return nullptr;
}

void Truncate(CString& modemSays) {
    const int length = modemSays.GetLength();
    if (length > kKeptLength) {
        modemSays = modemSays.Mid(length / 2);
        TraceStep("modemsay truncated!!");
    }
}

}  // namespace

bool CCOMHdl::WaitString(HANDLE handle, CString expected, DWORD timeoutMs, bool) {
    m_modemSaid.Empty();
    TraceUnlocked("WaitString( int %d, CString %s, DWORD %ld, BOOL %d ) L:%%d %%s",
                  HandleNumber(handle), static_cast<const char*>(expected),
                  static_cast<long>(static_cast<int32_t>(timeoutMs)), ModemTest ? 0 : 1);

    DWORD deadline = GetTickCount() + timeoutMs;  // Kept: may wrap around, and then ends at once.
    CString modemSays;
    bool found = false;
    do {
        if (MPeekWait != 0) {
            Sleep(MPeekWait);
        }
        const CString readText = ReadWaiting(handle);
        if (readText.IsEmpty()) {
            continue;
        }
        modemSays += readText;
        m_modemSaid = modemSays;
        TraceSaid(modemSays, readText.GetLength());
        // Kept: an answer shorter than the expected text is not even searched for failures.
        if (modemSays.GetLength() >= expected.GetLength()) {
            TraceStep("WaitString [modemsay id long enough] L:%d");
            found = Match(modemSays, expected);
            if (found) {
                modemSays.Empty();
            } else if (const FailureAnswer* answer = FindFailureAnswer(modemSays)) {
                MainModemError = true;
                deadline = 0;
                TraceStep(answer->traceText);
            }
        }
        Truncate(modemSays);
    } while (!found && GetTickCount() <= deadline);

    if (!found && deadline != 0 && !MainModemError) {
        TraceStep("WaitString NO SUCCESS");
    }
    TraceUnlocked("WaitString() == %d L:%%d %%", found ? 1 : 0);
    return found;
}
