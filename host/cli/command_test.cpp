// pagerfwd test: one page, now. Tested by tests/unit/host/cli_test.cpp and tests/e2e.
#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "host/cli/elapsed.h"
#include "host/cli/names.h"
#include "host/cli/one_pager.h"
#include "host/cli/program.h"
#include "host/cli/test_results.h"
#include "host/library/library.h"
#include "host/line/send_test_page.h"
#include "host/pages/backlog.h"
#include "host/pages/history.h"
#include "host/pages/test_pages.h"
#include "host/process/engine_locks.h"
#include "host/site/site_tables.h"
#include "host/store/pending.h"
#include "host/store/pool.h"
#include "host/text/json.h"
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

// An engine for the length of the call.
class OwnEngine {
 public:
    OwnEngine(const Program& program, Connection& connection, bool sendPending)
        : database_(program.database), locks_(program.database, program.locks, "test") {
        locks_.TakeDevices(connection);
        MendTexts(connection);
        MendAlarmStates(connection);
        MindPendingPages(connection, sendPending);
        MendAlarmStates(connection);
        NoteEngineStart(connection);
        StartTrace(program);
        library_.emplace(program.library);
        NoteEngineStart(connection);
    }

    int32_t Send(const PagerRow& pager) const {
        const int32_t result = SendTestPage(*library_, database_, pager);
        library_->StopAlarmFwdPager();
        return result;
    }

 private:
    const std::string database_;
    EngineLocks locks_;
    std::optional<Library> library_;
};

// None: the engine that was asked has ended, and this test page was not sent.
std::optional<int32_t> SendByRunningEngine(const Program& program, Lease& lease,
                                           const PagerRow& pager) {
    constexpr std::chrono::milliseconds kBetweenLooks{200};
    LockFile lock = DatabaseLock(program.database);
    const int64_t asked = AskForTestPage(lease.Database(), lease.Owners(), pager.description);
    std::optional<int32_t> answer;
    do {
        std::this_thread::sleep_for(kBetweenLooks);
        answer = TestPageAnswer(lease.Database(), asked);
    } while (!answer && lock.IsTaken());
    if (!answer) {
        answer = TestPageAnswer(lease.Database(), asked);
    }
    ForgetTestPage(lease.Database(), asked);
    return answer;
}

int32_t AskRunningEngine(const Program& program, Lease& lease, const PagerRow& pager) {
    const std::optional<int32_t> answer = SendByRunningEngine(program, lease, pager);
    if (!answer) {
        throw Failure(kCannot, "the engine that was running ended before it sent the page");
    }
    return *answer;
}

int32_t SendShown(const Program& program, Lease& lease, const std::optional<OwnEngine>& engine,
                  const PagerRow& pager) {
    const Elapsed shown;
    return engine ? engine->Send(pager) : AskRunningEngine(program, lease, pager);
}

const TestResult& MeaningOf(int32_t code, const PagerRow& pager) {
    const TestResult* const result = FindTestResult(code, DialIsThePage(pager.number));
    if (result == nullptr) {
        throw Failure(kCannot,
                      "the library gave a result that is not known: " + std::to_string(code));
    }
    return *result;
}

ExitCode Report(const TestResult& result, bool traced) {
    if (result.exit == kDone) {
        std::cout << result.meaning << "\n";
        return kDone;
    }
    std::cout << "not sent\n" << std::flush;
    std::string message = std::string(result.meaning) + " (result " + std::to_string(result.code) +
                          ")\n    " + result.remedy;
    message += traced ? "\n    The trace of the dialogue: pagerfwd trace"
                      : "\n    To see every step of the dialogue, add: --trace";
    std::cerr << "pagerfwd: " << message << "\n";
    return result.exit;
}

ExitCode ReportAsJson(const TestResult& result, const std::string& name, bool dial_is_page) {
    const bool went_well = result.exit == kDone;
    std::cout << Written({{"pager", name},
                          {"sent", went_well && !dial_is_page},
                          {"dialled", went_well && dial_is_page},
                          {"result", result.code},
                          {"meaning", result.meaning},
                          {"remedy", result.remedy}})
              << "\n";
    return result.exit;
}

ExitCode Test(const Program& program, const std::string& name, bool sendPending, bool json) {
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const PagerRow pager = FindOnePager(lease.Database(), name, encoding);
    UseShiftJis(encoding == Encoding::kShiftJis);
    std::optional<OwnEngine> engine;
    if (!DatabaseLock(program.database).IsTaken()) {
        engine.emplace(program, lease.Database(), sendPending);
    }

    if (json) {
        return ReportAsJson(MeaningOf(SendShown(program, lease, engine, pager), pager), name,
                            DialIsThePage(pager.number));
    }
    std::cout << "test page to \"" << Printable(name) << "\", number "
              << Shown(pager.number, encoding) << (engine ? "" : ", by the running engine")
              << " ...\n"
              << std::flush;
    return Report(MeaningOf(SendShown(program, lease, engine, pager), pager), program.trace);
}

}  // namespace

void AddTest(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("test", "Send a test page to a pager, now");
    const auto name = std::make_shared<std::string>();
    const auto sendPending = std::make_shared<bool>(false);
    command->add_option("PAGER", *name, "The pager's description in the site file")->required();
    command->add_flag("--send-pending", *sendPending, "Let pages that are pending go out too");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "What became of it, as JSON");
    command->footer(
        "The page leaves whatever the pager's hours are, and is tried once. It can take minutes:\n"
        "the exit code says what became of it. Where an engine is running for this database, that\n"
        "engine sends it, behind the pages before it.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db test \"duty phone\"\n"
        "  pagerfwd --database site.db --trace test \"duty phone\"; pagerfwd trace\n");
    command->callback([name, sendPending, json, &program] {
        program.command = [name, sendPending, json, &program] {
            return Test(program, *name, *sendPending, *json);
        };
    });
}

}  // namespace host
