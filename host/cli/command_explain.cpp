// pagerfwd explain: what would go over the line, without a line. Tested by
// tests/unit/host/cli_test.cpp and by tests/e2e.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/one_pager.h"
#include "host/cli/program.h"
#include "host/cli/severities.h"
#include "host/explain/explanation.h"
#include "host/site/port_device.h"
#include "host/site/ports_of_pager.h"
#include "host/site/read_back.h"
#include "host/site/site_tables.h"
#include "host/store/line_view.h"
#include "host/store/pool.h"
#include "host/store/tables/pagers.h"
#include "host/text/json.h"
#include "host/text/nearest.h"
#include "host/text/printable.h"
#include "host/text_helpers.h"
#include "linux/tty.h"
#include "modem/port_row.h"
#include "tables/com_ports.h"

namespace host {
namespace {

struct PortGiver {
    void operator()(DBComPort* row) const { CDB_ComPorts::FreeComPort(row); }
};
using OwnedPortRow = std::unique_ptr<DBComPort, PortGiver>;

// With its modem strings.
struct UsablePort {
    std::unique_ptr<ModemSet> modem;
    std::unique_ptr<ComPort> port;
};

UsablePort MakeUsable(const DBComPort& row) {
    UsablePort usable;
    usable.port = MakeComPort(row);
    usable.modem.reset(usable.port->modemSet);
    CCOMHdl::SetModemStrings();
    if (!usable.port->isModem) {
        CCOMHdl::SetDefaultModemStrings(*usable.port);
    }
    return usable;
}

// The port of the site that the page would go over: the one that was asked for, or the first that
// can have it. Throws Failure.
Port FindPort(const Site& site, const std::string& name, const std::string& line) {
    const auto pager =
        std::find_if(site.pagers.begin(), site.pagers.end(),
                     [&name](const Pager& one) { return one.description.value == name; });
    const std::vector<const Port*> ports =
        pager == site.pagers.end() ? std::vector<const Port*>() : PortsOf(site, *pager);
    for (const Port* port : ports) {
        if (line.empty() || port->name.value == line) {
            return *port;
        }
    }
    const std::string& wanted =
        !line.empty() || pager == site.pagers.end() ? line : pager->port.value;
    throw Failure(kNoLine, "pager \"" + name + "\" can't be reached: " +
                               (wanted.empty()  ? "no port can dial for it"
                                : ports.empty() ? "there is no port \"" + wanted + "\""
                                                : "it isn't paged over port \"" + wanted + "\"") +
                               "; import a site file that has it");
}

// The row, with the name by which the library knows the one port of its line.
UsablePort UsablePortOf(const std::string& database, const Port& port, Encoding encoding) {
    CDB_ComPorts ports(database.c_str());
    const OwnedPortRow row(ports.FindComPort(Encode(port.name.value, encoding).c_str()));
    if (!row) {
        throw Failure(kNoLine, "port \"" + port.name.value + "\" can't be read");
    }
    UsablePort usable = MakeUsable(*row);
    usable.port->name = kOnlyPort;
    return usable;
}

std::string Quoted(const std::string& bytes) {
    return mkprint(bytes.data(), static_cast<int32_t>(bytes.size()));
}

void Print(const ExplainedStep& step) {
    constexpr size_t kWidestAligned = 24;
    std::cout << "\n" << step.what << "\n";
    for (const ExplainedPiece& piece : step.pieces) {
        const std::string bytes = Quoted(piece.bytes);
        const size_t width = bytes.size() + (piece.meaning.empty() ? 0 : 2);
        std::cout << "    " << bytes
                  << std::string(
                         piece.meaning.empty() ? 0 : std::max(kWidestAligned, width) - bytes.size(),
                         ' ')
                  << piece.meaning << "\n";
    }
    if (step.pieces.size() > 1) {
        std::cout << "  = " << Quoted(step.Bytes()) << "\n";
    }
}

void Print(const std::string& name, const Port& port, const Explanation& explanation) {
    std::cout << "pager  \"" << Printable(name) << "\", " << explanation.type << "\n"
              << "port   \"" << Printable(port.name.value) << "\", "
              << Printable(DeviceOfPort(port)) << "\n"
              << "line   " << explanation.mode << "   " << explanation.settings << "\n";
    for (const ExplainedStep& step : explanation.steps) {
        Print(step);
    }
    for (const std::string& note : explanation.notes) {
        std::cout << "\nnote: " << note << "\n";
    }
}

Json AsJson(const std::string& name, const Port& port, const Explanation& explanation) {
    Json steps = Json::array();
    for (const ExplainedStep& step : explanation.steps) {
        Json pieces = Json::array();
        for (const ExplainedPiece& piece : step.pieces) {
            pieces.push_back({{"bytes", Quoted(piece.bytes)}, {"meaning", piece.meaning}});
        }
        steps.push_back({{"what", step.what}, {"bytes", Quoted(step.Bytes())}, {"pieces", pieces}});
    }
    return {{"pager", name},
            {"type", explanation.type},
            {"port", port.name.value},
            {"device", DeviceOfPort(port)},
            {"mode", explanation.mode},
            {"settings", explanation.settings},
            {"steps", std::move(steps)},
            {"notes", explanation.notes}};
}

struct ExplainOptions {
    std::string pager;
    std::string text = PagedAlarm().details;
    std::string group = PagedAlarm().group;
    std::string severity = "informational";
    std::string server = PagedAlarm().server;
    std::string line;
    bool json = false;
};

ExitCode Explain(const Program& program, const ExplainOptions& options) {
    const std::string& name = options.pager;
    const int32_t severity = std::stoi(SeverityFor(options.severity));
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const PagerRow row = FindOnePager(lease.Database(), name, encoding);
    UseShiftJis(encoding == Encoding::kShiftJis);

    const Port port = FindPort(ReadSiteBack(lease.Database()).site, name, options.line);
    std::string number = row.number;
    ::Pager pager{};
    pager.pagerType = std::atoi(row.type.c_str());  // NOLINT(cert-err34-c): as the library does
    pager.pagerNumber = number.data();
    const UsablePort usable = UsablePortOf(program.database, port, encoding);
    const Explanation explanation = ExplainPage(
        pager, *usable.port,
        {EncodeNearest(options.group, encoding), EncodeNearest(options.server, encoding),
         EncodeNearest(options.text, encoding), severity});
    if (options.json) {
        std::cout << Written(AsJson(name, port, explanation)) << "\n";
    } else {
        Print(name, port, explanation);
    }
    return kDone;
}

}  // namespace

void AddExplain(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "explain", "Show what would go over the line for a page, without touching a line");
    const auto options = std::make_shared<ExplainOptions>();
    command->add_option("PAGER", options->pager, "The pager's description in the site file")
        ->required();
    command->add_option("--text", options->text,
                        "The alarm's text; without it, that of a test page");
    command->add_option("--group", options->group, "The alarm's group")->capture_default_str();
    command->add_option("--severity", options->severity, "How bad it is")->capture_default_str();
    command->add_option("--server", options->server, "Who has raised it")->capture_default_str();
    command->add_option("--line", options->line,
                        "The port that it goes over; without it, the first that can have it");
    command->add_flag("--json", options->json, "The explanation as JSON");
    command->footer(
        "The port with its device, line settings, dial command, and every byte of the dialogue, "
        "field by field, as the "
        "library\n"
        "builds them. Control characters are shown by name, such as <cr>; those of the text are "
        "sent\n"
        "as blanks, and what the site's encoding lacks in the nearest letters.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db explain \"duty phone\"\n"
        "  pagerfwd --database site.db explain \"duty phone\" --text \"Door 3 is open\"\n"
        "  pagerfwd --database site.db explain \"Osaka office\" --severity major --server pumps\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Explain(program, *options); };
    });
}

}  // namespace host
