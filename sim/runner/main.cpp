// pagersim: runs a program on simulated modems and paging centres. Tested by
// tests/unit/sim/pagersim_test.cpp.
#include <sched.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "sim/file/clock_file.h"
#include "sim/file/exchange_file.h"
#include "sim/record/transcript.h"
#include "sim/runner/options.h"
#include "sim/runner/preload.h"
#include "sim/runner/processes.h"
#include "sim/runner/program_file.h"
#include "sim/runner/report.h"
#include "sim/runner/scratch_folder.h"
#include "sim/serve/serve.h"
#include "sim/server/served_exchange.h"
#include "sim/server/world_server.h"

namespace pagersim {
namespace {

constexpr int kNotAsExpected = 1;
constexpr int kUsageError = 2;
constexpr const char* kDefaultStart = "2001-01-08 10:00:00";
constexpr const char* kNothing = "nothing";

// Something that the user has to mend before anything can run.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

std::string CheckedPreload() {
    const auto path = FindPreload();
    if (!path) {
        throw UsageError(
            "libpagersim-preload.so is missing; it belongs beside pagersim or into "
            "../lib, or name it in the environment variable PAGERSIM_PRELOAD");
    }
    return *path;
}

// The program must take the preload: without it, it would open the machine's real ports.
void CheckProgram(const std::string& command, const std::string& preloads) {
    constexpr int kOwnWordSize = static_cast<int>(sizeof(void*)) * 8;
    const auto path = FindProgram(command);
    if (!path) {
        throw UsageError(command + ": there is no such program");
    }
    const int word_size = WordSizeOf(*path);
    if (word_size == kOwnWordSize || (word_size != 0 && ServesBothWordSizes(preloads))) {
        return;
    }
    throw UsageError(command + " is " +
                     (word_size == 0 ? "no program that can be simulated"
                                     : "a " + std::to_string(word_size) + "-bit program") +
                     "; this pagersim serves " + std::to_string(kOwnWordSize) +
                     "-bit programs. Use the pagersim of the other build");
}

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

// A file, standard output ("-") or nothing ("").
class Output {
 public:
    explicit Output(const std::string& path) : to_screen_(path == "-") {
        if (path.empty() || to_screen_) {
            return;
        }
        file_.reset(std::fopen(path.c_str(), "we"));  // The command doesn't get it.
        if (file_ == nullptr) {
            throw UsageError(path + ": can't be written");
        }
    }

    void Write(const std::string& text) {
        if (text.empty()) {
            return;
        }
        if (to_screen_) {
            std::cout << text << std::flush;
        } else if (file_ != nullptr) {
            std::fwrite(text.data(), 1, text.size(), file_.get());
            std::fflush(file_.get());
        }
    }

 private:
    const bool to_screen_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, std::fclose};
};

class Run {
 public:
    explicit Run(const RunnerOptions& options)
        : options_(options),
          file_(LoadSoundExchange(options.exchange)),
          expectations_(CheckedExpectations(options, file_)),
          checks_(!options.expectations.empty() || !expectations_.empty()),
          start_(StartOf(options)),
          transcript_file_(options.transcript),
          report_file_(options.report),
          screen_(options.quiet || options.transcript == "-" ? "" : "-"),
          summary_(options.quiet ? "" : "-") {}

    int Execute() {
        StayOnOneProcessor();
        const Environment environment = Programs();
        CheckProgram(options_.command.front(), environment.at(kPreloads));
        WorldServer world(scratch_.Path("world"), start_, Milliseconds(options_.step_ms));
        Processes processes(world, environment);
        ServedExchange exchange(world, file_, start_, Clock(),
                                {[this](const Event& event) { Happened(event); },
                                 [&](const std::string& run) { processes.RunShell(run); }});
        processes.Start(options_.command);
        const int status = processes.AwaitCommand();
        exchange.ForgetCommands();
        processes.AwaitOthers();
        exchange.KeepClock();
        Show(transcript_.Finish());
        return Conclude(status);
    }

 private:
    Environment Programs() const {
        return {{kPreloads, PreloadList(CheckedPreload(), scratch_.Path("preload"))},
                {kWorldVariable, scratch_.Path("world")}};
    }

    std::string Clock() const { return options_.clock.empty() ? "" : Absolute(options_.clock); }

    void Happened(const Event& event) {
        report_.Add(event);
        Show(transcript_.Add(event));
    }

    void Show(const std::string& lines) {
        screen_.Write(lines);
        transcript_file_.Write(lines);
    }

    int Conclude(int status) {
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

    const RunnerOptions& options_;
    const ExchangeFile file_;
    const std::vector<Expectation> expectations_;
    const bool checks_;
    const std::time_t start_;
    Output transcript_file_, report_file_, screen_, summary_;
    const ScratchFolder scratch_;
    Transcript transcript_;
    Report report_;
};

}  // namespace
}  // namespace pagersim

int main(int count, char** arguments) {
    if (count > 1 && std::string_view(arguments[1]) == "serve") {
        return pagersim::ServeMain(count - 1, arguments + 1);
    }
    const auto parsed = pagersim::ParseOptions(count, arguments);
    if (parsed.exit_status) {
        return *parsed.exit_status;
    }
    try {
        return pagersim::Run(parsed.options).Execute();
    } catch (const std::exception& error) {
        std::cerr << "pagersim: " << error.what() << '\n';
        return pagersim::kUsageError;
    }
}
