// pagerfwd line test: a call over a line that pages nobody. Tested by
// tests/unit/host/cli_line_call_test.cpp and tests/e2e/run_line_call_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/elapsed.h"
#include "host/cli/line_commands.h"
#include "host/cli/names.h"
#include "host/cli/running_engine.h"
#include "host/line/own_line.h"
#include "host/line/test_call.h"
#include "host/process/database_locks.h"
#include "host/process/stop_signal.h"
#include "host/site/site_tables.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/test_pages.h"
#include "host/text/json.h"
#include "host/text/printable.h"

namespace host {
namespace {

// What follows from the result of a call.
struct Outcome {
    int32_t result;
    ExitCode exit;
    const char* remedy;
};

constexpr Outcome kOutcomes[] = {
    {kConnected, kDone, ""},
    {kLineNotOpened, kNoLine,
     "Does the device exist, may it be opened, and does another program hold it?"},
    {kNotConnected, kDialFailed,
     "The modem works. Is the telephone line plugged in, and the number dialled as it has to be "
     "there?"},
    {kModemFails, kNoModem,
     "Is the modem switched on, and are its speed and its init command right?"},
};

const Outcome& OutcomeOf(int32_t result) {
    for (const Outcome& outcome : kOutcomes) {
        if (outcome.result == result) {
            return outcome;
        }
    }
    throw Failure(kCannot, "the engine gave a result that is not known: " + std::to_string(result));
}

struct Asked {
    std::string line;
    std::string number;
    bool json = false;
};

class LineTest {
 public:
    LineTest(const Program& program, const Asked& asked)
        : program_(program),
          asked_(asked),
          lease_(program.database),
          encoding_(EncodingOf(lease_.Database())),
          line_(FindNamedLine(lease_.Database(), asked.line, encoding_)),
          served_(NodeLock(program.database).IsTaken()) {
        if (!IsDialString(asked.number)) {
            throw Failure(kUsage, "\"" + Printable(asked.number) +
                                      "\" is no number that a modem could dial, such as 0,5550101");
        }
        if (!line_.modem) {
            throw Failure(kUsage, "line \"" + asked.line + "\" has no modem");
        }
    }

    ExitCode Run() {
        Announce();
        const TestPageResult result = served_ ? ByEngine() : Here();
        return asked_.json ? ReportAsJson(result) : Report(result);
    }

 private:
    void Announce() const {
        if (!asked_.json) {
            std::cout << "test call over line \"" << Printable(asked_.line)
                      << "\": " << Shown(DialCommand(line_, asked_.number), encoding_)
                      << (served_ ? ", by the running engine" : "") << " ...\n"
                      << std::flush;
        }
    }

    TestPageResult Here() const {
        const StopSignal stop;
        const OwnLineLocks locks({program_.database, program_.locks, program_.library}, line_,
                                 "line test");
        const Elapsed shown;
        const TestCall call =
            MakeTestCall(line_.device, line_, asked_.number, StopSignal::Descriptor());
        return {call.result, call.said};
    }

    TestPageResult ByEngine() {
        Connection& connection = lease_.Database();
        const int64_t asked =
            AskForTestCall(connection, lease_.Owners(), line_.name, asked_.number);
        const Elapsed shown;
        return AwaitAnswer(program_.database, lease_, asked, [this] { TellWhatItWaitsFor(); });
    }

    void TellWhatItWaitsFor() {
        const std::optional<LineState> state = FindLine(lease_.Database(), line_.name);
        if (told_ || asked_.json || !state || state->doing.find("page") == std::string::npos) {
            return;
        }
        told_ = true;
        std::cout << "waiting: the line is busy (" << Shown(state->doing, encoding_) << ")\n"
                  << std::flush;
    }

    ExitCode Report(const TestPageResult& result) const {
        const std::string said = Shown(result.said, encoding_);
        if (result.answer == kConnected) {
            std::cout << "connected, and hung up: " << said << "\n";
            return kDone;
        }
        std::cout << "not connected: " << said << "\n" << std::flush;
        const Outcome& outcome = OutcomeOf(result.answer);
        std::cerr << "pagerfwd: " << outcome.remedy << " (result " << result.answer << ")\n";
        return outcome.exit;
    }

    ExitCode ReportAsJson(const TestPageResult& result) const {
        const Outcome& outcome = OutcomeOf(result.answer);
        std::cout << Written({{"line", asked_.line},
                              {"number", asked_.number},
                              {"connected", result.answer == kConnected},
                              {"result", result.answer},
                              {"said", Decode(result.said, encoding_)},
                              {"remedy", outcome.remedy}})
                  << "\n";
        return outcome.exit;
    }

    const Program& program_;
    const Asked& asked_;
    Lease lease_;
    const Encoding encoding_;
    const SiteLine line_;
    const bool served_;
    bool told_ = false;
};

}  // namespace

void AddLineTest(CLI::App& line, Program& program) {
    CLI::App* const command =
        line.add_subcommand("test", "Dial a number over a line, and hang up when it is answered");
    const auto asked = std::make_shared<Asked>();
    command->add_option("LINE", asked->line, "The line, by the name of its port")->required();
    command
        ->add_option("NUMBER", asked->number,
                     "What to dial, whole: with the digit for an outside line, if there is one")
        ->required();
    command->add_flag("--json", asked->json, "What became of it, as JSON");
    command->footer(
        "Nobody is paged. The modem is set up as for a page, and dials by tone or pulse as the "
        "port's\n"
        "dial command says; the exit code is that of a test page. Where an engine is running, its\n"
        "line calls between two pages, and a line that is paused or sick as soon as it is "
        "asked.\n\n"
        "Example:\n"
        "  pagerfwd line test \"COM 1\" 0,5550100\n");
    command->callback([asked, &program] {
        program.command = [asked, &program] { return LineTest(program, *asked).Run(); };
    });
}

}  // namespace host
