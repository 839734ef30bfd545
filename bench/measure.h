// Comparing measures: what this project does against a reference that does the same by the plainest
// means, in one run of one program.
#ifndef PAGERFWD_BENCH_MEASURE_H
#define PAGERFWD_BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

using Run = std::function<void(benchmark::State&)>;

// Which of the repetitions counts. Short ones: the quickest, since whatever else the machine does
// only ever adds. Long ones run once.
enum class Length { kShort, kOnce };

// A row of the table. `what` names what is measured; a row "what @ 1000" is one of a series, whose
// last row also tells how the cost grows with the number behind the @.
void Compare(const std::string& what, Run ours, Run reference, Length length = Length::kShort);

// A row that has no reference.
void Report(const std::string& what, Run ours, Length length = Length::kOnce);

// For rows that aren't times: the value shown instead, with its unit behind it.
void SetBytes(benchmark::State& state, double bytes);

// For rows that are measured by hand, with Length::kOnce: seconds for each of `count` operations.
void SetSeconds(benchmark::State& state, double seconds, double count = 1);

double SecondsNow();           // by the clock
double ProcessorSecondsNow();  // that this process has used, all its threads

}  // namespace bench

#endif
