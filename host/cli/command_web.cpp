// pagerfwd web. Tested by tests/unit/host/cli_web_test.cpp.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/cli/program.h"
#include "host/cli/web_demo.h"
#include "host/net/listen.h"
#include "host/process/operator_log.h"
#include "host/process/systemd.h"
#include "host/snpp/address_list.h"
#include "host/snpp/server.h"
#include "host/store/database_name.h"
#include "host/store/pool.h"
#include "host/web/api.h"
#include "host/web/pages.h"
#include "host/web/server.h"

namespace host {
namespace {

constexpr const char* kUsualAddress = "127.0.0.1:8420";

struct WebOptions {
    std::vector<std::string> addresses;
    std::vector<std::string> snpp;       // where SNPP is spoken
    std::vector<std::string> snpp_from;  // who needs no token there
    bool demo = false;
};

// What is served on which sockets.
struct Doors {
    std::vector<Descriptor> http;
    std::vector<Descriptor> snpp;
};

Doors OpenDoors(const WebOptions& options) {
    Doors doors;
    for (NamedSocket& passed : SocketsOfManager()) {
        (passed.name == "snpp" ? doors.snpp : doors.http).push_back(std::move(passed.socket));
    }
    if (doors.http.empty() && options.addresses.empty()) {
        doors.http.push_back(Listen(kUsualAddress));
    }
    for (const std::string& address : options.addresses) {
        doors.http.push_back(Listen(address));
    }
    for (const std::string& address : options.snpp) {
        doors.snpp.push_back(Listen(address));
    }
    return doors;
}

AddressList KnownAddresses(const WebOptions& options) {
    AddressList known;
    for (const std::string& address : options.snpp_from) {
        if (!known.Add(address)) {
            throw Failure(kUsage, address +
                                      ": no address or network; write 192.0.2.7, "
                                      "192.0.2.0/24 or 2001:db8::/32");
        }
    }
    return known;
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

void TellDoors(OperatorLog& log, const std::string& what, const std::vector<Descriptor>& doors) {
    for (const Descriptor& door : doors) {
        log.Info("serving " + what + " on " + AddressOf(door));
    }
}

// SNPP, in a thread of its own beside HTTP, until the object ends.
class SnppService {
 public:
    SnppService(const Program& program, OperatorLog& log, const AddressList& known,
                std::vector<Descriptor> doors)
        : desk_(program.database),
          server_(std::move(doors),
                  [this, &log, &known](const std::string& source) {
                      return SnppDialogue(desk_, log, source, known.Has(source));
                  },
                  {}),
          thread_([this] { server_.Run(); }) {}
    ~SnppService() {
        server_.Stop();
        thread_.join();
    }
    SnppService(const SnppService&) = delete;
    SnppService& operator=(const SnppService&) = delete;

 private:
    const SnppDesk desk_;
    SnppServer server_;
    std::thread thread_;
};

ExitCode Serve(const Program& program, const WebOptions& options) {
    const AddressList known = KnownAddresses(options);
    OperatorLog log(std::cerr, std::getenv("JOURNAL_STREAM") != nullptr);
    RequireDatabase(program.database, log);
    Doors doors = OpenDoors(options);
    TellDoors(log, ShownName(program.database), doors.http);
    TellDoors(log, "SNPP", doors.snpp);
    const Api api(program.database, log);
    WebPages pages(program.database, log);
    WebServer server(std::move(doors.http),
                     [&](const WebRequest& request) {
                         return IsOfApi(request.target) ? api.Answer(request)
                                                        : pages.Answer(request);
                     },
                     {});
    std::optional<SnppService> snpp;
    if (!doors.snpp.empty()) {
        snpp.emplace(program, log, known, std::move(doors.snpp));
    }
    NotifyManager("READY=1");
    server.Run();
    snpp.reset();
    log.Info("ended");
    return kDone;
}

ExitCode ServeDemo(Program& program, const WebOptions& options) {
    const WebDemo demo(program.library);
    program.database = demo.Database();
    std::cout << "open http://"
              << (options.addresses.empty() ? kUsualAddress : options.addresses.front())
              << "/ and sign in with this token:\n  " << demo.Token()
              << "\nCtrl-C ends it, and leaves nothing behind.\n"
              << std::flush;
    return Serve(program, options);
}

}  // namespace

void AddWeb(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "web", "Take alarms and answer questions over HTTP, and show the site in a browser");
    const auto options = std::make_shared<WebOptions>();
    command
        ->add_option("--listen", options->addresses,
                     "Where (without it: 127.0.0.1:8420, or the sockets of the service manager): "
                     "ADDRESS:PORT or unix:PATH; may be given again")
        ->type_name("ADDRESS");
    command->add_flag("--demo", options->demo,
                      "Show a site that is made for the occasion: a month of it, simulated, which "
                      "goes on alive");
    command
        ->add_option(
            "--snpp", options->snpp,
            "Where SNPP is spoken (RFC 1861), such as 192.0.2.1:444 (without it: nowhere); "
            "may be given again")
        ->type_name("ADDRESS");
    command
        ->add_option("--snpp-from", options->snpp_from,
                     "Who may send over SNPP without a token: an address or a network, such as "
                     "192.0.2.0/24 (without it: nobody); may be given again")
        ->type_name("ADDRESS");
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
    command->callback([options, &program] {
        program.command = [options, &program] {
            return options->demo ? ServeDemo(program, *options) : Serve(program, *options);
        };
    });
}

}  // namespace host
