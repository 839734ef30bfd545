// Site files, read: values, defaults, lines, and what is no site file.
#include "host/site/site_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// "3: unknown key ..."
std::vector<std::string> FileMistakes(std::string_view text) {
    std::vector<std::string> mistakes;
    const ReadSite read = ParseSite(text);
    for (const Finding& finding : read.findings.All()) {
        mistakes.push_back(std::to_string(finding.line) + ": " + finding.what);
    }
    return mistakes;
}

TEST(SiteFile, SaysEverythingOnce) {
    const ReadSite read = ParseSite(R"(encoding = "shift_jis"
[[port]]
name = "COM 1"
baud = 9600
flow = "hardware"
modem = false
init = "ATE0"
reset = "ATZ1"
[port.pager]
dial = "ATDP0,"
prompt = "?"
data = 7
parity = "odd"
stop = 2
[port.sms1]
protocol = "UCP"
dial = "ATDT1"
data = 5
parity = "even"
stop = 2
[port.sms2]
protocol = "TAP"
dial = "ATDT2"
data = 6
parity = "none"
stop = 1
[[pager]]
description = "duty"
owner = "Anna"
port = "COM 1"
type = "ntt"
number = "123"
retries = 1
delay = 2
hours = "office"
[[hours]]
name = "office"
mon-fri = "8-18"
sat = "9-12"
[[hours]]
name = "any"
all = true
)");
    EXPECT_THAT(read.findings.All(), IsEmpty());
    EXPECT_TRUE(read.is_toml);
    EXPECT_EQ("shift_jis", read.site.encoding.value);

    ASSERT_EQ(1U, read.site.ports.size());
    const Port& port = read.site.ports[0];
    EXPECT_EQ("COM 1", port.name.value);
    EXPECT_EQ(9600, port.baud.value);
    EXPECT_EQ("hardware", port.flow.value);
    EXPECT_FALSE(port.modem.value);
    EXPECT_EQ("ATE0", port.init.value);
    EXPECT_EQ("ATZ1", port.reset.value);
    EXPECT_EQ("ATDP0,", port.pager.dial.value);
    EXPECT_EQ("?", port.pager.prompt.value);
    EXPECT_EQ(7, port.pager.settings.data.value);
    EXPECT_EQ("odd", port.pager.settings.parity.value);
    EXPECT_EQ(2, port.pager.settings.stop.value);
    EXPECT_EQ("UCP", port.sms1.protocol.value);
    EXPECT_EQ("ATDT1", port.sms1.dial.value);
    EXPECT_EQ(5, port.sms1.settings.data.value);
    EXPECT_EQ("even", port.sms1.settings.parity.value);
    EXPECT_EQ("TAP", port.sms2.protocol.value);
    EXPECT_EQ("ATDT2", port.sms2.dial.value);
    EXPECT_EQ(6, port.sms2.settings.data.value);
    EXPECT_EQ("none", port.sms2.settings.parity.value);

    ASSERT_EQ(1U, read.site.pagers.size());
    const Pager& pager = read.site.pagers[0];
    EXPECT_EQ("duty", pager.description.value);
    EXPECT_EQ("Anna", pager.owner.value);
    EXPECT_EQ("COM 1", pager.port.value);
    EXPECT_EQ("ntt", pager.type.value);
    EXPECT_EQ("123", pager.number.value);
    EXPECT_EQ(1, pager.retries.value);
    EXPECT_EQ(2, pager.delay.value);
    EXPECT_EQ("office", pager.hours.value);

    ASSERT_EQ(2U, read.site.timeModels.size());
    const TimeModel& office = read.site.timeModels[0];
    EXPECT_EQ("office", office.name.value);
    EXPECT_FALSE(office.all.value);
    ASSERT_EQ(2U, office.days.size());
    EXPECT_EQ("mon-fri", office.days[0].days.value);
    EXPECT_EQ("8-18", office.days[0].ranges.value);
    EXPECT_EQ("sat", office.days[1].days.value);
    EXPECT_TRUE(read.site.timeModels[1].all.value);
}

TEST(SiteFile, NeedsLittle) {
    const ReadSite read = ParseSite(R"(
[[port]]
name = "COM 1"

[[pager]]
description = "duty"
type = "sms1"
number = "123"
)");
    EXPECT_THAT(read.findings.All(), IsEmpty());
    EXPECT_EQ("latin1", read.site.encoding.value);
    const Port& port = read.site.ports.at(0);
    EXPECT_EQ(2400, port.baud.value);
    EXPECT_EQ("none", port.flow.value);
    EXPECT_TRUE(port.modem.value);
    EXPECT_EQ("AT&F", port.init.value);
    EXPECT_EQ("ATZ", port.reset.value);
    EXPECT_EQ(">", port.pager.prompt.value);
    EXPECT_EQ(8, port.pager.settings.data.value);
    EXPECT_EQ("none", port.pager.settings.parity.value);
    EXPECT_EQ(1, port.pager.settings.stop.value);
    EXPECT_EQ("TAP", port.sms1.protocol.value);
    EXPECT_EQ(7, port.sms1.settings.data.value);  // as TAP asks for
    EXPECT_EQ("even", port.sms1.settings.parity.value);
    EXPECT_EQ("UCP", port.sms2.protocol.value);
    EXPECT_EQ(8, port.sms2.settings.data.value);
    EXPECT_EQ("none", port.sms2.settings.parity.value);
    const Pager& pager = read.site.pagers.at(0);
    EXPECT_EQ("", pager.port.value);
    EXPECT_EQ(5, pager.retries.value);
    EXPECT_EQ(45, pager.delay.value);
    EXPECT_EQ("always", pager.hours.value);
}

TEST(SiteFile, LineSettingsFollowTheProtocolNotTheService) {
    const ReadSite read = ParseSite(
        "[[port]]\nname = \"COM 1\"\n[port.sms1]\nprotocol = \"UCP\"\n"
        "[port.sms2]\nprotocol = \"TAP\"\n");
    EXPECT_EQ(8, read.site.ports.at(0).sms1.settings.data.value);
    EXPECT_EQ(7, read.site.ports.at(0).sms2.settings.data.value);
}

TEST(SiteFile, KnowsTheLineOfEveryValue) {
    const ReadSite read = ParseSite(
        "\n[[port]]\nname = \"COM 1\"\n\nbaud = 300\n[port.sms1]\n"
        "dial = \"1\"\n[[hours]]\nname = \"a\"\nsun = \"1-2\"\n");
    const Port& port = read.site.ports.at(0);
    EXPECT_EQ(2, port.line);
    EXPECT_EQ(3, port.name.line);
    EXPECT_EQ(5, port.baud.line);
    EXPECT_EQ(2, port.flow.line);       // not said: the line of the port
    EXPECT_EQ(2, port.sms2.dial.line);  // not even the part is said
    EXPECT_EQ(7, port.sms1.dial.line);
    EXPECT_EQ(6, port.sms1.settings.stop.line);
    EXPECT_EQ(10, read.site.timeModels.at(0).days.at(0).days.line);
}

TEST(SiteFile, KeepsTheDaysInTheirOrder) {
    const ReadSite read =
        ParseSite("[[hours]]\nname = \"a\"\nwed = \"1-2\"\nfri = \"1-2\"\nmon = \"1-2\"\n");
    std::vector<std::string> days;
    for (const DayHours& hours : read.site.timeModels.at(0).days) {
        days.push_back(hours.days.value);
    }
    EXPECT_THAT(days, ElementsAre("wed", "fri", "mon"));
}

TEST(SiteFile, ThatIsNoTomlIsOneMistakeWithItsLine) {
    const ReadSite read = ParseSite("encoding = \"latin1\"\n[[port]]\nname = COM 1\n");
    EXPECT_FALSE(read.is_toml);
    ASSERT_EQ(1U, read.findings.All().size());
    EXPECT_EQ(3, read.findings.All()[0].line);
    EXPECT_THAT(read.site.ports, IsEmpty());
}

// Letters outside of quotes, where only a blank or a text may stand: the reader of TOML once took
// those of some alphabets for impossible there.
TEST(SiteFile, WithLettersOutsideOfQuotesIsOneMistakeWithItsLine) {
    for (const char* text :
         {"name = \u00F6l", "name = \u0431", "name = \u3042", "name = \uFF71", "[\u048Fager]",
          "\u00F6l = 1", "[[hours]]\u2003\u00F6", "name\u3000= \"x\""}) {
        const ReadSite read = ParseSite(std::string("encoding = \"latin1\"\n") + text + "\n");
        EXPECT_FALSE(read.is_toml) << text;
        ASSERT_EQ(1U, read.findings.All().size()) << text;
        EXPECT_EQ(2, read.findings.All()[0].line) << text;
    }
}

TEST(SiteFile, ThatIsNotUtf8IsOneMistakeWithItsLine) {
    const ReadSite read = ParseSite("encoding = \"latin1\"\n# J\xFCrgen\n");
    EXPECT_FALSE(read.is_toml);
    ASSERT_EQ(1U, read.findings.All().size());
    EXPECT_EQ(2, read.findings.All()[0].line);
}

TEST(SiteFile, ReportsUnknownKeysInEveryPart) {
    EXPECT_THAT(
        FileMistakes("encodign = \"latin1\"\n[[port]]\nname = \"COM 1\"\nbauds = 300\n"
                     "[port.sms1]\ndail = \"1\"\n[port.sms3]\n[[pager]]\ndescription = \"a\"\n"
                     "type = \"ntt\"\nnumber = \"1\"\nretry = 2\n[pagers]\n"),
        ElementsAre("1: unknown key \"encodign\" at the top of the file",
                    "4: unknown key \"bauds\" in port", "6: unknown key \"dail\" in port.sms1",
                    "7: unknown key \"sms3\" in port", "12: unknown key \"retry\" in pager",
                    "13: unknown key \"pagers\" at the top of the file"));
}

TEST(SiteFile, ReportsValuesOfAnotherKind) {
    EXPECT_THAT(
        FileMistakes("encoding = 1\n[[port]]\nname = 1\nbaud = \"300\"\nmodem = 1\nflow = true\n"
                     "pager = 5\n[[pager]]\ndescription = \"a\"\ntype = \"ntt\"\nnumber = 123\n"
                     "retries = 1.5\n[[hours]]\nname = \"a\"\nmon = 8\nall = \"yes\"\n"),
        ElementsAre("1: encoding has to be a text between double quotes",
                    "3: port.name has to be a text between double quotes",
                    "4: port.baud has to be a whole number",
                    "5: port.modem has to be true or false",
                    "6: port.flow has to be a text between double quotes",
                    "7: port.pager has to be a table: [port.pager]",
                    "11: pager.number has to be a text between double quotes",
                    "12: pager.retries has to be a whole number",
                    "15: hours.mon has to be a text between double quotes",
                    "16: hours.all has to be true or false"));
}

TEST(SiteFile, ReportsASingleTableWhereAListIsMeant) {
    EXPECT_THAT(FileMistakes("[port]\nname = \"COM 1\"\n"),
                ElementsAre("1: port has to be a list of tables: [[port]]"));
    EXPECT_THAT(FileMistakes("pager = [1, 2]\n"),
                ElementsAre("1: pager has to be a list of tables: [[pager]]"));
}

TEST(SiteFile, ReportsWhatIsMissing) {
    EXPECT_THAT(FileMistakes("[[port]]\n[[pager]]\n[[hours]]\n"),
                ElementsAre("1: port.name is missing", "2: pager.description is missing",
                            "2: pager.type is missing", "2: pager.number is missing",
                            "3: hours.name is missing"));
}

// --- Routes, and lists of texts.

TEST(SiteFile, HasRoutes) {
    const ReadSite read = ParseSite(R"([[route]]
groups = "PLANT/*"
severities = ["critical",
              "major"]
pagers = ["duty",

          "night"]
[[route]]
)");
    EXPECT_THAT(read.findings.All(), IsEmpty());
    ASSERT_EQ(2U, read.site.routes.size());
    const Route& route = read.site.routes[0];
    EXPECT_EQ(1, route.line);
    EXPECT_EQ("PLANT/*", route.groups.value);
    ASSERT_EQ(2U, route.severities.size());
    EXPECT_EQ("critical", route.severities[0].value);
    EXPECT_EQ("major", route.severities[1].value);
    EXPECT_EQ(4, route.severities[1].line);
    ASSERT_EQ(2U, route.pagers.size());
    EXPECT_EQ("duty", route.pagers[0].value);
    EXPECT_EQ("night", route.pagers[1].value);
    EXPECT_EQ(7, route.pagers[1].line);

    const Route& bare = read.site.routes[1];
    EXPECT_EQ(8, bare.line);
    EXPECT_EQ("*", bare.groups.value);
    EXPECT_THAT(bare.severities, IsEmpty());
    EXPECT_THAT(bare.pagers, IsEmpty());
}

TEST(SiteFile, ReportsWhatIsNoListOfTexts) {
    EXPECT_THAT(
        FileMistakes("[[route]]\npagers = \"duty\"\nseverities = [\"minor\",\n3,\n[\"major\"]]\n"),
        ElementsAre("2: route.pagers has to be a list of texts, as [\"one\", \"two\"]",
                    "4: route.severities has to be a list of texts, as [\"one\", \"two\"]",
                    "5: route.severities has to be a list of texts, as [\"one\", \"two\"]"));
    EXPECT_THAT(FileMistakes("[[route]]\npager = [\"duty\"]\ngroups = [\"a\"]\n"),
                ElementsAre("2: unknown key \"pager\" in route",
                            "3: route.groups has to be a text between double quotes"));
}

TEST(SiteFile, SaysWhatToDo) {
    const Finding missing = ParseSite("[[port]]\n").findings.All().at(0);
    EXPECT_EQ("Add a line: name = \"...\"", missing.remedy);
    const Finding kind =
        ParseSite("[[port]]\nname = \"COM 1\"\nbaud = \"1\"\n").findings.All().at(0);
    EXPECT_EQ("Write a whole number.", kind.remedy);
    EXPECT_EQ("Its default would hold in its place.", kind.consequence);
}

TEST(SiteFile, MustSaySomething) {
    EXPECT_THAT(FileMistakes(""), ElementsAre("1: the file says nothing"));
    EXPECT_THAT(FileMistakes("# nothing yet\n"), ElementsAre("1: the file says nothing"));
    EXPECT_THAT(FileMistakes("encoding = \"latin1\"\n"), IsEmpty());
    EXPECT_THAT(FileMistakes("port = []\n"), ElementsAre(HasSubstr("[[port]]")));
}

// The TOML library takes a table a dot, and frees them by recursion.
TEST(SiteFile, IsRefusedWhereItIsNestedDeeperThanAnyReal) {
    std::string dots = "a";
    for (int i = 0; i < 200000; ++i) {
        dots += ".a";
    }
    EXPECT_THAT(FileMistakes("encoding = \"latin1\"\n" + dots + " = 1\n"),
                Contains(HasSubstr("2: a key of too many parts")));
    EXPECT_THAT(FileMistakes("[" + dots + "]\n"),
                Contains(HasSubstr("1: a key of too many parts")));
    const std::string brackets(200000, '[');
    EXPECT_FALSE(FileMistakes("x = " + brackets).empty());
    EXPECT_FALSE(FileMistakes("x = [\n" + std::string(100, '{') + "\n").empty());
}

TEST(SiteFile, MayHaveManyDotsInItsTexts) {
    const std::string dots(100, '.');
    const ReadSite read =
        ParseSite("[[pager]]\ndescription = \"" + dots + "\"\ntype = \"sms1\"\nnumber = \"5\"\n");
    ASSERT_EQ(1U, read.site.pagers.size());
    EXPECT_EQ(dots, read.site.pagers[0].description.value);
}

}  // namespace
}  // namespace host
