// The exchange file: what it sets, and what it says of mistakes. The clock file.
#include "sim/file/exchange_file.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "sim/file/build_exchange.h"
#include "sim/file/clock_file.h"
#include "tests/unit/sim/fakes.h"

namespace pagersim {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kLine = "[[line]]\nport = \"COM 1\"\n";
constexpr const char* kTap = "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"1\"]\n";

ExchangeFile Read(const std::string& text) {
    return ReadExchangeFile(text, "x.toml");
}

// A file with one line and one centre, and these keys in the line.
LineEntry LineWith(const std::string& keys) {
    const ExchangeFile file = Read(kLine + keys);
    EXPECT_THAT(file.mistakes, IsEmpty());
    return file.lines.at(0);
}

CentreEntry CentreWith(const std::string& protocol, const std::string& keys) {
    const ExchangeFile file = Read(std::string(kLine) + "[[centre]]\nname = \"c\"\nprotocol = \"" +
                                   protocol + "\"\nnumbers = [\"5550101\", \"5550102\"]\n" + keys);
    EXPECT_THAT(file.mistakes, IsEmpty());
    return file.centres.at(0);
}

TEST(ExchangeFile, LineByItsDefaults) {
    const LineEntry line = LineWith("");
    EXPECT_EQ(1, line.com);
    EXPECT_TRUE(line.modem.powered);
    EXPECT_EQ(1000ms, line.modem.escape.guard);
    EXPECT_TRUE(line.modem.escape.guard_before);
    EXPECT_EQ(DtrDrop::kHangsUp, line.modem.dtr);
    EXPECT_EQ(Answer::kNoCarrier, line.modem.phone.unknown_number);
}

TEST(ExchangeFile, LineThatComesLater) {
    EXPECT_EQ(0, LineWith("").there_from);
    EXPECT_EQ(*ParseInstant("2001-01-08 10:20:00"),
              LineWith("there_from = \"2001-01-08 10:20:00\"\n").there_from);
    EXPECT_THAT(Read(std::string(kLine) + "there_from = \"soon\"\n").mistakes,
                ElementsAre(HasSubstr("must be an instant")));
}

TEST(ExchangeFile, LineThatComesAndGoes) {
    const auto is_there = [](const std::string& keys, const char* instant) {
        return LineWith(keys).IsThereAt(*ParseInstant(instant));
    };
    const std::string ends = "there_until = \"2001-01-08 10:10:00\"\n";
    EXPECT_TRUE(is_there(ends, "2001-01-08 10:09:59"));
    EXPECT_FALSE(is_there(ends, "2001-01-08 10:10:00"));
    const std::string pause = ends + "there_from = \"2001-01-08 10:20:00\"\n";
    EXPECT_TRUE(is_there(pause, "2001-01-08 10:09:59"));
    EXPECT_FALSE(is_there(pause, "2001-01-08 10:19:59"));
    EXPECT_TRUE(is_there(pause, "2001-01-08 10:20:00"));
    const std::string visit = ends + "there_from = \"2001-01-08 10:00:00\"\n";
    EXPECT_FALSE(is_there(visit, "2001-01-08 09:59:59"));
    EXPECT_TRUE(is_there(visit, "2001-01-08 10:00:00"));
    EXPECT_FALSE(is_there(visit, "2001-01-08 10:10:00"));
}

TEST(ExchangeFile, LinesHaveNumbersUpTo64) {
    const auto com_of = [](const std::string& port) {
        const ExchangeFile file = Read("[[line]]\nport = \"" + port + "\"\n");
        return file.lines.empty() ? 0 : file.lines.front().com;
    };
    EXPECT_EQ(9, com_of("COM9"));
    EXPECT_EQ(64, com_of("COM 64"));
    for (const char* port : {"COM 0", "COM 01", "COM 65", "COM +1", "COM 1 ", "COM ", "COM"}) {
        EXPECT_EQ(0, com_of(port)) << port;
    }
}

TEST(ExchangeFile, EveryKeyOfALine) {
    const ModemOptions modem =
        LineWith(
            "powered = false\ndial_tone = false\nunknown_number = \"BUSY\"\nvanish_after = 100\n"
            "connect_speed = 0\nanswer_delay_ms = 1\nanswer_gap_ms = 2\nanswer_piece = 3\n"
            "piece_gap_ms = 4\ndtr = \"&D0\"\nguard_ms = 5\nguard_before = false\ndigit_ms = "
            "6\ncomma_ms = 7\n"
            "training_ms = 8\ncarrier_wait_ms = 9\n")
            .modem;
    EXPECT_FALSE(modem.powered);
    EXPECT_FALSE(modem.phone.dial_tone);
    EXPECT_EQ(Answer::kBusy, modem.phone.unknown_number);
    EXPECT_EQ(100U, modem.vanish_after);
    EXPECT_EQ(0U, modem.connect_speed);
    EXPECT_EQ(1ms, modem.answer_delay);
    EXPECT_EQ(2ms, modem.answer_gap);
    EXPECT_EQ(3U, modem.answer_piece);
    EXPECT_EQ(4ms, modem.piece_gap);
    EXPECT_EQ(5ms, modem.escape.guard);
    EXPECT_FALSE(modem.escape.guard_before);
    EXPECT_EQ(DtrDrop::kIgnored, modem.dtr);
    EXPECT_EQ(6ms, modem.dial.digit);
    EXPECT_EQ(7ms, modem.dial.comma);
    EXPECT_EQ(8ms, modem.phone.training);
    EXPECT_EQ(9ms, modem.phone.carrier_wait);
}

TEST(ExchangeFile, EveryKeyOfACentresLine) {
    const CentreEntry centre =
        CentreWith("tap",
                   "calls = \"no answer\"\nbusy_calls = 2\nanswers_after_ms = 3\nresponse_ms = "
                   "8\nspeed = 300\n"
                   "late_ms = 4\nsilent_after = 0\ndrop_after_hearing = 5\ndrop_after_saying = 6\n"
                   "noise = 7\n");
    EXPECT_THAT(centre.subscriber.numbers, ElementsAre("5550101", "5550102"));
    EXPECT_EQ(Fate::kNoAnswer, centre.subscriber.fate);
    EXPECT_EQ(2, centre.subscriber.busy_calls);
    EXPECT_EQ(3ms, centre.subscriber.answers_after);
    EXPECT_EQ(8ms, centre.subscriber.response);
    EXPECT_EQ(300U, centre.subscriber.speed);
    EXPECT_EQ(4ms, centre.faults.late);
    EXPECT_EQ(0U, centre.faults.silent_after);
    EXPECT_EQ(5U, centre.faults.drop_after_hearing);
    EXPECT_EQ(6U, centre.faults.drop_after_saying);
    EXPECT_EQ(7U, centre.faults.noise);
}

TEST(ExchangeFile, EveryKeyOfTap) {
    const auto tap = std::get<TapOptions>(
        CentreWith("tap",
                   "strict = true\ntext_lines = true\nbare_ack = true\nknocks = 3\n"
                   "password = \"P\"\npagers = [\"1\"]\nanswer = 512\nends = false\n")
            .options);
    EXPECT_TRUE(tap.strict);
    EXPECT_TRUE(tap.text_lines);
    EXPECT_TRUE(tap.bare_ack);
    EXPECT_EQ(3U, tap.knocks);
    EXPECT_EQ("P", tap.password);
    EXPECT_THAT(tap.pagers, ElementsAre("1"));
    EXPECT_EQ(512, tap.answer);
    EXPECT_FALSE(tap.ends);
}

TEST(ExchangeFile, EveryKeyOfUcp) {
    const auto ucp = std::get<UcpOptions>(
        CentreWith("ucp",
                   "strict = true\npassword = \"P\"\npagers = [\"1\"]\nanswer = 24\n"
                   "alphabet = \"gsm\"\n")
            .options);
    EXPECT_TRUE(ucp.strict);
    EXPECT_EQ("P", ucp.password);
    EXPECT_THAT(ucp.pagers, ElementsAre("1"));
    EXPECT_EQ(24, ucp.answer);
    EXPECT_TRUE(ucp.gsm);
    EXPECT_FALSE(std::get<UcpOptions>(CentreWith("ucp", "").options).gsm);
    EXPECT_FALSE(std::get<UcpOptions>(CentreWith("ucp", "alphabet = \"ascii\"\n").options).gsm);
}

TEST(ExchangeFile, EveryKeyOfAPlainService) {
    const auto plain = std::get<PlainOptions>(
        CentreWith("plain",
                   "greeting = \"G\"\nquestion = true\nquestion_text = \"Q\"\n"
                   "prompt = \"P\"\nconfirmation = \"C\"\necho = true\nhangs_up = false\n")
            .options);
    EXPECT_EQ("G", plain.greeting);
    EXPECT_TRUE(plain.question);
    EXPECT_EQ("Q", plain.question_text);
    EXPECT_EQ("P", plain.prompt);
    EXPECT_EQ("C", plain.confirmation);
    EXPECT_TRUE(plain.echo);
    EXPECT_FALSE(plain.hangs_up);
}

TEST(ExchangeFile, OnlyCentresThatTalkHaveAModem) {
    EXPECT_TRUE(CentreWith("tap", "").subscriber.has_modem);
    EXPECT_TRUE(CentreWith("ucp", "").subscriber.has_modem);
    EXPECT_TRUE(CentreWith("plain", "").subscriber.has_modem);
    EXPECT_FALSE(CentreWith("ntt", "").subscriber.has_modem);
    EXPECT_FALSE(CentreWith("signal", "").subscriber.has_modem);
}

TEST(ExchangeFile, Expectations) {
    const ExchangeFile file = Read(std::string(kLine) + kTap +
                                   "[[expect]]\ncentre = \"tap\"\nrecipient = \"123\"\n"
                                   "text = \"HELLO\"\n");
    EXPECT_THAT(file.mistakes, IsEmpty());
    ASSERT_THAT(file.expectations, SizeIs(1));
    EXPECT_EQ("tap", file.expectations[0].centre);
    EXPECT_EQ("123", file.expectations[0].recipient);
    EXPECT_EQ("HELLO", file.expectations[0].text);
}

struct MistakeCase {
    std::string text;
    const char* mistake;
};

TEST(ExchangeFile, EveryMistakeIsToldWithLineAndRemedy) {
    const std::string line = kLine;
    const MistakeCase cases[] = {
        {"", "x.toml:1: there is no line; write [[line]] and port = \"COM 1\""},
        {"[[line]]\n", "x.toml:1: [[line]] needs port; write for example port = \"COM 1\""},
        {"[[line]]\nport = \"COM 65\"\n", "x.toml:2: port must be \"COM 1\" to \"COM 64\""},
        {"[[line]]\nport = 1\n", "x.toml:2: port must be a text; put it between quotes"},
        {line + "[[line]]\nport = \"COM1\"\n",
         "x.toml:4: port is taken by a line above; each has a port of its own"},
        {line + "powered = \"no\"\n", "x.toml:3: powered must be true or false"},
        {line + "guard_ms = -1\n", "x.toml:3: guard_ms must be a whole number from 0 to 86400000"},
        {line + "guard_ms = 0.5\n", "x.toml:3: guard_ms must be a whole number from 0 to 86400000"},
        {line + "dtr = \"&D9\"\n",
         "x.toml:3: dtr must be one of \"&D0\", \"&D1\", \"&D2\", \"&D3\""},
        {line + "unknown_number = \"OK\"\n",
         "x.toml:3: unknown_number must be one of \"NO CARRIER\", \"NO ANSWER\", \"BUSY\""},
        {line + "[[centre]]\nname = \"a\"\nnumbers = [\"1\"]\n",
         "x.toml:3: [[centre]] needs protocol; write for example protocol = \"tap\""},
        {line + "[[centre]]\nprotocol = \"tap\"\nnumbers = [\"1\"]\n",
         "x.toml:3: [[centre]] needs name; write for example name = \"sms\""},
        {line + "[[centre]]\nname = \"a\"\nprotocol = \"tap\"\n",
         "x.toml:3: [[centre]] needs numbers; write for example numbers = [\"5550101\"]"},
        {line + "[[centre]]\nname = \"a\"\nprotocol = \"fax\"\nnumbers = [\"1\"]\n",
         "x.toml:5: protocol must be one of \"tap\", \"ucp\", \"plain\", \"ntt\", \"signal\""},
        {line + "[[centre]]\nname = \"a\"\nprotocol = \"tap\"\nnumbers = [\"0,1\"]\n",
         "x.toml:6: numbers must be digits only, as they are dialled behind the outside line's "
         "code; \"0,1\" is not"},
        {line + "[[centre]]\nname = \"a\"\nprotocol = \"tap\"\nnumbers = \"1\"\n",
         "x.toml:6: numbers must be a list of texts; write for example [\"123\", \"124\"]"},
        {line + kTap +
             "numbers_ = 1\n[[centre]]\nname = \"tap\"\nprotocol = \"ucp\"\n"
             "numbers = [\"2\"]\n",
         "x.toml:9: name is taken by a centre above; each has a name of its own"},
        {line + kTap + "[[centre]]\nname = \"b\"\nprotocol = \"ucp\"\nnumbers = [\"1\"]\n",
         "x.toml:10: numbers \"1\" leads to a centre already"},
        {line + kTap + "answer = 999\n",
         "x.toml:7: answer is no code of TAP; write for example answer = 512 (try later)"},
        {line + kTap + "knocks = 0\n",
         "x.toml:7: knocks must be a whole number from 1 to 2147483647"},
        {line + kTap + "prompt = \">\"\n", "x.toml:7: [[centre]] knows no prompt; it knows "},
        {line + "colour = \"red\"\n",
         "x.toml:3: [[line]] knows no colour; it knows port, there_from, there_until, powered"},
        {line + "[[expect]]\ncentre = \"b\"\nrecipient = \"1\"\n",
         "x.toml:4: centre names no [[centre]] of this file"},
        {line + "[[expect]]\n", "x.toml:3: [[expect]] needs centre"},
        {line + "[[at]]\ntime = \"noon\"\nrun = \"true\"\n",
         "x.toml:4: time must be an instant, as \"2001-01-08 10:20:00\""},
        {line + "[centre]\nname = \"a\"\n",
         "x.toml:3: centre must be a list of tables; write [[centre]] in double brackets"},
        {line + "[[modem]]\n",
         "x.toml:3: no such table: modem; write [[line]], [[centre]], [[expect]] or [[at]]"},
        {"[[line]\n", "x.toml:1: "},
    };
    for (const MistakeCase& one : cases) {
        EXPECT_THAT(Read(one.text).mistakes, Contains(HasSubstr(one.mistake))) << one.text;
    }
}

TEST(ExchangeFile, AllMistakesAreToldAtOnce) {
    EXPECT_THAT(Read("[[line]]\npowered = 1\nport = \"X\"\n").mistakes, SizeIs(2));
}

TEST(ExchangeFile, MissingFileIsAMistake) {
    EXPECT_THAT(LoadExchangeFile("/no/such/file").mistakes,
                ElementsAre("/no/such/file: can't be read: No such file or directory"));
}

std::string ExampleText() {
    std::ifstream file(PAGERFWD_EXAMPLES "/exchange.toml");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(ExampleExchange, HasNoMistakes) {
    const ExchangeFile file = Read(ExampleText());
    EXPECT_THAT(file.mistakes, IsEmpty());
    EXPECT_THAT(file.lines, SizeIs(1));
    EXPECT_THAT(file.centres, SizeIs(5));
}

// Every key that the example explains behind a # is one that the file knows.
TEST(ExampleExchange, ExplainsOnlyWhatThereIs) {
    std::istringstream lines(ExampleText());
    std::string uncommented;
    bool for_every_centre = false;
    for (std::string line; std::getline(lines, line);) {
        for_every_centre = for_every_centre || line == "# For every centre:";
        const bool is_key = line.compare(0, 2, "# ") == 0 && line.find(" = ") != std::string::npos;
        uncommented += (is_key || line.compare(0, 4, "# [[") == 0 ? line.substr(2) : line) + "\n";
    }
    EXPECT_TRUE(for_every_centre);
    EXPECT_THAT(Read(uncommented).mistakes, IsEmpty());
}

TEST(BuildSubscriber, EveryCallGetsACentreOfItsOwn) {
    const Subscriber subscriber = BuildSubscriber(CentreWith("tap", ""), 0);
    FakeCall first_call, second_call;
    const auto first = subscriber.make_centre();
    const auto second = subscriber.make_centre();
    first->Answered(first_call);
    second->Answered(second_call);
    first->Heard("\r\x1bPG1\r");
    second->Heard("\r");
    EXPECT_EQ("ID=", second_call.Hear());
}

TEST(BuildSubscriber, FaultsAreWrappedAround) {
    const Subscriber subscriber = BuildSubscriber(CentreWith("plain", "silent_after = 0\n"), 0);
    FakeCall call;
    const auto centre = subscriber.make_centre();
    centre->Answered(call);
    centre->Heard("123\r");
    EXPECT_EQ("", call.Hear());
}

TEST(BuildSubscriber, UcpStampsTheSimulationsTime) {
    const Subscriber subscriber = BuildSubscriber(CentreWith("ucp", ""), 842263810);
    FakeCall call;
    const auto centre = subscriber.make_centre();
    centre->Answered(call);
    centre->Heard(
        "\x02"
        "07/00063/O/51/0123/12345/////////////////3//4869/////////////b3\x03");
    EXPECT_THAT(call.Hear(), HasSubstr(":090996101010/"));
}

TEST(BuildSubscriber, SignalAndNtt) {
    FakeCall call;
    BuildSubscriber(CentreWith("signal", ""), 0).make_centre()->Answered(call);
    const auto ntt = BuildSubscriber(CentreWith("ntt", ""), 0).make_centre();
    ntt->Answered(call);
    ntt->Dialled("*2*216##");
    EXPECT_THAT(call.Pages(), ElementsAre("5550103: ", "5550103: A"));
}

class ClockFileTest : public ::testing::Test {
 protected:
    ClockFileTest() {
        std::string pattern = "/tmp/clock-file-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        path_ = folder_ + "/clock";
    }
    ~ClockFileTest() override { std::filesystem::remove_all(folder_); }

    std::string folder_, path_;
};

TEST_F(ClockFileTest, KeepsTheLatestInstant) {
    const auto early = ParseInstant("2001-02-03 04:05:06");
    const auto late = ParseInstant("2001-02-03 04:05:07");
    ASSERT_TRUE(early && late);
    EXPECT_EQ(1, *late - *early);
    EXPECT_EQ(std::nullopt, ReadClock(path_));
    EXPECT_TRUE(AdvanceClock(path_, *late));
    EXPECT_EQ(late, ReadClock(path_));
    EXPECT_TRUE(AdvanceClock(path_, *early));
    EXPECT_EQ(late, ReadClock(path_)) << "time doesn't go back";
}

TEST_F(ClockFileTest, IsReadable) {
    AdvanceClock(path_, *ParseInstant("2001-02-03 04:05:06"));
    std::ifstream file(path_);
    std::string line;
    std::getline(file, line);
    EXPECT_EQ("2001-02-03 04:05:06", line);
}

TEST_F(ClockFileTest, WhatIsNoInstantIsNotTaken) {
    for (const char* text : {"", "now", "2001-02-03", "2001-02-30 04:05:06", "2001-02-03 04:05:06 ",
                             "2001-2-3 4:5:6"}) {
        EXPECT_EQ(std::nullopt, ParseInstant(text)) << text;
    }
}

TEST_F(ClockFileTest, CannotBeWritten) {
    EXPECT_FALSE(AdvanceClock("/no/such/folder/clock", 1));
}

TEST(NextSecond, IsTheFirstThatWasNotShown) {
    EXPECT_EQ(100, NextSecond(100, 0ms));
    EXPECT_EQ(101, NextSecond(100, 1ms));
    EXPECT_EQ(101, NextSecond(100, 1000ms));
    EXPECT_EQ(102, NextSecond(100, 1001ms));
}

}  // namespace
}  // namespace pagersim
