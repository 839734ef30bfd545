// What the programs of real sites send, with a node that pages: how often pagers hear of it, and
// what the sender hears of them.
#include <optional>

#include "tests/e2e/senders_fixture.h"
#include "tests/unit/host/started_program.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// --- Alertmanager.

class AlertmanagerPages : public ByAlertmanager {
 protected:
    AlertmanagerPages() { StartNode(); }

    // As Alertmanager has its alert: to be sent again in its name.
    static std::string AlertOf(const std::string& alertmanager) {
        return Shell("curl -sf " + alertmanager + "/api/v2/alerts | jq -c '.[0]'").out;
    }
    // So often, eight at once. Returns how many were taken.
    int Post(const std::string& alert, const std::string& status, int times) const {
        WriteFile("seen", alert);
        Shell(R"(jq -c '{version: "4", alerts: [. + {status: ")" + status +
              R"("}]}' <seen >message)");
        const std::string taken =
            Shell("yes http://" + web_ + "/api/v1/alertmanager | head -n " + std::to_string(times) +
                  " | xargs curl -s --parallel --parallel-max 8 -w '\\n%{http_code}\\n'"
                  " -H \"Authorization: Bearer $(cat token)\" -d @message | grep -c '^200$'")
                .out;
        return std::atoi(taken.c_str());
    }
    bool AwaitTwoPages() const {
        return AwaitRow("count(*) FROM Host_Sends WHERE outcome = 'sent' HAVING count(*) = 2");
    }
};

TEST_F(AlertmanagerPages, OnceForAnAlertHoweverOftenItComes) {
    const std::string first = StartAlertmanager();
    const std::string peer = StartAlertmanager();
    Send(first);
    Send(peer);
    EXPECT_TRUE(AwaitRow("1 FROM AlarmLog"));
    const std::string alert = AlertOf(first);
    EXPECT_EQ(200, Post(alert, "firing", 200)) << "a storm, while it is being paged";
    EXPECT_TRUE(AwaitTwoPages()) << ReadFile("run.log");
    EXPECT_EQ(50, Post(alert, "firing", 50)) << "and behind that";
    Send(first, "2026-01-08T10:05:00Z");
    EXPECT_TRUE(AwaitRow("1 FROM AlarmLog WHERE withdrawn <> 0"));
    Send(peer, "2026-01-08T10:05:00Z");
    EXPECT_EQ(2, Post(alert, "resolved", 2)) << "twice";
    EXPECT_EQ(50, Post(alert, "firing", 50)) << "of a peer that is late";
    EXPECT_THAT(Rows("details || ' ' || (times_raised > 300) FROM AlarmLog"),
                ElementsAre("Disk full 1"));
    EXPECT_THAT(Received(), HasSubstr("tap received 2 pages"));
}

TEST_F(AlertmanagerPages, NobodyForAnAlertThatWasOverBeforeItCame) {
    const std::string over =
        R"({"labels": {"alertname": "Load"}, "annotations": {"summary": "High load"},)"
        R"( "startsAt": "2026-01-08T10:00:00Z", "endsAt": "2026-01-08T10:05:00Z",)"
        R"( "fingerprint": "c5d0"})";
    EXPECT_EQ(2, Post(over, "resolved", 2));
    EXPECT_EQ(50, Post(over, "firing", 50)) << "of a slow peer";
    Send(StartAlertmanager());
    EXPECT_TRUE(AwaitTwoPages()) << ReadFile("run.log");
    const std::string received = Received();
    EXPECT_THAT(received, HasSubstr("tap received 2 pages"));
    EXPECT_THAT(received, Not(HasSubstr("High load")));
}

// --- Icinga 2.

class IcingaPages : public Senders {
 protected:
    IcingaPages() : port_(FreePort()) {
        WriteFile("settings", "ICINGA=https://localhost:" + port_ +
                                  " ICINGA_USER=pagerfwd ICINGA_PASSWORD=secret ICINGA_CA=" +
                                  (folder.Path() / "data/certs/ca.crt").string() + "\n");
        setenv("ICINGA_SETTINGS", (folder.Path() / "settings").c_str(), 1);
        StartNode("[notify]\ncommand = [\"" EXAMPLES "/notify/icinga\"]\nanswers = true\n");
        StartIcinga();
    }
    ~IcingaPages() override { unsetenv("ICINGA_SETTINGS"); }

    // What its API says of its services, or of the comments on them.
    std::string Ask(const std::string& kind, const std::string& attribute) const {
        return Shell("curl -sf --cacert data/certs/ca.crt -u pagerfwd:secret https://localhost:" +
                     port_ + "/v1/objects/" + kind + " | jq -r '.results[].attrs." + attribute +
                     "'")
            .out;
    }

 private:
    void StartIcinga() {
        EXPECT_EQ(0, Shell("mkdir -p data/certs && cd data/certs && openssl req -x509"
                           " -newkey rsa:2048 -nodes -keyout localhost.key -out localhost.crt"
                           " -days 2 -subj /CN=localhost -addext subjectAltName=DNS:localhost &&"
                           " cp localhost.crt ca.crt")
                         .exit_code);
        WriteFile("icinga2.conf",
                  kIcinga + ("const ApiPort = " + port_ + "\n") +
                      Example("icinga2.conf",
                              {{"/usr/local/bin/", std::string(kWithStack) + kMonitoring}}));
        std::string settings =
            " -D Configuration.RunAsUser=$(id -un)"
            " -D Configuration.RunAsGroup=$(id -gn)"
            " -D Configuration.PidPath=$PWD/icinga2.pid";
        for (const char* name : {"DataDir", "CacheDir", "LogDir", "InitRunDir", "SpoolDir"}) {
            settings += std::string(" -D Configuration.") + name + "=$PWD/data";
        }
        icinga_.emplace(std::vector<std::string>{"/bin/sh", "-c",
                                                 "exec icinga2 daemon -c icinga2.conf" + settings},
                        "icinga2.log");
    }

    // It begins its commands without a limit for the stack: the system has another layout then, and
    // a sanitized program of 32 bits finds its place taken.
#if defined(PAGERFWD_SANITIZED) && __SIZEOF_POINTER__ == 4
    static constexpr const char* kWithStack = "/usr/bin/prlimit\", \"--stack=8388608\", \"";
#else
    static constexpr const char* kWithStack = "";
#endif
    static constexpr const char* kIcinga = R"(
include <itl>
const NodeName = "localhost"
object Endpoint NodeName { }
object Zone NodeName { endpoints = [ NodeName ] }
object CheckerComponent "checker" { }
object NotificationComponent "notification" { }
object ApiListener "api" {
  bind_host = "127.0.0.1"
  bind_port = ApiPort
}
object ApiUser "pagerfwd" {
  password = "secret"
  permissions = [ "actions/*", "objects/query/*" ]
}
object Host "web1" { check_command = "dummy" }
object Service "disk" {
  host_name = "web1"
  check_command = "dummy"
  max_check_attempts = 1
  check_interval = 2s
  vars.dummy_state = 2
  vars.dummy_text = "95 % full"
}
)";

    const std::string port_;
    // In a group of its own: it begins others, which outlive it when it is killed alone.
    std::optional<StartedProgram> icinga_;
};

TEST_F(IcingaPages, AndHearsWhoHasAcknowledged) {
    ASSERT_TRUE(AwaitRow("1 FROM AlarmLog")) << ReadFile("icinga2.log");
    EXPECT_THAT(Alarms(), ElementsAre("disk: CRITICAL: 95 % full"));
    EXPECT_TRUE(Await([&] { return Ask("comments", "text").find("duty") != std::string::npos; }))
        << "whom it got through to: " << ReadFile("run.log");
    EXPECT_EQ("0\n", Ask("services", "acknowledgement"));
    const std::string number = Rows("alarmlogID FROM AlarmLog").at(0);
    EXPECT_EQ(0, Pagerfwd("alarm ack " + number + " --by maria --comment 'on my way'").exit_code);
    EXPECT_TRUE(Await([&] { return Ask("services", "acknowledgement") == "1\n"; }))
        << ReadFile("run.log");
    EXPECT_THAT(Ask("comments", "text"), HasSubstr("maria: on my way"));
    EXPECT_THAT(Received(), HasSubstr("tap received 1 page"));
}

}  // namespace
