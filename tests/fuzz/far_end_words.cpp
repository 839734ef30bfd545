// A far end that says anything, lines of the library's trace above all, while a test page goes out:
// what is read back of the trace is that one page, and its result is the library's own.
//
// The first byte of the input: which dialogue. Then each answer of the far end, as any_far_end.h
// has it.
#include <pagerfwd/pagerfwd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "host/trace/read_trace.h"
#include "linux/win_system.h"
#include "sim/testing.h"
#include "tests/fuzz/any_far_end.h"
#include "tests/fuzz/folder.h"
#include "tests/support/memory_store.h"
#include "tests/support/trace.h"

namespace {

using fuzz::Expect;
using fuzz::Input;
using Outcome = host::TracedPage::Outcome;
using namespace std::chrono_literals;

constexpr time_t kStart = pagersim::VirtualClock::kDefaultStart;

void FillTables(test_support::MemoryStore& store) {
    store.AddAllTables();
    store.Insert("AlarmFwd_COMProperties",
                 {{"Description", "COM 1"}, {"Baud", "2400"},        {"PagerData", "8"},
                  {"PagerParity", "None"},  {"PagerStop", "1"},      {"Flow", "None"},
                  {"Select", "1"},          {"Init", "AT&F"},        {"Reset", "ATZ"},
                  {"PagerDial", "ATDT1"},   {"SMS1Dial", "ATDT2"},   {"SMS1Protocol", "TAP"},
                  {"SMS1Data", "7"},        {"SMS1Parity", "Even"},  {"SMS1Stop", "1"},
                  {"SMS2Dial", "ATDT3"},    {"SMS2Protocol", "UCP"}, {"SMS2Data", "8"},
                  {"SMS2Parity", "None"},   {"SMS2Stop", "1"}});
}

int32_t SendTestPage(int type) {
    std::string database = test_support::MemoryStore::kDatabase;
    std::string pager = "duty";
    std::string number = "5550111";
    std::string port = "COM 1";
    std::string digit = std::to_string(type);
    std::string hours = "always";
    FwdSpecialInfoStr info{database.data(), nullptr, nullptr, nullptr};
    return TestPager(&info, pager.data(), number.data(), port.data(), digit.data(), hours.data());
}

// What an engine of ours would conclude.
class Conclusions : public host::TraceSink {
 public:
    explicit Conclusions(int32_t result) : result_(result) {}

    void OnPage(const host::TracedPage& page) override {
        ++pages;
        const bool sent = page.outcome == Outcome::kSent || page.outcome == Outcome::kDialled;
        Expect(sent == (result_ == 0), "a page is sent when the library says so");
        Expect(sent || (page.outcome == Outcome::kNotSent && page.result == result_),
               "a page that is not sent has the library's result");
        Expect(page.pager == "duty" && page.test, "it is the page that was asked for");
        Expect(page.Port() == "COM 1", "it has left by its port");
    }
    void OnEvent(const host::TraceEvent& event) override {
        Expect(event.meaning.kind != host::TraceKind::kGivenUp, "nothing is given up");
    }

    int pages = 0;

 private:
    int32_t result_;
};

void ReadBack(int32_t result) {
    Conclusions conclusions(result);
    const std::string trace = test_support::TraceText();
    host::TraceReader reader(conclusions);
    reader.Feed(trace);
    reader.Finish();
    Expect(conclusions.pages == 1, "one page goes out, and one is seen");
}

void Run(Input input) {
    const fuzz::InOwnFolder folder;
    const pagersim::VirtualClock clock(kStart + 3600);
    pagersim::VirtualClock::SetStep(250ms);
    test_support::MemoryStore store;
    FillTables(store);
    const int type = input.Upto(5);
    std::string said;
    const pagersim::AttachedLine line(1, std::make_unique<fuzz::AnyFarEnd>(input, said));
    test_support::ForgetTrace();
    setenv(test_support::kTraceSwitch, "", 1);
    ReadBack(SendTestPage(type));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("TZ", "UTC", 1);
    const pagersim::VirtualClock clock(kStart);
    GetTickCount();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Run(Input(data, size));
    return 0;
}
