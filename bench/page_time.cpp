// A whole page on the real clock, at a modem and a centre that answer at once, against the pauses
// that the protocols prescribe.
#include <pagerfwd/pagerfwd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "bench/device.h"
#include "bench/folder.h"
#include "bench/measure.h"
#include "bench/real_line.h"
#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "sim/file/build_exchange.h"
#include "sim/file/exchange_file.h"
#include "sim/phone/modem.h"

namespace bench {
namespace {

constexpr pagersim::Milliseconds kNone{0};

// A modem, and centres, with hardly any time of their own.
pagersim::ModemOptions PromptModem() {
    pagersim::ModemOptions modem;
    modem.answer_delay = modem.answer_gap = kNone;
    modem.dial.digit = modem.dial.comma = kNone;
    modem.phone.training = kNone;
    return modem;
}

pagersim::Subscriber PromptCentre(const char* name, const char* number,
                                  pagersim::CentreOptions options) {
    pagersim::CentreEntry centre;
    centre.subscriber.name = name;
    centre.subscriber.numbers = {number};
    centre.subscriber.answers_after = centre.subscriber.response = kNone;
    centre.options = std::move(options);
    return pagersim::BuildSubscriber(centre, 0);
}

struct PageType {
    const char* name;
    const char* type;  // as TestPager takes it
    const char* number;
    double pauses;  // seconds, of its transfer alone
};
constexpr PageType kTypes[] = {
    {"signal", "0", "5550100@1001", 0},
    {"numeric", "1", "5550100@2002", 0},
    {"alphanumeric", "2", "5550100@3003", 0},
    {"NTT", "3", "5550103", 20 + 2},  // until the pager's exchange listens; behind the digits
    {"first SMS service, TAP", "4", "5550111", 0},
    {"second SMS service, UCP", "5", "5550112", 13},  // until the centre is ready
};

// Of every page: after the reset, before and after; two purges of the fresh port; draining before
// the initialisation.
constexpr double kOfEveryPage = 2 * 5 + 2 * 1 + 1;
constexpr double kUnansweredEscape = 1;

struct NoRecord : pagersim::Recorder {
    void Record(const pagersim::Event& /*event*/) override {}
};

std::string FileText(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string MakeDatabase(const Folder& folder) {
    std::string name = folder.File("site.db");
    host::Connection connection(name, host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    host::StoreSite(connection, host::ParseSite(FileText(EXAMPLE_SITE)).site);
    return name;
}

// The line of the process, from the first page on.
struct Telephone {
    Telephone() {
        // The numbers are those that examples/site.toml dials.
        exchange.Add(PromptCentre("plain", "5550100", pagersim::PlainOptions{}));
        exchange.Add(PromptCentre("tap", "5550101", pagersim::TapOptions{}));
        exchange.Add(PromptCentre("ucp", "5550102", pagersim::UcpOptions{}));
        exchange.Add(PromptCentre("ntt", "5550103", pagersim::NttOptions{}));
        StandIn(line.Device());
        line.Run(modem);
    }

    NoRecord record;
    pagersim::Exchange exchange;
    pagersim::Modem modem{"COM 1", PromptModem(), exchange, record};
    RealLine line;  // ends before what it calls
};

struct Measured {
    int32_t result = -1;
    double seconds = 0;
    double processor = 0;
    double pauses = 0;
};

Measured SendPage(const PageType& type) {
    const Folder folder;
    std::string database = MakeDatabase(folder);
    Telephone telephone;
    int32_t noAlarm = 0;
    FwdSpecialInfoStr info{database.data(), &noAlarm, nullptr, nullptr};
    std::string name = "pager", number = type.number, port = "COM 1", code = type.type, hours;

    Measured measured;
    StartAlarmFwdPager(&info);
    const double begun = SecondsNow();
    const double used = ProcessorSecondsNow();
    measured.result =
        TestPager(&info, name.data(), number.data(), port.data(), code.data(), hours.data());
    measured.seconds = SecondsNow() - begun;
    measured.processor = ProcessorSecondsNow() - used;
    measured.pauses =
        kOfEveryPage + type.pauses + kUnansweredEscape * telephone.line.UnansweredEscapes();
    StopAlarmFwdPager();
    host::CloseDatabases();
    return measured;
}

void ComparePage(const PageType& type) {
    const auto measured = std::make_shared<Measured>();
    const std::string what = std::string("page, ") + type.name;
    Compare(
        what + " (reference: prescribed pauses)",
        [measured, type](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                *measured = SendPage(type);
                SetSeconds(state, measured->seconds);
                if (measured->result != 0) {
                    state.SkipWithError("the page was not sent");
                }
            }
        },
        [measured](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                SetSeconds(state, measured->pauses);
            }
        },
        Length::kOnce);
    Report(what + ", processor time", [measured](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            SetSeconds(state, measured->processor);
        }
    });
}

}  // namespace
}  // namespace bench

void RegisterRows() {
    for (const bench::PageType& type : bench::kTypes) {
        bench::ComparePage(type);
    }
}
