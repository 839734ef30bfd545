// Several hosts over one PostgreSQL of its own, in real time: what a node costs that waits, what a
// site gains by more of them, how soon a dead one's pages are taken over, and how long that takes
// where it leaves many.
//   bench_hosts PAGERFWD PAGERSIM [KILLS [PAGES]]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "bench/hosts_site.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "tests/support/postgres_proxy.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using test_support::PostgresProxy;

double SecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

void Row(const char* what, double number, const char* unit) {
    std::printf("%-72s %10.2f %s\n", what, number, unit);
    std::fflush(stdout);
}

// All that is asked by a node and its lines, while another runs beside it and nothing happens.
void MeasureWaiting(const HostPrograms& programs) {
    constexpr int kSeconds = 30;
    HostsSite site(programs, {"north", "south"}, 4);
    PostgresProxy proxy(test_support::TheServer().Folder(), "north");
    std::string database = site.Database();
    database.replace(database.find("?host=") + 6, std::string::npos, proxy.Folder().string());
    site.Start("south");
    site.Start("north", database);
    std::this_thread::sleep_for(std::chrono::seconds(15));
    proxy.Plan(PostgresProxy::Fault::kNone, 0);
    std::this_thread::sleep_for(std::chrono::seconds(kSeconds));
    Row("statements a second of a node with 4 lines, beside another, that waits",
        static_cast<double>(proxy.Statements()) / kSeconds, "/s");
}

// Each line has the same number of pages to send, so on paper all of these take equally long.
void MeasureGrowth(const HostPrograms& programs) {
    constexpr int kPagesALine = 4;
    const std::vector<std::string> names = {"a", "b", "c", "d", "e", "f", "g", "h"};
    std::printf("pages a minute of a site whose nodes have a line each, %d pages a line:\n",
                kPagesALine);
    for (const int count : {1, 2, 4, 8}) {
        const std::vector<std::string> nodes(names.begin(), names.begin() + count);
        HostsSite site(programs, nodes, 1);
        for (const std::string& node : nodes) {
            site.Start(node);
        }
        host::Connection connection(site.Database());
        const auto begin = Clock::now();
        for (int page = 0; page < count * kPagesALine; ++page) {
            host::RaiseAlarm(connection, {"ops/1", "2", "SRV", "x"}, std::time(nullptr));
        }
        HostsSite::Until("the end of all pages", [&] {
            return site.Ask("SELECT count(*) FROM AlarmLog WHERE pagerstate <> '4'") == "0";
        });
        const std::string what = "  of " + std::to_string(count) + " node(s)";
        Row(what.c_str(), 60.0 * count * kPagesALine / SecondsSince(begin), "/min");
    }
}

void MeasureKills(const HostPrograms& programs, int kills) {
    HostsSite site(programs, {"north", "south"}, 1);
    site.Start("south");
    site.Start("north");
    std::vector<double> seconds;
    for (int kill = 0; kill < kills; ++kill) {
        // At any moment of its second.
        std::this_thread::sleep_for(std::chrono::milliseconds(1000 + kill * 137 % 1000));
        const auto killed = Clock::now();
        site.Kill("north");
        HostsSite::Until("a takeover", [&] {
            return site.Ask("SELECT holder FROM Host_Nodes WHERE node = 'north'").empty();
        });
        seconds.push_back(SecondsSince(killed));
        site.Start("north");
    }
    std::sort(seconds.begin(), seconds.end());
    std::printf("of %d kills of a node, renewals a second apart, valid for 5 s:\n", kills);
    Row("  takeover, median", seconds[seconds.size() / 2], "s");
    Row("  takeover, worst", seconds.back(), "s");
}

// Of a fourth node, which this program plays: pages that its libraries had.
void LeavePages(const HostsSite& site, int pages) {
    site.Raise(pages);
    site.ForEachAlarm(
        "AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, PagerRetries, line)",
        "n, 'ops', 'duty', '2', '0', 'west 1'", pages);
    site.ForEachAlarm("Host_Deliveries (alarm, place, alarm_group, pager, since, answer, line)",
                      "n, 0, 'ops', 'duty', 0, 1, 'west 1'", pages);
    site.ForEachAlarm("Host_History (at, change, alarm, alarm_group, pager, state, tries, line)",
                      "978948000, 'written', n, 'ops', 'duty', '2', '0', 'west 1'", pages);
    site.Ask("ANALYZE");
}

void MeasureManyPages(const HostPrograms& programs, int pages) {
    HostsSite site(programs, {"east", "north", "south", "west"}, 1);
    host::Connection connection(site.Database());
    constexpr std::chrono::seconds kValid{5};
    const auto west = host::TakeLease(connection, "west", "this program", std::chrono::hours(1));
    host::ClaimLine(connection, "west 1", "west");
    for (const char* node : {"east", "north", "south"}) {
        site.Start(node);
    }
    LeavePages(site, pages);
    std::this_thread::sleep_for(std::chrono::seconds(20));
    host::RenewLease(connection, *west, kValid);
    const auto died = Clock::now();
    HostsSite::Until("the takeover", [&] {
        return site.Ask("SELECT count(*) FROM Host_Lines WHERE node = 'west'") == "0";
    });
    std::printf("of %d pages that a dead node leaves to three others:\n", pages);
    Row("  all taken from it, behind its last renewal", SecondsSince(died), "s");
    HostsSite::Until("a page on each line", [&] {
        return site.Ask("SELECT count(*) FROM Host_Lines WHERE page_pager <> ''") == "3";
    });
    Row("  a page on the line of each of the others", SecondsSince(died), "s");
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: bench_hosts PAGERFWD PAGERSIM [KILLS [PAGES]]\n", stderr);
        return 2;
    }
    const auto number = [&](int place, int otherwise) {
        return argc > place ? std::stoi(argv[place]) : otherwise;
    };
    try {
        const bench::HostPrograms programs{argv[1], argv[2]};
        bench::MeasureWaiting(programs);
        bench::MeasureGrowth(programs);
        if (const int pages = number(4, 100'000); pages > 0) {
            bench::MeasureManyPages(programs, pages);
        }
        if (const int kills = number(3, 100); kills > 0) {
            bench::MeasureKills(programs, kills);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_hosts: %s\n", error.what());
        return 1;
    }
    return 0;
}
