// The programs that send alarms at real sites, each with its example. Their servers are the test's
// own, on this machine's loopback, and end with it.
#ifndef PAGERFWD_TESTS_E2E_SENDERS_FIXTURE_H
#define PAGERFWD_TESTS_E2E_SENDERS_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/files/descriptor.h"
#include "host/store/connection.h"
#include "host/store/pool.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

inline constexpr const char* kMonitoring = EXAMPLES "/monitoring/";

class Senders : public ::testing::Test {
 protected:
    Senders() {
        const std::string programs = std::filesystem::path(PAGERFWD_PROGRAM).parent_path();
        setenv("PATH", (programs + ":/usr/local/bin:/usr/bin:/bin:/usr/sbin").c_str(), 1);
        setenv("PAGERFWD_DATABASE", (folder.Path() / "site.db").c_str(), 1);
        setenv("PAGERFWD_LOCKS", folder.Path().c_str(), 1);
        EXPECT_EQ(0, Pagerfwd("init").exit_code);
    }
    ~Senders() override {
        servers_.clear();
        host::CloseDatabases();
        unsetenv("PAGERFWD_DATABASE");
        unsetenv("PAGERFWD_LOCKS");
    }

    static ProgramRun Shell(const std::string& command) {
        return RunProgram({"/bin/sh", "-c", command});
    }
    static ProgramRun Pagerfwd(const std::string& arguments) {
        return Shell("exec pagerfwd " + arguments);
    }
    static std::string Token(const std::string& may) {
        const std::string out = Pagerfwd("token add " + may + " --may " + may).out;
        return out.substr(0, out.find('\n'));
    }

    // Runs until the test ends.
    ChildProcess& Start(const std::string& command) {
        servers_.push_back(std::make_unique<ChildProcess>(
            std::vector<std::string>{"/bin/sh", "-c", "exec " + command}));
        return *servers_.back();
    }
    // Where it serves: "127.0.0.1:41234".
    std::string StartWeb() {
        ChildProcess& web = Start("pagerfwd web --listen 127.0.0.1:0 2>&1");
        const std::string line = web.ReadLine();
        EXPECT_THAT(line, ::testing::HasSubstr(" on 127.0.0.1:"));
        return line.substr(line.rfind(' ') + 1);
    }

    // An example, with what a site would change in it.
    static std::string Example(const std::string& name,
                               const std::vector<std::pair<std::string, std::string>>& changes) {
        std::string text = ReadFile(kMonitoring + name);
        for (const auto& [from, to] : changes) {
            EXPECT_THAT(text, ::testing::HasSubstr(from)) << name;
            text = std::regex_replace(text, std::regex(from), to);
        }
        return text;
    }

    // Real programs take real time; a busy machine more of it.
    static bool Await(const std::function<bool()>& what) {
        for (int tries = 0; tries < 1200; ++tries) {
            if (what()) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return false;
    }
    std::vector<std::string> Rows(const std::string& sql) const {
        host::Connection connection("site.db");
        return host::Statement(connection, "SELECT " + sql).Texts();
    }
    std::vector<std::string> Alarms() const {
        return Rows("details FROM AlarmLog ORDER BY row_id");
    }
    bool AwaitRow(const std::string& sql) const {
        return Await([&] { return !Rows(sql).empty(); });
    }
    // What waits in the spool is taken up.
    static void TakeUp() { Pagerfwd("alarm withdraw --key none"); }

    static std::string FreePort() {
        const host::Descriptor probe(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(0, bind(probe.Number(), reinterpret_cast<const sockaddr*>(&address), size));
        getsockname(probe.Number(), reinterpret_cast<sockaddr*>(&address), &size);
        return std::to_string(ntohs(address.sin_port));
    }

    // A site of one line whose groups ALERT/* and MONITORING/* go to "duty" and "night", and its
    // node, in real time. more: of the site file.
    void StartNode(const std::string& more = "") {
        WriteFile("exchange.toml", kExchange);
        network_ = &Start("pagersim serve --links lines >served.log 2>&1");
        EXPECT_TRUE(Await([] { return std::filesystem::exists("lines/ttyS0"); }));
        WriteFile("site.toml",
                  more + kSite + "device = \"" + (folder.Path() / "lines/ttyS0").string() + kLine);
        const ProgramRun import = Pagerfwd("import site.toml");
        EXPECT_EQ(0, import.exit_code) << import.err;
        Start("pagerfwd run >run.log 2>&1");
    }
    // All that the centre has received. Ends the network.
    std::string Received() {
        kill(network_->Number(), SIGTERM);
        network_->Finish();
        return ReadFile("served.log");
    }

    const test_support::TempDir folder;

 private:
    static constexpr const char* kExchange = R"(
[[line]]
port = "COM 1"
digit_ms = 1
comma_ms = 1
training_ms = 10
[[centre]]
name = "tap"
protocol = "tap"
numbers = ["5550101"]
)";
    static constexpr const char* kSite = R"(
[[pager]]
description = "duty"
type = "sms1"
number = "5550111"
retries = 2
delay = 1
[[pager]]
description = "night"
type = "sms1"
number = "5550112"
retries = 2
delay = 1
[[route]]
groups = "ALERT/*"
pagers = ["duty", "night"]
[[route]]
groups = "MONITORING/*"
pagers = ["duty"]
[[port]]
name = "COM 1"
)";
    static constexpr const char* kLine = R"("
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"
)";

    std::vector<std::unique_ptr<ChildProcess>> servers_;
    ChildProcess* network_ = nullptr;
};

class ByAlertmanager : public Senders {
 protected:
    ByAlertmanager() : web_(StartWeb()) {
        WriteFile("token", Token("raise"));
        WriteFile("alertmanager.yml",
                  Example("alertmanager.yml",
                          {{"127.0.0.1:8420", web_},
                           {"/etc/alertmanager/pagerfwd.token", folder.Path() / "token"},
                           // It would take hours.
                           {"  receiver: pagers\n",
                            "  receiver: pagers\n  group_wait: 0s\n  group_interval: 1s\n"
                            "  repeat_interval: 1s\n"}}));
    }

    // Returns where it takes alerts. Peers that don't know of each other all send.
    std::string StartAlertmanager() {
        const std::string port = FreePort();
        Start(
            "prometheus-alertmanager --config.file=alertmanager.yml --cluster.listen-address="
            " --storage.path=data" +
            port + " --web.listen-address=127.0.0.1:" + port + " >am" + port + ".log 2>&1");
        const std::string url = "http://127.0.0.1:" + port;
        EXPECT_TRUE(Await([&] { return Shell("curl -sf " + url + "/-/ready").exit_code == 0; }))
            << ReadFile("am" + port + ".log");
        return url;
    }
    // As Prometheus does. ends: an instant, or empty while it fires.
    static void Send(const std::string& alertmanager, const std::string& ends = "") {
        const std::string alert =
            R"([{"labels": {"alertname": "Disk", "severity": "critical", "instance": "web1"},)"
            R"( "annotations": {"summary": "Disk full"}, "startsAt": "2026-01-08T10:00:00Z")" +
            (ends.empty() ? "" : R"(, "endsAt": ")" + ends + "\"") + "}]";
        WriteFile("alert", alert);
        const ProgramRun run = Shell("curl -sf -H 'Content-Type: application/json' -d @alert " +
                                     alertmanager + "/api/v2/alerts");
        EXPECT_EQ(0, run.exit_code) << run.err;
    }

    const std::string web_;
};

#endif
