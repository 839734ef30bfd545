// The Win32-named serial calls, on simulated lines.
#include "linux/win_serial.h"

#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "sim/testing.h"

namespace {

using namespace std::chrono_literals;
using pagersim::ScriptedLine;
using pagersim::VirtualClock;

constexpr int32_t kFormerError = 77;

bool no_memory_for_handles = false;

}  // namespace

void* operator new(size_t size) {
    constexpr size_t kBlockOfHandles = 512;
    const bool fails =
        no_memory_for_handles && size == kBlockOfHandles && !pagersim::IsInSimulation();
    void* const memory = fails ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
// By the one above, as the C++ library has it; a sanitizer's would take memory of its own.
void* operator new(size_t size, const std::nothrow_t& /*none*/) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t /*size*/) noexcept {
    std::free(memory);
}

namespace {

// All nine ports are there.
struct CreateFileTest : testing::Test {
    CreateFileTest() {
        for (int com = 1; com <= 9; ++com) {
            ports.push_back(std::make_unique<ScriptedLine>(com));
        }
    }

    // Which port a name opens; 0 for none.
    int PortOf(const char* name) const {
        const HANDLE handle = CreateFile(name);
        if (handle == INVALID_HANDLE_VALUE) {
            return 0;
        }
        int opened = 0;
        for (int com = 1; com <= 9; ++com) {
            const ScriptedLine& port = *ports[static_cast<size_t>(com - 1)];
            opened = port.Opens() > port.Closes() ? com : opened;
        }
        EXPECT_EQ(1, CloseHandle(handle));
        return opened;
    }

    VirtualClock clock;
    std::vector<std::unique_ptr<ScriptedLine>> ports;
};

TEST_F(CreateFileTest, FirstDigitIsThePort) {
    for (int com = 1; com <= 9; ++com) {
        EXPECT_EQ(com, PortOf(("COM" + std::to_string(com)).c_str()));
    }
    EXPECT_EQ(4, PortOf("\\\\.\\COM4"));
    EXPECT_EQ(3, PortOf("3"));
    EXPECT_EQ(2, PortOf("COM2:9600,n,8,1"));
}

TEST_F(CreateFileTest, KeepsToOneDigit) {
    EXPECT_EQ(1, PortOf("COM10"));
    EXPECT_EQ(9, PortOf("COM98"));
    EXPECT_EQ(0, PortOf("COM0"));
    EXPECT_EQ(0, PortOf("COM01"));
}

TEST_F(CreateFileTest, ArgumentsBehindTheNameAreIgnored) {
    const HANDLE handle =
        CreateFile("COM1", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, handle);
    EXPECT_EQ(1, CloseHandle(handle));
}

TEST_F(CreateFileTest, SuccessLeavesTheErrorAlone) {
    win_errno = kFormerError;
    EXPECT_EQ(1, PortOf("COM1"));
    EXPECT_EQ(kFormerError, GetLastError());
}

TEST_F(CreateFileTest, FailureLeavesAnErrorThatIsNotZero) {
    ports[0]->PlugOut();
    for (const char* const name : {"COM1", "COM", "", "COM0"}) {
        SCOPED_TRACE(name);
        win_errno = 0;
        EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFile(name));
        EXPECT_EQ(-1, GetLastError());
    }
    EXPECT_EQ(INVALID_HANDLE_VALUE, CreateFile(nullptr));
    intptr_t all_ones = 0;
    const HANDLE invalid = CreateFile("COM1");
    memcpy(&all_ones, &invalid, sizeof all_ones);
    EXPECT_EQ(-1, all_ones);
}

TEST_F(CreateFileTest, ProbingAllPortsTakesNoTime) {
    ports[3]->PlugOut();
    ports[8]->PlugOut();
    for (int com = 1; com <= 9; ++com) {
        PortOf(("COM" + std::to_string(com)).c_str());
    }
    EXPECT_EQ(0ms, VirtualClock::Now());
}

DCB Mode(const char* text) {
    DCB dcb{};
    EXPECT_EQ(1, BuildCommDCB(text, &dcb));
    return dcb;
}

struct SerialTest : testing::Test {
    SerialTest() {
        const DCB dcb = Mode("COM2:9600,n,8,1");
        EXPECT_EQ(1, SetCommState(handle, &dcb));
        win_errno = kFormerError;
    }
    ~SerialTest() override {
        EXPECT_EQ(kFormerError, GetLastError()) << "no call but those that say so sets it";
        CloseHandle(handle);
    }

    // The bytes that wait to be read.
    DWORD Waiting() const {
        DWORD errors = 99;
        COMSTAT status;
        memset(&status, 0xee, sizeof status);
        EXPECT_EQ(1, ClearCommError(handle, &errors, &status));
        EXPECT_EQ(0U, errors);
        return status.cbInQue;
    }

    DWORD Events() const {
        DWORD events = 99;
        EXPECT_EQ(1, GetCommMask(handle, &events));
        return events;
    }

    VirtualClock clock;
    ScriptedLine port{2};
    HANDLE handle = CreateFile("COM2");
};

TEST_F(SerialTest, ClosingGivesTheDeviceBackOnce) {
    EXPECT_EQ(1, port.Opens());
    EXPECT_EQ(0, port.Closes());
    EXPECT_EQ(1, CloseHandle(handle));
    EXPECT_EQ(1, port.Closes());
    EXPECT_EQ(1, CloseHandle(handle));
    EXPECT_EQ(1, port.Closes());
}

struct StateCase {
    const char* mode;
    speed_t speed;
    tcflag_t flags;
};

TEST_F(SerialTest, ModeReachesTheLine) {
    const StateCase cases[] = {
        {"COM2:300,n,8,1", B300, CS8},
        {"COM2:2400,e,7,1", B2400, CS7 | PARENB},
        {"COM2:9600,O,6,2", B9600, CS6 | PARENB | PARODD | CSTOPB},
        {"COM2:460800,n,5,2", B460800, CS5 | CSTOPB},
    };
    for (const StateCase& c : cases) {
        SCOPED_TRACE(c.mode);
        const DCB dcb = Mode(c.mode);
        EXPECT_EQ(1, SetCommState(handle, &dcb));
        const termios set = port.Settings();
        EXPECT_EQ(c.speed, cfgetospeed(&set));
        EXPECT_EQ(c.flags, set.c_cflag & (CSIZE | PARENB | PARODD | CSTOPB));
        EXPECT_EQ(tcflag_t{HUPCL | CLOCAL | CREAD | CRTSCTS},
                  set.c_cflag & (HUPCL | CLOCAL | CREAD | CRTSCTS));
        EXPECT_EQ(0U, set.c_lflag & (ICANON | ECHO | ISIG)) << "raw";
    }
}

TEST_F(SerialTest, AnyStopBitsButOneAreTwo) {
    DCB dcb = Mode("COM2:9600,n,8,1");
    dcb.StopBits = 1;
    EXPECT_EQ(1, SetCommState(handle, &dcb));
    EXPECT_EQ(tcflag_t{CSTOPB}, port.Settings().c_cflag & CSTOPB);
}

TEST_F(SerialTest, ModesThatPassTheParserCanFailHere) {
    for (const char* const mode : {"COM2:9600,m,8,1", "COM2:9600,s,8,1", "COM2:600,n,8,1",
                                   "COM2:1800,n,8,1", "COM2:99999999999,n,8,1"}) {
        SCOPED_TRACE(mode);
        const DCB dcb = Mode(mode);
        EXPECT_EQ(0, SetCommState(handle, &dcb));
    }
}

TEST_F(SerialTest, BlockThatNoParserMadeFailsSafely) {
    DCB dcb = Mode("COM2:9600,n,8,1");
    dcb.Parity = 5;
    EXPECT_EQ(0, SetCommState(handle, &dcb));
    dcb.Parity = 255;
    EXPECT_EQ(0, SetCommState(handle, &dcb));
    dcb = Mode("COM2:9600,n,8,1");
    dcb.BaudRate = 0xffffffff;
    EXPECT_EQ(0, SetCommState(handle, &dcb));
    EXPECT_EQ(0, SetCommState(handle, nullptr));
}

TEST_F(SerialTest, WritesAndSaysHowMuch) {
    DWORD written = 99;
    EXPECT_EQ(1, WriteFile(handle, "ATZ\r", 4, &written, nullptr));
    EXPECT_EQ(4U, written);
    EXPECT_EQ("ATZ\r", port.Heard());
}

TEST_F(SerialTest, ShortCountIsASuccess) {
    port.PlugOut();
    DWORD written = 99;
    EXPECT_EQ(1, WriteFile(handle, "ATZ\r", 4, &written, nullptr));
    EXPECT_EQ(0U, written);
}

TEST_F(SerialTest, WritingNothingInParticularFails) {
    DWORD written = 99;
    EXPECT_EQ(0, WriteFile(handle, nullptr, 4, &written, nullptr));
    EXPECT_EQ(0U, written);
}

TEST_F(SerialTest, ReadsWhatIsThereWithoutWaiting) {
    char buffer[16];
    DWORD read = 99;
    EXPECT_EQ(1, ReadFile(handle, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ(0U, read);
    EXPECT_EQ(0ms, VirtualClock::Now());
    port.Says("CONNECT");
    Sleep(1);
    EXPECT_EQ(1, ReadFile(handle, buffer, 3, &read, nullptr));
    EXPECT_EQ("CON", std::string(buffer, read));
    EXPECT_EQ(1, ReadFile(handle, buffer, 0xffffffff, &read, nullptr));
    EXPECT_EQ("NECT", std::string(buffer, read));
}

TEST_F(SerialTest, StatusCountsTheBytesThatWait) {
    EXPECT_EQ(0U, Waiting());
    EXPECT_EQ(0ms, VirtualClock::Now());
    port.Says("OK\r\n");
    Sleep(1);
    EXPECT_EQ(4U, Waiting());
    EXPECT_EQ(4U, Waiting());
}

TEST_F(SerialTest, StatusIsOtherwiseZeroAndMayBeLeftOut) {
    DWORD errors = 99;
    COMSTAT status;
    memset(&status, 0xee, sizeof status);
    EXPECT_EQ(1, ClearCommError(handle, &errors, &status));
    const COMSTAT zero{};
    EXPECT_EQ(0, memcmp(&zero, &status, sizeof zero));
    errors = 99;
    EXPECT_EQ(1, ClearCommError(handle, &errors, nullptr));
    EXPECT_EQ(0U, errors);
}

TEST_F(SerialTest, EventIsThatBytesWait) {
    EXPECT_EQ(1, SetCommMask(handle, EV_RXCHAR));
    EXPECT_EQ(0U, Events());
    EXPECT_EQ(0ms, VirtualClock::Now());
    port.Says("x");
    Sleep(1);
    EXPECT_EQ(EV_RXCHAR, Events());
    EXPECT_EQ(EV_RXCHAR, Events()) << "it says what is, not what is new";
    char byte = 0;
    DWORD read = 0;
    ReadFile(handle, &byte, 1, &read, nullptr);
    EXPECT_EQ(0U, Events());
}

TEST_F(SerialTest, EventIsReportedOnlyWhenAskedFor) {
    port.Says("x");
    Sleep(1);
    EXPECT_EQ(0U, Events()) << "nothing is asked for after the opening";
    for (const DWORD mask : {0U, 2U, 0xfffffffeU}) {
        EXPECT_EQ(1, SetCommMask(handle, mask));
        EXPECT_EQ(0U, Events()) << mask;
    }
    for (const DWORD mask : {1U, 3U, 0xffffffffU}) {
        EXPECT_EQ(1, SetCommMask(handle, mask));
        EXPECT_EQ(EV_RXCHAR, Events()) << mask;
    }
}

TEST_F(SerialTest, PurgeDiscardsUntilASecondIsQuiet) {
    port.Says("noise").Says("more", 900ms);
    EXPECT_EQ(1, PurgeComm(handle, PURGE_RXABORT));
    EXPECT_EQ(1900ms, VirtualClock::Now());
    EXPECT_EQ(0U, Waiting());
    EXPECT_EQ(1, PurgeComm(handle, PURGE_TXABORT));
    EXPECT_EQ(2900ms, VirtualClock::Now());
}

TEST_F(SerialTest, ClosedHandleStandsForNoLine) {
    EXPECT_EQ(1, SetCommMask(handle, EV_RXCHAR));
    CloseHandle(handle);
    // A line opened meanwhile isn't reached through it.
    const HANDLE other = CreateFile("COM2");
    ASSERT_NE(INVALID_HANDLE_VALUE, other);
    ASSERT_NE(other, handle);
    port.Says("x");
    Sleep(1);
    const DCB dcb = Mode("COM2:9600,n,8,1");
    EXPECT_EQ(0, SetCommState(handle, &dcb));
    DWORD moved = 99;
    EXPECT_EQ(0, WriteFile(handle, "AT\r", 3, &moved, nullptr));
    EXPECT_EQ(0U, moved);
    char buffer[4];
    moved = 99;
    EXPECT_EQ(0, ReadFile(handle, buffer, sizeof buffer, &moved, nullptr));
    EXPECT_EQ(0U, moved);
    EXPECT_EQ(0U, Waiting());
    EXPECT_EQ(0U, Events());
    EXPECT_EQ(1, PurgeComm(handle, 0));
    EXPECT_EQ(1, SetCommMask(handle, 0));
    EXPECT_EQ("", port.Heard());
    CloseHandle(other);
}

TEST_F(SerialTest, HandlesStayValidHoweverManyFollow) {
    CloseHandle(handle);
    std::vector<HANDLE> closed = {handle};
    for (int i = 0; i < 2000; ++i) {
        const HANDLE next = CreateFile("COM2");
        ASSERT_NE(INVALID_HANDLE_VALUE, next);
        CloseHandle(next);
        closed.push_back(next);
    }
    for (const HANDLE stale : closed) {
        DWORD moved = 99;
        ASSERT_EQ(0, WriteFile(stale, "AT\r", 3, &moved, nullptr));
    }
}

constexpr int kHandleWasStillThere = 7;
HANDLE used_at_the_end = nullptr;

// Runs when every object of the program is destroyed. What they gave back is in use for other
// things by then.
[[gnu::destructor]] void UseAHandleAtTheEnd() {
    if (used_at_the_end == nullptr) {
        return;
    }
    for (int i = 0; i < 100; ++i) {
        constexpr size_t kBlock = 512;
        std::memset(std::malloc(kBlock), 0xff, kBlock);
    }
    DWORD events = 99;
    const BOOL answered = GetCommMask(used_at_the_end, &events);
    _exit(answered == 1 && events == 0 ? kHandleWasStillThere : 1);
}

using SerialDeathTest = SerialTest;

// The record of a handle comes with a block of its container, when the one before is used up.
TEST_F(SerialTest, LineIsGivenBackWhenThereIsNoMemoryForItsHandle) {
    no_memory_for_handles = true;
    HANDLE refused = handle;
    for (int i = 0; i < 100 && refused != INVALID_HANDLE_VALUE; ++i) {
        refused = CreateFile("COM2");
        CloseHandle(refused);
    }
    no_memory_for_handles = false;
    EXPECT_EQ(INVALID_HANDLE_VALUE, refused);
    EXPECT_EQ(IE_BADID, GetLastError());
    win_errno = kFormerError;
    EXPECT_EQ(port.Opens(), port.Closes() + 1) << "all but the fixture's own";
}

// A page may be on the line in another thread while the process ends.
TEST_F(SerialDeathTest, HandleStaysValidUntilTheProcessHasEnded) {
    SetCommMask(handle, EV_RXCHAR);
    CloseHandle(handle);
    const auto end = [this] {
        used_at_the_end = handle;
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(kHandleWasStillThere), "");
}

TEST(InvalidHandle, FailsEveryCall) {
    VirtualClock clock;
    const DCB dcb = Mode("COM2:9600,n,8,1");
    for (const HANDLE handle : {INVALID_HANDLE_VALUE, HANDLE{nullptr}}) {
        DWORD value = 99;
        char buffer[4];
        COMSTAT status;
        memset(&status, 0xee, sizeof status);
        EXPECT_EQ(0, SetCommState(handle, &dcb));
        EXPECT_EQ(0, WriteFile(handle, "AT\r", 3, &value, nullptr));
        EXPECT_EQ(0U, value);
        value = 99;
        EXPECT_EQ(0, ReadFile(handle, buffer, sizeof buffer, &value, nullptr));
        EXPECT_EQ(0U, value);
        value = 99;
        EXPECT_EQ(0, ClearCommError(handle, &value, &status));
        EXPECT_EQ(0U, value);
        EXPECT_EQ(0U, status.cbInQue);
        EXPECT_EQ(0, SetCommMask(handle, EV_RXCHAR));
        value = 99;
        EXPECT_EQ(0, GetCommMask(handle, &value));
        EXPECT_EQ(0U, value);
        EXPECT_EQ(0, PurgeComm(handle, PURGE_RXABORT));
        EXPECT_EQ(0, CloseHandle(handle));
    }
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST(ParityLetters, StandInTheOrderOfTheBlock) {
    EXPECT_STREQ("noems", abbr_parity);
    EXPECT_EQ('n', abbr_parity[NOPARITY]);
    EXPECT_EQ('o', abbr_parity[ODDPARITY]);
    EXPECT_EQ('e', abbr_parity[EVENPARITY]);
    EXPECT_EQ('m', abbr_parity[MARKPARITY]);
    EXPECT_EQ('s', abbr_parity[SPACEPARITY]);
}

}  // namespace
