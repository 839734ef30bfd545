// The web process while the disk is full, and behind that.
#include "tests/e2e/senders_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class AFullDisk : public Senders {
 protected:
    // Until an instant.
    void StartWebWithoutRoom(std::time_t until) {
        ChildProcess& web =
            Start("env LD_PRELOAD=" REFUSALS " PAGERFWD_FULL_DISK='0 " + std::to_string(until) +
                  "' pagerfwd web --listen 127.0.0.1:0 --snpp 127.0.0.1:0"
                  " --snpp-from 127.0.0.1 2>&1");
        web_ = AddressIn(web.ReadLine());
        snpp_ = AddressIn(web.ReadLine());
    }
    std::string Ask(const std::string& path, const std::string& options) const {
        return Shell("curl -si " + options + " http://" + web_ + path).out;
    }
    std::string Raise() const {
        return Ask("/api/v1/alarms",
                   "-H 'Authorization: Bearer " + raise_ + R"(' -d '{"text": "x"}')");
    }
    std::string SendBySnpp() const {
        return Shell(R"(printf 'PAGER duty\r\nMESS x\r\nSEND\r\nQUIT\r\n' | curl -s telnet://)" +
                     snpp_)
            .out;
    }

    const std::string raise_ = Token("raise");
    const std::string look_ = Token("look");
    const host::Connection node_{"site.db"};  // as a node has it

 private:
    static std::string AddressIn(const std::string& line) {
        return line.substr(line.rfind(' ') + 1);
    }

    std::string web_;
    std::string snpp_;
};

TEST_F(AFullDisk, TakesNothingInAndHidesNothing) {
    WriteFile("site.toml",
              "[[port]]\nname = \"COM 1\"\n[port.pager]\ndial = \"ATDT\"\n[[pager]]\n"
              "description = \"duty\"\ntype = \"numeric\"\nnumber = \"5\"\n");
    EXPECT_EQ(0, Pagerfwd("import site.toml").exit_code);
    const std::time_t until = std::time(nullptr) + 5;
    StartWebWithoutRoom(until);
    EXPECT_THAT(Raise(), AllOf(StartsWith("HTTP/1.1 503 "), HasSubstr("Retry-After")));
    EXPECT_THAT(SendBySnpp(), HasSubstr("554 The database is away"));
    EXPECT_THAT(Ask("/api/v1/alarms", "-H 'Authorization: Bearer " + look_ + "'"),
                StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(Ask("/sign-in", "-d token=" + look_), StartsWith("HTTP/1.1 303 "));
    EXPECT_LT(std::time(nullptr), until) << "all that while it was full";
    EXPECT_THAT(Alarms(), IsEmpty());
    EXPECT_TRUE(Await([&] { return Raise().find("HTTP/1.1 200 ") == 0; }));
    EXPECT_THAT(SendBySnpp(), HasSubstr("250 OK, it is kept"));
    EXPECT_THAT(Alarms(), ElementsAre("x", "x"));
}

}  // namespace
