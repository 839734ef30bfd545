// pagerfwd web. Tested by tests/unit/host/cli_web_test.cpp.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/cli/program.h"
#include "host/cli/web_demo.h"
#include "host/process/operator_log.h"
#include "host/process/systemd.h"
#include "host/store/database_name.h"
#include "host/store/pool.h"
#include "host/web/api.h"
#include "host/web/listen.h"
#include "host/web/pages.h"
#include "host/web/server.h"

namespace host {
namespace {

constexpr const char* kUsualAddress = "127.0.0.1:8420";

std::vector<Descriptor> Listeners(const std::vector<std::string>& addresses) {
    std::vector<Descriptor> listeners = SocketsOfManager();
    if (listeners.empty() && addresses.empty()) {
        listeners.push_back(Listen(kUsualAddress));
    }
    for (const std::string& address : addresses) {
        listeners.push_back(Listen(address));
    }
    return listeners;
}

// A database that is away may come back; one that is none is a mistake.
void RequireDatabase(const std::string& database, OperatorLog& log) {
    try {
        const Lease lease(database);
    } catch (const StoreAway& away) {
        log.Warning(std::string(away.what()) + "; requests are answered when it is back");
    }
}

// Programs have an address space of their own: no cookie is good there, and no token elsewhere.
bool IsOfApi(const std::string& target) {
    return target.compare(0, 5, "/api/") == 0;
}

ExitCode Serve(const Program& program, const std::vector<std::string>& addresses) {
    OperatorLog log(std::cerr, std::getenv("JOURNAL_STREAM") != nullptr);
    RequireDatabase(program.database, log);
    std::vector<Descriptor> listeners = Listeners(addresses);
    for (const Descriptor& listener : listeners) {
        log.Info("serving " + ShownName(program.database) + " on " + AddressOf(listener));
    }
    const Api api(program.database, log);
    WebPages pages(program.database, log);
    WebServer server(std::move(listeners),
                     [&](const WebRequest& request) {
                         return IsOfApi(request.target) ? api.Answer(request)
                                                        : pages.Answer(request);
                     },
                     {});
    NotifyManager("READY=1");
    server.Run();
    log.Info("ended");
    return kDone;
}

ExitCode ServeDemo(Program& program, const std::vector<std::string>& addresses) {
    const WebDemo demo(program.library);
    program.database = demo.Database();
    std::cout << "open http://" << (addresses.empty() ? kUsualAddress : addresses.front())
              << "/ and sign in with this token:\n  " << demo.Token()
              << "\nCtrl-C ends it, and leaves nothing behind.\n"
              << std::flush;
    return Serve(program, addresses);
}

}  // namespace

void AddWeb(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "web", "Take alarms and answer questions over HTTP, and show the site in a browser");
    const auto addresses = std::make_shared<std::vector<std::string>>();
    command
        ->add_option("--listen", *addresses,
                     "Where (without it: 127.0.0.1:8420, or the sockets of the service manager): "
                     "ADDRESS:PORT or unix:PATH; may be given again")
        ->type_name("ADDRESS");
    const auto demo = std::make_shared<bool>(false);
    command->add_flag("--demo", *demo,
                      "Show a site that is made for the occasion: a month of it, simulated, which "
                      "goes on alive");
    command->footer(
        "Until SIGTERM or Ctrl-C. A process of its own: paging goes on whatever becomes of it. "
        "Who\n"
        "asks shows a token, which \"pagerfwd token add\" makes. What it takes is told by\n"
        "/api/v1/openapi.json. It speaks no TLS: to be reached from outside, a reverse proxy "
        "stands\n"
        "in front.\n\n"
        "Examples:\n"
        "  pagerfwd web --listen unix:/run/pagerfwd/web.sock\n"
        "  pagerfwd web --demo\n");
    command->callback([addresses, demo, &program] {
        program.command = [addresses, demo, &program] {
            return *demo ? ServeDemo(program, *addresses) : Serve(program, *addresses);
        };
    });
}

}  // namespace host
