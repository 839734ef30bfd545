// The rows of the table: registered in pairs, printed as they become complete.
#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace bench {
namespace {

constexpr int kRepetitions = 5;
constexpr double kShortSeconds = 0.1;
constexpr const char* kOurs = "|ours";
constexpr const char* kReference = "|reference";
constexpr const char* kBytes = "bytes";
constexpr const char* kRate = "bytes_per_second";

// One side of a row. Bytes when the row is about memory, else seconds for each operation.
struct Value {
    double amount = 0;
    double rate = 0;  // bytes per second, where that is told
    bool is_bytes = false;
};

struct Row {
    bool has_reference = false;
    std::optional<Value> ours, reference;
};

// What the names say beyond those of the benchmarks.
std::map<std::string, Row>& Rows() {
    static std::map<std::string, Row> rows;
    return rows;
}

std::string Scaled(double amount, const std::vector<std::pair<double, const char*>>& units) {
    auto unit = std::find_if(units.begin(), units.end(),
                             [amount](const auto& each) { return amount >= each.first; });
    if (unit == units.end()) {
        unit = std::prev(units.end());
    }
    char text[64];
    const double shown = amount / unit->first;
    std::snprintf(text, sizeof text,
                  shown < 10    ? "%.2f %s"
                  : shown < 100 ? "%.1f %s"
                                : "%.0f %s",
                  shown, unit->second);
    return text;
}

std::string Shown(const std::optional<Value>& value) {
    if (!value) {
        return "-";
    }
    if (value->is_bytes) {
        return Scaled(value->amount, {{1e6, "MB"}, {1e4, "kB"}, {1, "B"}});
    }
    if (value->rate > 0) {
        return Scaled(value->rate, {{1e9, "GB/s"}, {1e6, "MB/s"}, {1e3, "kB/s"}, {1, "B/s"}});
    }
    return Scaled(value->amount, {{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}, {1e-9, "ns"}});
}

void PrintRow(const std::string& what, const std::string& ours, const std::string& reference,
              const std::string& ratio) {
    std::printf("%-58s  %12s  %12s  %6s\n", what.c_str(), ours.c_str(), reference.c_str(),
                ratio.c_str());
    std::fflush(stdout);
}

std::string Ratio(const Row& row) {
    if (!row.ours || !row.reference || row.reference->amount <= 0) {
        return "";
    }
    char text[32];
    const double ratio = row.ours->amount / row.reference->amount;
    std::snprintf(text, sizeof text, ratio < 1.1 && ratio > 0.9 ? "%.3f" : "%.2f", ratio);
    return text;
}

// A measure of a series, and where in it.
struct Point {
    double number = 0;
    Row row;
};

std::string Exponent(const Point& first, const Point& last, std::optional<Value> Row::*side) {
    const std::optional<Value>& low = first.row.*side;
    const std::optional<Value>& high = last.row.*side;
    if (!low || !high || low->amount <= 0 || high->amount <= 0 || first.number == last.number) {
        return "";
    }
    char text[32];
    std::snprintf(text, sizeof text, "n^%.2f",
                  std::log(high->amount / low->amount) / std::log(last.number / first.number));
    return text;
}

double Read(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class Table : public benchmark::BenchmarkReporter {
 public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(),
                             run.error_message.c_str());
                failed_ = true;
            } else if (run.run_type == Run::RT_Iteration) {
                Take(run);
            }
        }
    }

    void Finalize() override {
        for (const auto& [what, points] : series_) {
            if (points.size() > 1) {
                PrintRow(what + ", growth", Exponent(points.front(), points.back(), &Row::ours),
                         Exponent(points.front(), points.back(), &Row::reference), "");
            }
        }
    }

    bool Failed() const { return failed_; }

 private:
    void Take(const Run& run) {
        const std::string& name = run.run_name.function_name;
        const size_t bar = name.rfind('|');
        const std::string what = name.substr(0, bar);
        Row& row = Rows()[what];
        Keep(name.substr(bar) == kOurs ? row.ours : row.reference, ValueOf(run));
        const bool last = run.repetition_index + 1 >= run.repetitions;
        const bool complete = row.ours && (row.reference || !row.has_reference);
        if (last && complete) {
            PrintRow(what, Shown(row.ours), Shown(row.reference), Ratio(row));
            Extend(what, row);
        }
    }

    static void Keep(std::optional<Value>& kept, const Value& value) {
        if (!kept || value.amount < kept->amount) {
            kept = value;
        }
    }

    static Value ValueOf(const Run& run) {
        Value value;
        const auto bytes = run.counters.find(kBytes);
        if (bytes != run.counters.end()) {
            return {bytes->second.value, 0, true};
        }
        // By hand, or the processor's: other programs on the machine don't add to that.
        const double seconds =
            run.run_name.time_type.empty() ? run.cpu_accumulated_time : run.real_accumulated_time;
        value.amount = seconds / static_cast<double>(run.iterations);
        const auto rate = run.counters.find(kRate);
        if (rate != run.counters.end()) {
            value.rate = rate->second.value;
        }
        return value;
    }

    // "pass @ 1000" lengthens the series "pass".
    void Extend(const std::string& what, const Row& row) {
        const size_t at = what.find(" @ ");
        if (at == std::string::npos) {
            return;
        }
        const std::string name = what.substr(0, at);
        auto found = std::find_if(series_.begin(), series_.end(),
                                  [&](const auto& each) { return each.first == name; });
        if (found == series_.end()) {
            found = series_.insert(series_.end(), {name, {}});
        }
        found->second.push_back({std::stod(what.substr(at + 3)), row});
    }

    std::vector<std::pair<std::string, std::vector<Point>>> series_;
    bool failed_ = false;
};

void Register(const std::string& name, bench::Run run, Length length) {
    auto* registered = benchmark::RegisterBenchmark(
        name.c_str(), [run = std::move(run)](benchmark::State& state) { run(state); });
    if (length == Length::kOnce) {
        registered->Iterations(1)->UseManualTime();
    } else {
        registered->MinTime(kShortSeconds)->Repetitions(kRepetitions);
    }
}

}  // namespace

void Compare(const std::string& what, Run ours, Run reference, Length length) {
    Rows()[what].has_reference = true;
    Register(what + kOurs, std::move(ours), length);
    Register(what + kReference, std::move(reference), length);
}

void Report(const std::string& what, Run ours, Length length) {
    Rows()[what];
    Register(what + kOurs, std::move(ours), length);
}

void SetBytes(benchmark::State& state, double bytes) {
    state.counters[kBytes] = bytes;
    state.SetIterationTime(1);
}

void SetSeconds(benchmark::State& state, double seconds, double count) {
    state.SetIterationTime(seconds / count);
}

double SecondsNow() {
    return Read(CLOCK_MONOTONIC);
}

double ProcessorSecondsNow() {
    return Read(CLOCK_PROCESS_CPUTIME_ID);
}

}  // namespace bench

// Registers the rows of one program.
void RegisterRows();

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    RegisterRows();
    bench::Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return table.Failed() ? 1 : 0;
}
