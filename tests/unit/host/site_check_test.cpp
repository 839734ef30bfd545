// Every mistake that `pagerfwd check` finds, each in a site that has no other.
#include "host/site/site_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "host/site/site_file.h"

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// A site without a mistake. A test replaces one line of it.
constexpr const char* kSound = R"(encoding = "latin1"
[[port]]
name = "COM 1"
baud = 9600
flow = "none"
modem = true
init = "AT&F&D2S12=2"
reset = "ATZ"
[port.pager]
dial = "ATDT0,"
prompt = ">"
data = 8
parity = "none"
stop = 1
[port.sms1]
protocol = "TAP"
dial = "ATDT0,5550101"
data = 7
parity = "even"
stop = 1
[port.sms2]
protocol = "UCP"
dial = "ATDT0,5550102"
data = 8
parity = "odd"
stop = 2
[[pager]]
description = "duty"
owner = "Anna"
port = "COM 1"
type = "sms1"
number = "5550111"
retries = 5
delay = 45
hours = "always"
[[pager]]
description = "engineer"
type = "alphanumeric"
number = "5550100@3003"
hours = "office"
[[hours]]
name = "office"
mon-sun = "2-24"
[[pager]]
description = "night"
port = "COM 1"
type = "sms2"
number = "5550112"
[[route]]
pagers = ["night"]
)";

std::string WithLine(int wanted, const std::string& replacement) {
    std::istringstream sound(kSound);
    std::string text;
    std::string line;
    for (int number = 1; std::getline(sound, line); ++number) {
        text += (number == wanted ? replacement : line) + "\n";
    }
    return text;
}

std::vector<std::string> Mistakes(const std::string& text) {
    ReadSite read = ParseSite(text);
    CheckSite(read.site, read.findings);
    std::vector<std::string> mistakes;
    for (const Finding& finding : read.findings.All()) {
        const bool isError = finding.severity == Finding::Severity::kError;
        mistakes.push_back(std::to_string(finding.line) + (isError ? ": " : ": (warning) ") +
                           finding.what);
    }
    return mistakes;
}

TEST(SoundSite, HasNoMistakes) {
    EXPECT_THAT(Mistakes(kSound), IsEmpty());
}

TEST(Commands, NameAProgramThatIsFoundFromAnywhere) {
    const auto with_command = [](const std::string& words) {
        return Mistakes(std::string(kSound) + "[notify]\ncommand = [" + words + "]\n");
    };
    for (const char* sound :
         {"", "\"tell\"", "\"/usr/bin/tell\", \"a/b\", \"\"", "\"t\xE2\x82\xAC\""}) {
        EXPECT_THAT(with_command(sound), IsEmpty()) << sound;
    }
    EXPECT_THAT(with_command("\"\", \"x\""),
                ElementsAre("52: [notify]: the command names no program"));
    EXPECT_THAT(with_command("\"./tell\""),
                ElementsAre("52: [notify]: \"./tell\" is looked for in the folder where the engine "
                            "happens to run"));
    EXPECT_THAT(with_command("\"tell\", \"a\\u0000\""),
                ElementsAre(StartsWith("52: the text \"a")));
    EXPECT_THAT(Mistakes(std::string(kSound) + "[heartbeat]\ncommand = [\"\"]\n"),
                ElementsAre("52: [heartbeat]: the command names no program"));
}

// What follows from it isn't told besides.
TEST(SoundSite, HasOneMistakeWhereSomethingIsMissing) {
    const auto mistakes_with = [](const std::string& part) {
        std::vector<std::string> mistakes = Mistakes(std::string(kSound) + part);
        for (std::string& mistake : mistakes) {
            mistake.erase(0, mistake.find(' ') + 1);
        }
        return mistakes;
    };
    EXPECT_THAT(mistakes_with("[[pager]]\ntype = \"ntt\"\nnumber = \"5550113\"\n"),
                ElementsAre("pager.description is missing"));
    EXPECT_THAT(mistakes_with("[[pager]]\ndescription = \"x\"\nnumber = \"5550113\"\n"),
                ElementsAre("pager.type is missing"));
    EXPECT_THAT(mistakes_with("[[pager]]\ndescription = \"x\"\ntype = \"sms1\"\n"),
                ElementsAre("pager.number is missing"));
    EXPECT_THAT(mistakes_with("[[port]]\ndevice = \"/dev/ttyS5\"\n[port.pager]\ndial = \"ATDT\"\n"),
                ElementsAre("port.name is missing"));
    EXPECT_THAT(mistakes_with("[[node]]\n"), ElementsAre("node.name is missing"));
}

struct SiteCase {
    int line;
    const char* replacement;
    const char* mistake;
};

void PrintTo(const SiteCase& one, std::ostream* out) {
    *out << one.replacement << " -> " << one.mistake;
}

class OneMistake : public ::testing::TestWithParam<SiteCase> {};

TEST_P(OneMistake, IsFound) {
    EXPECT_THAT(Mistakes(WithLine(GetParam().line, GetParam().replacement)),
                ElementsAre(GetParam().mistake))
        << GetParam().replacement;
}

INSTANTIATE_TEST_SUITE_P(
    InAPort, OneMistake,
    ::testing::Values(
        SiteCase{4, "baud = 600", "4: port \"COM 1\": 600 is no speed of the serial line driver"},
        SiteCase{4, "baud = -9600",
                 "4: port \"COM 1\": -9600 is no speed of the serial line driver"},
        SiteCase{5, "flow = \"None\"", "5: port \"COM 1\": there is no flow control \"None\""},
        SiteCase{5, "flow = \"hardware\"", "5: (warning) port \"COM 1\": hardware flow control"},
        SiteCase{10, "dial = \"0,\"", "10: port \"COM 1\", pager: \"0,\" is no dial command"},
        SiteCase{17, "dial = \"DT5550101\"",
                 "17: port \"COM 1\", sms1: \"DT5550101\" is no dial command"},
        SiteCase{17, "dial = \"AT5550101\"",
                 "17: port \"COM 1\", sms1: \"AT5550101\" is no dial command"},
        SiteCase{23, "dial = \"5550102\"",
                 "23: port \"COM 1\", sms2: \"5550102\" is no dial command"},
        SiteCase{23, "dial = \"XTD5550102\"",
                 "23: port \"COM 1\", sms2: \"XTD5550102\" is no dial command"},
        SiteCase{23, "dial = \"AXD5550102\"",
                 "23: port \"COM 1\", sms2: \"AXD5550102\" is no dial command"},
        SiteCase{23, "dial = \"AT\"", "23: port \"COM 1\", sms2: \"AT\" is no dial command"},
        SiteCase{11, "prompt = \"\"", "11: port \"COM 1\": the prompt is empty"},
        SiteCase{12, "data = 4", "12: port \"COM 1\", pager: 4 data bits can't be set"},
        SiteCase{12, "data = 9", "12: port \"COM 1\", pager: 9 data bits can't be set"},
        SiteCase{13, "parity = \"mark\"",
                 "13: port \"COM 1\", pager: parity \"mark\" is refused by the serial line driver"},
        SiteCase{
            13, "parity = \"space\"",
            "13: port \"COM 1\", pager: parity \"space\" is refused by the serial line driver"},
        SiteCase{14, "stop = 0", "14: port \"COM 1\", pager: 0 stop bits can't be set"},
        SiteCase{14, "stop = 3", "14: port \"COM 1\", pager: 3 stop bits can't be set"},
        SiteCase{16, "protocol = \"tap\"",
                 "16: port \"COM 1\", sms1: there is no protocol \"tap\""},
        SiteCase{18, "data = 0", "18: port \"COM 1\", sms1: 0 data bits can't be set"},
        SiteCase{19, "parity = \"e\"",
                 "19: port \"COM 1\", sms1: parity \"e\" is refused by the serial line driver"},
        SiteCase{20, "stop = 5", "20: port \"COM 1\", sms1: 5 stop bits can't be set"},
        SiteCase{22, "protocol = \"\"", "22: port \"COM 1\", sms2: there is no protocol \"\""},
        SiteCase{24, "data = 10", "24: port \"COM 1\", sms2: 10 data bits can't be set"},
        SiteCase{25, "parity = \"\"",
                 "25: port \"COM 1\", sms2: parity \"\" is refused by the serial line driver"},
        SiteCase{26, "stop = -1", "26: port \"COM 1\", sms2: -1 stop bits can't be set"}));

INSTANTIATE_TEST_SUITE_P(
    InAPager, OneMistake,
    ::testing::Values(
        SiteCase{28, "description = \"\"", "28: a pager has no description"},
        SiteCase{30, "port = \"COM 2\"", "30: pager \"duty\": there is no port \"COM 2\""},
        SiteCase{30, "port = \"com 1\"", "30: pager \"duty\": there is no port \"com 1\""},
        SiteCase{31, "type = \"beeper\"", "31: pager \"duty\": there is no type \"beeper\""},
        SiteCase{31, "type = \"4\"", "31: pager \"duty\": there is no type \"4\""},
        SiteCase{32, "number = \"\"", "32: pager \"duty\": the number \"\" has no digits"},
        SiteCase{32, "number = \"none@\"",
                 "32: pager \"duty\": the number \"none@\" has no digits"},
        SiteCase{32, "number = \"5550111@\"",
                 "32: (warning) pager \"duty\": nothing stands behind the @ of its number"},
        SiteCase{33, "retries = -1", "33: pager \"duty\": retries is -1"},
        SiteCase{33, "retries = 2147483648", "33: pager \"duty\": retries is 2147483648"},
        SiteCase{34, "delay = -5", "34: pager \"duty\": delay is -5"},
        SiteCase{35, "hours = \"offic\"", "35: pager \"duty\": there are no hours \"offic\""},
        SiteCase{35, "hours = \"office\"",
                 "35: (warning) pager \"duty\": hours \"office\" don't cover the week"},
        SiteCase{37, "description = \"duty\"", "37: pager \"duty\" is there already, on line 27"},
        SiteCase{39, "number = \"3003\"",
                 "39: (warning) pager \"engineer\": its number \"3003\" has no @"},
        SiteCase{40, "hours = \"office\"\nretries = 1",
                 "40: (warning) pager \"engineer\": its tries can end before its hours \"office\" "
                 "begin"},
        SiteCase{17, "dial = \"\"",
                 "27: pager \"duty\": port \"COM 1\" has no dial command for it"},
        SiteCase{23, "dial = \"\"",
                 "44: pager \"night\": port \"COM 1\" has no dial command for it"},
        SiteCase{10, "", "36: pager \"engineer\": no port can dial for it"}));

INSTANTIATE_TEST_SUITE_P(
    InHours, OneMistake,
    ::testing::Values(
        SiteCase{43, "mon-fri = \"8-25\"",
                 "43: hours \"office\": \"25\" is not an hour from 0 to 24"},
        SiteCase{43, "monday = \"8-18\"", "43: hours \"office\": there is no day \"monday\""},
        SiteCase{43, "mon-sat = \"2-24\"\nsun-tue = \"2-24\"",
                 "44: hours \"office\": mon is said already, on line 43"},
        SiteCase{43, "all = true\nmon = \"8-18\"",
                 "43: hours \"office\": all = true, and days besides"},
        SiteCase{43, "mon = \"none\"", "41: (warning) hours \"office\" allow no hour"},
        SiteCase{43, "", "41: (warning) hours \"office\" allow no hour"},
        SiteCase{43, "mon-sun = \"2-24\"\n[[hours]]\nname = \"office\"\nall = true",
                 "45: hours \"office\" are there already, on line 41"}));

INSTANTIATE_TEST_SUITE_P(
    InTexts, OneMistake,
    ::testing::Values(
        SiteCase{1, "encoding = \"utf-8\"", "1: there is no encoding \"utf-8\""},
        SiteCase{
            29, "owner = \"\xE2\x82\xAC\"",
            "29: the text \"\xE2\x82\xAC\" holds '\xE2\x82\xAC' (U+20AC), which latin1 doesn't "
            "have"},
        SiteCase{7, "init = \"AT\\rS12=2\"",
                 "7: the text \"AT\rS12=2\" holds the control character U+000D"},
        SiteCase{23, "dial = \"ATDT\\u0007\"",
                 "23: the text \"ATDT\a\" holds the control character U+0007"},
        SiteCase{17, "dial = \"ATDT\\u007F\"",
                 "17: the text \"ATDT\x7F\" holds the control character U+007F"}));

TEST(SeveralMistakes, AreAllFoundInTheOrderOfTheirLines) {
    EXPECT_THAT(Mistakes("[[port]]\nname = \"COM 0\"\nbaud = 1\n[[pager]]\ndescription = \"a\"\n"
                         "type = \"x\"\nnumber = \"\"\nhours = \"y\"\nport = \"z\"\nbogus = 1\n"
                         "[[route]]\npagers = [\"a\"]\n"),
                ElementsAre("1: (warning) no pager can use port \"COM 0\"",
                            "2: port \"COM 0\" has no device",
                            "3: port \"COM 0\": 1 is no speed of the serial line driver",
                            "6: pager \"a\": there is no type \"x\"",
                            "7: pager \"a\": the number \"\" has no digits",
                            "8: pager \"a\": there are no hours \"y\"",
                            "9: pager \"a\": there is no port \"z\"",
                            "10: unknown key \"bogus\" in pager"));
}

std::string PortWith(const std::string& name, const std::string& device) {
    return "[[port]]\nname = \"" + name + "\"\ndevice = \"" + device + "\"\n";
}

TEST(PortNames, StandForADeviceOrComeWithOne) {
    for (const char* name :
         {"COM1", "COM 0", "COM 10", "COM  1", "com 1", "COM", "COM ", "north"}) {
        EXPECT_THAT(Mistakes("[[port]]\nname = \"" + std::string(name) + "\"\n"),
                    ElementsAre("2: port \"" + std::string(name) + "\" has no device"));
        EXPECT_THAT(Mistakes(PortWith(name, "/dev/ttyUSB0")), IsEmpty()) << name;
    }
    for (int number = 1; number <= 9; ++number) {
        EXPECT_THAT(Mistakes("[[port]]\nname = \"COM " + std::to_string(number) + "\"\n"),
                    IsEmpty());
    }
}

TEST(PortNames, AreNeverEmpty) {
    EXPECT_THAT(Mistakes(PortWith("", "/dev/ttyUSB0")), ElementsAre("2: a port has no name"));
}

TEST(PortNames, HaveEightyBytesAtMost) {
    EXPECT_THAT(Mistakes(PortWith(std::string(80, 'x'), "/dev/ttyUSB0")), IsEmpty());
    EXPECT_THAT(Mistakes(PortWith(std::string(81, 'x'), "/dev/ttyUSB0")),
                ElementsAre("2: the name of a port has more than 80 bytes"));
}

TEST(PortNames, MayBeMoreThanNine) {
    std::string text;
    for (int number = 1; number <= 40; ++number) {
        text += PortWith("line " + std::to_string(number), "/dev/modem" + std::to_string(number));
    }
    EXPECT_THAT(Mistakes(text), IsEmpty());
}

TEST(Devices, AreAbsolutePaths) {
    EXPECT_THAT(Mistakes(PortWith("north", "ttyUSB0")),
                ElementsAre("3: port \"north\": \"ttyUSB0\" is no absolute path"));
    EXPECT_THAT(Mistakes(PortWith("north", "/dev/tty\\u0007")),
                ElementsAre("3: the text \"/dev/tty\a\" holds the control character U+0007"));
}

TEST(Devices, BelongToOnePort) {
    EXPECT_THAT(Mistakes(PortWith("north", "/dev/ttyUSB0") + PortWith("south", "/dev/ttyUSB0")),
                ElementsAre("6: port \"south\": /dev/ttyUSB0 is the device of port \"north\" "
                            "already, on line 1"));
    EXPECT_THAT(Mistakes(PortWith("north", "/dev/ttyS0") + "[[port]]\nname = \"COM 1\"\n"),
                ElementsAre("5: port \"COM 1\": /dev/ttyS0 is the device of port \"north\" "
                            "already, on line 1"));
    EXPECT_THAT(Mistakes(PortWith("COM 1", "/dev/ttyS1") + "[[port]]\nname = \"COM 3\"\n"),
                IsEmpty());
}

TEST(APort, ThatNoPagerCanUseStandsIdle) {
    const std::string south = PortWith("south", "/dev/ttyUSB0");
    EXPECT_THAT(Mistakes(kSound + south),
                ElementsAre("51: (warning) no pager can use port \"south\""));
    EXPECT_THAT(Mistakes(kSound + south + "[port.sms1]\ndial = \"ATDT0,5550101\"\n"),
                ElementsAre("51: (warning) no pager can use port \"south\""))
        << "the one pager of the type is bound to another";
    EXPECT_THAT(Mistakes(kSound + south + "[port.pager]\ndial = \"ATDT0,\"\n"), IsEmpty());
    EXPECT_THAT(Mistakes(kSound + south + "modem = false\n"), IsEmpty()) << "as it is meant";
    EXPECT_THAT(Mistakes(south), IsEmpty()) << "a site that has no pagers yet";
}

TEST(PortNames, AreGivenOnce) {
    EXPECT_THAT(Mistakes("[[port]]\nname = \"COM 1\"\n[[port]]\nname = \"COM 1\"\n"),
                ElementsAre("4: port \"COM 1\" is there already, on line 1"));
}

TEST(Speeds, AreThoseOfTheLineDriver) {
    for (const int speed :
         {300, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800}) {
        EXPECT_THAT(Mistakes(WithLine(4, "baud = " + std::to_string(speed))), IsEmpty());
    }
    for (const int speed : {0, 110, 600, 1800, 14400, 28800, 921600}) {
        EXPECT_EQ(1U, Mistakes(WithLine(4, "baud = " + std::to_string(speed))).size()) << speed;
    }
}

TEST(ASiteWithoutPorts, SendsNothing) {
    EXPECT_THAT(Mistakes("encoding = \"latin1\"\n"), ElementsAre("1: (warning) there is no port"));
}

TEST(AFileThatSaysNothing, IsAMistake) {
    for (const char* text : {"", "\n\n", "# to be written\n"}) {
        EXPECT_THAT(Mistakes(text),
                    ElementsAre("1: the file says nothing", "1: (warning) there is no port"));
    }
}

TEST(ASiteWithoutRoutes, PagesNobody) {
    const std::string sound = kSound;
    EXPECT_THAT(Mistakes(sound.substr(0, sound.find("[[route]]"))),
                ElementsAre("27: (warning) there is no route"));
}

TEST(DialCommands, HaveADBehindAnAt) {
    for (const char* dial : {"ATDT0,5550101", "atdt0,5550101", "ATX3DP5550101", "ATD 5550101"}) {
        EXPECT_THAT(Mistakes(WithLine(17, "dial = \"" + std::string(dial) + "\"")), IsEmpty());
    }
}

TEST(APlainPagersNumber, NeedsNoAtWhereThePortDialsTheService) {
    const auto with_dial = [](const char* type, const char* dial) {
        std::string text = WithLine(39, "number = \"3003\"");
        const std::string before = "dial = \"ATDT0,\"";
        text.replace(text.find(before), before.size(), "dial = \"" + std::string(dial) + "\"");
        const std::string alphanumeric = "\"alphanumeric\"";
        text.replace(text.find(alphanumeric), alphanumeric.size(), type);
        return Mistakes(text).size();
    };
    EXPECT_EQ(0U, with_dial("\"alphanumeric\"", "ATDT0,5550100"));
    EXPECT_EQ(0U, with_dial("\"numeric\"", "ATDT110"));
    EXPECT_EQ(1U, with_dial("\"numeric\"", "ATDT00,"));
    EXPECT_EQ(1U, with_dial("\"signal\"", "ATM1L2X3DT0,"));
    EXPECT_EQ(0U, with_dial("\"ntt\"", "ATDT0,"));
}

TEST(APagerForAnyPort, NeedsOnePortThatCanDialForIt) {
    const std::string pager =
        "[[pager]]\ndescription = \"a\"\ntype = \"sms2\"\nnumber = \"1\"\n"
        "[[route]]\npagers = [\"a\"]\n";
    EXPECT_THAT(Mistakes(kSound + pager), IsEmpty());
    for (const char* port :
         {"modem = false\n[port.sms2]\ndial = \"ATDT1\"\n", "[port.sms1]\ndial = \"ATDT1\"\n"}) {
        EXPECT_THAT(Mistakes("[[port]]\nname = \"COM 1\"\n" + std::string(port) + pager),
                    Contains(EndsWith("pager \"a\": no port can dial for it")));
    }
}

TEST(APagerOnAPortWithoutAModem, ReachesNobody) {
    EXPECT_THAT(Mistakes("[[port]]\nname = \"COM 1\"\nmodem = false\n[[pager]]\n"
                         "description = \"a\"\ntype = \"ntt\"\nnumber = \"1\"\nport = \"COM 1\"\n"
                         "[[route]]\npagers = [\"a\"]\n"),
                ElementsAre("8: pager \"a\": port \"COM 1\" has no modem"));
}

TEST(ASignalPager, MayBeReachedByDiallingAlone) {
    std::string text = WithLine(31, "type = \"signal\"");
    const std::string number = "number = \"5550111\"";
    text.replace(text.find(number), number.size(), "number = \"5550111@\"");
    EXPECT_THAT(Mistakes(text), IsEmpty());
}

TEST(Always, MayBeGivenByTheFile) {
    EXPECT_THAT(Mistakes(std::string(kSound) + "[[hours]]\nname = \"always\"\nmon = \"8-9\"\n"),
                ElementsAre("35: (warning) pager \"duty\": hours \"always\" don't cover the week",
                            "44: (warning) pager \"night\": hours \"always\" don't cover the "
                            "week"));
}

TEST(AZero, IsNoPartOfAText) {
    using std::string_literals::operator""s;
    EXPECT_THAT(Mistakes(WithLine(8, "reset = \"A\\u0000\"")),
                ElementsAre("8: the text \"A\0\" holds the control character U+0000"s));
}

TEST(Kana, NeedsShiftJis) {
    const std::string kana = "owner = \"\xEF\xBD\xB1\"";
    EXPECT_EQ(1U, Mistakes(WithLine(29, kana)).size());
    std::string text = WithLine(29, kana);
    text.replace(text.find("latin1"), 6, "shift_jis");
    EXPECT_THAT(Mistakes(text),
                ElementsAre("27: (warning) pager \"duty\": seven bits of each character reach the "
                            "service behind port \"COM 1\"",
                            "44: (warning) pager \"night\": seven bits of each character reach the "
                            "service behind port \"COM 1\""));
}

// --- What comes of a mistake, and what to do, as an operator reads it.

std::string Told(const std::string& text) {
    ReadSite read = ParseSite(text);
    CheckSite(read.site, read.findings);
    std::string told;
    for (const Finding& finding : read.findings.All()) {
        told += Describe("site", finding);
    }
    return told;
}

TEST(ADeviceOfTwoPorts, IsToldWhole) {
    EXPECT_EQ(
        "site:6: error: port \"south\": /dev/ttyUSB0 is the device of port \"north\" already, on "
        "line 1\n"
        "    Only one of the two could have it.\n"
        "    Give each port a device of its own.\n",
        Told(PortWith("north", "/dev/ttyUSB0") + PortWith("south", "/dev/ttyUSB0")));
}

TEST(ANumberWithoutAPrefix, IsToldWhole) {
    EXPECT_EQ(
        "site:39: warning: pager \"engineer\": its number \"3003\" has no @\n"
        "    Port \"COM 1\" would dial \"ATDT0,\" alone: what stands behind the @ is typed in "
        "there, and nothing before it is dialled.\n"
        "    Write \"PREFIX@NUMBER\": PREFIX is the paging service, NUMBER the pager's own.\n",
        Told(WithLine(39, "number = \"3003\"")));
}

// --- The printed form.

TEST(Findings, AreReadInThreeLines) {
    const Finding finding{12, Finding::Severity::kError, "what", "consequence", "remedy"};
    EXPECT_EQ("site.toml:12: error: what\n    consequence\n    remedy\n",
              Describe("site.toml", finding));
}

TEST(Findings, ShowNoControlCharacters) {
    const Finding finding{1, Finding::Severity::kWarning, "\x1b[2J", "\a", "\n"};
    EXPECT_EQ("\\x1b:1: warning: \\x1b[2J\n    \\x07\n    \\x0a\n", Describe("\x1b", finding));
}

TEST(Findings, AreCounted) {
    Findings findings;
    EXPECT_EQ("0 errors, 0 warnings", Summary(findings));
    EXPECT_FALSE(findings.HasErrors());
    findings.Warning(1, "", "", "");
    EXPECT_FALSE(findings.HasErrors());
    findings.Error(1, "", "", "");
    findings.Error(1, "", "", "");
    EXPECT_EQ("2 errors, 1 warning", Summary(findings));
    EXPECT_TRUE(findings.HasErrors());
}

}  // namespace
}  // namespace host
