// pagerfwd web, killed before each call by which it changes or says anything, one after the other,
// while alarms are posted: each alarm that was answered is there, once, and none is there twice.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "tests/unit/host/child_process.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/raw_client.h"

namespace {

class KilledWeb : public HostTest {
 protected:
    KilledWeb() {
        setenv("PAGERFWD_DATABASE", database.c_str(), 1);
        const std::string out =
            RunProgram({PAGERFWD_PROGRAM, "token", "add", "poster", "--may", "raise"}).out;
        token_ = out.substr(0, out.find('\n'));
    }
    ~KilledWeb() override { unsetenv("PAGERFWD_DATABASE"); }

    // Whether it lived until both alarms were answered.
    bool Survives(int call) {
        ChildProcess web({"/bin/sh", "-c",
                          "LD_PRELOAD=" KILL_AT_CALL " PAGERFWD_KILL_AT=" + std::to_string(call) +
                              " exec " PAGERFWD_PROGRAM " web --listen unix:web.sock 2>&1"});
        EXPECT_NE("", web.ReadLine());
        const std::string name = "call " + std::to_string(call);
        const bool first = Post(name + " first");
        return Post(name + " second") && first;
    }

    std::set<std::string> Twice() {
        return Texts("SELECT details FROM AlarmLog GROUP BY details HAVING count(*) > 1");
    }
    std::set<std::string> All() { return Texts("SELECT details FROM AlarmLog"); }

    std::set<std::string> answered;

 private:
    bool Post(const std::string& text) {
        const RawClient client("web.sock", RawClient::Otherwise::kNothing);
        const std::string body = "{\"text\": \"" + text + "\"}";
        client.Send(
            "POST /api/v1/alarms HTTP/1.1\r\nHost: x\r\nConnection: close\r\n"
            "Authorization: Bearer " +
            token_ + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        const bool is_answered = client.ReceiveAll().find("HTTP/1.1 200 ") == 0;
        if (is_answered) {
            answered.insert(text);
        }
        return is_answered;
    }
    std::set<std::string> Texts(const std::string& sql) {
        host::Connection connection(database);
        const std::vector<std::string> texts = host::Statement(connection, sql).Texts();
        return {texts.begin(), texts.end()};
    }

    std::string token_;
};

TEST_F(KilledWeb, HasEachAlarmThatItHasAnsweredOnce) {
    constexpr int kMostCalls = 1000;
    int call = 1;
    while (call < kMostCalls && !Survives(call)) {
        ++call;
    }
    EXPECT_GT(call, 10) << "it was killed at so many moments";
    EXPECT_LT(call, kMostCalls);
    EXPECT_THAT(Twice(), ::testing::IsEmpty());
    const std::set<std::string> all = All();
    EXPECT_GE(answered.size(), 3U);
    for (const std::string& text : answered) {
        EXPECT_EQ(1U, all.count(text)) << text;
    }
    std::cout << "killed at " << call - 1 << " calls; " << answered.size() << " alarms answered, "
              << all.size() << " there\n";
}

}  // namespace
