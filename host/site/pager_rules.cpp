// What a pager's row has to hold. Tested by tests/unit/host/site_check_test.cpp.
#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/site/barred_tries.h"
#include "host/site/ports_of_pager.h"
#include "host/site/rules.h"
#include "host/site/time_models.h"
#include "host/site/words.h"

namespace host {
namespace {

constexpr const char* kUnreachable = "This pager can never be reached.";

std::string PagerCalled(const Pager& pager) {
    return "pager " + InQuotes(pager.description.value);
}

// Signal, numeric and alphanumeric pagers: a service is dialled, and the number typed in there.
bool IsPlain(const Pager& pager) {
    return pager.type.value == "signal" || pager.type.value == "numeric" ||
           pager.type.value == "alphanumeric";
}

void CheckDescription(const Site& site, size_t index, Findings& findings) {
    const SaidText& description = site.pagers[index].description;
    if (description.missing) {
        return;
    }
    if (description.value.empty()) {
        findings.Error(description.line, "a pager has no description",
                       "An alarm names its pagers by their description.",
                       "Add a line such as: description = \"duty\"");
        return;
    }
    for (size_t before = 0; before < index; ++before) {
        if (site.pagers[before].description.value == description.value) {
            findings.Error(description.line,
                           "pager " + InQuotes(description.value) + " is there already, " +
                               findings.Where(site.pagers[before].line),
                           "Neither of the two could be reached.",
                           "Give each pager a description of its own.");
            return;
        }
    }
}

void CheckType(const Pager& pager, Findings& findings) {
    if (!pager.type.missing && CellFor(kPagerTypes, pager.type.value) == nullptr) {
        findings.Error(pager.type.line,
                       PagerCalled(pager) + ": there is no type " + InQuotes(pager.type.value),
                       "It could not be told how to page it.",
                       "Write " + ListOf(kPagerTypes) + ".");
    }
}

bool HasDigit(std::string_view text) {
    return text.find_first_of("0123456789") != std::string_view::npos;
}

void CheckNumber(const Pager& pager, Findings& findings) {
    if (pager.number.missing) {
        return;
    }
    const std::string& number = pager.number.value;
    const size_t at = number.find('@');
    if (!HasDigit(number)) {
        findings.Error(pager.number.line,
                       PagerCalled(pager) + ": the number " + InQuotes(number) + " has no digits",
                       kUnreachable,
                       "Write the number, or \"PREFIX@NUMBER\" to dial PREFIX behind the port's "
                       "dial command and page NUMBER.");
    } else if (at + 1 == number.size() && pager.type.value != "signal") {
        findings.Warning(pager.number.line,
                         PagerCalled(pager) + ": nothing stands behind the @ of its number",
                         "The number is dialled, and that counts as the page: no text is sent.",
                         "Write the pager's own number behind the @, or make the type \"signal\".");
    }
}

void CheckCount(const Pager& pager, const SaidNumber& number, const char* key, Findings& findings) {
    if (number.value < 0 || number.value > std::numeric_limits<int32_t>::max()) {
        findings.Error(
            number.line, PagerCalled(pager) + ": " + key + " is " + std::to_string(number.value),
            "Pages would be given up at once or never.", "Write a whole number from 0 on.");
    }
}

const char* PartFor(const Pager& pager) {
    return IsSms(pager) ? pager.type.value.c_str() : "pager";
}

// Whether a whole telephone number stands behind its D, and not only an outside line.
bool DialsANumber(std::string_view command) {
    constexpr auto kFewest = 3;
    const size_t dial = std::min(command.find_last_of("Dd"), command.size());
    return std::count_if(command.begin() + static_cast<ptrdiff_t>(dial), command.end(),
                         [](char c) { return c >= '0' && c <= '9'; }) >= kFewest;
}

void CheckPrefix(const Port& port, const Pager& pager, Findings& findings) {
    const std::string& dial = port.pager.dial.value;
    if (IsPlain(pager) && pager.number.value.find('@') == std::string::npos &&
        HasDigit(pager.number.value) && !DialsANumber(dial)) {
        findings.Warning(
            pager.number.line,
            PagerCalled(pager) + ": its number " + InQuotes(pager.number.value) + " has no @",
            "Port " + InQuotes(port.name.value) + " would dial " + InQuotes(dial) +
                " alone: what stands behind the @ is typed in there, and nothing "
                "before it is dialled.",
            "Write \"PREFIX@NUMBER\": PREFIX is the paging service, NUMBER the "
            "pager's own.");
    }
}

void CheckService(const Port& port, const Pager& pager, Findings& findings) {
    if (!port.modem.value) {
        findings.Error(
            pager.port.line,
            PagerCalled(pager) + ": port " + InQuotes(port.name.value) + " has no modem",
            "Such a port dials numbers that are built in and reach nobody.",
            "Name a port with a modem, or set modem = true " + findings.Where(port.line) + ".");
    } else if (DialFor(port, pager).value.empty()) {
        findings.Error(pager.line,
                       PagerCalled(pager) + ": port " + InQuotes(port.name.value) +
                           " has no dial command for it",
                       std::string("The modem would be sent an empty command. ") + kUnreachable,
                       std::string("Add to the port, under [port.") + PartFor(pager) +
                           "]: dial = \"ATDT...\"");
    } else {
        CheckPrefix(port, pager, findings);
    }
}

void CheckNamedPort(const Site& site, const Pager& pager, Findings& findings) {
    const auto port = std::find_if(
        site.ports.begin(), site.ports.end(),
        [&pager](const Port& candidate) { return candidate.name.value == pager.port.value; });
    if (port != site.ports.end()) {
        CheckService(*port, pager, findings);
        return;
    }
    findings.Error(pager.port.line,
                   PagerCalled(pager) + ": there is no port " + InQuotes(pager.port.value),
                   "Every page to it fails (result 5). " + std::string(kUnreachable),
                   "Name a [[port]] of this file, or leave the line out for any.");
}

// Those that can't dial for its type are never asked.
void CheckAnyPort(const Site& site, const Pager& pager, Findings& findings) {
    const std::vector<const Port*> ports = PortsOf(site, pager);
    for (const Port* port : ports) {
        CheckPrefix(*port, pager, findings);
    }
    if (ports.empty() && !site.ports.empty()) {
        findings.Error(pager.line, PagerCalled(pager) + ": no port can dial for it",
                       std::string("No page to it can leave. ") + kUnreachable,
                       std::string("Add to a port with a modem, under [port.") + PartFor(pager) +
                           "]: dial = \"ATDT...\"");
    }
}

void CheckPort(const Site& site, const Pager& pager, Findings& findings) {
    if (pager.port.value.empty()) {
        CheckAnyPort(site, pager, findings);
    } else {
        CheckNamedPort(site, pager, findings);
    }
}

// Hours that allow nothing at all are a mistake of their own.
void CheckTries(const TimeModel& model, const Pager& pager, Findings& findings) {
    const Week week = WeekOf(model);
    const std::optional<size_t> hour = FirstHourInVain(week, pager);
    if (hour && !IsSms(pager) && week.any()) {
        findings.Warning(
            pager.hours.line,
            PagerCalled(pager) + ": its tries can end before its hours " +
                InQuotes(pager.hours.value) + " begin",
            "A try outside the hours counts. An alarm on " +
                std::string(NameOfDay(*hour / kHoursInDay)) + " at " +
                std::to_string(*hour % kHoursInDay) + ":00 would be given up before any page left.",
            "Let retries times delay be longer than the longest break, or page somebody else "
            "then.");
    }
}

void CheckHours(const Site& site, const Pager& pager, Findings& findings) {
    const TimeModel* model = FindTimeModel(site, pager.hours.value);
    if (model == nullptr) {
        if (pager.hours.value != kAlways) {
            findings.Error(
                pager.hours.line,
                PagerCalled(pager) + ": there are no hours " + InQuotes(pager.hours.value),
                "Every page to it fails. " + std::string(kUnreachable),
                "Name one of the [[hours]] of this file, or leave the line out for \"" +
                    std::string(kAlways) + "\".");
        }
    } else if (IsSms(pager) && !WeekOf(*model).all()) {
        findings.Warning(
            pager.hours.line,
            PagerCalled(pager) + ": hours " + InQuotes(pager.hours.value) + " don't cover the week",
            "A page outside them counts as sent, and an SMS page that counts as sent "
            "is done: it is never sent.",
            "Let SMS pagers be paged always, or accept it.");
    } else {
        CheckTries(*model, pager, findings);
    }
}

}  // namespace

void CheckPagers(const Site& site, Findings& findings) {
    for (size_t i = 0; i < site.pagers.size(); ++i) {
        const Pager& pager = site.pagers[i];
        CheckDescription(site, i, findings);
        CheckType(pager, findings);
        CheckNumber(pager, findings);
        CheckCount(pager, pager.retries, "retries", findings);
        CheckCount(pager, pager.delay, "delay", findings);
        CheckPort(site, pager, findings);
        CheckHours(site, pager, findings);
    }
}

}  // namespace host
