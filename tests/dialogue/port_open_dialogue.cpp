// Taking a port for a page: which one, how its line is set, how it fails.

#include <functional>
#include <optional>
#include <thread>

#include "linux/win_serial.h"
#include "modem/port_lock.h"
#include "tests/dialogue/modem_dialogue.h"

namespace {

using test_support::TraceEntries;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PortOpening : public ModemDialogue {
 protected:
    PortOpening() { test_support::ForgetTrace(); }

    // A further port, COM 2. The port table is made anew.
    void AddSecondPort(const Cells& changes = {}) {
        second.emplace(2);
        AddPort("COM 2", changes);
        MakeTracingHandler();
    }

    // The only port has a row with these changes. The port table is made anew.
    void Change(const Cells& changes) {
        store.Update(kPorts, {"Description", "COM 1"}, changes);
        MakeTracingHandler();
    }

    int OpenPort(const char* name = "COM 1", int protocol = kSignalPager) {
        return handler->OpenCOMPort(name, static_cast<unsigned char>(protocol));
    }

    static ComPort& PortAt(size_t index) { return *CCOMHdl::COMPortTable[index]; }

    static std::string HandleText(HANDLE handle) {
        return std::to_string(static_cast<int>(reinterpret_cast<intptr_t>(handle)));
    }

    static bool IsLockFree() {
        bool taken = false;
        std::thread other([&taken] {
            const PortLock held;
            taken = true;
        });
        other.join();
        return taken;
    }

    std::optional<pagersim::ScriptedLine> second;
};

TEST_F(PortOpening, TracesEachStep) {
    EXPECT_EQ(0, OpenPort("COM 1", kFirstSmsService));
    EXPECT_THAT(
        TraceEntries(),
        ElementsAre("COM port information:", "COM Name: COM 1",
                    "COM Settings: 2400 / 7 / Even / 1 (None)", "Initialization string: AT&F0",
                    "Reset string: ATZ0", "Dial prefix: ATDT0,5550110", "Activity prompt: #",
                    "SMS1Protocol: TAP", "SMS1Dial: ATDT0,5550111", "SMS2Protocol: UCP",
                    "SMS2Dial: ATDT0,5550112", "Before OpenComm: COM1:", "After OpenComm",
                    "Before ::BuildCommDCB: COM1:2400,E,7,1", "Before SetCommState",
                    "OpenCOMPort() == " + HandleText(Port().handle) + " L:%d %s"));
}

TEST_F(PortOpening, NeverTakesATableTextForAFormat) {
    Change({{"Init", "%s%n"}, {"PagerDial", "%d"}, {"Flow", "%s"}, {"PagerParity", "N%n"}});
    EXPECT_EQ(0, OpenPort());
    const std::vector<std::string> entries = TraceEntries();
    EXPECT_EQ("COM Settings: 2400 / 8 / N%n / 1 (%s)", entries[2]);
    EXPECT_EQ("Initialization string: %s%n", entries[3]);
    EXPECT_EQ("Dial prefix: %d", entries[5]);
}

TEST_F(PortOpening, LeavesThePortInUseAndItsLineReady) {
    const HANDLE probed = Port().handle;
    EXPECT_EQ(0, OpenPort());
    EXPECT_TRUE(Port().inUse);
    EXPECT_NE(probed, Port().handle);
    EXPECT_EQ(CCOMHdl::ComHandle, Port().handle);
    EXPECT_EQ(line.Opens(), line.Closes() + 1);
    EXPECT_TRUE(IsLockFree());
    EXPECT_TRUE(handler->CloseCOMPort(0));
    EXPECT_FALSE(Port().inUse);
    EXPECT_EQ(line.Opens(), line.Closes());
    EXPECT_EQ(0, OpenPort()) << "it can be taken again";
}

TEST_F(PortOpening, ReportsReceivedCharactersAndDiscardsOldOnes) {
    line.Says("RING\r\n");
    EXPECT_EQ(0, OpenPort());
    EXPECT_FALSE(WaitFor("RING", 0)) << "from before the page";
    line.Says("OK");
    DWORD events = 0;
    EXPECT_EQ(1, GetCommMask(Port().handle, &events));
    EXPECT_EQ(1U, events);
}

// --- The line's settings.

struct LineCase {
    const char* what;
    unsigned char protocol;
    tcflag_t size;
    tcflag_t parity;  // of PARENB and PARODD
    tcflag_t stop;    // of CSTOPB
};

class LineSettings : public PortOpening, public ::testing::WithParamInterface<LineCase> {};

TEST_P(LineSettings, AreThoseOfTheProtocolsGroup) {
    EXPECT_EQ(0, OpenPort("COM 1", GetParam().protocol));
    const termios settings = line.Settings();
    EXPECT_EQ(speed_t{B2400}, cfgetospeed(&settings));
    EXPECT_EQ(speed_t{B2400}, cfgetispeed(&settings));
    EXPECT_EQ(GetParam().size, settings.c_cflag & CSIZE);
    EXPECT_EQ(GetParam().parity, settings.c_cflag & (PARENB | PARODD));
    EXPECT_EQ(GetParam().stop, settings.c_cflag & CSTOPB);
    EXPECT_EQ(tcflag_t{CRTSCTS}, settings.c_cflag & CRTSCTS);
    EXPECT_EQ(0U, settings.c_iflag & (IXON | IXOFF));
    EXPECT_EQ(0U, settings.c_lflag & (ICANON | ECHO | ISIG));
}

const LineCase kLines[] = {
    {"signal pager", 0, CS8, 0, 0},
    {"numeric pager", 1, CS8, 0, 0},
    {"alphanumeric pager", 2, CS8, 0, 0},
    {"NTT pager", 3, CS8, 0, 0},
    {"first SMS service", 4, CS7, PARENB, 0},
    {"second SMS service", 5, CS8, PARENB | PARODD, CSTOPB},
};

INSTANTIATE_TEST_SUITE_P(Protocols, LineSettings, ::testing::ValuesIn(kLines),
                         [](const auto& instance) {
                             return "Selector" + std::to_string(instance.param.protocol);
                         });

TEST_F(PortOpening, TakesTheSpeedOfTheRow) {
    Change({{"Baud", "115200"}});
    EXPECT_EQ(0, OpenPort());
    const termios settings = line.Settings();
    EXPECT_EQ(speed_t{B115200}, cfgetospeed(&settings));
}

TEST_F(PortOpening, TakesTheParityByItsFirstLetter) {
    Change({{"PagerParity", "Odd, please"}, {"PagerData", "7"}});
    EXPECT_EQ(0, OpenPort());
    EXPECT_EQ(tcflag_t{PARENB | PARODD}, line.Settings().c_cflag & (PARENB | PARODD));
}

// Once for each of the two purges.
TEST_F(PortOpening, EndsWithTwoSecondsOfSilence) {
    const auto begun = pagersim::VirtualClock::Now();
    EXPECT_EQ(0, OpenPort());
    EXPECT_EQ(std::chrono::seconds(2), pagersim::VirtualClock::Now() - begun);
}

struct FlowCase {
    const char* flow;
    DWORD cts_dsr;
    DWORD xon_xoff;
};

class FlowControl : public PortOpening, public ::testing::WithParamInterface<FlowCase> {};

TEST_P(FlowControl, IsAskedForInTheControlBlock) {
    Change({{"Flow", GetParam().flow}});
    EXPECT_EQ(0, OpenPort());
    const DCB block = faults::LatestControlBlock();
    EXPECT_EQ(28U, block.DCBlength);
    EXPECT_EQ(2400U, block.BaudRate);
    EXPECT_EQ(1U, block.fDtrControl);
    EXPECT_EQ(GetParam().cts_dsr, block.fOutxCtsFlow);
    EXPECT_EQ(GetParam().cts_dsr, block.fOutxDsrFlow);
    EXPECT_EQ(GetParam().xon_xoff, block.fOutX);
    EXPECT_EQ(GetParam().xon_xoff, block.fInX);
    EXPECT_EQ(GetParam().xon_xoff * 17, static_cast<DWORD>(block.XonChar));
    EXPECT_EQ(GetParam().xon_xoff * 19, static_cast<DWORD>(block.XoffChar));
    EXPECT_EQ(GetParam().xon_xoff * 100, block.XonLim);
    EXPECT_EQ(GetParam().xon_xoff * 100, block.XoffLim);
}

const FlowCase kFlows[] = {
    {"None", 0, 0}, {"", 0, 0},         {"Hardware", 1, 0}, {"h", 1, 0},
    {"X", 0, 1},    {"xon/xoff", 0, 1}, {"Software", 0, 0},
};

INSTANTIATE_TEST_SUITE_P(Words, FlowControl, ::testing::ValuesIn(kFlows));

// --- Which port.

TEST_F(PortOpening, AnyPortIsTheFirstFreeOne) {
    AddSecondPort();
    for (const char* any : {"", "A", "a", "Any", "anything"}) {
        test_support::ForgetTrace();
        EXPECT_EQ(0, OpenPort(any)) << any;
        EXPECT_EQ("OpenCOMPort: 0:1:0\n", TraceEntries()[0]);
        EXPECT_EQ("Found: 0\n", TraceEntries()[1]);
        EXPECT_EQ("COM port information:", TraceEntries()[2]);
        handler->CloseCOMPort(0);
    }
}

TEST_F(PortOpening, AnyPortPassesOneInUse) {
    AddSecondPort();
    ASSERT_EQ(0, OpenPort(""));
    test_support::ForgetTrace();
    EXPECT_EQ(1, OpenPort(""));
    EXPECT_EQ("OpenCOMPort: 0:1:1\n", TraceEntries()[0]);
    EXPECT_EQ("OpenCOMPort: 1:1:0\n", TraceEntries()[1]);
    EXPECT_EQ("Found: 1\n", TraceEntries()[2]);
    test_support::ForgetTrace();
    EXPECT_EQ(-1, OpenPort(""));
    EXPECT_THAT(TraceEntries(), ElementsAre("OpenCOMPort: 0:1:1\n", "OpenCOMPort: 1:1:1\n"));
    EXPECT_TRUE(IsLockFree());
}

TEST_F(PortOpening, AnyPortPassesOneWithoutAModem) {
    Change({{"Select", "0"}});
    AddSecondPort();
    EXPECT_EQ(1, OpenPort("A"));
    EXPECT_EQ("OpenCOMPort: 0:0:0\n", TraceEntries()[0]);
    EXPECT_FALSE(PortAt(0).inUse);
}

TEST_F(PortOpening, AnyPortOfNone) {
    line.PlugOut();
    MakeTracingHandler();
    EXPECT_EQ(-1, OpenPort(""));
    EXPECT_THAT(TraceEntries(), IsEmpty());
    EXPECT_TRUE(IsLockFree());
}

TEST_F(PortOpening, NamedPortIsThatOfExactlyThisName) {
    AddSecondPort();
    EXPECT_EQ(1, OpenPort("COM 2"));
    EXPECT_EQ("COM port information:", TraceEntries()[0]) << "no line for each port";
    test_support::ForgetTrace();
    for (const char* name : {"COM 3", "COM1", "com 1", "COM 1 ", "C", "c"}) {
        EXPECT_EQ(-1, OpenPort(name)) << name;
    }
    EXPECT_THAT(TraceEntries(), IsEmpty());
    EXPECT_FALSE(PortAt(0).inUse);
    EXPECT_TRUE(IsLockFree());
}

TEST_F(PortOpening, NamedModemPortInUseIsRefused) {
    ASSERT_EQ(0, OpenPort());
    test_support::ForgetTrace();
    EXPECT_EQ(-2, OpenPort());
    EXPECT_THAT(TraceEntries(), IsEmpty());
    EXPECT_TRUE(Port().inUse);
    EXPECT_TRUE(IsLockFree());
}

TEST_F(PortOpening, KeepsTakingANamedPortWithoutAModemThatIsInUse) {
    Change({{"Select", "0"}});
    Port().inUse = true;
    EXPECT_EQ(0, OpenPort());
    EXPECT_TRUE(Port().inUse);
}

TEST_F(PortOpening, AnyOtherSelectorIsRefused) {
    for (const char* selector : {"B", "1", " COM 1", "OM 1", "?"}) {
        EXPECT_EQ(-1, OpenPort(selector)) << selector;
    }
    EXPECT_THAT(TraceEntries(), IsEmpty());
    EXPECT_FALSE(Port().inUse);
    EXPECT_TRUE(IsLockFree());
}

// --- Ports without a modem.

TEST_F(PortOpening, KeepsPortsWithoutAModemOnTheDefaultStrings) {
    Change({{"Select", "0"}});
    EXPECT_EQ(0, OpenPort());
    EXPECT_EQ("Isn't a Modemport", TraceEntries()[3]);
    EXPECT_EQ("Before OpenComm: COM1:", TraceEntries()[4]);
    EXPECT_EQ(Modem().init, "AT&F");
    EXPECT_EQ(Modem().reset, "ATZ");
    EXPECT_EQ(Modem().dialPrefix, "ATDT0,5550100");
    EXPECT_EQ(Modem().activityPrompt, ">");
    EXPECT_EQ(Modem().sms1Protocol, "TAP");
    EXPECT_EQ(Modem().sms1Number, "ATDT0,5550101");
    EXPECT_EQ(Modem().sms2Protocol, "UCP");
    EXPECT_EQ(Modem().sms2Number, "ATDT0,5550102");

    int code = kUntouched;
    line.Hears("ATDT0,5550100\r").Says("CONNECT");
    EXPECT_TRUE(handler->Dial(0, "", kSignalPager, "x", true, &code));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(PortOpening, LeavesAModemPortItsOwnStrings) {
    EXPECT_EQ(0, OpenPort());
    EXPECT_EQ(Modem().init, "AT&F0");
    EXPECT_EQ(Modem().dialPrefix, "ATDT0,5550110");
}

TEST_F(PortOpening, GivesModemStringsToAPortThatHasNone) {
    Change({{"Select", "0"}});
    delete Port().modemSet;
    Port().modemSet = nullptr;
    EXPECT_EQ(0, OpenPort());
    ASSERT_NE(nullptr, Port().modemSet);
    EXPECT_EQ(Modem().reset, "ATZ");
}

TEST_F(PortOpening, FailsWithoutMemoryForModemStrings) {
    Change({{"Select", "0"}});
    delete Port().modemSet;
    Port().modemSet = nullptr;
    faults::FailNextModemSet();
    EXPECT_EQ(-5, OpenPort());
    EXPECT_EQ("OpenCOMPort() == -5 L:%d %s", TraceEntries().back());
    EXPECT_TRUE(Port().inUse);
    EXPECT_EQ(line.Opens(), line.Closes() + 1) << "the device stays open";
    EXPECT_TRUE(IsLockFree());
}

// --- Failures. A port that was chosen stays in use.

TEST_F(PortOpening, FailsForANameWithoutADigit) {
    Port().name = "COM x";
    EXPECT_EQ(-1, OpenPort("COM x"));
    EXPECT_EQ("OpenCOMPort: bad name: 0:COM x\n", TraceEntries().back());
    EXPECT_TRUE(Port().inUse);
    EXPECT_TRUE(IsLockFree());
}

TEST_F(PortOpening, FailsForADeviceThatIsGone) {
    const HANDLE probed = Port().handle;
    line.PlugOut();
    EXPECT_EQ(-1, OpenPort());
    const std::vector<std::string> entries = TraceEntries();
    ASSERT_LE(4U, entries.size());
    EXPECT_THAT(std::vector<std::string>(entries.end() - 4, entries.end()),
                ElementsAre("Before OpenComm: COM1:", "After OpenComm",
                            "OpenCOMPort [::OpenComm result IE_BADID: unknown com port (COM1:)] "
                            "L:%d",
                            "OpenCOMPort() == -1 L:%d %s"));
    EXPECT_TRUE(Port().inUse);
    EXPECT_EQ(probed, Port().handle);
    EXPECT_EQ(INVALID_HANDLE_VALUE, CCOMHdl::ComHandle);
    EXPECT_TRUE(IsLockFree());
    EXPECT_EQ(-2, OpenPort()) << "until the handler is made anew";
}

struct OpenErrorCase {
    int code;
    const char* text;  // null: none is traced
    int result;
};

class OpenError : public PortOpening, public ::testing::WithParamInterface<OpenErrorCase> {};

TEST_P(OpenError, IsTracedAndAnswered) {
    line.PlugOut();
    faults::SetLastError(GetParam().code);
    EXPECT_EQ(GetParam().result, OpenPort());

    std::vector<std::string> expected = {"After OpenComm"};
    if (GetParam().text != nullptr) {
        expected.push_back("OpenCOMPort [::OpenComm result " + std::string(GetParam().text) +
                           "] L:%d");
    }
    expected.push_back("OpenCOMPort() == " + std::to_string(GetParam().result) + " L:%d %s");
    const std::vector<std::string> entries = TraceEntries();
    ASSERT_LE(expected.size(), entries.size());
    EXPECT_EQ(expected, std::vector<std::string>(entries.end() - static_cast<long>(expected.size()),
                                                 entries.end()));
    EXPECT_TRUE(Port().inUse);
    EXPECT_TRUE(IsLockFree());
}

const OpenErrorCase kOpenErrors[] = {
    {-1, "IE_BADID: unknown com port (COM1:)", -1},
    {-2, "IE_OPEN: device is already open, used by another application", -2},
    {-3, "IE_NOPEN: device is not open", -3},
    {-4, "IE_MEMORY: queue memory allocation error", -3},
    {-5, "IE_DEFAULT: COM port default parameters are in error", -3},
    {-6, nullptr, -3},
    {-9, nullptr, -3},
    {-10, "IE_BYTESIZE: invalid bytesize", -3},
    {-11, "IE_BYTESIZE: invalid bytesize", -3},
    {-12, "IE_BAUDRATE: baudrate not supported", -3},
    {-13, nullptr, -3},
    {2, nullptr, -3},
};

INSTANTIATE_TEST_SUITE_P(Codes, OpenError, ::testing::ValuesIn(kOpenErrors));

TEST_F(PortOpening, FailsSafelyWhenAFailedOpeningHasNoCode) {
    line.PlugOut();
    faults::SetLastError(0);
    EXPECT_GT(0, OpenPort());
    EXPECT_TRUE(IsLockFree());
}

TEST_F(PortOpening, FailsForASelectorWithoutLineSettings) {
    for (const int protocol : {6, 255}) {
        MakeTracingHandler();
        const int open = line.Opens() - line.Closes();
        EXPECT_EQ(-4, OpenPort("COM 1", protocol));
        const std::vector<std::string> entries = TraceEntries();
        EXPECT_EQ("COM Settings: 2400 /  (None)", entries[2]);
        ASSERT_LE(2U, entries.size());
        EXPECT_EQ("Before ::BuildCommDCB: COM1:2400,", entries[entries.size() - 2]);
        EXPECT_EQ("OpenCOMPort() == -4 L:%d %s", entries.back());
        EXPECT_TRUE(Port().inUse);
        EXPECT_EQ(open + 1, line.Opens() - line.Closes()) << "the device stays open";
        EXPECT_EQ(CCOMHdl::ComHandle, Port().handle);
        EXPECT_TRUE(IsLockFree());
        handler->CloseCOMPort(0);
    }
}

TEST_F(PortOpening, FailsForASpeedBelowAll) {
    Change({{"Baud", "200"}});
    EXPECT_EQ(-4, OpenPort());
    EXPECT_EQ("OpenCOMPort() == -4 L:%d %s", TraceEntries().back());
    EXPECT_TRUE(Port().inUse);
    EXPECT_EQ(line.Opens(), line.Closes() + 1);
}

TEST_F(PortOpening, FailsForSettingsThatTheLineRefuses) {
    Change({{"PagerParity", "Mark"}});
    faults::SetLastError(-77);
    EXPECT_EQ(-4, OpenPort());
    const std::vector<std::string> entries = TraceEntries();
    ASSERT_LE(2U, entries.size());
    EXPECT_EQ("Before SetCommState", entries[entries.size() - 2]);
    EXPECT_EQ("OpenCOMPort() == -4 -77 L:%d %s", entries.back());
    EXPECT_TRUE(Port().inUse);
    EXPECT_EQ(line.Opens(), line.Closes()) << "the device is closed again";
    EXPECT_TRUE(IsLockFree());
}

// --- Locks.

TEST_F(PortOpening, WaitsForThePortLock) {
    bool opened = false;
    std::optional<std::thread> other;
    {
        const PortLock held;
        other.emplace([&] { opened = OpenPort() == 0; });
        Sleep(5000);  // Time passes only when the other thread waits.
        EXPECT_THAT(TraceEntries(), IsEmpty());
    }
    other->join();
    EXPECT_TRUE(opened);
}

}  // namespace
