// The busy site.
#include "tests/proof/soak_site.h"

#include <algorithm>
#include <array>
#include <memory>
#include <sstream>
#include <utility>

#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/connection.h"
#include "host/store/schema.h"
#include "sim/centres/ntt_exchange.h"
#include "sim/centres/plain_service.h"
#include "sim/centres/signal_service.h"
#include "sim/centres/tap_centre.h"
#include "sim/centres/ucp_centre.h"

namespace proof::soak {
namespace {

constexpr int kPagers = 20;
constexpr std::array<const char*, 6> kTypes = {"signal", "numeric", "alphanumeric",
                                               "ntt",    "sms1",    "sms2"};

std::vector<Pager> MakePagers() {
    constexpr int kTypeCount = static_cast<int>(kTypes.size());
    std::vector<Pager> pagers;
    for (int i = 0; i < kPagers; ++i) {
        const int type = i % kTypeCount;
        const std::string own = std::to_string(5550200 + i);
        const std::string number = type < 2    ? "5550100@" + own
                                   : type == 2 ? "5550100@" + own
                                   : type == 3 ? "5550103"
                                               : own;
        pagers.push_back({"pager" + std::to_string(i), type, number, 1 + i % 3, 5 + 2 * (i % 4)});
    }
    return pagers;
}

}  // namespace

std::string SiteText(const std::vector<std::string>& ports, const std::vector<Pager>& pagers) {
    std::ostringstream text;
    text << "encoding = \"latin1\"\n";
    for (const std::string& port : ports) {
        text << "[[port]]\n"
             << port << "\nbaud = 9600\nmodem = true\n"
             << "[port.pager]\ndial = \"ATDT\"\nprompt = \">\"\n"
                "[port.sms1]\nprotocol = \"TAP\"\ndial = \"ATDT5550101\"\n"
                "[port.sms2]\nprotocol = \"UCP\"\ndial = \"ATDT5550102\"\n";
    }
    text << "[[hours]]\nname = \"always\"\nall = true\n";
    for (const Pager& pager : pagers) {
        text << "[[pager]]\ndescription = \"" << pager.name << "\"\ntype = \""
             << kTypes.at(static_cast<size_t>(pager.type)) << "\"\nnumber = \"" << pager.number
             << "\"\nretries = " << pager.retries << "\ndelay = " << pager.delay_minutes
             << "\nhours = \"always\"\n";
    }
    return text.str();
}

const std::vector<Pager>& Pagers() {
    static const std::vector<Pager> pagers = MakePagers();
    return pagers;
}

const Pager& PagerNamed(const std::string& name) {
    return *std::find_if(Pagers().begin(), Pagers().end(),
                         [&](const Pager& pager) { return pager.name == name; });
}

void MakeDatabase(const char* path) {
    host::Connection connection(path, host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    host::StoreSite(connection, host::ParseSite(SiteText({"name = \"COM 1\""}, Pagers())).site);
}

void Weather::AddCentres(pagersim::Exchange& exchange) {
    const auto add = [&](const char* name, const char* number, bool has_modem, auto make) {
        pagersim::Subscriber subscriber;
        subscriber.name = name;
        subscriber.numbers = {number};
        subscriber.has_modem = has_modem;
        subscriber.fates = [this] { return NextFate(); };
        subscriber.make_centre = [this, make] {
            return std::make_unique<pagersim::FaultyCentre>(make(), NextFaults());
        };
        exchange.Add(std::move(subscriber));
    };
    add("plain", "5550100", true,
        [] { return std::make_unique<pagersim::PlainService>(pagersim::PlainOptions{}); });
    add("tap", "5550101", true,
        [] { return std::make_unique<pagersim::TapCentre>(pagersim::TapOptions{}); });
    add("ucp", "5550102", true,
        [] { return std::make_unique<pagersim::UcpCentre>(pagersim::UcpOptions{}); });
    add("ntt", "5550103", false, [] { return std::make_unique<pagersim::NttExchange>(); });
}

// Of a hundred calls, so many.
pagersim::Fate Weather::NextFate() {
    const unsigned roll = Roll(100);
    return roll < 8    ? pagersim::Fate::kBusy
           : roll < 11 ? pagersim::Fate::kNoAnswer
           : roll < 14 ? pagersim::Fate::kNoCarrier
                       : pagersim::Fate::kAnswered;
}

pagersim::Faults Weather::NextFaults() {
    pagersim::Faults faults;
    switch (Roll(25)) {
        case 0:
            faults.silent_after = Roll(3);
            break;
        case 1:
            faults.drop_after_hearing = 1 + Roll(80);
            break;
        case 2:
            faults.drop_after_saying = 1 + Roll(20);
            break;
        case 3:
            faults.noise = 30;
            break;
        default:
            latest_is_faulty_ = false;
            return faults;
    }
    latest_is_faulty_ = true;
    return faults;
}

}  // namespace proof::soak
