// A site whose line can have a fault.
#include "tests/proof/line_site.h"

#include <chrono>
#include <utility>

#include "engine/longest_page.h"
#include "modem/COMHdl.h"
#include "sim/centres/ntt_exchange.h"
#include "sim/centres/plain_service.h"
#include "sim/centres/signal_service.h"
#include "sim/centres/tap_centre.h"
#include "sim/centres/ucp_centre.h"
#include "sim/phone/modem.h"

namespace proof {
namespace {

using namespace std::chrono_literals;

constexpr const char* kText = "TEST/Informational/TESTSERVER/test";

}  // namespace

const std::vector<PagerKind> kPagerKinds = {
    {"Tap", "4", "5550111", "5550111", kText, "\x1b\x04"},
    {"Ucp", "5", "5550112", "5550112", kText, "/A/"},
    {"Alphanumeric", "2", "5550100@3003", "3003", nullptr, ">"},
    {"Numeric", "1", "5550100@2002", "2002", nullptr, ">"},
    {"Signal", "0", "5550104@", "5550104", nullptr, nullptr},
    {"Ntt", "3", "5550103", "5550103", nullptr, nullptr},
};

std::ostream& operator<<(std::ostream& out, const PagerKind& kind) {
    return out << kind.name;
}

LineSite::LineSite() {
    pagersim::VirtualClock::SetStep(50ms);
    FillTables();
    AddCentres();
    auto front = std::make_unique<FaultyLine>(
        std::make_unique<pagersim::Modem>("COM 1", pagersim::ModemOptions{}, exchange, received));
    faulty = front.get();
    line = std::make_unique<pagersim::AttachedLine>(1, std::move(front));
    faulty->plug_out = [this] { line->PlugOut(); };
    faulty->plug_in = [this] { line->PlugIn(); };
    StartAlarmFwdPager(&info);
}

LineSite::~LineSite() {
    StopAlarmFwdPager();
    EXPECT_EQ("", store.Verdict());
}

int LineSite::Page() {
    received.pages.clear();
    received.said.clear();
    const auto begun = pagersim::VirtualClock::Now();
    std::string number = GetParam().number;
    std::string type = GetParam().type;
    const int code = TestPager(&info, name, number.data(), port, type.data(), hours);
    EXPECT_LE(pagersim::VirtualClock::Now() - begun, std::chrono::milliseconds(LongestPageMs()));
    return code;
}

bool LineSite::WasDelivered() const {
    const PagerKind& kind = GetParam();
    return received.pages.size() == 1 && received.pages[0].recipient == kind.recipient &&
           (kind.text == nullptr || received.pages[0].text == kind.text);
}

void LineSite::ExpectThatAllIsWell(size_t nth) {
    EXPECT_FALSE(CCOMHdl::COMPortTable[0]->inUse) << "at byte " << nth;
    EXPECT_EQ(line->Opens(), line->Closes()) << "at byte " << nth;
    faulty->Plan(LineFault::kNone, 0);
    centre_faults = {};
    EXPECT_EQ(0, Page()) << "after byte " << nth;
    EXPECT_TRUE(WasDelivered()) << "after byte " << nth;
}

int LineSite::PageWith(LineFault fault, size_t nth, const std::set<int>& codes) {
    faulty->Plan(fault, nth);
    const int code = Page();
    EXPECT_TRUE(faulty->HasHappened()) << "at byte " << nth;
    EXPECT_EQ(1U, codes.count(code)) << "code " << code << " at byte " << nth;
    if (GetParam().text != nullptr && code == 0) {
        EXPECT_TRUE(WasDelivered()) << "at byte " << nth;
    }
    return code;
}

LineSite::Counts LineSite::CountBytes() {
    faulty->Plan(LineFault::kNone, 0);
    EXPECT_EQ(0, Page());
    EXPECT_TRUE(WasDelivered());
    return {faulty->Sent().size(), faulty->Heard().size()};
}

void LineSite::FillTables() {
    store.AddAllTables();
    store.InsertTimeModel("always", std::string(168, '1'));
    store.Insert("AlarmFwd_COMProperties", {{"Description", "COM 1"},
                                            {"Baud", "9600"},
                                            {"PagerData", "8"},
                                            {"PagerParity", "None"},
                                            {"PagerStop", "1"},
                                            {"Flow", "None"},
                                            {"Select", "1"},
                                            {"Init", "AT&F"},
                                            {"Reset", "ATZ"},
                                            {"PagerDial", "ATDT"},
                                            {"PagerActivity", ">"},
                                            {"SMS1Dial", "ATDT5550101"},
                                            {"SMS1Protocol", "TAP"},
                                            {"SMS1Data", "7"},
                                            {"SMS1Parity", "Even"},
                                            {"SMS1Stop", "1"},
                                            {"SMS2Dial", "ATDT5550102"},
                                            {"SMS2Protocol", "UCP"},
                                            {"SMS2Data", "8"},
                                            {"SMS2Parity", "None"},
                                            {"SMS2Stop", "1"}});
}

void LineSite::AddCentres() {
    const auto add = [&](const char* number, bool has_modem, auto make) {
        pagersim::Subscriber subscriber;
        subscriber.name = "centre";
        subscriber.numbers = {number};
        subscriber.has_modem = has_modem;
        subscriber.make_centre = [this, make] {
            return std::make_unique<pagersim::FaultyCentre>(make(), centre_faults);
        };
        exchange.Add(std::move(subscriber));
    };
    add("5550100", true,
        [] { return std::make_unique<pagersim::PlainService>(pagersim::PlainOptions{}); });
    add("5550101", true,
        [] { return std::make_unique<pagersim::TapCentre>(pagersim::TapOptions{}); });
    add("5550102", true,
        [] { return std::make_unique<pagersim::UcpCentre>(pagersim::UcpOptions{}); });
    add("5550103", false, [] { return std::make_unique<pagersim::NttExchange>(); });
    add("5550104", false, [] { return std::make_unique<pagersim::SignalService>(); });
}

}  // namespace proof
