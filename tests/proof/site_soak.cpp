// The soak of a whole site: a month of `pagerfwd run` in virtual time, its node and four lines, of
// which all but one fail and come back again and again. Every sending is held against the calls
// that the exchange connected, and memory and descriptors of each process are looked at every hour.
//   site_soak DAYS BINARIES LIBRARIES [sqlite | postgres]
//   site_soak keep DAYS PROGRAM LIBRARY     what runs in the simulated world
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/connection.h"
#include "host/store/database_name.h"
#include "host/store/schema.h"
#include "host/store/tables/sends.h"
#include "tests/proof/ledger.h"
#include "tests/proof/site_databases.h"
#include "tests/proof/site_soak_judge.h"
#include "tests/proof/site_soak_keeper.h"
#include "tests/proof/site_soak_scenario.h"
#include "tests/proof/world_run.h"

namespace proof::site_soak {
namespace {

namespace fs = std::filesystem;
using Samples = std::map<std::string, std::vector<soak::Sample>>;  // by the process's name

constexpr int kMonth = 30;
constexpr int kSettledAt = 48;  // hours: from here on nothing grows any more
constexpr std::uintmax_t kMostTrace = std::uintmax_t{16} << 20;
constexpr size_t kMostComplaints = 20;

// --- The site.

void MakeSite() {
    std::vector<std::string> ports;
    for (const std::string line : kLines) {
        ports.push_back("name = \"" + line + "\"\ndevice = \"" +
                        fs::absolute(DeviceOf(line)).string() + "\"");
    }
    std::string text = soak::SiteText(ports, SitePagers());
    for (int group = 0; group < kGroups; ++group) {
        text += "[[route]]\ngroups = \"G" + std::to_string(group) + "/*\"\npagers = [\"pager" +
                std::to_string(group) + "\", \"pager" + std::to_string(group + kGroups) + "\"]\n";
    }
    host::Connection connection(SiteDatabase(), host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    host::StoreSite(connection, host::ParseSite(text).site);
}

void MakeExchange() {
    std::ofstream text(kExchangeFile);
    for (size_t line = 0; line < kLines.size(); ++line) {
        // Quick to connect: waiting for it is nothing but looks at a quiet line.
        text << "[[line]]\nport = \"COM " << PortOf(line, Modem::kGood)
             << "\"\ndigit_ms = 10\ntraining_ms = 100\n"
             << "[[line]]\nport = \"COM " << PortOf(line, Modem::kSilent) << "\"\npowered = false\n"
             << "[[line]]\nport = \"COM " << PortOf(line, Modem::kWithoutTone)
             << "\"\ndial_tone = false\n";
    }
    const auto centre = [&](const char* name, const char* protocol, const char* number) {
        text << "[[centre]]\nname = \"" << name << "\"\nprotocol = \"" << protocol
             << "\"\nnumbers = [\"" << number << "\"]\n";
    };
    centre("tap", "tap", "5550101");
    centre("ucp", "ucp", "5550102");
    centre("ntt", "ntt", "5550103");
    centre("plain", "plain", "5550100");
    centre("engaged", "plain", "5550109");
    text << "calls = \"busy\"\n";
    centre("hangs up", "plain", "5550110");
    text << "drop_after_hearing = 5\n";
}

// --- What is left of it.

struct Ledger {
    Samples samples;
    int troubles = 0;
    bool node_ended_well = false;
};

Ledger ReadLedger(Books& books) {
    Ledger found;
    std::ifstream ledger(kLedger);
    for (const LedgerLine& line : ReadLedgerLines(ledger)) {
        const std::string& what = line.front();
        if (what == "raised") {
            books.groups[line.at(1)] = line.at(2);
        } else if (what == "acknowledged") {
            books.acknowledged.insert(line.at(1));
        } else if (what == "killed") {
            books.kills.emplace_back(line.at(2), std::stol(line.at(1)));
        } else if (what == "trouble") {
            ++found.troubles;
        } else if (what == "node") {
            found.node_ended_well = line.at(1) == "0";
        } else if (what == "sample") {
            soak::Sample sample;
            sample.hour = std::stoi(line.at(2));
            sample.resident_pages = std::stol(line.at(3));
            sample.descriptors = std::stoi(line.at(4));
            found.samples[line.at(1)].push_back(sample);
        }
    }
    return found;
}

const char* WordFor(const host::PageStory& page) {
    switch (page.end) {
        case host::PageEnd::kDone:
            return "done";
        case host::PageEnd::kOffLimit:
            return "given up";
        case host::PageEnd::kAcknowledged:
        case host::PageEnd::kResolved:  // nothing here is withdrawn
            return "acknowledged";
        case host::PageEnd::kPending:
            return "pending";
        case host::PageEnd::kDropped:
        case host::PageEnd::kByHand:
            break;
    }
    return "dropped";
}

void ReadDatabase(host::Connection& connection, Books& books) {
    for (const auto& [alarm, group] : books.groups) {
        for (const host::PageStory& page : host::PagesOf(connection, alarm)) {
            books.ends[{alarm, page.pager}] = WordFor(page);
        }
        for (const host::Send& send : host::SendsOf(connection, alarm)) {
            books.sendings.push_back({send.port, send.at - static_cast<std::time_t>(send.seconds),
                                      send.at, alarm, send.pager, host::WordOf(send.outcome),
                                      send.reason});
        }
    }
}

void ReadReport(Books& books) {
    std::ifstream file(kReport);
    const nlohmann::json report = nlohmann::json::parse(file);
    const auto wall = [](const nlohmann::json& seconds) {
        return static_cast<double>(kStart) + seconds.get<double>();
    };
    for (const nlohmann::json& call : report["calls"]) {
        const int port = std::stoi(call["line"].get<std::string>().substr(4));
        books.calls.push_back({kLines.at(static_cast<size_t>((port - 1) / kModems)),
                               wall(call["from_seconds"]),
                               wall(call["to_seconds"]),
                               {}});
    }
    for (const nlohmann::json& page : report["pages"]) {
        books.calls.at(page["call"].get<size_t>()).received.push_back(page["recipient"]);
    }
}

int64_t Count(host::Connection& connection, const std::string& change) {
    host::Statement statement(connection, "SELECT count(*) FROM Host_History WHERE change = ?");
    statement.Bind(change).Step();
    return statement.Number(0);
}

// --- What it should be.

// Of a process that has not lived for some days nothing is said.
void JudgeProcesses(const Samples& samples, int days, std::vector<std::string>& complaints) {
    for (const char* name : {"node", kLines.back()}) {
        const auto found = samples.find(name);
        if (found == samples.end()) {
            complaints.push_back(std::string(name) + " was never looked at");
            continue;
        }
        const int from = days > 3 ? kSettledAt : 0;
        for (const std::string& grown :
             soak::GrowthSince(from, found->second, std::string(name) + ": ")) {
            complaints.push_back("grown: " + grown);
        }
    }
    // The others are started anew: none is larger than the one that lives on, by more than a
    // megabyte.
    const auto most = [&](const std::string& name, auto of) {
        long value = 0;
        for (const soak::Sample& sample : samples.at(name)) {
            value = std::max(value, static_cast<long>(of(sample)));
        }
        return value;
    };
    constexpr long kNoise = 256;
    for (const char* line : kLines) {
        const auto resident = [](const soak::Sample& each) { return each.resident_pages; };
        const auto open = [](const soak::Sample& each) { return each.descriptors; };
        if (samples.count(line) != 0 &&
            (most(line, resident) > most(kLines.back(), resident) + kNoise ||
             most(line, open) > most(kLines.back(), open))) {
            complaints.push_back(std::string("grown: ") + line + ", against " + kLines.back());
        }
    }
}

// Six files of a line at the most, of 16 MiB and what comes in a minute.
void JudgeTraces(std::vector<std::string>& complaints) {
    for (const fs::directory_entry& folder :
         fs::directory_iterator(host::BesideName(SiteDatabase()) + "-lines")) {
        int files = 0;
        for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
            ++files;
            if (file.file_size() > kMostTrace + kMostTrace / 16) {
                complaints.push_back("too large: " + file.path().string());
            }
        }
        if (files > 6) {
            complaints.push_back("too many files: " + folder.path().string());
        }
    }
}

int64_t LengthOfHistory(host::Connection& connection) {
    host::Statement statement(connection, "SELECT count(*) FROM Host_History");
    statement.Step();
    return statement.Number(0);
}

// It grows by what happens, and by nothing else: a row where a page is queued, two where it moves
// and is queued anew, is tried, or ends.
void JudgeHistory(host::Connection& connection, const Totals& totals,
                  std::vector<std::string>& complaints) {
    const int64_t most = 3 * totals.pages + 2 * (totals.sent + totals.failed) +
                         2 * Count(connection, "moved") + Count(connection, "engine starts");
    const int64_t length = LengthOfHistory(connection);
    if (length > most) {
        complaints.push_back("too long: a history of " + std::to_string(length) +
                             " changes; at most " + std::to_string(most) + " have happened");
    }
}

bool Report(int days, double seconds) {
    Books books;
    const Ledger ledger = ReadLedger(books);
    host::Connection connection(SiteDatabase());
    ReadDatabase(connection, books);
    ReadReport(books);
    Totals totals = Judge(books);
    JudgeProcesses(ledger.samples, days, totals.complaints);
    JudgeTraces(totals.complaints);
    JudgeHistory(connection, totals, totals.complaints);
    if (!ledger.node_ended_well) {
        totals.complaints.emplace_back("the node did not end well");
    }
    const int64_t moves = Count(connection, "moved");
    const auto was_hung_up_on = [](const Sending& sending) {
        return sending.reason.find("NO CARRIER") != std::string::npos;
    };
    const auto hung_up_on =
        std::count_if(books.sendings.begin(), books.sendings.end(), was_hung_up_on);
    if (days >= kMonth && hung_up_on < 10) {
        totals.complaints.emplace_back("no centre has hung up in the midst of a page");
    }
    if (days >= kMonth && (books.groups.size() < 300 || totals.failed < 50 || moves < 5)) {
        totals.complaints.emplace_back("the month was too quiet");
    }
    long largest = 0;
    for (const auto& [name, samples] : ledger.samples) {
        for (const soak::Sample& sample : samples) {
            largest = std::max(largest, sample.resident_pages);
        }
    }
    for (const std::string& each : totals.doubles) {
        std::cout << "  " << each << "\n";
    }
    for (size_t i = 0; i < std::min(totals.complaints.size(), kMostComplaints); ++i) {
        std::cout << "  " << totals.complaints[i] << "\n";
    }
    std::cout << days << " days of a site of " << kLines.size() << " lines: " << books.groups.size()
              << " alarms, " << totals.pages << " pages (" << totals.done << " done, "
              << totals.given_up << " repeated or tried to the end, " << totals.acknowledged
              << " acknowledged), " << totals.sent << " sent, " << totals.failed << " failed ("
              << hung_up_on << " hung up on), " << ledger.troubles << " troubles, " << moves
              << " moves, " << Count(connection, "engine starts")
              << " starts of lines, a history of " << LengthOfHistory(connection)
              << " changes, largest process " << largest * sysconf(_SC_PAGESIZE) / 1024 << " KiB, "
              << seconds << " s of processor time: "
              << (totals.complaints.empty()
                      ? "every page is accounted for, and nothing grows"
                      : std::to_string(totals.complaints.size()) + " complaints")
              << std::endl;
    return totals.complaints.empty();
}

bool RunSoak(const std::string& days, const fs::path& binaries, const fs::path& libraries,
             const std::string& kind) {
    const WorldFolder folder;
    const std::unique_ptr<SiteDatabases> databases = OpenSiteDatabases(kind);
    const std::string database = databases->Make(fs::current_path());
    databases->Show(database);
    MakeSite();
    databases->FollowTheWorld(database);
    MakeExchange();
    KeepInWorld(days, binaries, libraries);
    return Report(std::stoi(days), ProcessorSecondsOfChildren());
}

}  // namespace
}  // namespace proof::site_soak

int main(int argc, char** argv) {
    using namespace proof::site_soak;
    try {
        if (argc == 5 && std::string(argv[1]) == "keep") {
            KeepSite(std::stoi(argv[2]), argv[3], argv[4]);
            return 0;
        }
        if (argc == 4 || argc == 5) {
            return RunSoak(argv[1], std::filesystem::absolute(argv[2]),
                           std::filesystem::absolute(argv[3]), argc > 4 ? argv[4] : "sqlite")
                       ? 0
                       : 1;
        }
    } catch (const std::exception& fault) {
        std::cerr << "site_soak: " << fault.what() << "\n";
        return 1;
    }
    std::cerr << "site_soak DAYS BINARIES LIBRARIES [sqlite | postgres]\n";
    return 2;
}
