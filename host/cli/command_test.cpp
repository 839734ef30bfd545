// pagerfwd test: one page, now. Tested by tests/unit/host/cli_test.cpp and tests/e2e.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/library.h"
#include "host/cli/names.h"
#include "host/cli/one_pager.h"
#include "host/cli/program.h"
#include "host/cli/test_results.h"
#include "host/site/site_tables.h"
#include "host/store/pending.h"
#include "host/store/pool.h"
#include "host/text/printable.h"
#include "host/text_helpers.h"

namespace host {
namespace {

// The engine that sends the test page is a whole one: it also takes up what is pending.
void MindPendingPages(Connection& connection, bool sendPending) {
    const int64_t pending = CountPendingPages(connection);
    if (pending > 0 && !sendPending) {
        throw Failure(kUsage, std::to_string(pending) +
                                  " pending page(s) would be sent too; if that is right, say so: "
                                  "pagerfwd test --send-pending");
    }
}

int32_t SendTestPage(const Library& library, const std::string& database, PagerRow pager) {
    std::string name = database;
    int32_t noAlarm = 0;
    FwdSpecialInfoStr info{name.data(), &noAlarm, nullptr, nullptr};
    const int32_t result =
        library.TestPager(&info, pager.description.data(), pager.number.data(), pager.port.data(),
                          pager.type.data(), pager.timeModel.data());
    library.StopAlarmFwdPager();
    return result;
}

ExitCode Report(int32_t code, bool traced) {
    const TestResult* const result = FindTestResult(code);
    if (result == nullptr) {
        throw Failure(kCannot,
                      "the library gave a result that is not known: " + std::to_string(code));
    }
    if (result->exit == kDone) {
        std::cout << result->meaning << "\n";
        return kDone;
    }
    std::cout << "not sent\n" << std::flush;
    std::string message = std::string(result->meaning) + " (result " +
                          std::to_string(result->code) + ")\n    " + result->remedy;
    message += traced ? "\n    The trace of the dialogue: pageprot.txt"
                      : "\n    To see every step of the dialogue, add: --trace";
    std::cerr << "pagerfwd: " << message << "\n";
    return result->exit;
}

ExitCode Test(const Program& program, const std::string& name, bool sendPending) {
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const PagerRow pager = FindOnePager(lease.Database(), name, encoding);
    MindPendingPages(lease.Database(), sendPending);
    UseShiftJis(encoding == Encoding::kShiftJis);
    StartTrace(program);
    const Library library(program.library);

    std::cout << "test page to \"" << Printable(name) << "\", number "
              << Shown(pager.number, encoding) << " ...\n"
              << std::flush;
    return Report(SendTestPage(library, program.database, pager), program.trace);
}

}  // namespace

void AddTest(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("test", "Send a test page to a pager, now");
    const auto name = std::make_shared<std::string>();
    const auto sendPending = std::make_shared<bool>(false);
    command->add_option("PAGER", *name, "The pager's description in the site file")->required();
    command->add_flag("--send-pending", *sendPending, "Let pages that are pending go out too");
    command->footer(
        "The page leaves whatever the pager's hours are, and is tried once. It can take minutes:\n"
        "the exit code says what became of it.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db test \"duty phone\"\n"
        "  pagerfwd --database site.db --trace test \"duty phone\"; less pageprot.txt\n");
    command->callback([name, sendPending, &program] {
        program.command = [name, sendPending, &program] {
            return Test(program, *name, *sendPending);
        };
    });
}

}  // namespace host
