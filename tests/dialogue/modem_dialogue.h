// The fixture of dialogue tests: one modem port, COM 1, on a line whose far end the test writes
// down as a script, and the trace as the page leaves it.
#ifndef PAGERFWD_TESTS_DIALOGUE_MODEM_DIALOGUE_H
#define PAGERFWD_TESTS_DIALOGUE_MODEM_DIALOGUE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "linux/win_serial.h"
#include "linux/win_system.h"
#include "tests/dialogue/faults.h"
#include "tests/unit/modem/handler_test.h"

using namespace std::chrono_literals;

// With the zero bytes in it.
constexpr std::string_view operator""_bytes(const char* text, size_t size) {
    return {text, size};
}

// What a modem step answered: its flag, and the code that it stored.
struct Outcome {
    bool done;
    int code;

    bool operator==(const Outcome& other) const { return done == other.done && code == other.code; }
};

inline std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << (outcome.done ? "done, code " : "failed, code ") << outcome.code;
}

constexpr int kUntouched = 99;  // in the place of a code that was not stored
constexpr Outcome kDone{true, 0};
constexpr Outcome Failed(int code) {
    return {false, code};
}

// As long as expected, but for the moments that looks at a quiet line take.
MATCHER_P(IsAbout, expected, "") {
    constexpr std::chrono::milliseconds kMoments{100};
    *result_listener << std::chrono::milliseconds(arg).count() << " ms";
    return arg >= expected && arg < expected + kMoments;
}

class ModemDialogue : public HandlerTest {
 protected:
    ModemDialogue() {
        AddPort("COM 1");
        MakeTracingHandler();
        CCOMHdl::MainModemError = false;
        CCOMHdl::ModemTest = false;
    }

    ~ModemDialogue() override { faults::Reset(); }

    void TearDown() override {
        for (const ComPort* port : CCOMHdl::COMPortTable) {
            CloseHandle(port != nullptr ? port->handle.load() : CCOMHdl::ComHandle);
        }
        HandlerTest::TearDown();
    }

    static ComPort& Port() { return *CCOMHdl::COMPortTable[0]; }
    static ModemSet& Modem() { return *Port().modemSet; }

    // Takes COM 1, after which the trace is empty. The script begins here.
    void Open(unsigned char protocol = kAlphanumericPager) {
        ASSERT_EQ(0, handler->OpenCOMPort("COM 1", protocol));
        // The process's first tick is 0; a wait that also ends at 0 would look refused.
        GetTickCount();
        Sleep(1);
        test_support::ForgetTrace();
        opened_at = pagersim::VirtualClock::Now();
    }

    // Since the port was opened.
    std::chrono::milliseconds Elapsed() const { return pagersim::VirtualClock::Now() - opened_at; }

    bool WaitFor(const char* expected, DWORD timeout_ms = 30000) {
        return handler->WaitString(Port().handle, expected, timeout_ms, false);
    }

    Outcome TransferBy(unsigned char protocol, const std::string& number,
                       const std::string& message) {
        int code = kUntouched;
        const bool done = handler->TransMsg(0, number.c_str(), message.c_str(), protocol, &code);
        return {done, code};
    }

    // The trace but for the matcher's steps: what was done, what went out, what failed.
    static std::vector<std::string> Milestones() {
        std::vector<std::string> milestones;
        for (const std::string& entry : test_support::TraceEntries()) {
            if (!IsMatcherStep(entry)) {
                milestones.push_back(entry);
            }
        }
        return milestones;
    }

    pagersim::ScriptedLine line{1};
    std::chrono::milliseconds opened_at{0};

 private:
    // "WaitString( ...", "WaitString [...", "WaitString() == ...", and "O:4f" for each character.
    static bool IsMatcherStep(const std::string& entry) {
        const bool isCharacter =
            entry.size() >= 3 && entry[1] == ':' &&
            entry.find_first_not_of("0123456789abcdef", 2) == std::string::npos;
        return isCharacter || entry.rfind("WaitString(", 0) == 0 ||
               entry.rfind("WaitString [", 0) == 0;
    }
};

#endif
