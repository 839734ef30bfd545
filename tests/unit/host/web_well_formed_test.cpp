// Every page, with evil in every text that an alarm, a site or a trace can bring, is HTML to a
// parser that isn't ours; and shows none of it as markup.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/tables/lines.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/time_models.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class EveryPage : public WebTest {
 protected:
    EveryPage() {
        const std::string evil = kEvil;
        number = std::to_string(RaiseAlarm(connection, {evil, "2", evil, evil, evil, evil}, kNow));
        AddPager(evil);
        for (const char* sql : {"UPDATE AlarmFwd_PagerSetting SET timeModel = ?",
                                "INSERT INTO AlarmFwd_COMProperties (Description) VALUES (?)",
                                "INSERT INTO Host_Nodes (node, place, holder) VALUES (?1, 0, ?1)",
                                "INSERT INTO Host_Nodes (node, place) VALUES ('other', 1)"}) {
            Statement statement(connection, sql);
            if (std::string(sql).find('?') != std::string::npos) {
                statement.Bind(evil);
            }
            statement.Run();
        }
        StoreWeek(connection, evil, Week(0xFF00));
        WriteEvent(std::stoi(number), kEvil, 2, 0, kEvil);
        SetHealth(connection, evil, Health::kSick, evil, kNow);
        SetDoing(connection, evil, evil, kNow);
        RecordSend(connection,
                   {kNow + 20, 20, number, evil, evil, TracedPage::Outcome::kNotSent, 7, evil});
        WriteTransaction transaction(connection);
        NoteInTrail(connection, {0, kNow, evil, evil, number, evil});
        transaction.Commit();
        SignIn("manage");
        targets = {"/",
                   "/pages",
                   "/failed",
                   "/alarms",
                   "/alarm?number=" + number,
                   "/hours",
                   "/tests",
                   "/trail",
                   "/call?send=1",
                   "/test?number=1",
                   "/sign-in",
                   "/nothing",
                   "/alarms?state=%3Cb%3E&group=%22%27%3E&pager=%3Cb%3E",
                   "/alarms?since=%3Cb%3E"};
    }

    std::string number;
    std::vector<std::string> targets;
};

TEST_F(EveryPage, ShowsWhatItIsGivenAsText) {
    for (const std::string& target : targets) {
        const std::string html = Get(target).body;
        EXPECT_THAT(html, Not(HasSubstr("<script>alert"))) << target;
        EXPECT_THAT(html, Not(HasSubstr("<b>\"")));
        EXPECT_THAT(html, Not(HasSubstr("\x1b")));
        EXPECT_THAT(html, Not(HasSubstr("\xe2\x80\xae")));
        EXPECT_THAT(html, Not(HasSubstr("\"'&")));
    }
    for (const char* shown :
         {"/", "/pages", "/failed", "/alarms", "/hours", "/tests", "/trail", "/call?send=1"}) {
        EXPECT_THAT(Get(shown).body, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;&quot;&#39;"
                                               "&amp;\\x1b[2J"))
            << shown;
    }
}

TEST_F(EveryPage, IsHtmlToAnotherParser) {
    for (const std::string& target : targets) {
        WriteFile("page.html", Get(target).body);
        const ProgramRun run = RunProgram({"/usr/bin/tidy", "-quiet", "-errors", "-utf8",
                                           "--warn-proprietary-attributes", "no", "page.html"});
        EXPECT_EQ("", run.err) << target;
        EXPECT_EQ(0, run.exit_code) << target;
    }
}

}  // namespace
}  // namespace host
