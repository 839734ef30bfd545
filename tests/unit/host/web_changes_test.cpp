// What is done in the browser to lines, and for tests.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/tables/lines.h"
#include "host/store/tables/test_pages.h"
#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class TheForms : public WebTest {
 protected:
    TheForms() {
        Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north \"1\"')");
        AddPager("duty");
    }
    bool IsPaused() { return FindLine(connection, "north \"1\"")->paused; }
    void ExpectMistake(const std::string& path, const std::string& fields, const char* says) {
        const WebAnswer answer = Send(path, fields);
        EXPECT_EQ(400, answer.status) << path << " " << fields;
        EXPECT_THAT(answer.body, AllOf(HasSubstr("Not done"), HasSubstr(says))) << path;
    }
    // "maria: line paused north"
    std::vector<std::string> Done() {
        std::vector<std::string> done;
        for (const TrailEntry& entry : Trail()) {
            done.push_back(entry.who + ": " + entry.what + " " + entry.note);
        }
        return done;
    }
};

TEST_F(TheForms, PauseALineAndPutItBack) {
    SignIn("manage");
    EXPECT_THAT(Get("/").body, AllOf(HasSubstr("action=\"/pause\""),
                                     HasSubstr("name=\"line\" value=\"north &quot;1&quot;\"")));
    const WebAnswer answer = Send("/pause", "line=north+%221%22");
    EXPECT_EQ(303, answer.status);
    EXPECT_EQ("/", answer.location);
    EXPECT_TRUE(IsPaused());
    EXPECT_THAT(Get("/").body, AllOf(HasSubstr("action=\"/resume\""), HasSubstr(">paused<")));
    EXPECT_EQ(303, Send("/resume", "line=north+%221%22").status);
    EXPECT_FALSE(IsPaused());
    EXPECT_THAT(Done(),
                ElementsAre("maria: line resumed north \"1\"", "maria: line paused north \"1\""));
    EXPECT_THAT(Get("/trail").body, HasSubstr("<div>line paused</div>"));
}

TEST_F(TheForms, AskForATestPage) {
    SignIn("manage");
    EXPECT_THAT(Get("/tests").body, HasSubstr("<option value=\"duty\">duty</option>"));
    const WebAnswer answer = Send("/test-page", "pager=duty&line=");
    EXPECT_EQ(303, answer.status);
    EXPECT_EQ("/test?number=1", answer.location);
    EXPECT_THAT(Rows("pager || '|' || line || '|' || number FROM Host_TestPages"),
                ElementsAre("duty||"));
    EXPECT_THAT(Get("/test?number=1").body, HasSubstr("Not done yet"));
    EXPECT_EQ(404, Get("/test?number=2").status);
    AnswerTestPage(connection, 1, {6, ""});
    EXPECT_THAT(Get("/test?number=1").body,
                AllOf(HasSubstr("dialling failed: busy, no answer"), HasSubstr("result 6"),
                      HasSubstr("Is the telephone line plugged in")));
    AnswerTestPage(connection, 1, {0, ""});
    EXPECT_THAT(Get("/test?number=1").body, HasSubstr("<span class=\"state good\">sent</span>"));
    AnswerTestPage(connection, 1, {77, ""});
    EXPECT_THAT(Get("/test?number=1").body, HasSubstr("not sent: result 77"));
    EXPECT_THAT(Done(), ElementsAre("maria: test page duty"));
}

TEST_F(TheForms, AskForATestCall) {
    SignIn("manage");
    EXPECT_EQ("/test?number=1", Send("/test-call", "line=north+%221%22&number=0,5550101").location);
    EXPECT_THAT(Rows("pager || '|' || line || '|' || number FROM Host_TestPages"),
                ElementsAre("|north \"1\"|0,5550101"));
    AnswerTestPage(connection, 1, {6, "BUSY"});
    EXPECT_THAT(Get("/test?number=1").body, HasSubstr("not connected: BUSY"));
    AnswerTestPage(connection, 1, {0, "CONNECT 1200"});
    EXPECT_THAT(Get("/test?number=1").body, HasSubstr("connected, and hung up: CONNECT 1200"));
    EXPECT_THAT(Done(), ElementsAre("maria: test call north \"1\": 0,5550101"));
}

TEST_F(TheForms, AcknowledgeWithACommentOfItsLengthAtMost) {
    SignIn("manage");
    AddAlarm("7", "2");
    const std::string most = "comment=" + std::string(998, 'x') + "%c3%bc";
    ExpectMistake("/acknowledge", "alarm=7&" + most + "y", "comment: it is longer than 1000 bytes");
    EXPECT_EQ("2", StateOf("7"));
    EXPECT_EQ(303, Send("/acknowledge", "alarm=7&" + most).status);
    EXPECT_EQ(std::string(998, 'x') + "\u00fc", Trail()[0].note);
}

TEST_F(TheForms, RefuseWhatTheSiteDoesNotHave) {
    SignIn("manage");
    for (const char* path : {"/pause", "/resume", "/test-call"}) {
        ExpectMistake(path, "line=west&number=1", "line: there is none of this name");
        ExpectMistake(path, "line=%e2%82%ac&number=1", "line: there is none of this name");
    }
    ExpectMistake("/test-page", "pager=nobody", "pager: there is none of this name");
    ExpectMistake("/test-page", "pager=duty&line=west", "line: there is none of this name");
    ExpectMistake("/test-call", "line=north+%221%22&number=", "number: say which one");
    ExpectMistake("/test-call", "line=north+%221%22&number=" + std::string(61, '1'),
                  "number: it is longer than 60 bytes");
    for (const char* alarm : {"77", "x", "-1", "", "99999999999999999999"}) {
        EXPECT_EQ(404, Send("/acknowledge", std::string("alarm=") + alarm).status) << alarm;
    }
    EXPECT_EQ(404, Send("/withdraw", "alarm=77").status);
    EXPECT_EQ(404, Send("/nothing", "line=west").status);
    EXPECT_THAT(Done(), IsEmpty());
    EXPECT_THAT(Rows("pager FROM Host_TestPages"), IsEmpty());
}

TEST_F(TheForms, AreForThoseWhoManage) {
    SignIn("look,raise,acknowledge");
    EXPECT_THAT(Get("/").body, Not(HasSubstr("action=\"/pause\"")));
    EXPECT_THAT(Get("/tests").body, AllOf(Not(HasSubstr("action=\"/test")),
                                          HasSubstr("Your token is not good for this")));
    for (const char* path : {"/pause", "/resume", "/test-page", "/test-call"}) {
        EXPECT_EQ(403, Send(path, "pager=duty&line=north+%221%22&number=1").status) << path;
    }
    EXPECT_FALSE(IsPaused());
    EXPECT_THAT(Done(), IsEmpty());
}

TEST_F(TheForms, AreRefusedWithoutTheirSecret) {
    SignIn("manage");
    for (const char* path : {"/pause", "/resume", "/test-page", "/test-call"}) {
        EXPECT_EQ(403, Post(path, "pager=duty&line=north+%221%22&number=1").status) << path;
    }
    EXPECT_THAT(Done(), IsEmpty());
}

}  // namespace
}  // namespace host
