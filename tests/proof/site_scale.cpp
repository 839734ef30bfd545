// Many nodes over one PostgreSQL server, in virtual time: eight of `pagerfwd run` with eight lines
// each, as many as a world has, 50,000 alarms a day, and every hour a node that is killed. Every
// alarm is held against what the centres received.
//   site_scale ALARMS BINARIES LIBRARIES
//   site_scale keep ALARMS PROGRAM LIBRARY     what runs in the simulated world
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/connection.h"
#include "host/store/schema.h"
#include "tests/proof/ledger.h"
#include "tests/proof/site_databases.h"
#include "tests/proof/site_scale_judge.h"
#include "tests/proof/site_scale_keeper.h"
#include "tests/proof/site_scale_scenario.h"
#include "tests/proof/world_run.h"
#include "tests/proof/write_watch.h"

namespace proof::site_scale {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMostComplaints = 20;

// --- The site.

void MakeSite() {
    std::vector<std::string> ports;
    for (int com = 1; com <= kLines; ++com) {
        const std::string name = LineOnPort(com);
        ports.push_back("name = \"" + name + "\"\nnode = \"" + name.substr(0, name.find(' ')) +
                        "\"\ndevice = \"/dev/ttyS" + std::to_string(com - 1) + "\"");
    }
    std::vector<soak::Pager> pagers;
    for (int group = 0; group < kGroups; ++group) {
        pagers.push_back(PagerOf(group));
    }
    std::string text = soak::SiteText(ports, pagers);
    for (int group = 0; group < kGroups; ++group) {
        text += "[[route]]\ngroups = \"" + GroupName(group) + "/*\"\npagers = [\"" +
                PagerOf(group).name + "\"]\n";
    }
    for (int node = 1; node <= kNodes; ++node) {
        text += "[[node]]\nname = \"" + NodeName(node) + "\"\n";
    }
    host::Connection connection(SiteDatabase(), host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    WatchWrites(SiteDatabase());
    host::StoreSite(connection, host::ParseSite(text).site);
}

void MakeExchange() {
    std::ofstream text(kExchangeFile);
    for (int com = 1; com <= kLines; ++com) {
        // Quick to connect: waiting for it is nothing but looks at a quiet line.
        text << "[[line]]\nport = \"COM " << com << "\"\ndigit_ms = 10\ntraining_ms = 100\n";
    }
    text << "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n";
}

// --- What is left of it.

struct Size {
    int processes = 0;
    long pages = 0, most_pages = 0;
    int most_descriptors = 0;

    void Add(long more_pages, int descriptors) {
        ++processes;
        pages += more_pages;
        most_pages = std::max(most_pages, more_pages);
        most_descriptors = std::max(most_descriptors, descriptors);
    }
};

struct Ledger {
    std::map<std::string, int> numbers;  // of alarms, by those of the library
    std::vector<std::string> killed;     // nodes
    std::map<std::pair<std::string, std::string>, Size> sizes;  // when, of nodes or lines
    int ended_well = 0;                                         // nodes
    bool is_whole = false;
};

Ledger ReadLedger(Books& books) {
    Ledger found;
    std::ifstream ledger(kLedger);
    for (const LedgerLine& line : ReadLedgerLines(ledger)) {
        const std::string& what = line.front();
        if (what == "raised") {
            const int number = std::stoi(line.at(2));
            books.alarms[number] = {std::stoi(line.at(3)), std::stol(line.at(4))};
            found.numbers[line.at(1)] = number;
        } else if (what == "killed") {
            found.killed.push_back(line.at(1));
        } else if (what == "sample") {
            const bool of_line = line.at(2).find("-line") != std::string::npos;
            found.sizes[{line.at(1), of_line ? "lines" : "nodes"}].Add(std::stol(line.at(3)),
                                                                       std::stoi(line.at(4)));
        } else if (what == "node") {
            found.ended_well += line.at(2) == "0" ? 1 : 0;
        } else if (what == "end") {
            found.is_whole = true;
        }
    }
    return found;
}

void ReadHistory(const std::map<std::string, int>& numbers, Books& books) {
    host::Connection connection(SiteDatabase());
    host::Statement history(
        connection, "SELECT alarm, change, line, at, note FROM Host_History ORDER BY row_id");
    while (history.Step()) {
        const auto alarm = numbers.find(std::string(history.Text(0)));
        if (alarm == numbers.end()) {
            continue;
        }
        Page& page = books.pages[alarm->second];
        const std::string_view change = history.Text(1);
        const std::string line(history.Text(2));
        const std::time_t at = history.Number(3);
        std::vector<Holding>& holdings = page.holdings;
        const bool is_held = !holdings.empty() && holdings.back().until == 0;
        if (change == host::kMoved && is_held) {
            holdings.back().until = at;
        } else if (change == host::kWritten && !is_held) {
            holdings.push_back({line, at, 0});
        }
        page.named += history.Text(4).find("may have been sent") != std::string_view::npos ? 1 : 0;
    }
    host::Statement done(connection, "SELECT alarmlogID FROM AlarmLog WHERE pagerstate = '4'");
    while (done.Step()) {
        const auto alarm = numbers.find(std::string(done.Text(0)));
        if (alarm != numbers.end()) {
            books.pages[alarm->second].done = true;
        }
    }
}

int NumberIn(const std::string& text) {
    constexpr std::string_view kBefore = "alarm ";
    const size_t at = text.find(kBefore);
    return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + kBefore.size());
}

void ReadReport(Books& books) {
    std::ifstream file(kReport);
    const nlohmann::json report = nlohmann::json::parse(file);
    for (const nlohmann::json& page : report["pages"]) {
        const nlohmann::json& call = report["calls"].at(page["call"].get<size_t>());
        books.receptions.push_back(
            {NumberIn(page["text"]), page["recipient"],
             LineOnPort(std::stoi(call["line"].get<std::string>().substr(4))),
             static_cast<double>(kStart) + page["at_seconds"].get<double>()});
    }
}

// --- What it comes to.

void ShowLines(const Totals& totals) {
    for (int node = 1; node <= kNodes; ++node) {
        std::ostringstream lines;
        int sum = 0;
        for (int com = (node - 1) * kLinesOfNode + 1; com <= node * kLinesOfNode; ++com) {
            const auto pages = totals.pages_of_line.find(LineOnPort(com));
            const int count = pages == totals.pages_of_line.end() ? 0 : pages->second;
            sum += count;
            lines << " " << count;
        }
        std::cout << "  " << NodeName(node) << ": " << sum << " pages, by line" << lines.str()
                  << "\n";
    }
}

void ShowSizes(const Ledger& ledger) {
    const long kib_of_page = sysconf(_SC_PAGESIZE) / 1024;
    for (const auto& [of, size] : ledger.sizes) {
        std::cout << "  at the " << of.first << ": " << size.processes << " processes of "
                  << of.second << ", " << size.pages * kib_of_page / size.processes
                  << " KiB each, the largest " << size.most_pages * kib_of_page << " KiB and "
                  << size.most_descriptors << " descriptors\n";
    }
}

// None is larger behind the day than a few megabytes more.
void JudgeSizes(const Ledger& ledger, std::vector<std::string>& complaints) {
    constexpr long kMostGrowth = 1024;  // pages
    constexpr int kMoreDescriptors = 8;
    for (const char* whose : {"nodes", "lines"}) {
        const auto begin = ledger.sizes.find({"beginning", whose});
        const auto end = ledger.sizes.find({"end", whose});
        if (begin == ledger.sizes.end() || end == ledger.sizes.end() ||
            end->second.most_pages > begin->second.most_pages + kMostGrowth ||
            end->second.most_descriptors > begin->second.most_descriptors + kMoreDescriptors) {
            complaints.push_back(std::string("grown: ") + whose);
        }
    }
}

bool Report(double processor_seconds, double real_seconds) {
    Books books;
    const Ledger ledger = ReadLedger(books);
    ReadHistory(ledger.numbers, books);
    ReadReport(books);
    Totals totals = Judge(books);
    JudgeSizes(ledger, totals.complaints);
    const std::string late = LateWrites(SiteDatabase());
    if (!late.empty()) {
        totals.complaints.push_back("written in a term that was over: " + late);
    }
    if (!ledger.is_whole || ledger.ended_well != kNodes) {
        totals.complaints.push_back(std::to_string(ledger.ended_well) + " nodes ended well");
    }
    ShowLines(totals);
    ShowSizes(ledger);
    for (size_t i = 0; i < std::min(totals.complaints.size(), kMostComplaints); ++i) {
        std::cout << "  " << totals.complaints[i] << "\n";
    }
    const auto wait = [&](double share) {
        return totals.waits.empty() ? 0
                                    : totals.waits.at(static_cast<size_t>(
                                          share * static_cast<double>(totals.waits.size() - 1)));
    };
    std::cout << std::fixed << std::setprecision(1) << books.alarms.size() << " alarms, " << kNodes
              << " nodes of " << kLinesOfNode << " lines: " << books.receptions.size()
              << " pages received, " << totals.twice << " of them a second time; "
              << ledger.killed.size() << " nodes killed; from alarm to delivery " << wait(0.5)
              << " s (median), " << wait(0.99) << " s (of 99 in 100), " << wait(1)
              << " s (longest); " << WritesInTerms(SiteDatabase())
              << " rows written in terms; simulated in " << real_seconds << " s, "
              << processor_seconds << " s of processor time without the server's: "
              << (totals.complaints.empty()
                      ? "every page is accounted for"
                      : std::to_string(totals.complaints.size()) + " complaints")
              << std::endl;
    return totals.complaints.empty();
}

bool RunScale(const std::string& alarms, const fs::path& binaries, const fs::path& libraries) {
    const WorldFolder folder;
    const std::unique_ptr<SiteDatabases> databases = OpenSiteDatabases("postgres");
    const std::string database = databases->Make(fs::current_path());
    databases->Show(database);
    MakeSite();
    databases->FollowTheWorld(database);
    MakeExchange();
    const auto begin = std::chrono::steady_clock::now();
    KeepInWorld(alarms, binaries, libraries);
    return Report(ProcessorSecondsOfChildren(),
                  std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
}

}  // namespace
}  // namespace proof::site_scale

int main(int argc, char** argv) {
    using namespace proof::site_scale;
    try {
        if (argc == 5 && std::string(argv[1]) == "keep") {
            KeepSite(std::stoi(argv[2]), argv[3], argv[4]);
            return 0;
        }
        if (argc == 4) {
            return RunScale(argv[1], std::filesystem::absolute(argv[2]),
                            std::filesystem::absolute(argv[3]))
                       ? 0
                       : 1;
        }
    } catch (const std::exception& fault) {
        std::cerr << "site_scale: " << fault.what() << "\n";
        return 1;
    }
    std::cerr << "site_scale ALARMS BINARIES LIBRARIES\n";
    return 2;
}
