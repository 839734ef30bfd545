// Sessions of SNPP: what a client says, what is answered, and what becomes of it.
#include "host/snpp/dialogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/node/intake.h"
#include "host/snpp/address_list.h"
#include "host/snpp/command.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/sends.h"
#include "host/web/token.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

// A session that a test goes through line by line: what is said, and how the answer begins.
class SnppSession : public ServiceTest {
 protected:
    SnppSession() {
        AddPager("duty");
        AddPager("night");
        Route(1, "PLANT/*", "duty");
        Route(2, "PLANT/*", "night", "1");
        Route(3, "*", "night");
        LetIn();
    }

    void LetIn() { session = std::make_unique<SnppDialogue>(desk, log, "192.0.2.7", true); }
    void KeepOut() { session = std::make_unique<SnppDialogue>(desk, log, "192.0.2.7", false); }

    void Route(int64_t number, const std::string& groups, const std::string& pager,
               const std::string& severities = "") {
        const std::string route = std::to_string(number);
        Execute("INSERT INTO Host_Routes VALUES (" + route + ", '" + groups + "', '" + severities +
                "')");
        Execute("INSERT INTO Host_RoutePagers VALUES (" + route + ", 0, '" + pager + "')");
    }
    std::string TokenThatMay(const std::string& may) {
        WriteTransaction transaction(connection);
        std::string text = MakeToken(connection, {may, may, 0, kNow});
        transaction.Commit();
        return text;
    }

    std::string Answer(const std::string& line) {
        const SnppAnswer answer = session->Hear(line);
        ended = answer.ends;
        return answer.text;
    }
    void Say(const std::string& line, const std::string& answer) {
        EXPECT_THAT(Answer(line), StartsWith(answer)) << line;
    }
    // The tag and the pass code of the answer to SEND.
    std::string SendAndKeepTag() {
        const std::string answer = Answer("SEND");
        EXPECT_THAT(answer, StartsWith("250 "));
        const std::string before = "its tag is ";
        const size_t at = answer.find(before) + before.size();
        return answer.substr(at, answer.find('\r') - at);
    }
    std::string SendToDuty() {
        Say("PAGER duty", "250");
        Say("MESSAGE Pump 3 stands still", "250");
        return SendAndKeepTag();
    }
    std::vector<std::string> Alarms() {
        return Rows(
            "alarm_group || '|' || severity || '|' || server || '|' || details"
            " FROM AlarmLog ORDER BY row_id");
    }
    std::vector<std::string> Pagers() {
        return Rows("pager FROM Host_Deliveries ORDER BY alarm, place");
    }

    const SnppDesk desk{database};
    std::unique_ptr<SnppDialogue> session;
    bool ended = false;
};

// --- Level 1.

TEST_F(SnppSession, PagesAPager) {
    Say("PAGEr duty", "250");
    Say("MESSage Pump 3 stands still", "250");
    EXPECT_THAT(Alarms(), IsEmpty());
    Say("SEND", "250");
    EXPECT_THAT(Alarms(), ElementsAre("SNPP/000|1|192.0.2.7|Pump 3 stands still"));
    EXPECT_THAT(Pagers(), ElementsAre("duty"));
    Say("QUIT", "221");
    EXPECT_TRUE(ended);
}

TEST_F(SnppSession, PagesAGroupByItsRoutes) {
    Say("page PLANT/017", "250");
    Say("mess No water", "250");
    Say("send", "250");
    EXPECT_THAT(Alarms(), ElementsAre("PLANT/017|1|192.0.2.7|No water"));
    EXPECT_THAT(Pagers(), ElementsAre("duty", "night"));
}

TEST_F(SnppSession, IsTakenUpAsNoOtherAlarmIs) {
    SendToDuty();
    EXPECT_THAT(NewAlarms(connection), IsEmpty()) << "no route is asked";
    EXPECT_EQ(1U, OpenDeliveries(connection).size());
}

TEST_F(SnppSession, RefusesAPagerThatNobodyKnows) {
    Say("PAGE dtuy", "550");
    Say("PAGE", "550");
    Say("MESS x", "250");
    Say("SEND", "503");
    EXPECT_THAT(Alarms(), IsEmpty()) << "though a route is for all there is";
}

TEST_F(SnppSession, SendsNothingWithoutAMessage) {
    Say("PAGE duty", "250");
    Say("MESS", "550");
    Say("SEND", "503");
    EXPECT_THAT(Alarms(), IsEmpty());
}

TEST_F(SnppSession, TakesOneMessageAtATime) {
    Say("MESS one", "250");
    Say("MESS two", "503");
    Say("DATA", "503");
    Say("RESE", "250");
    Say("MESS two", "250");
    Say("PAGE duty", "250");
    Say("SEND", "250");
    EXPECT_THAT(Alarms(), ElementsAre(HasSubstr("|two")));
    Say("SEND", "503");
}

TEST_F(SnppSession, SaysWhatItKnows) {
    const std::string help = Answer("HELP");
    EXPECT_THAT(help, HasSubstr("214 MSTAtus"));
    EXPECT_THAT(help, HasSubstr("\r\n250 "));
    Say("EHLO x", "500");
    Say("", "500");
    Say("PAG duty", "500");
}

// --- Level 2.

TEST_F(SnppSession, TakesAMessageOfSeveralLines) {
    Say("PAGE duty", "250");
    Say("DATA", "354");
    Say("Pump 3", "");
    Say("QUIT", "");
    Say(".", "250");
    Say("SEND", "250");
    EXPECT_THAT(Alarms(), ElementsAre(HasSubstr("|Pump 3 QUIT")));
}

TEST_F(SnppSession, RefusesAMessageThatIsTooLongOrEmpty) {
    Say("DATA", "354");
    for (size_t length = 0; length <= kLongestText; length += 8000) {
        Say(std::string(8000, 'x'), "");
    }
    Say(".", "550");
    Say("DATA", "354");
    Say(".", "550");
    Say("MESS short", "250");
}

TEST_F(SnppSession, PagesSeveralEachOnce) {
    for (const char* name : {"duty", "night", "duty", "PLANT/1"}) {
        Say(std::string("PAGE ") + name, "250");
    }
    Say("MESS x", "250");
    Say("SEND", "250");
    EXPECT_THAT(Alarms(), ElementsAre("PLANT/1|1|192.0.2.7|x"));
    EXPECT_THAT(Pagers(), ElementsAre("duty", "night"));
}

TEST_F(SnppSession, HasTheLevelTheSubjectAndTheCaller) {
    Say("PAGE PLANT/1", "250");
    Say("LEVEL 2", "250");
    Say("SUBJECT Pump 3", "250");
    Say("CALLERID control room", "250");
    Say("MESS stands still", "250");
    Say("SEND", "250");
    EXPECT_THAT(Alarms(), ElementsAre("PLANT/1|3|control room|Pump 3: stands still"));
    EXPECT_THAT(Pagers(), ElementsAre("duty", "night")) << "by the route for all there is";
    Say("LEVEL 8", "550");
    Say("LEVEL x", "550");
    Say("LEVEL", "550");
    Say("ALERT 1", "250");
    Say("ALERT 2", "550");
}

TEST_F(SnppSession, RefusesWhatItCannotDo) {
    Say("HOLDUNTIL 010108120000", "550");
    Say("COVERAGE 2", "550");
}

TEST_F(SnppSession, SaysWhereNoRouteLeadsToAPagerAtTheLevel) {
    Execute("DELETE FROM Host_Routes WHERE route <> 2");
    Say("PAGE PLANT/1", "250");
    Say("LEVEL 7", "250");
    Say("MESS x", "250");
    Say("SEND", "554");
    EXPECT_THAT(Alarms(), IsEmpty());
}

TEST_F(SnppSession, TakesLettersOfEitherEncoding) {
    Say("PAGE duty", "250");
    Say("MESS caf\xc3\xa9 \x07", "250");
    Say("SEND", "250");
    Say("PAGE duty", "250");
    Say("MESS caf\xe9", "250");
    Say("SEND", "250");
    EXPECT_THAT(Rows("details FROM AlarmLog ORDER BY row_id"), ElementsAre("caf\xe9  ", "caf\xe9"));
}

// --- Who is let in.

TEST_F(SnppSession, LetsNobodySendWithoutATokenWhoIsNotOnTheList) {
    KeepOut();
    Say("PAGE duty", "550 LOGIn first");
    Say("MSTA 1 1", "550 LOGIn first");
    Say("LOGIN x", "550");
    Say("LOGIN " + TokenThatMay("look"), "550");
    Say("PAGE duty", "550 LOGIn first");
    Say("LOGIN " + TokenThatMay("raise"), "250");
    SendToDuty();
    EXPECT_THAT(Alarms(), ElementsAre(HasSubstr("|raise|")));
}

TEST_F(SnppSession, TakesATokenAsThePasswordOfAnyName) {
    KeepOut();
    Say("LOGIN somebody " + TokenThatMay("raise"), "250");
    Say("PAGE duty", "250");
}

TEST_F(SnppSession, EndsAfterTooManyMistakes) {
    for (int i = 1; i < 20; ++i) {
        Say("x", "500");
        EXPECT_FALSE(ended);
    }
    Say("x", "421");
    EXPECT_TRUE(ended);
}

// --- What becomes of a message.

TEST_F(SnppSession, TellsWhatBecameOfAMessage) {
    const std::string tag = SendToDuty();
    EXPECT_THAT(Answer("MSTAtus " + tag), MatchesRegex("960 1 20010108100000.0 being paged\r\n"));
    const int32_t number = std::stoi(tag);
    WriteEvent(number, "duty", 2, 0, "SNPP/000");
    Say("MSTA " + tag, "960 1 ");
    EXPECT_THAT(Answer("MSTA " + tag), HasSubstr("duty: pending"));
    Execute("DELETE FROM Host_Deliveries");
    ASSERT_EQ(1, OpenTable(database, "AlarmFwd_PagerEvents")
                     .Delete("WHERE AlmGroup = \"SNPP/000\" AND AlmLogID = " +
                             tag.substr(0, tag.find(' ')) + " AND PagerDescr = \"duty\""));
    WriteEvent(number, "duty", 4, 0, "SNPP/000");
    EXPECT_THAT(Answer("MSTA " + tag), MatchesRegex("880 1 .* duty: done\r\n"));
}

TEST_F(SnppSession, TellsThatAMessageWasAcknowledged) {
    const std::string tag = SendToDuty();
    WriteEvent(std::stoi(tag), "duty", 2, 0, "SNPP/000");
    Execute("UPDATE Host_Deliveries SET answer = 1");
    AcknowledgeAlarm(connection, std::stoi(tag), kNow);
    WriteEvent(std::stoi(tag), "duty", 1, 0, "SNPP/000");
    EXPECT_THAT(Answer("MSTA " + tag), MatchesRegex("881 1 .* duty: acknowledged\r\n"));
}

TEST_F(SnppSession, TellsThatAMessageWasGivenUp) {
    const std::string tag = SendToDuty();
    Execute("UPDATE Host_Deliveries SET answer = 1");
    WriteEvent(std::stoi(tag), "duty", 3, 6, "SNPP/000");
    EXPECT_THAT(Answer("MSTA " + tag), MatchesRegex("780 1 .* duty: off limit\r\n"));
}

TEST_F(SnppSession, TellsNobodyWithoutThePassCode) {
    const std::string tag = SendToDuty();
    const std::string number = tag.substr(0, tag.find(' '));
    for (const std::string& wrong :
         {number, number + " 1", number + " ", std::string("1 1"), std::string()}) {
        Say("MSTA " + wrong, "550");
    }
    AddAlarm("7");
    Say("MSTA 7 ", "550");
}

TEST_F(SnppSession, AnswersWithATagWhereTwoWaysAreAskedFor) {
    Say("2WAY", "250");
    Say("PAGE duty", "250");
    Say("MESS x", "250");
    EXPECT_THAT(Answer("SEND"), MatchesRegex("960 [0-9]+ [0-9]+ OK.*\r\n"));
}

// --- The database away.

TEST(Snpp, KeepsAMessageWhileTheDatabaseIsAway) {
    const test_support::TempDir folder;
    std::ostringstream said;
    OperatorLog log(said, true);
    const SnppDesk desk("none.db");
    SnppDialogue session(desk, log, "192.0.2.7", true);
    EXPECT_THAT(session.Hear("PAGE duty").text, StartsWith("554 The database is away"));
    EXPECT_THAT(said.str(), HasSubstr("none.db"));
    EXPECT_FALSE(session.Hear("NOOP").ends);
}

// --- Lines, and addresses.

TEST(SnppLines, CountFourLettersInEitherCase) {
    struct Line {
        const char* line;
        const char* name;
        const char* argument;
    };
    const Line lines[] = {
        {"PAGEr duty", "PAGE", "duty"},
        {"pagerphone  a b ", "PAGE", "a b"},
        {"PAG duty", "PAG", "duty"},
        {"  SEND", "SEND", ""},
        {"QUIT", "QUIT", ""},
        {"2way", "2WAY", ""},
        {"MESS\tx", "MESS", "x"},
        {"", "", ""},
        {"   ", "", ""},
    };
    for (const Line& line : lines) {
        const SnppCommand command = ParseSnppLine(line.line);
        EXPECT_EQ(line.name, command.name) << line.line;
        EXPECT_EQ(line.argument, command.argument) << line.line;
    }
}

TEST(Addresses, AreOnAListOrNot) {
    AddressList list;
    EXPECT_TRUE(list.Add("192.0.2.7"));
    EXPECT_TRUE(list.Add("198.51.100.128/25"));
    EXPECT_TRUE(list.Add("2001:db8::/33"));
    for (const char* in : {"192.0.2.7", "198.51.100.128", "198.51.100.255", "2001:db8:7fff::1"}) {
        EXPECT_TRUE(list.Has(in)) << in;
    }
    for (const char* out : {"192.0.2.6", "198.51.100.127", "198.51.101.128", "2001:db8:8000::1",
                            "::ffff:192.0.2.7", "unix", ""}) {
        EXPECT_FALSE(list.Has(out)) << out;
    }
    EXPECT_FALSE(AddressList().Has("192.0.2.7"));
}

TEST(Addresses, MayBeAll) {
    AddressList list;
    EXPECT_TRUE(list.Add("0.0.0.0/0"));
    EXPECT_TRUE(list.Has("192.0.2.7"));
    EXPECT_FALSE(list.Has("::1"));
}

TEST(Addresses, AreRefusedWhereTheyAreNone) {
    AddressList list;
    for (const char* wrong : {"", "x", "192.0.2", "192.0.2.7/33", "192.0.2.7/", "192.0.2.7/x",
                              "192.0.2.7/-1", "2001:db8::/129", "/8", "192.0.2.7/8/8"}) {
        EXPECT_FALSE(list.Add(wrong)) << wrong;
    }
}

}  // namespace
}  // namespace host
