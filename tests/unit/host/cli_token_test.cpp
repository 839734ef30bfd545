// pagerfwd token: who is let in over HTTP.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

class CliToken : public CliFixture {
 protected:
    CliToken() { EXPECT_EQ(0, Run({"init"}).exit_code); }
};

TEST_F(CliToken, IsShownOnce) {
    const ProgramRun run = Run({"token", "add", "icinga", "--may", "raise,acknowledge"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, MatchesRegex("pagerfwd_[0-9a-f]+_[0-9a-f]+\n"));
    EXPECT_THAT(run.err, HasSubstr("may raise,acknowledge"));
    const std::string list = Run({"token", "list"}).out;
    EXPECT_THAT(list, HasSubstr("icinga"));
    EXPECT_THAT(list, Not(HasSubstr("pagerfwd_")));
    const nlohmann::json json = nlohmann::json::parse(Run({"token", "list", "--json"}).out);
    ASSERT_EQ(1U, json.size());
    EXPECT_EQ("icinga", json[0]["name"]);
    EXPECT_EQ("raise,acknowledge", json[0]["may"]);
    EXPECT_EQ(nullptr, json[0]["used"]);
    EXPECT_EQ(nullptr, json[0]["expires"]);
}

TEST_F(CliToken, HasANameOfItsOwnUntilItIsRevoked) {
    Run({"token", "add", "icinga", "--may", "raise"});
    ProgramRun run = Run({"token", "add", "icinga", "--may", "look"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("there is a token \"icinga\" already"));
    EXPECT_EQ(0, Run({"token", "revoke", "icinga"}).exit_code);
    run = Run({"token", "revoke", "icinga"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("there is no token \"icinga\""));
    EXPECT_EQ("no tokens\n", Run({"token", "list"}).out);
    EXPECT_EQ(0, Run({"token", "add", "icinga", "--may", "look"}).exit_code);
}

TEST_F(CliToken, MayEnd) {
    EXPECT_EQ(0, Run({"token", "add", "x", "--may", "look", "--days", "30"}).exit_code);
    EXPECT_TRUE(
        nlohmann::json::parse(Run({"token", "list", "--json"}).out)[0]["expires"].is_string());
}

TEST_F(CliToken, IsRefusedWithoutANameOrARight) {
    for (const std::vector<std::string>& wrong :
         std::vector<std::vector<std::string>>{{"x"},
                                               {"x", "--may", ""},
                                               {"x", "--may", "all"},
                                               {"", "--may", "look"},
                                               {"a\x1b", "--may", "look"},
                                               {std::string(65, 'x'), "--may", "look"},
                                               {"x", "--may", "look", "--days", "0"}}) {
        std::vector<std::string> arguments = {"token", "add"};
        arguments.insert(arguments.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(2, Run(arguments).exit_code) << ::testing::PrintToString(wrong);
    }
    EXPECT_EQ("no tokens\n", Run({"token", "list"}).out);
}

}  // namespace
