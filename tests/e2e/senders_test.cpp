// What the programs of real sites send becomes alarms, once each.
#include "tests/e2e/senders_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// --- Alertmanager.

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
