// What the engine's operations cost with many pages pending, against the same statements straight
// into SQLite. The rows of one number build on each other: the engine starts, is used, and is
// stopped.
#include <pagerfwd/pagerfwd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "bench/folder.h"
#include "bench/measure.h"
#include "bench/scale_engine.h"
#include "bench/scale_reference.h"
#include "bench/scale_site.h"
#include "engine/pager_hdl.h"

namespace bench {
namespace {

// In memory everything is the processor's work; other programs on the machine don't add to it. On a
// disk there is waiting too.
bool onDisk = false;

double Now() {
    return onDisk ? SecondsNow() : ProcessorSecondsNow();
}

// --- The worker's pass, measured from the end of one pause to the beginning of the next.

struct PassWatch {
    std::mutex mutex;
    std::condition_variable changed;
    int passes = 0;
    double begun = 0;
    double seconds = 0;
};
PassWatch watch;

// Whether the worker is to go on at once: after the first pass, which warms up.
bool PassEnded() {
    const std::lock_guard guard(watch.mutex);
    const double now = Now();
    watch.seconds = now - watch.begun;
    ++watch.passes;
    watch.changed.notify_all();
    watch.begun = Now();
    return watch.passes == 1;
}

double SecondsOfAPass() {
    watch.passes = 0;
    CPagerHdl::checkAlready = false;
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    std::unique_lock lock(watch.mutex);
    watch.changed.wait(lock, [] { return watch.passes >= 2; });
    return watch.seconds;
}

// --- The rows of one number.

struct Series {
    int32_t pages;
    std::string parent;  // of the databases' folders
    std::unique_ptr<Folder> engine_folder;
    std::unique_ptr<Engine> engine;
    std::unique_ptr<Folder> reference_folder;
    std::unique_ptr<ReferenceStore> reference;

    int32_t FirstFresh() const { return pages + 1; }

    void MakeEngine() {
        engine.reset();
        engine_folder = std::make_unique<Folder>(parent);
        const std::string database = engine_folder->File("site.db");
        MakeSite(database, pages);
        engine = std::make_unique<Engine>(database, pages);
    }

    void NeedReference() {
        if (reference == nullptr) {
            reference_folder = std::make_unique<Folder>(parent);
            const std::string database = reference_folder->File("reference.db");
            MakeSite(database, pages);
            reference = std::make_unique<ReferenceStore>(database);
        }
    }
};

// Seconds for each of the operations on the fresh alarms. They leave the head first, the last
// queued.
template <typename Operation>
void OnFreshAlarms(benchmark::State& state, const Series& series, Operation operation) {
    const double begun = Now();
    for (int32_t i = kFreshAlarms; i-- > 0;) {
        operation(series.FirstFresh() + i);
    }
    SetSeconds(state, Now() - begun, kFreshAlarms);
}

void CompareStartUp(const std::shared_ptr<Series>& series, const std::string& at) {
    Compare(
        "start-up, all pages" + at,
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                onDisk = !series->parent.empty();
                series->MakeEngine();
                const double begun = Now();
                series->engine->Start();
                SetSeconds(state, Now() - begun);
                if (!series->engine->HasAll()) {
                    state.SkipWithError("not all pages were taken up");
                }
            }
        },
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                series->NeedReference();
                const double begun = Now();
                series->reference->StartUp();
                SetSeconds(state, Now() - begun);
            }
        },
        Length::kOnce);
}

void CompareQueueing(const std::shared_ptr<Series>& series, const std::string& at) {
    Compare(
        "queueing one more" + at,
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                bool queued = true;
                const double begun = Now();
                for (int32_t i = 0; i < kFreshAlarms; ++i) {
                    queued = series->engine->Queue(series->FirstFresh() + i) && queued;
                }
                SetSeconds(state, Now() - begun, kFreshAlarms);
                if (!queued) {
                    state.SkipWithError("a page was not queued");
                }
            }
        },
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                OnFreshAlarms(state, *series,
                              [&](int32_t alarm) { series->reference->Queue(alarm); });
            }
        },
        Length::kOnce);
}

void CompareFold(const std::shared_ptr<Series>& series, const std::string& at) {
    Compare(
        "the fold of one alarm" + at,
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                OnFreshAlarms(state, *series, Engine::Fold);
            }
        },
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                OnFreshAlarms(state, *series,
                              [&](int32_t alarm) { series->reference->Fold(alarm); });
            }
        },
        Length::kOnce);
}

void ComparePass(const std::shared_ptr<Series>& series, const std::string& at) {
    Compare(
        "a pass with nothing due" + at,
        [](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                Engine::PutAllOff();
                SetSeconds(state, SecondsOfAPass());
            }
        },
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                const double begun = Now();
                series->reference->Pass(series->pages + kFreshAlarms);
                SetSeconds(state, Now() - begun);
            }
        },
        Length::kOnce);
}

void CompareAcknowledging(const std::shared_ptr<Series>& series, const std::string& at) {
    Compare(
        "acknowledging near the head" + at,
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                OnFreshAlarms(state, *series, CPagerHdl::AckPagingAlarm);
                if (!series->engine->HasAll()) {
                    state.SkipWithError("not all fresh pages were dropped");
                }
                series->engine.reset();
                series->engine_folder.reset();
            }
        },
        [series](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                OnFreshAlarms(state, *series,
                              [&](int32_t alarm) { series->reference->Acknowledge(alarm); });
                series->reference.reset();
                series->reference_folder.reset();
            }
        },
        Length::kOnce);
}

void ReportMemory(const std::shared_ptr<Series>& series, const std::string& at) {
    Report("memory of one pending page" + at, [series](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            SetBytes(state, series->engine->BytesOfAPage());
        }
    });
    Report("resident size of the host after its start" + at, [series](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            SetBytes(state, series->engine->Resident());
        }
    });
}

// Below that, what SQLite keeps of the file weighs more than the pages.
constexpr int32_t kEnoughToWeigh = 100000;

void RegisterSeries(int32_t pages, const std::string& parent, const std::string& where) {
    const auto series = std::make_shared<Series>(Series{pages, parent, {}, {}, {}, {}});
    const std::string at = where + " @ " + std::to_string(pages);
    CompareStartUp(series, at);
    if (pages >= kEnoughToWeigh) {
        ReportMemory(series, at);
    }
    CompareQueueing(series, at);
    CompareFold(series, at);
    ComparePass(series, at);
    CompareAcknowledging(series, at);
}

}  // namespace
}  // namespace bench

extern "C" void __real__ZN12WorkerThread5PauseEi(WorkerThread* self, int timeoutMs);
extern "C" void __wrap__ZN12WorkerThread5PauseEi(WorkerThread* self, int timeoutMs);

extern "C" void __wrap__ZN12WorkerThread5PauseEi(WorkerThread* self, int timeoutMs) {
    if (!bench::PassEnded()) {
        __real__ZN12WorkerThread5PauseEi(self, timeoutMs);
    }
}

// BENCH_PAGES: the numbers, "1000 10000". BENCH_DISK: a folder on a disk, for the first of them.
void RegisterRows() {
    const char* const disk = std::getenv("BENCH_DISK");
    const char* const pages = std::getenv("BENCH_PAGES");
    std::vector<int32_t> numbers;
    for (const char* at = pages != nullptr ? pages : "1000"; *at != '\0';) {
        char* end = nullptr;
        numbers.push_back(static_cast<int32_t>(std::strtol(at, &end, 10)));
        at = end;
    }
    if (disk != nullptr) {
        bench::RegisterSeries(numbers.front(), disk, " (disk)");
    }
    for (const int32_t number : numbers) {
        bench::RegisterSeries(number, "", "");
    }
}
