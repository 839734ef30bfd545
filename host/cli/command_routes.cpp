// pagerfwd routes: whom an alarm would page. Tested by tests/unit/host/cli_routes_test.cpp.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/cli/severities.h"
#include "host/pages/routes.h"
#include "host/site/barred_tries.h"
#include "host/site/ports_of_pager.h"
#include "host/site/read_back.h"
#include "host/site/site_tables.h"
#include "host/site/time_models.h"
#include "host/store/look.h"
#include "host/text/json.h"
#include "host/text/nearest.h"
#include "host/text/printable.h"
#include "host/text/text_table.h"
#include "host/trace/calendar.h"
#include "host/trace_view/page_filter.h"

namespace host {
namespace {

constexpr int64_t kMinutesInDay = kHoursInDay * kMinutesInHour;

struct RoutesOptions {
    std::string group;
    std::string severity;
    std::string at;
    bool json = false;
};

// A minute of local time, counted from 1970.
int64_t MinuteAt(const std::string& at) {
    if (!at.empty()) {
        try {
            return ParseInstant(at) / 60;
        } catch (const NoInstant& reason) {
            throw Failure(kUsage, std::string("--at: ") + reason.what());
        }
    }
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const int64_t day = DayOf(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday).value_or(0);
    return day * kMinutesInDay + local.tm_hour * kMinutesInHour + local.tm_min;
}

// 1 January 1970 was a Thursday.
int64_t MinuteOfWeek(int64_t minute) {
    constexpr int64_t kThursday = 3;
    constexpr auto kDays = static_cast<int64_t>(kDaysInWeek);
    const int64_t day = (minute / kMinutesInDay + kThursday) % kDays;
    return day * kMinutesInDay + minute % kMinutesInDay;
}

std::string InWords(int64_t minute) {
    const auto day = static_cast<size_t>(MinuteOfWeek(minute) / kMinutesInDay);
    return std::string(NameOfDay(day)) + " " + IsoDate(minute / kMinutesInDay) + " " +
           ClockTime(static_cast<int>(minute % kMinutesInDay * 60)).substr(0, 5);
}

// Whom the alarm goes to, one after the other. UTF-8.
struct Receiver {
    std::string pager;
    std::string type;
    std::string ports;
    std::string hours;
    std::string outcome;
    bool is_paged = false;  // at once
};

class Receivers {
 public:
    Receivers(const Site& site, int64_t minute) : site_(site), minute_(minute) {}

    Receiver Named(const std::string& name) const {
        const auto is_named = [&](const Pager& pager) { return pager.description.value == name; };
        const auto pager = std::find_if(site_.pagers.begin(), site_.pagers.end(), is_named);
        if (std::count_if(site_.pagers.begin(), site_.pagers.end(), is_named) != 1) {
            return {name, "-", "-", "-",
                    pager == site_.pagers.end() ? "not paged: there is no such pager"
                                                : "not paged: it stands twice in the database"};
        }
        Receiver receiver{name, pager->type.value, Ports(*pager), pager->hours.value, "", false};
        receiver.outcome = Outcome(*pager, receiver.ports);
        receiver.is_paged = receiver.outcome == kPaged;
        return receiver;
    }

 private:
    static constexpr const char* kPaged = "paged";
    static constexpr const char* kNoPort = "none";

    std::string Ports(const Pager& pager) const {
        std::string names;
        for (const Port* const port : PortsOf(site_, pager)) {
            names += (names.empty() ? "" : " or ") + port->name.value;
        }
        return names.empty() ? kNoPort : names;
    }

    std::string Outcome(const Pager& pager, const std::string& ports) const {
        const TimeModel* const model = FindTimeModel(site_, pager.hours.value);
        if (ports == kNoPort) {
            return pager.port.value.empty() ? "fails: no port can dial for it"
                                            : "fails: there is no such port";
        }
        if (model == nullptr) {
            return "fails: there are no such hours";
        }
        const std::optional<int64_t> barred =
            MinutesBarred(WeekOf(*model), pager, MinuteOfWeek(minute_));
        if (barred == 0) {
            return kPaged;
        }
        if (IsSms(pager)) {
            return "barred: never paged, since outside its hours an SMS page counts as sent";
        }
        return barred ? "barred until the try of " + InWords(minute_ + *barred)
                      : "barred: never paged, since its tries end before its hours begin";
    }

    const Site& site_;
    const int64_t minute_;
};

void Print(const RoutesOptions& options, int64_t minute, const std::vector<Receiver>& receivers) {
    std::cout << "group \"" << Shortened(Printable(options.group), TextTable::kWidest)
              << "\", severity " << options.severity << ", " << InWords(minute) << "\n";
    TextTable table({"PAGER", "TYPE", "PORT", "HOURS", "THEN"});
    for (const Receiver& one : receivers) {
        table.Add({Printable(one.pager), Printable(one.type), Printable(one.ports),
                   Printable(one.hours), one.outcome});
    }
    std::cout << (receivers.empty() ? "no route leads to a pager; nobody is paged\n"
                                    : table.Text());
}

Json ToJson(const Receiver& one) {
    return {{"pager", one.pager}, {"type", one.type},      {"port", one.ports},
            {"hours", one.hours}, {"paged", one.is_paged}, {"then", one.outcome}};
}

void PrintJson(const RoutesOptions& options, int64_t minute,
               const std::vector<Receiver>& receivers) {
    Json list = Json::array();
    for (const Receiver& one : receivers) {
        list.push_back(ToJson(one));
    }
    std::cout << Written({{"group", options.group},
                          {"severity", options.severity},
                          {"at", InWords(minute)},
                          {"pagers", std::move(list)}})
              << "\n";
}

ExitCode Routes(const Program& program, const RoutesOptions& options) {
    const std::string severity = SeverityFor(options.severity);
    const int64_t minute = MinuteAt(options.at);
    const std::vector<Receiver> receivers = Look(program.database, [&](Connection& database) {
        const Encoding encoding = EncodingOf(database);
        const Site site = ReadSiteBack(database).site;
        // As the alarm would have it.
        const std::string group = Decode(EncodeNearest(options.group, encoding), encoding);
        std::vector<Receiver> found;
        for (const std::string& pager :
             PagersFor(ReadRoutes(database, encoding), group, severity)) {
            found.push_back(Receivers(site, minute).Named(Decode(pager, encoding)));
        }
        return found;
    });
    options.json ? PrintJson(options, minute, receivers) : Print(options, minute, receivers);
    const bool is_anybody_paged = std::any_of(receivers.begin(), receivers.end(),
                                              [](const Receiver& one) { return one.is_paged; });
    return is_anybody_paged ? kDone : kNo;
}

}  // namespace

void AddRoutes(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("routes", "Show whom an alarm would page, without raising it");
    const auto options = std::make_shared<RoutesOptions>();
    command->add_option("--group", options->group, "The alarm's group")->required();
    command->add_option("--severity", options->severity, "How bad it is")->required();
    command->add_option("--at", options->at,
                        "When it is raised: 2001-01-08 17:30, local time (without it: now)");
    command->add_flag("--json", options->json, "As JSON");
    command->footer(
        "The pagers, in the order in which they are queued, with the ports that their pages may\n"
        "leave by, and what their hours make of the page then. The exit code is 1 where nobody\n"
        "would be paged at once.\n\n"
        "Example:\n"
        "  pagerfwd routes --group PLANT/017 --severity critical --at \"2001-01-08 03:00\"\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Routes(program, *options); };
    });
}

}  // namespace host
