// What a person sees and does in a browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/web/html.h"
#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

using ThePages = WebTest;

// --- Signing in and out.

TEST_F(ThePages, AreForThoseWhoHaveSignedIn) {
    for (const char* target : {"/", "/alarm?number=7", "/nothing"}) {
        const WebAnswer answer = Get(target);
        EXPECT_EQ(303, answer.status);
        EXPECT_EQ("/sign-in", answer.location);
    }
    EXPECT_EQ(403, Post("/acknowledge", "alarm=7").status);
    EXPECT_THAT(Get("/sign-in").body, HasSubstr("name=\"token\""));
    EXPECT_THAT(Get("/style.css").body, HasSubstr("color-scheme"));
}

TEST_F(ThePages, LetSomebodyInWithAToken) {
    const WebAnswer answer = SignInWith(TokenWith("look"));
    EXPECT_EQ(303, answer.status);
    EXPECT_EQ("/", answer.location);
    EXPECT_THAT(answer.cookie,
                MatchesRegex("pagerfwd_session=[0-9a-f]+; HttpOnly; SameSite=Strict; Path=/; "
                             "Max-Age=43200"));
}

TEST_F(ThePages, LetNobodyInWithoutOne) {
    TokenWith("look");
    for (const char* token : {"", "x", "pagerfwd_00000000_", "%"}) {
        const WebAnswer answer = SignInWith(token);
        EXPECT_EQ(403, answer.status);
        EXPECT_EQ("", answer.cookie);
    }
    for (const char* wrong : {"", "pagerfwd_session=", "pagerfwd_session=x", "pagerfwd_session"}) {
        cookies = wrong;
        EXPECT_EQ(303, Get("/").status) << wrong;
    }
}

TEST_F(ThePages, LetNobodyTryOften) {
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(403, SignInWith("x").status);
    }
    const WebAnswer answer = SignInWith("x");
    EXPECT_EQ(429, answer.status);
    EXPECT_GT(answer.retry_after, 0);
}

TEST_F(ThePages, AreOverForHimWhoSignsOut) {
    SignIn();
    const std::string form = FormIn(Get("/").body);
    EXPECT_EQ(403, Post("/sign-out", "").status) << "another site can't sign anybody out";
    EXPECT_EQ("/sign-in", Post("/sign-out", "form=" + form).location);
    EXPECT_EQ(303, Get("/").status);
}

TEST_F(ThePages, AreOverForHimWhoseTokenIsRevoked) {
    SignIn();
    EXPECT_EQ(200, Get("/").status);
    Execute("DELETE FROM Host_Tokens");
    EXPECT_EQ(303, Get("/").status);
}

TEST(Sessions, EndByThemselves) {
    WebSessions sessions;
    const std::string cookie = sessions.Open("a", 1000);
    EXPECT_TRUE(sessions.Find(cookie, 1000 + WebSessions::kLasts - 1));
    EXPECT_FALSE(sessions.Find(cookie, 1000 + WebSessions::kLasts));
}

TEST(Sessions, AreNoMoreThanAThousand) {
    WebSessions sessions;
    const std::string oldest = sessions.Open("a", 1000);
    std::string last;
    for (int i = 0; i < 1000; ++i) {
        last = sessions.Open("a", 1001);
    }
    EXPECT_FALSE(sessions.Find(oldest, 1001));
    EXPECT_TRUE(sessions.Find(last, 1001));
}

TEST(Secrets, AreTheSameOrNot) {
    EXPECT_TRUE(AreSameSecrets("abc", "abc"));
    EXPECT_FALSE(AreSameSecrets("abc", "abd"));
    EXPECT_FALSE(AreSameSecrets("abc", "ab"));
    EXPECT_FALSE(AreSameSecrets("", "a"));
}

// --- What is shown.

TEST_F(ThePages, ShowLinesPendingPagesAndAlarms) {
    Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north')");
    const std::string number = Raise("Disk full");
    WriteEvent(std::stoi(number), "duty", 2);
    SignIn("look");
    const WebAnswer answer = Get("/");
    EXPECT_EQ(200, answer.status);
    EXPECT_THAT(answer.body, AllOf(HasSubstr("<div>north</div>"), HasSubstr("Pending: 1<"),
                                   HasSubstr("<div>duty</div>"), HasSubstr("<div>Disk full</div>"),
                                   HasSubstr("href=\"/alarm?number=" + number + "\""),
                                   HasSubstr("<div>major</div>"), HasSubstr("Signed in as maria")));
    EXPECT_THAT(answer.policy, AllOf(HasSubstr("default-src 'none'"), Not(HasSubstr("unsafe"))));
}

TEST_F(ThePages, SayWhereThereIsNothing) {
    SignIn("look");
    EXPECT_THAT(Get("/").body, AllOf(HasSubstr("no lines"), HasSubstr("No page is pending"),
                                     HasSubstr("There are no alarms")));
    EXPECT_EQ(404, Get("/alarm?number=7").status);
    EXPECT_EQ(404, Get("/alarm").status);
    EXPECT_EQ(404, Get("/nothing").status);
    EXPECT_EQ(400, Get("/%").status);
}

TEST_F(ThePages, ShowAnAlarmWithItsStory) {
    const std::string number = Raise("Disk full");
    SignIn("look");
    const std::string html = Get("/alarm?number=" + number).body;
    EXPECT_THAT(html, AllOf(HasSubstr("<h1>Alarm " + number + "</h1>"), HasSubstr("Disk full"),
                            HasSubstr("<div>raised</div>"), HasSubstr("2001-01-08 10:00:00 UTC")));
    EXPECT_THAT(html, Not(HasSubstr("action=\"/acknowledge\""))) << "he may only look";
}

TEST_F(ThePages, ShowWhatAnAlarmBringsAsText) {
    const std::string evil = kEvil;
    const std::string number =
        std::to_string(RaiseAlarm(connection, {evil, "2", evil, evil, "s", "k"}, kNow));
    WriteEvent(std::stoi(number), evil.c_str(), 2, 0, evil.c_str());
    Execute("UPDATE AlarmLog SET alarmack = '1', alarmnote = 'acknowledged by <b>x</b>'");
    SignIn();
    for (const std::string& target : {std::string("/"), "/alarm?number=" + number}) {
        const std::string html = Get(target).body;
        EXPECT_THAT(html, AllOf(HasSubstr("&lt;script&gt;"), Not(HasSubstr("<script>")),
                                Not(HasSubstr("<b>")), Not(HasSubstr("\x1b"))));
    }
    EXPECT_THAT(Get("/alarm?number=<script>").body, Not(HasSubstr("<script>")));
}

TEST_F(ThePages, AreForThoseWhoMayLook) {
    SignIn("raise");
    EXPECT_EQ(403, Get("/").status);
}

TEST_F(ThePages, SayThatTheDatabaseIsAway) {
    SignIn();
    Execute("ALTER TABLE AlarmLog RENAME TO Away");
    const WebAnswer answer = Get("/");
    EXPECT_EQ(503, answer.status);
    EXPECT_THAT(answer.body, AllOf(HasSubstr("The database is away. Paging may go on; try again in "
                                             "some seconds."),
                                   Not(HasSubstr("AlarmLog"))));
    EXPECT_GT(answer.retry_after, 0);
}

// --- What is done.

TEST_F(ThePages, AcknowledgeAnAlarm) {
    const std::string number = Raise("x");
    SignIn();
    const std::string form = FormIn(Get("/alarm?number=" + number).body);
    const WebAnswer answer =
        Post("/acknowledge", "form=" + form + "&alarm=" + number + "&comment=on+my+way%21");
    EXPECT_EQ(303, answer.status);
    EXPECT_EQ("/alarm?number=" + number, answer.location);
    EXPECT_EQ("1", StateOf(number));
    const std::vector<TrailEntry> trail = TrailOf(connection, number);
    ASSERT_EQ(1U, trail.size());
    EXPECT_EQ("maria", trail[0].who);
    EXPECT_EQ("on my way!", trail[0].note);
    EXPECT_THAT(Get("/alarm?number=" + number).body, Not(HasSubstr("action=\"/acknowledge\"")));
}

TEST_F(ThePages, SayThatAnAlarmIsOver) {
    const std::string number = Raise("x");
    SignIn();
    const std::string form = FormIn(Get("/").body);
    EXPECT_EQ(303, Post("/withdraw", "form=" + form + "&alarm=" + number).status);
    EXPECT_THAT(Get("/alarm?number=" + number).body, HasSubstr(">resolved<"));
}

TEST_F(ThePages, DoNothingThatNoFormOfTheirsAsksFor) {
    const std::string number = Raise("x");
    SignIn();
    for (const std::string& form :
         {std::string(), std::string("form="), "form=" + std::string(64, '0'), std::string("%")}) {
        EXPECT_EQ(403, Post("/acknowledge", form + "&alarm=" + number).status) << form;
        EXPECT_EQ(403, Post("/withdraw", form + "&alarm=" + number).status) << form;
    }
    EXPECT_EQ(404, Get("/acknowledge?alarm=" + number).status);
    EXPECT_EQ("0", StateOf(number));
    EXPECT_THAT(TrailOf(connection, number), IsEmpty());
}

TEST_F(ThePages, DoOnlyWhatATokenIsGoodFor) {
    const std::string number = Raise("x");
    SignIn("look");
    const std::string form = "form=" + FormIn(Get("/").body) + "&alarm=" + number;
    EXPECT_EQ(403, Post("/acknowledge", form).status);
    EXPECT_EQ(403, Post("/withdraw", form).status);
    EXPECT_EQ("0", StateOf(number));
}

}  // namespace
}  // namespace host
