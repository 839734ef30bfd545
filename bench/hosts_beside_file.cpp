// What the same costs on a PostgreSQL server of its own and in a file of SQLite, in one run: a page
// queued, an alarm's states folded, a node started, with few and with many pages pending. Neither
// waits for a disk: the file lies in memory, and the server runs with fsync=off.
//   bench_hosts_beside_file PAGERFWD PAGERSIM [MOST_PAGES]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/hosts_site.h"
#include "bench/scale_engine.h"
#include "bench/scale_site.h"

namespace bench {
namespace {

using test_support::OwnPostgres;
using test_support::TheServer;

double MillisecondsOf(const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
        .count();
}

void Require(bool holds, const char* what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

// Of the fresh alarms: what else the machine does falls into few of them.
double MedianOfFreshAlarms(int pages, const std::function<void(int32_t alarm)>& work) {
    std::vector<double> each;
    for (int32_t alarm = pages + 1; alarm <= pages + kFreshAlarms; ++alarm) {
        each.push_back(MillisecondsOf([&] { work(alarm); }));
    }
    std::sort(each.begin(), each.end());
    return each[each.size() / 2];
}

struct Costs {
    double start_engine = 0, queue = 0, fold = 0, start_node = 0;
};

// As autovacuum does a while behind such a change.
void LetServerCount(const std::string& database, SiteOn on) {
    if (on == SiteOn::kServer) {
        OwnPostgres::Ask(database, "ANALYZE");
    }
}

void MeasureEngine(SiteOn on, int pages, Costs& costs) {
    const Folder folder;
    setenv("PAGERFWD_STATE", folder.Path().c_str(), 1);
    const std::string database =
        on == SiteOn::kFile ? folder.File("site.db") : TheServer().MakeDatabase();
    MakeSite(database, pages);
    LetServerCount(database, on);
    Engine engine(database, pages);
    costs.start_engine = MillisecondsOf([&] { engine.Start(); });
    Require(engine.HasAll(), "not all pages were taken up");
    costs.queue = MedianOfFreshAlarms(
        pages, [&](int32_t alarm) { Require(engine.Queue(alarm), "a page was not queued"); });
    costs.fold = MedianOfFreshAlarms(pages, Engine::Fold);
}

// Until its line has the first of them.
void MeasureNode(const HostPrograms& programs, SiteOn on, int pages, Costs& costs) {
    HostsSite site(programs, {"north"}, 1, on);
    site.Raise(pages);
    site.ForEachAlarm("Host_Deliveries (alarm, place, alarm_group, pager, since, severity)",
                      "n, 0, 'ops', 'duty', 0, 1", pages);
    LetServerCount(site.Database(), on);
    costs.start_node = MillisecondsOf([&] {
        site.Start("north");
        HostsSite::Until("a page of the line's", [&] {
            return site.Ask("SELECT count(*) FROM AlarmFwd_PagerEvents") != "0";
        });
    });
}

Costs Measure(const HostPrograms& programs, SiteOn on, int pages) {
    Costs costs;
    MeasureEngine(on, pages, costs);
    MeasureNode(programs, on, pages, costs);
    return costs;
}

void Row(const char* what, int pages, double server, double file) {
    std::printf("%-34s @ %-7d %12.2f ms %12.2f ms %8.2f\n", what, pages, server, file,
                server / file);
    std::fflush(stdout);
}

void Compare(const HostPrograms& programs, int pages) {
    const Costs server = Measure(programs, SiteOn::kServer, pages);
    const Costs file = Measure(programs, SiteOn::kFile, pages);
    Row("queueing a page", pages, server.queue, file.queue);
    Row("folding an alarm's states", pages, server.fold, file.fold);
    Row("start of a library, all pages its", pages, server.start_engine, file.start_engine);
    Row("start of a node to its first page", pages, server.start_node, file.start_node);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: bench_hosts_beside_file PAGERFWD PAGERSIM [MOST_PAGES]\n", stderr);
        return 2;
    }
    try {
        const int most = argc > 3 ? std::stoi(argv[3]) : 100'000;
        std::printf("%-34s   %-7s %15s %15s %8s\n", "WHAT", "PENDING", "SERVER", "FILE", "RATIO");
        for (int pages = 1000; pages <= most; pages *= 10) {
            bench::Compare({argv[1], argv[2]}, pages);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_hosts_beside_file: %s\n", error.what());
        return 1;
    }
    return 0;
}
