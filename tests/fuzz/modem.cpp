// A whole page over a line whose far end says anything: port opened, modem initialised, dialled,
// message transferred by each dialogue, modem reset, port given back. Settings, number and message
// are any texts too.
//
// Whatever is said, the page ends in time with a code that fits, the port is free again, and a
// dialogue that went well has heard what it waits for, in order.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "linux/win_serial.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "sim/testing.h"
#include "tests/fuzz/any_far_end.h"
#include "tests/fuzz/folder.h"
#include "tests/support/memory_store.h"
#include "tests/support/trace.h"

namespace {

using fuzz::Expect;
using fuzz::Input;
using pagersim::VirtualClock;
using namespace std::chrono_literals;

// Ticks are counted from the process's first look: they must not begin behind a run's time.
constexpr time_t kStart = VirtualClock::kDefaultStart;

// All waits of a page, each of them to its end, with what the purges may take.
constexpr auto kLongestPage = 15min;

struct Page {
    unsigned char protocol;
    bool traced;
    std::string prompt, smsProtocol, number, message;
};

Page ReadPage(Input& input) {
    Page page;
    page.protocol = static_cast<unsigned char>(input.Upto(6));
    page.traced = input.OnceIn(2);
    page.prompt = fuzz::UpToNul(input.Text());
    const std::string service = input.Text();
    page.smsProtocol = service.empty() ? "TAP" : service == "U" ? "UCP" : fuzz::UpToNul(service);
    page.number = fuzz::UpToNul(input.Text());
    page.message = fuzz::UpToNul(input.Text());
    return page;
}

void FillTables(test_support::MemoryStore& store, const Page& page) {
    store.AddAllTables();
    store.Insert("AlarmFwd_COMProperties", {{"Description", "COM 1"},
                                            {"Baud", "2400"},
                                            {"PagerData", "8"},
                                            {"PagerParity", "None"},
                                            {"PagerStop", "1"},
                                            {"Flow", "None"},
                                            {"Select", "1"},
                                            {"Init", "AT&F"},
                                            {"Reset", "ATZ"},
                                            {"PagerDial", "ATDT1"},
                                            {"PagerActivity", page.prompt},
                                            {"SMS1Dial", "ATDT2"},
                                            {"SMS1Protocol", page.smsProtocol},
                                            {"SMS1Data", "7"},
                                            {"SMS1Parity", "Even"},
                                            {"SMS1Stop", "1"},
                                            {"SMS2Dial", "ATDT3"},
                                            {"SMS2Protocol", "UCP"},
                                            {"SMS2Data", "8"},
                                            {"SMS2Parity", "odd"},
                                            {"SMS2Stop", "2"}});
}

bool OccurInOrder(const std::string& said, const std::vector<std::string>& texts) {
    size_t at = 0;
    for (const std::string& text : texts) {
        at = said.find(text, at);
        if (at == std::string::npos) {
            return false;
        }
        at += text.size();
    }
    return true;
}

// What a far end must have said for this page to have gone well.
std::vector<std::string> Needed(const Page& page) {
    const bool first = page.protocol == kFirstSmsService;
    const bool second = page.protocol == kSecondSmsService;
    if (second || (first && page.smsProtocol == "UCP")) {
        return {"OK", "/A/"};
    }
    if (first && page.smsProtocol == "TAP") {
        return {"OK", "ID=", "\x1b[p\r", "\r\x06\r", "\x1b\x04"};
    }
    if (page.protocol == kNTTPager) {
        return {"OK", "OK"};
    }
    return {"OK"};
}

void Send(CCOMHdl& handler, const Page& page, const std::string& said) {
    const int port = handler.OpenCOMPort("COM 1", page.protocol);
    if (port < 0) {
        // The handle of a port whose settings are refused stays open, by rule.
        CloseHandle(CCOMHdl::ComHandle);
        return;
    }
    Expect(port == 0, "the one port is taken");
    int code = 99;
    bool done = handler.InitModem(port, &code);
    Expect(done || code == kModemInitFailed, "a modem that isn't initialised is code 8");
    if (done) {
        done = handler.Dial(port, page.number.c_str(), page.protocol, page.message.c_str(),
                            page.protocol != kNTTPager, &code);
        Expect(code == (done ? kModemSuccess : kDialFailed), "a failed dial is code 6");
    }
    if (done) {
        done =
            handler.TransMsg(port, page.number.c_str(), page.message.c_str(), page.protocol, &code);
        Expect(code == (done ? kModemSuccess : kTransferFailed), "a failed transfer is code 7");
        Expect(!done || OccurInOrder(said, Needed(page)), "what went well was said so");
    }
    handler.ResetModem(port);
    handler.CloseCOMPort(port);
    Expect(!CCOMHdl::COMPortTable[0]->inUse, "the port is given back");
}

void Run(Input input) {
    const fuzz::InOwnFolder folder;
    const VirtualClock clock(kStart + 3600);
    VirtualClock::SetStep(250ms);
    const Page page = ReadPage(input);
    test_support::MemoryStore store;
    FillTables(store, page);
    std::string said;
    const pagersim::AttachedLine line(1, std::make_unique<fuzz::AnyFarEnd>(input, said));
    test_support::ForgetTrace();
    {
        if (page.traced) {
            setenv(test_support::kTraceSwitch, "", 1);
        } else {
            unsetenv(test_support::kTraceSwitch);
        }
        CCOMHdl::MainModemError = false;
        CCOMHdl handler(test_support::MemoryStore::kDatabase);
        if (CCOMHdl::COMPortTable[0] != nullptr) {
            Send(handler, page, said);
        }
    }
    Expect(VirtualClock::Now() < kLongestPage, "a page ends");
    const std::string verdict = store.Verdict();
    Expect(verdict.empty(), verdict.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const VirtualClock clock(kStart);
    GetTickCount();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Run(Input(data, size));
    return 0;
}
