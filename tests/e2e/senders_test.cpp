// The programs that send alarms at real sites, each with its example: what they send becomes
// alarms, once each. Their servers are this test's own, on this machine's loopback, and end with
// it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <regex>
#include <thread>

#include "host/files/descriptor.h"
#include "host/store/connection.h"
#include "host/store/pool.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kMonitoring = EXAMPLES "/monitoring/";

class Senders : public ::testing::Test {
 protected:
    Senders() {
        const std::string programs = std::filesystem::path(PAGERFWD_PROGRAM).parent_path();
        setenv("PATH", (programs + ":/usr/local/bin:/usr/bin:/bin:/usr/sbin").c_str(), 1);
        setenv("PAGERFWD_DATABASE", (folder.Path() / "site.db").c_str(), 1);
        EXPECT_EQ(0, Pagerfwd("init").exit_code);
    }
    ~Senders() override {
        servers_.clear();
        host::CloseDatabases();
        unsetenv("PAGERFWD_DATABASE");
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
        EXPECT_THAT(line, HasSubstr(" on 127.0.0.1:"));
        return line.substr(line.rfind(' ') + 1);
    }

    // An example, with what a site would change in it.
    static std::string Example(const std::string& name,
                               const std::vector<std::pair<std::string, std::string>>& changes) {
        std::string text = ReadFile(kMonitoring + name);
        for (const auto& [from, to] : changes) {
            EXPECT_THAT(text, HasSubstr(from)) << name;
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

    const test_support::TempDir folder;

 private:
    std::vector<std::unique_ptr<ChildProcess>> servers_;
};

// --- Alertmanager.

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

TEST_F(ByAlertmanager, AnAlertIsOneAlarmHoweverOftenItComes) {
    const std::string first = StartAlertmanager();
    const std::string peer = StartAlertmanager();
    Send(first);
    Send(peer);
    EXPECT_TRUE(AwaitRow("1 FROM AlarmLog WHERE times_raised >= 4")) << "it repeats its group";
    EXPECT_THAT(
        Rows("details || '|' || alarm_group || '|' || severity || '|' || server || '|' || withdrawn"
             " FROM AlarmLog"),
        ElementsAre("Disk full|ALERT/Disk|1|web1|0"));
    Send(first, "2026-01-08T10:05:00Z");
    EXPECT_TRUE(AwaitRow("1 FROM AlarmLog WHERE withdrawn <> 0"));
    Send(peer, "2026-01-08T10:05:00Z");
    std::this_thread::sleep_for(std::chrono::seconds(3));
    EXPECT_THAT(Rows("details || '|' || (withdrawn <> 0) FROM AlarmLog"),
                ElementsAre(StartsWith("Disk full|")))
        << "neither the other's end nor what it still repeats is another alarm";
}

TEST_F(ByAlertmanager, AnAlertIsSentAgainUntilTheDatabaseIsBack) {
    const std::string alertmanager = StartAlertmanager();
    host::CloseDatabases();
    std::filesystem::rename("site.db", "away.db");
    Send(alertmanager);
    std::this_thread::sleep_for(std::chrono::seconds(3));
    std::filesystem::rename("away.db", "site.db");
    EXPECT_TRUE(AwaitRow("1 FROM AlarmLog"));
    EXPECT_THAT(Alarms(), ElementsAre("Disk full"));
}

// --- nginx.

class ByNginx : public Senders {
 protected:
    ByNginx() {
        const std::string web = StartWeb();
        port_ = FreePort();
        EXPECT_EQ(0, Shell("openssl req -x509 -newkey rsa:2048 -nodes -keyout key -out certificate"
                           " -days 2 -subj /CN=pages.example.org"
                           " -addext subjectAltName=DNS:pages.example.org")
                         .exit_code);
        WriteFile("site", Example("nginx.conf",
                                  {{"/etc/ssl/certs/pages.pem", folder.Path() / "certificate"},
                                   {"/etc/ssl/private/pages.key", folder.Path() / "key"},
                                   {"listen 443", "listen 127.0.0.1:" + port_},
                                   {"127.0.0.1:8420", web}}));
        std::string folders;
        for (const char* name : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
            folders += std::string(name) + "_temp_path " + name + "; ";
        }
        WriteFile("nginx.conf",
                  "pid nginx.pid; daemon off; master_process off; error_log stderr;\nevents "
                  "{}\nhttp { access_log off; " +
                      folders + "include site; }\n");
        Start("nginx -e stderr -p " + folder.Path().string() + " -c nginx.conf >nginx.log 2>&1");
        EXPECT_TRUE(Await([&] { return Ask("/api/v1/openapi.json").find("HTTP/1.1 200") == 0; }))
            << ReadFile("nginx.log");
    }

    // The whole answer; options: of curl.
    std::string Ask(const std::string& path, const std::string& options = "") const {
        return Shell("curl -si --http1.1 --cacert certificate --resolve pages.example.org:" +
                     port_ + ":127.0.0.1 " + options + " https://pages.example.org:" + port_ + path)
            .out;
    }

 private:
    std::string port_;
};

TEST_F(ByNginx, AlarmsComeOverTls) {
    EXPECT_THAT(Ask("/api/v1/alarms", "-H 'Authorization: Bearer " + Token("raise") +
                                          R"(' -d '{"text": "No water"}')"),
                AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("Strict-Transport-Security:"),
                      HasSubstr("\"new\":true")));
    EXPECT_THAT(Alarms(), ElementsAre("No water"));
    EXPECT_THAT(Ask("/api/v1/alarms", "-d x"), StartsWith("HTTP/1.1 401 "));
}

TEST_F(ByNginx, ACookieIsForTlsAlone) {
    EXPECT_THAT(Ask("/sign-in", "-d token=" + Token("look")),
                AllOf(StartsWith("HTTP/1.1 303 "), HasSubstr("pagerfwd_session="),
                      HasSubstr("HttpOnly; SameSite=Strict"), HasSubstr("; Secure")));
}

TEST_F(ByNginx, WhatIsTooLargeComesNoFurther) {
    EXPECT_EQ(0, Shell("head -c 1100000 /dev/zero >large").exit_code);
    EXPECT_THAT(Ask("/api/v1/alarms", "-H Expect: --data-binary @large"),
                StartsWith("HTTP/1.1 413 "));
}

// --- rsyslog, and SNMP.

TEST_F(Senders, RsyslogRaisesWhatIsCritical) {
    WriteFile("rsyslog.conf",
              "module(load=\"imuxsock\" SysSock.Use=\"off\")\ninput(type=\"imuxsock\" Socket=\"" +
                  (folder.Path() / "log").string() + "\")\n" +
                  Example("rsyslog.conf", {{"/usr/local/bin/", kMonitoring}}));
    Start("rsyslogd -n -f rsyslog.conf -i " + (folder.Path() / "pid").string() +
          " >rsyslog.log 2>&1");
    EXPECT_TRUE(Await([&] { return std::filesystem::exists("log"); })) << ReadFile("rsyslog.log");
    EXPECT_EQ(0, Shell("logger -u log -p kern.crit 'out of memory'").exit_code);
    EXPECT_EQ(0, Shell("logger -u log -p user.info 'all is well'").exit_code);
    EXPECT_EQ(0, Shell("logger -u log -p user.emerg 'the end $(x)'").exit_code);
    EXPECT_TRUE(Await([&] {
        TakeUp();
        return Alarms().size() >= 2;
    }));
    EXPECT_THAT(Alarms(), ElementsAre(HasSubstr("out of memory"), HasSubstr("the end $(x)")));
}

TEST_F(Senders, SnmptrapdRaisesEachTrap) {
    const std::string port = FreePort();
    setenv("SNMP_PERSISTENT_DIR", folder.Path().c_str(), 1);
    WriteFile("snmptrapd.conf", Example("snmptrapd.conf", {{"/usr/local/bin/", kMonitoring}}));
    Start("snmptrapd -f -Lf snmptrapd.log -C -c snmptrapd.conf udp:127.0.0.1:" + port);
    EXPECT_TRUE(Await([&] {
        Shell("snmptrap -v 2c -c public 127.0.0.1:" + port +
              " '' 1.3.6.1.6.3.1.1.5.3 1.3.6.1.2.1.2.2.1.1 i 7");
        TakeUp();
        return !Alarms().empty();
    })) << ReadFile("snmptrapd.log");
    unsetenv("SNMP_PERSISTENT_DIR");
    EXPECT_THAT(Alarms()[0], AllOf(StartsWith("trap from "), HasSubstr(".3.6.1.6.3.1.1.5.3")));
}

}  // namespace
