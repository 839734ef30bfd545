// A world and its report. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/session.h"

#include <sched.h>

#include <filesystem>
#include <iostream>
#include <optional>

#include "sim/file/clock_file.h"
#include "sim/runner/command_line.h"

namespace pagersim {
namespace {

constexpr int kNotAsExpected = 1;
constexpr const char* kDefaultStart = "2001-01-08 10:00:00";
constexpr const char* kNothing = "nothing";

std::vector<Expectation> CheckedExpectations(const RunnerOptions& options,
                                             const ExchangeFile& file) {
    if (options.expectations.empty()) {
        return file.expectations;
    }
    std::vector<Expectation> expectations;
    for (const std::string& text : options.expectations) {
        if (text == kNothing) {
            continue;
        }
        const auto expected = ParseExpectation(text);
        if (!expected) {
            throw UsageError("--expect " + text + ": write CENTRE:PAGER=TEXT, or nothing");
        }
        expectations.push_back(*expected);
    }
    return expectations;
}

std::time_t StartOf(const RunnerOptions& options) {
    const auto kept = options.clock.empty() ? std::nullopt : ReadClock(options.clock);
    if (kept) {
        return *kept;
    }
    const auto start = ParseInstant(options.start.empty() ? kDefaultStart : options.start);
    if (!start) {
        throw UsageError("--start " + options.start + ": write it as \"2001-02-03 04:05:06\"");
    }
    return *start;
}

// One process of a world runs at a time: a turn that wakes no other processor costs a third. And a
// program that asks how many there are is told the same everywhere.
void StayOnOneProcessor() {
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(sched_getcpu(), &here);
    sched_setaffinity(0, sizeof here, &here);  // Else it goes on as it is.
}

// The command may change its folder.
std::string Absolute(const std::string& path) {
    return std::filesystem::absolute(path).string();
}

}  // namespace

Session::Session(const RunnerOptions& options)
    : options_(options),
      file_(LoadSoundExchange(options.exchange)),
      expectations_(CheckedExpectations(options, file_)),
      checks_(!options.expectations.empty() || !expectations_.empty()),
      start_(StartOf(options)),
      transcript_file_(options.transcript),
      report_file_(options.report),
      screen_(options.quiet || options.transcript == "-" ? "" : "-"),
      summary_(options.quiet ? "" : "-") {}

void Session::Begin(const std::string& socket, const Environment& environment) {
    StayOnOneProcessor();
    world_ = std::make_unique<WorldServer>(socket, start_, Milliseconds(options_.step_ms));
    processes_ = std::make_unique<Processes>(*world_, environment);
    exchange_ = std::make_unique<ServedExchange>(
        *world_, file_, start_, Clock(),
        ServedExchange::User{[this](const Event& event) { Happened(event); },
                             [this](const std::string& run) { processes_->RunShell(run); }});
}

int Session::Finish(int status) {
    exchange_->ForgetCommands();
    processes_->AwaitOthers();
    exchange_->KeepClock();
    exchange_.reset();
    world_.reset();  // The place of its socket is free for another's.
    Show(transcript_.Finish());
    return Conclude(status);
}

std::string Session::Clock() const {
    return options_.clock.empty() ? "" : Absolute(options_.clock);
}

void Session::Happened(const Event& event) {
    report_.Add(event);
    Show(transcript_.Add(event));
}

void Session::Show(const std::string& lines) {
    screen_.Write(lines);
    transcript_file_.Write(lines);
}

int Session::Conclude(int status) {
    const Comparison comparison = Compare(expectations_, report_.Pages());
    summary_.Write(DescribePages(CentreNames(file_), report_));
    if (checks_ && comparison.Met()) {
        summary_.Write(DescribeComparison(comparison));
    } else if (checks_) {
        std::cerr << DescribeComparison(comparison);
    }
    report_file_.Write(ReportAsJson(report_, status, checks_ ? &comparison : nullptr));
    if (status != 0) {
        return status;
    }
    return checks_ && !comparison.Met() ? kNotAsExpected : 0;
}

}  // namespace pagersim
