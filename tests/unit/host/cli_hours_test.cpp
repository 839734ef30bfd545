// pagerfwd hours: show, edit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CliHours : public CliFixture {
 protected:
    CliHours() {
        MakeSite(R"(
[[hours]]
name = "office"
mon-fri = "8-18"
[[hours]]
name = "always"
all = true
)");
    }
};

constexpr const char* kOffice =
    "hours \"office\"\n"
    "#     0        8        16\n"
    "mon   ........ xxxxxxxx xx......\n"
    "tue   ........ xxxxxxxx xx......\n"
    "wed   ........ xxxxxxxx xx......\n"
    "thu   ........ xxxxxxxx xx......\n"
    "fri   ........ xxxxxxxx xx......\n"
    "sat   ........ ........ ........\n"
    "sun   ........ ........ ........\n";

TEST_F(CliHours, ShowHoursAsAGrid) {
    const ProgramRun run = Run({"hours", "show", "office"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(kOffice, run.out);
    EXPECT_THAT(Run({"hours", "show"}).out,
                AllOf(StartsWith(kOffice), HasSubstr("\n\nhours \"always\"\n")));
    const auto json = nlohmann::json::parse(Run({"hours", "show", "office", "--json"}).out);
    EXPECT_EQ("office", json[0]["name"]);
    EXPECT_EQ("8-18", json[0]["week"]["mon"]);
    EXPECT_EQ("none", json[0]["week"]["sun"]);
}

TEST_F(CliHours, ChangeHoursByOptions) {
    const ProgramRun run =
        Run({"hours", "edit", "office", "--set", "Mon-Fri 08-17", "--set", "sat 9-12"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, AllOf(HasSubstr("\nfri   ........ xxxxxxxx x.......\n"),
                               HasSubstr("\nsat   ........ .xxx.... ........\n")));
    EXPECT_THAT(Run({"export"}).out, HasSubstr("mon-fri = \"8-17\"\nsat = \"9-12\"\n"));
    EXPECT_EQ("hours \"office\": unchanged\n",
              Run({"hours", "edit", "office", "--set", "sat 9-12"}).out);
}

TEST_F(CliHours, AddHoursOnlyWhenAsked) {
    const ProgramRun refused = Run({"hours", "edit", "night", "--set", "mon-sun 0-6"});
    EXPECT_EQ(2, refused.exit_code);
    EXPECT_THAT(refused.err,
                AllOf(HasSubstr("there are no hours \"night\""), HasSubstr("--create")));
    EXPECT_EQ(0, Run({"hours", "edit", "night", "--set", "mon-sun 0-6", "--create"}).exit_code);
    EXPECT_THAT(Run({"hours", "show", "night"}).out, HasSubstr("sun   xxxxxx.. "));
    EXPECT_THAT(Run({"hours", "edit", "night", "--set", "mon-sun none"}).err,
                HasSubstr("none is ever sent"));
}

TEST_F(CliHours, ChangeHoursInTheEditorOfTheUser) {
    setenv("EDITOR", "sed -i 's/^sun.*/sun x....... ........ ......../'", 1);
    const ProgramRun run = Run({"hours", "edit", "office"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, HasSubstr("\nsun   x....... ........ ........\n"));

    setenv("EDITOR", "true", 1);
    EXPECT_EQ("hours \"office\": unchanged\n", Run({"hours", "edit", "office"}).out);

    setenv("EDITOR", "false", 1);
    EXPECT_EQ(3, Run({"hours", "edit", "office"}).exit_code);
    unsetenv("EDITOR");
}

TEST_F(CliHours, KeepWhatWasTypedWhereItIsNoWeek) {
    setenv("EDITOR", "sed -i 's/^sun.*/sun y/'", 1);
    setenv("TMPDIR", ".", 1);
    const ProgramRun run = Run({"hours", "edit", "office"});
    unsetenv("EDITOR");
    unsetenv("TMPDIR");
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("line 9: sun: \"y\" is neither x"));
    const size_t at = run.err.find("kept in ");
    ASSERT_NE(std::string::npos, at);
    const std::string path = run.err.substr(at + 8, run.err.find('\n', at) - at - 8);
    EXPECT_THAT(ReadFile(path), HasSubstr("\nsun y\n"));
    EXPECT_EQ(kOffice, Run({"hours", "show", "office"}).out);
}

TEST_F(CliHours, SayWhatIsWrongWithHours) {
    EXPECT_EQ(2, Run({"hours"}).exit_code);
    EXPECT_THAT(Run({"hours", "show", "nights"}).err,
                HasSubstr("hours of this database: \"office\", \"always\""));
    const ProgramRun run = Run({"hours", "edit", "office", "--set", "mon 17-8"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("--set: \"17-8\" ends before it begins"));
    EXPECT_EQ(kOffice, Run({"hours", "show", "office"}).out);
}

}  // namespace
