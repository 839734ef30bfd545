// pagerfwd test: one page, now. Tested by tests/unit/host/cli_test.cpp and tests/e2e.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "host/cli/elapsed.h"
#include "host/cli/names.h"
#include "host/cli/one_pager.h"
#include "host/cli/program.h"
#include "host/cli/running_engine.h"
#include "host/line/own_line.h"
#include "host/line/send_test_page.h"
#include "host/lines/site_lines.h"
#include "host/process/database_locks.h"
#include "host/site/site_tables.h"
#include "host/status/test_results.h"
#include "host/store/pool.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/test_pages.h"
#include "host/text/json.h"
#include "host/text/printable.h"
#include "host/text_helpers.h"

namespace host {
namespace {

struct Asked {
    std::string pager;
    std::string line;  // empty: any that can send it
    bool json = false;
};

// The line that is asked for, that the pager names, or the first that can dial for it.
std::optional<SiteLine> LineFor(Connection& connection, const PagerRow& pager,
                                const std::string& asked) {
    const std::string& name = asked.empty() ? pager.port : asked;
    for (SiteLine& line : SiteLines(connection)) {
        if (name.empty() ? line.CanDialFor(pager.type) : line.name == name) {
            return std::optional<SiteLine>(std::move(line));
        }
    }
    return std::nullopt;
}

// Throws Failure where there is none of this name.
std::string CellOfLine(Connection& connection, const std::string& name, Encoding encoding) {
    std::string cell = Encode(name, encoding);
    if (!name.empty() && !FindSiteLine(connection, cell)) {
        throw Failure(kUsage, "the site has no port \"" + name + "\"");
    }
    return cell;
}

// What sends the page: a line of this process, where no node serves the database. Null, too, where
// the site has no line for it.
std::unique_ptr<OwnLine> MakeOwnLine(const Program& program, Connection& connection,
                                     const PagerRow& pager, const std::string& asked) {
    const std::optional<SiteLine> line = LineFor(connection, pager, asked);
    if (!line || line->device.empty()) {
        return nullptr;
    }
    StartTrace(program);
    return std::make_unique<OwnLine>(
        OwnLineOptions{program.database, program.locks, program.library}, *line);
}

int32_t AskRunningEngine(const Program& program, Lease& lease, const PagerRow& pager,
                         const std::string& line) {
    const int64_t asked = AskForTestPage(lease.Database(), lease.Owners(), pager.description, line);
    return AwaitAnswer(program.database, lease, asked).answer;
}

const TestResult& MeaningOf(int32_t code, const PagerRow& pager) {
    const TestResult* const result = FindTestResult(code, DialIsThePage(pager.number));
    if (result == nullptr) {
        throw Failure(kCannot,
                      "the library gave a result that is not known: " + std::to_string(code));
    }
    return *result;
}

// The library's results are exit codes, too, but for the one that is none.
ExitCode ExitOf(const TestResult& result) {
    return result.code < 0 ? kUsage : static_cast<ExitCode>(result.code);
}

ExitCode Report(const TestResult& result, bool traced) {
    if (result.code == kDone) {
        std::cout << result.meaning << "\n";
        return kDone;
    }
    std::cout << "not sent\n" << std::flush;
    std::string message = std::string(result.meaning) + " (result " + std::to_string(result.code) +
                          ")\n    " + result.remedy;
    message += traced ? "\n    The trace of the dialogue: pagerfwd trace pageprot.txt"
                      : "\n    To see every step of the dialogue, add: --trace";
    std::cerr << "pagerfwd: " << message << "\n";
    return ExitOf(result);
}

ExitCode ReportAsJson(const TestResult& result, const std::string& name, bool dial_is_page) {
    const bool went_well = result.code == kDone;
    std::cout << Written({{"pager", name},
                          {"sent", went_well && !dial_is_page},
                          {"dialled", went_well && dial_is_page},
                          {"result", result.code},
                          {"meaning", result.meaning},
                          {"remedy", result.remedy}})
              << "\n";
    return ExitOf(result);
}

ExitCode Test(const Program& program, const Asked& asked) {
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const PagerRow pager = FindOnePager(lease.Database(), asked.pager, encoding);
    const std::string line = CellOfLine(lease.Database(), asked.line, encoding);
    UseShiftJis(encoding == Encoding::kShiftJis);
    const bool is_served = NodeLock(program.database).IsTaken();
    const std::unique_ptr<OwnLine> own =
        is_served ? nullptr : MakeOwnLine(program, lease.Database(), pager, line);
    if (!asked.json) {
        std::cout << "test page to \"" << Printable(asked.pager) << "\", number "
                  << Shown(pager.number, encoding) << (is_served ? ", by the running engine" : "")
                  << " ...\n"
                  << std::flush;
    }
    const auto send = [&] {
        const Elapsed shown;
        if (is_served) {
            return AskRunningEngine(program, lease, pager, line);
        }
        return own ? own->Send(pager) : int32_t{kNoLine};
    };
    const TestResult& result = MeaningOf(send(), pager);
    return asked.json ? ReportAsJson(result, asked.pager, DialIsThePage(pager.number))
                      : Report(result, program.trace);
}

}  // namespace

void AddTest(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("test", "Send a test page to a pager, now");
    const auto asked = std::make_shared<Asked>();
    command->add_option("PAGER", asked->pager, "The pager's description in the site file")
        ->required();
    command
        ->add_option("--line", asked->line,
                     "The port to send it by (without it: any that the pager's pages may go by)")
        ->type_name("PORT");
    command->add_flag("--json", asked->json, "What became of it, as JSON");
    command->footer(
        "The page leaves whatever the pager's hours are, and is tried once. It can take minutes:\n"
        "the exit code says what became of it. Where an engine is running for this database, one\n"
        "of its lines sends it, behind the page before it.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db test \"duty phone\"\n"
        "  pagerfwd --database site.db --trace test \"duty phone\"; pagerfwd trace\n");
    command->callback([asked, &program] {
        program.command = [asked, &program] { return Test(program, *asked); };
    });
}

}  // namespace host
