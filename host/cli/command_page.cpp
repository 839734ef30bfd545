// pagerfwd page: what is pending, page by page; given up or moved by hand. Tested by
// tests/unit/host/cli_page_test.cpp.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/cli/user_name.h"
#include "host/pages/history.h"
#include "host/pages/page_requests.h"
#include "host/pages/page_words.h"
#include "host/pages/takeover.h"
#include "host/process/database_locks.h"
#include "host/site/ports_of_pager.h"
#include "host/site/read_back.h"
#include "host/site/site_tables.h"
#include "host/store/look.h"
#include "host/store/pool.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/text/json.h"
#include "host/text/nearest.h"
#include "host/text/printable.h"
#include "host/text/text_table.h"
#include "host/text/times.h"

namespace host {
namespace {

// --- list

struct Pending {
    Encoding encoding;
    std::vector<PageStory> pages;
    std::vector<PageRequest> requests;
};

Pending ReadPending(const std::string& database) {
    return Look(database, [](Connection& connection) {
        return Pending{EncodingOf(connection), PendingPages(connection), OpenRequests(connection)};
    });
}

bool IsOf(const PageKey& key, const PageStory& page) {
    return key.alarm == page.alarm && key.group == page.group && key.pager == page.pager;
}

// "pending", and what is asked of it: "pending, to be given up".
std::string StateAndWish(const PageStory& page, const Pending& pending) {
    std::string state = StateOf(page);
    for (const PageRequest& request : pending.requests) {
        if (IsOf(request.page, page)) {
            state += request.to.empty()
                         ? ", to be given up"
                         : ", to be moved to " + Decode(request.to, pending.encoding);
        }
    }
    return state;
}

std::string TriesMade(const PageStory& page) {
    return std::to_string(page.tries) + " of " + std::to_string(page.retries + 1);
}

void PrintPages(const Pending& pending) {
    TextTable table({"ALARM", "GROUP", "PAGER", "LINE", "TRIES", "DUE (computed)", "STATE"});
    const auto shown = [&](const std::string& text) { return Shown(text, pending.encoding); };
    for (const PageStory& page : pending.pages) {
        table.Add({shown(page.alarm), shown(page.group), shown(page.pager), shown(page.line),
                   TriesMade(page), LocalTime(page.due), Printable(StateAndWish(page, pending))});
    }
    std::cout << (pending.pages.empty() ? "no pages are pending\n" : table.Text());
}

void PrintPagesAsJson(const Pending& pending) {
    Json list = Json::array();
    const auto decoded = [&](const std::string& text) { return Decode(text, pending.encoding); };
    for (const PageStory& page : pending.pages) {
        list.push_back({{"alarm", decoded(page.alarm)},
                        {"group", decoded(page.group)},
                        {"pager", decoded(page.pager)},
                        {"line", decoded(page.line)},
                        {"tries", page.tries},
                        {"retries", page.retries},
                        {"queued", LocalTime(page.queued)},
                        {"computed", {{"due", LocalTime(page.due)}}},
                        {"state", StateAndWish(page, pending)}});
    }
    std::cout << Written(list) << "\n";
}

ExitCode ListPages(const Program& program, bool json) {
    const Pending pending = ReadPending(program.database);
    if (json) {
        PrintPagesAsJson(pending);
    } else {
        PrintPages(pending);
    }
    return kDone;
}

// --- cancel and move

struct Deed {
    int64_t alarm = 0;
    std::string pager;
    std::string line;  // empty: to be given up
    std::string why;
};

std::string NameOf(const Deed& deed) {
    return "page of alarm " + std::to_string(deed.alarm) + " to \"" + deed.pager + "\"";
}

PageKey FindPage(Connection& connection, const Deed& deed, Encoding encoding) {
    const std::string alarm = std::to_string(deed.alarm);
    const std::string pager = InTables(deed.pager, encoding);
    for (const PageStory& page : PendingPages(connection)) {
        if (page.alarm == alarm && page.pager == pager) {
            return {page.alarm, page.group, page.pager};
        }
    }
    throw Failure(kNo,
                  "no " + NameOf(deed) + " is pending; pagerfwd page list shows those that are");
}

// One that isn't would lose the page again at once, to any line that can have it.
void RequireInService(const LineState& line, const Deed& deed, Encoding encoding) {
    const std::string name = "line \"" + deed.line + "\"";
    if (line.paused) {
        throw Failure(kNo, name + " is paused; put it back with: pagerfwd line resume");
    }
    if (line.health == Health::kSick) {
        throw Failure(kNo, name + " is sick: " + Shown(line.reason, encoding));
    }
}

// A line that can dial for the pager's type.
std::string FindLineFor(Connection& connection, const Deed& deed, Encoding encoding) {
    std::string line = InTables(deed.line, encoding);
    const std::optional<LineState> state = FindLine(connection, line);
    if (!state) {
        throw Failure(kUsage, "there is no line \"" + deed.line + "\"; " +
                                  ListNames("lines", LineNames(connection), encoding));
    }
    RequireInService(*state, deed, encoding);
    const Site site = ReadSiteBack(connection).site;
    for (const Pager& pager : site.pagers) {
        for (const Port& port : site.ports) {
            if (pager.description.value == deed.pager && port.name.value == deed.line &&
                DialFor(port, pager).value.empty()) {
                throw Failure(kUsage, "line \"" + deed.line + "\" has no dial command for \"" +
                                          deed.pager + "\", a pager of type " + pager.type.value);
            }
        }
    }
    return line;
}

bool IsAskedFor(Connection& connection, const PageKey& page) {
    const std::vector<PageRequest> requests = OpenRequests(connection);
    return std::any_of(requests.begin(), requests.end(), [&page](const PageRequest& request) {
        return request.page.alarm == page.alarm && request.page.group == page.group &&
               request.page.pager == page.pager;
    });
}

// A node does it within seconds, unless the page's line is in the midst of another. Without
// one, it is done here: no process has the page then, and none may start meanwhile.
bool IsCarriedOut(const Program& program, Connection& connection, const PageKey& page) {
    constexpr std::chrono::milliseconds kBetweenLooks{200};
    constexpr int kLooks = 15;
    for (int look = 0; look < kLooks; ++look) {
        LockFile lock = EngineLock(program.database);
        if (!AnyNodeLives(connection) && lock.TryTake("page")) {
            for (const PageRequest& request : OpenRequests(connection)) {
                CarryOut(connection, request);
            }
        }
        if (!IsAskedFor(connection, page)) {
            return true;
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
    return false;
}

ExitCode Ask(const Program& program, const Deed& deed) {
    if (deed.why.find_first_not_of(' ') == std::string::npos) {
        throw Failure(kUsage, "say why: the history of the page tells it");
    }
    Lease lease(program.database);
    Connection& connection = lease.Database();
    const Encoding encoding = EncodingOf(connection);
    PageRequest request;
    request.page = FindPage(connection, deed, encoding);
    request.to = deed.line.empty() ? std::string() : FindLineFor(connection, deed, encoding);
    request.note = EncodeNearest(deed.why + " (" + UserName() + ")", encoding);
    AskForPage(connection, request);
    const bool done = IsCarriedOut(program, connection, request.page);
    const std::string what = deed.line.empty() ? "given up" : "moved to line \"" + deed.line + "\"";
    std::cout << Printable(NameOf(deed)) << ": "
              << (done ? Printable(what)
                       : "to be " + Printable(what) +
                             ", as soon as its line has finished the page "
                             "that is on it")
              << "\n";
    return kDone;
}

// --- resend and done

struct Saying {
    int64_t alarm = 0;
    std::string pager;
    bool sent = false;
};

ExitCode Say(const Program& program, const Saying& saying) {
    Lease lease(program.database);
    Connection& connection = lease.Database();
    const Encoding encoding = EncodingOf(connection);
    const Deed deed{saying.alarm, saying.pager, {}, {}};
    const PageKey page = FindPage(connection, deed, encoding);
    const std::string why = EncodeNearest(
        std::string(saying.sent ? "said to have been sent" : "said not to have been sent") + " (" +
            UserName() + ")",
        encoding);
    if (!(saying.sent ? CountAsSent : SendAgain)(connection, page, why)) {
        throw Failure(kNo, NameOf(deed) + ": nobody asks what it has come to; pagerfwd page list");
    }
    std::cout << Printable(NameOf(deed)) << ": "
              << (saying.sent ? "counted as sent" : "is sent again") << "\n";
    return kDone;
}

// --- The command line.

void AddSaying(CLI::App& page, Program& program, const char* name, const char* help, bool sent,
               const char* footer) {
    CLI::App* const command = page.add_subcommand(name, help);
    const auto saying = std::make_shared<Saying>();
    saying->sent = sent;
    command->add_option("ALARM", saying->alarm, "The alarm's number")->required();
    command->add_option("PAGER", saying->pager, "The pager's description")->required();
    command->footer(footer);
    command->callback([saying, &program] {
        program.command = [saying, &program] { return Say(program, *saying); };
    });
}

void AddPageOf(CLI::App& command, Deed& deed) {
    command.add_option("ALARM", deed.alarm, "The alarm's number")->required();
    command.add_option("PAGER", deed.pager, "The pager's description")->required();
}

void AddCancel(CLI::App& page, Program& program) {
    CLI::App* const command = page.add_subcommand("cancel", "Give a pending page up");
    const auto deed = std::make_shared<Deed>();
    AddPageOf(*command, *deed);
    command->add_option("--why", deed->why, "Why, for whoever asks later")->required();
    command->footer(
        "The other pages of the alarm go on. To end them all, acknowledge it: alarm ack.\n\n"
        "Example:\n"
        "  pagerfwd page cancel 978948000 \"duty phone\" --why \"reached her by telephone\"\n");
    command->callback(
        [deed, &program] { program.command = [deed, &program] { return Ask(program, *deed); }; });
}

void AddMove(CLI::App& page, Program& program) {
    CLI::App* const command =
        page.add_subcommand("move", "Have a pending page sent by another line");
    const auto deed = std::make_shared<Deed>();
    deed->why = "moved by hand";
    AddPageOf(*command, *deed);
    command->add_option("--line", deed->line, "The line, by the name of its port")
        ->required()
        ->check(CLI::Validator(
            [](const std::string& line) {
                return line.empty() ? std::string("a line has a name") : std::string();
            },
            "", "named"));
    command->add_option("--why", deed->why, "Why, for whoever asks later")->capture_default_str();
    command->footer(
        "There it is due at once, and begins its tries anew.\n\n"
        "Example:\n"
        "  pagerfwd page move 978948000 \"duty phone\" --line \"COM 2\"\n");
    command->callback(
        [deed, &program] { program.command = [deed, &program] { return Ask(program, *deed); }; });
}

void AddPageList(CLI::App& page, Program& program) {
    CLI::App* const command = page.add_subcommand("list", "Show the pending pages");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "As JSON");
    command->footer(
        "A page is pending at its line, or waits until one can have it. Looking changes "
        "nothing.\n\n"
        "Example:\n"
        "  pagerfwd page list\n");
    command->callback([json, &program] {
        program.command = [json, &program] { return ListPages(program, *json); };
    });
}

}  // namespace

void AddPage(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "page", "Show pending pages, give one up, move one, say what one came to");
    command->require_subcommand(1);
    command->fallthrough();
    AddPageList(*command, program);
    AddCancel(*command, program);
    AddMove(*command, program);
    AddSaying(*command, program, "resend", "Send a page again whose outcome is unknown", false,
              "Its node died while it was on the line, and nobody knows whether it was sent.\n\n"
              "Example:\n"
              "  pagerfwd page resend 978948000 \"duty phone\"\n");
    AddSaying(*command, program, "done", "Count a page as sent whose outcome is unknown", true,
              "Its node died while it was on the line, and somebody has seen it on the pager.\n\n"
              "Example:\n"
              "  pagerfwd page done 978948000 \"duty phone\"\n");
}

}  // namespace host
