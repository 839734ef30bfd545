// The site. Used by kill_site.cpp and fault_site.cpp.
#include "tests/proof/kept_site.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "host/pages/history.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "tests/proof/kill_scenario.h"
#include "tests/proof/site_databases.h"

namespace proof::kills {
namespace {

constexpr const char* kPreloads = "LD_PRELOAD=";

const char* WordFor(host::PageEnd end) {
    switch (end) {
        case host::PageEnd::kPending:
            return "pending";
        case host::PageEnd::kDone:
            return "done";
        case host::PageEnd::kOffLimit:
            return "given-up";
        case host::PageEnd::kAcknowledged:
        case host::PageEnd::kResolved:  // nothing here is withdrawn
            return "acknowledged";
        case host::PageEnd::kDropped:
        case host::PageEnd::kByHand:
            return "dropped";
    }
    return "";
}

}  // namespace

void WriteSite(const char* path) {
    std::ofstream text(path);
    text << "encoding = \"latin1\"\n";
    for (int line = 1; line <= kLines; ++line) {
        text << "[[port]]\nname = \"COM " << line << "\"\ninit = \"AT&F&D2S12=2\"\n"
             << "[port.pager]\ndial = \"ATDT\"\nprompt = \">\"\n"
             << "[port.sms1]\nprotocol = \"TAP\"\ndial = \"ATDT5550101\"\n"
             << "[port.sms2]\nprotocol = \"UCP\"\ndial = \"ATDT5550102\"\n";
    }
    for (const PagerPlan& pager : kPagerPlans) {
        text << "[[pager]]\ndescription = \"" << pager.name << "\"\n";
        if (*pager.port != '\0') {
            text << "port = \"" << pager.port << "\"\n";
        }
        text << "type = \"" << pager.type << "\"\nnumber = \"" << pager.number
             << "\"\nretries = " << pager.retries << "\ndelay = 1\n";
    }
    for (const Route& route : Routes()) {
        text << "[[route]]\ngroups = \"" << route.group << "/*\"\npagers = [";
        for (const std::string& pager : route.pagers) {
            text << "\"" << pager << "\", ";
        }
        text << "]\n";
    }
}

int Now() {
    return static_cast<int>(std::time(nullptr) - kStart);
}

int32_t RaiseNext(std::ostream& ledger, int number, const std::string& group) {
    const std::string text = "pump" + std::to_string(number);
    host::Connection connection(SiteDatabase());
    const int32_t alarm =
        host::RaiseAlarm(connection, {group + "/1", "2", "SRV", text}, std::time(nullptr));
    ledger << "raised " << alarm << " " << text << " " << group << std::endl;
    return alarm;
}

void WriteEnd(std::ostream& ledger) {
    constexpr int64_t kAll = 100000;
    host::Connection connection(SiteDatabase());
    for (const auto& list : {host::PendingPages(connection), host::EndedPages(connection, kAll)}) {
        for (const host::PageStory& page : list) {
            host::Statement moves(connection,
                                  "SELECT count(*) FROM Host_History WHERE change = 'moved'"
                                  " AND alarm = ? AND pager = ?");
            moves.Bind(page.alarm).Bind(page.pager).Step();
            ledger << "page " << page.alarm << " " << page.pager << " " << WordFor(page.end) << " "
                   << moves.Number(0) << "\n";
        }
    }
    host::Statement written(
        connection,
        "SELECT alarm, pager, line, at FROM (SELECT *, lag(tries, 1, '0') OVER"
        " (PARTITION BY alarm, pager ORDER BY row_id) AS before FROM Host_History"
        " WHERE change = 'written') AS changes WHERE tries <> before OR state <> '2'");
    while (written.Step()) {
        ledger << "written " << written.Text(0) << " " << written.Text(1) << " " << written.Text(2)
               << " " << written.Number(3) << "\n";
    }
    host::Statement alarms(connection, "SELECT alarmlogID, pagerstate FROM AlarmLog");
    while (alarms.Step()) {
        ledger << "alarm " << alarms.Text(0) << " " << alarms.Text(1) << "\n";
    }
    ledger << "end" << std::endl;
}

Node::Node(std::string program, std::string library, const std::string& preload, Place place)
    : program_(std::move(program)), library_(std::move(library)) {
    const char* const others = getenv("LD_PRELOAD");
    const std::string before = others == nullptr ? "" : others;
    preloads_ =
        kPreloads + (place == Place::kInFront ? preload + ":" + before : before + ":" + preload);
}

void Node::Start(bool until_done) {
    std::vector<std::string> words = {program_,    "--database", SiteDatabase(),
                                      "--library", library_,     "run"};
    if (until_done) {
        words.emplace_back("--until-done");
    }
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    std::vector<char*> variables;
    for (char** each = environ; *each != nullptr; ++each) {
        if (std::string_view(*each).substr(0, std::strlen(kPreloads)) != kPreloads) {
            variables.push_back(*each);
        }
    }
    variables.push_back(preloads_.data());
    variables.push_back(nullptr);
    if (posix_spawn(&process_, program_.c_str(), nullptr, nullptr, arguments.data(),
                    variables.data()) != 0) {
        throw std::runtime_error("can't be started: " + program_);
    }
}

void Node::AskToEnd() const {
    kill(process_, SIGTERM);
}

bool Node::HasEnded(int& status) {
    if (process_ <= 0 || waitpid(process_, &status, WNOHANG) != process_) {
        return false;
    }
    process_ = -1;
    return true;
}

void Node::WaitForEnd(std::ostream& ledger) {
    int status = 0;
    while (!HasEnded(status)) {
        sleep(1);
    }
    ledger << "node " << std::time(nullptr) << " " << status << std::endl;
}

}  // namespace proof::kills
