// What the pages say, word for word, as somebody hears it who has them read aloud.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "host/store/tables/lines.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/test_pages.h"
#include "host/store/tables/time_models.h"
#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::HasSubstr;

class TheWords : public WebTest {
 protected:
    TheWords() {
        AddPager("duty");
        AddPager("boss");
        StoreWeek(connection, "office", Week(0xFF00));
        Execute(
            "UPDATE AlarmFwd_PagerSetting SET timeModel = 'office' WHERE description = 'duty';"
            "INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north'), ('south');"
            "INSERT INTO Host_Nodes (node, place, holder) VALUES ('east', 0, 'web1, process 7'),"
            " ('west', 1, '')");
        SetDoing(connection, "north", "idle", kNow - 60);
        SetHealth(connection, "north", Health::kWell, "", kNow - 60);
        SetHealth(connection, "south", Health::kSick, "its device is missing", kNow - 30);
        number = Raise("Disk full");
        WriteEvent(std::stoi(number), "duty", 2, 0, "ops/1");
        RecordSend(connection, {kNow + 20, 20, number, "duty", "north",
                                TracedPage::Outcome::kNotSent, 6, "dialling failed: BUSY"});
        SignIn();
    }

    // The texts of a page, with what a link leads to, what a form asks for and what it sends.
    // Without the way to other pages.
    std::string Heard(const std::string& target) {
        const std::string html = Get(target).body;
        std::string heard;
        for (size_t at = html.find("<main"); at < html.size();) {
            const bool is_tag = html[at] == '<';
            const size_t end = html.find(is_tag ? '>' : '<', at);
            const std::string part = html.substr(at, end - at);
            heard += is_tag ? Marked(part) : part == "\n" ? "" : part;
            at = end + (is_tag ? 1 : 0);
        }
        heard = Replaced("\n | ", "\n", Replaced("\n\n", "\n", heard));
        return Replaced(FormIn(html), "N", Replaced(number, "N", heard));
    }

    std::string number;

 private:
    static std::string Attribute(const std::string& tag, const std::string& name) {
        const size_t at = tag.find(" " + name + "=\"");
        const size_t from = at + name.size() + 3;
        return at == std::string::npos ? "" : tag.substr(from, tag.find('"', from) - from);
    }
    static std::string Marked(const std::string& tag) {
        for (const char* ends : {"</h1", "</h2", "</p", "</caption", "</tr", "</dd", "</legend",
                                 "</label", "</button", "</select", "<br"}) {
            if (tag == ends) {
                return "\n";
            }
        }
        if (tag.rfind("<td", 0) == 0 || tag.rfind("<th ", 0) == 0 || tag == "<dd") {
            return " | ";
        }
        std::string marked;
        for (const char* told : {"href", "action", "alt", "role", "name", "value"}) {
            const std::string value = Attribute(tag, told);
            const bool is_of_table = tag.rfind("<t", 0) == 0;
            marked += value.empty() || is_of_table ? "" : "[" + value + "]";
        }
        return marked + (tag.find(" selected") == std::string::npos ? "" : "[selected]");
    }
    static std::string Replaced(const std::string& what, const std::string& by, std::string text) {
        for (size_t at; !what.empty() && (at = text.find(what)) != std::string::npos;) {
            text.replace(at, what.size(), by);
        }
        return text;
    }
};

TEST_F(TheWords, OfTheOverview) {
    EXPECT_EQ(R"(Overview
Is paging alive?
Paging is not alive: no engine is running.
As of | 2001-01-08 10:00:00 UTC
Engine | not running
Oldest first page that waits | none
Heartbeat | reckoned once; in a minute again, reckoned 2001-01-08 10:00:00 UTC; nobody outside is told, since the site has no [heartbeat]
Nodes
Node | State | Process | Term | Leads
east | gone | web1, process 7 | 0 | -
west | not running | - | 0 | -
Lines
Line | Health | Doing | Since | Pages | Last sent | Device | Change
north | well | idle | 2001-01-08 09:59:00 UTC | 0 | - | - | [/pause][form][N][line][north]Pause north
south | sick since 2001-01-08 09:59:30: its device is missing | not served | - | 0 | - | - | [/pause][form][N][line][south]Pause south
Pending pages
Pending: 1
Alarm | Group | Pager | State | Tries | Queued | Due (computed) | Line
[/alarm?number=N]N | ops/1 | duty | pending | 0 of 6 | 2001-01-08 10:00:00 UTC | 2001-01-08 10:00:00 UTC | -
What failed
The last sendings that failed
Call | At | Alarm | Pager | Line | Outcome | Reason | Meaning, remedy
[/call?send=1]Call 1 | 2001-01-08 10:00:20 UTC | [/alarm?number=N]N | duty | north | not sent | dialling failed: BUSY | dialling failed: busy, no answer, no carrier or no dial tone. Is the telephone line plugged in, and the dial command of the port right?
[/failed]All that failed
Alarms
The last alarms
Alarm | Raised | Severity | Group | State | Text
[/alarm?number=N]N | 2001-01-08 10:00:00 UTC | major | ops/1 | new | Disk full
[/alarms]All alarms
)",
              Heard("/"));
}

TEST_F(TheWords, OfTheOverviewWhereAnAlarmIsLeftLying) {
    sleep(600);
    Get("/");
    sleep(61);
    EXPECT_THAT(
        Heard("/"),
        HasSubstr(
            "Heartbeat | not all is as it should be, reckoned 2001-01-08 10:11:01 UTC; nobody "
            "outside is told, since the site has no [heartbeat]\nalarm [/alarm?number=N]N: "
            "it hasn&#39;t been taken up\n"));
}

TEST_F(TheWords, OfAnAlarm) {
    EXPECT_EQ(R"(Alarm N
Disk full
[/acknowledge][form][N][alarm][N]Comment [comment]
Acknowledge
[/withdraw][form][N][alarm][N]Withdraw: it is over
State | [status]new
Severity | major
Group | ops/1
Server | web1
Raised | 2001-01-08 10:00:00 UTC
What became of it
In order of time
At | Pager | What | More
2001-01-08 10:00:00 UTC | - | raised | -
2001-01-08 10:00:00 UTC | duty | queued | -
2001-01-08 10:00:20 UTC | duty | not sent | 20 s, north: dialling failed: BUSY
Calls
Each with its dialogue
Call | At | Pager | Line | Took | Outcome | Reason
[/call?send=1]Call 1 | 2001-01-08 10:00:20 UTC | duty | north | 20 s | not sent | dialling failed: BUSY
)",
              Heard("/alarm?number=" + number));
}

TEST_F(TheWords, OfAnAlarmThatIsAcknowledged) {
    Send("/acknowledge", "alarm=" + number + "&comment=coming");
    EXPECT_EQ(R"(Alarm N
Disk full
[/withdraw][form][N][alarm][N]Withdraw: it is over
State | [status]acknowledged
Severity | major
Group | ops/1
Server | web1
Raised | 2001-01-08 10:00:00 UTC
What became of it
In order of time
At | Pager | What | More
2001-01-08 10:00:00 UTC | - | raised | -
2001-01-08 10:00:00 UTC | duty | queued | -
2001-01-08 10:00:00 UTC | - | acknowledged | by maria: coming
2001-01-08 10:00:20 UTC | duty | not sent | 20 s, north: dialling failed: BUSY
Calls
Each with its dialogue
Call | At | Pager | Line | Took | Outcome | Reason
[/call?send=1]Call 1 | 2001-01-08 10:00:20 UTC | duty | north | 20 s | not sent | dialling failed: BUSY
Who did what
The trail
At | Who | What | Comment
2001-01-08 10:00:00 UTC | maria | acknowledged | coming
)",
              Heard("/alarm?number=" + number));
}

TEST_F(TheWords, OfPendingPages) {
    EXPECT_EQ(R"(Pending pages
[/pages][search]Group, or PLANT/* [group]
Pager [pager]any[duty]duty[boss][selected]boss
State [state][selected]any[pending]pending[waiting]waiting[outcome unknown]outcome unknown
Since [since]
Until [until]
Search
[/pages]Show all
Nothing fits this search.
)",
              Heard("/pages?pager=boss"));
    EXPECT_EQ(R"(Pending pages
[/pages][search]Group, or PLANT/* [group]
Pager [pager][selected]any[duty]duty[boss]boss
State [state][selected]any[pending]pending[waiting]waiting[outcome unknown]outcome unknown
Since [since]
Until [until]
Search
Pending: 1
Alarm | Group | Pager | State | Tries | Queued | Due (computed) | Line
[/alarm?number=N]N | ops/1 | duty | pending | 0 of 6 | 2001-01-08 10:00:00 UTC | 2001-01-08 10:00:00 UTC | -
)",
              Heard("/pages"));
}

TEST_F(TheWords, OfWhatFailed) {
    EXPECT_EQ(R"(What failed
[/failed][search]Group, or PLANT/* [group]
Pager [pager][selected]any[duty]duty[boss]boss
Since [since]
Until [until]
Search
Sendings
Sendings that failed
Call | At | Alarm | Pager | Line | Outcome | Reason | Meaning, remedy
[/call?send=1]Call 1 | 2001-01-08 10:00:20 UTC | [/alarm?number=N]N | duty | north | not sent | dialling failed: BUSY | dialling failed: busy, no answer, no carrier or no dial tone. Is the telephone line plugged in, and the dial command of the port right?
Alarms
There are no such alarms.
[/alarms?state=off%20limit]All of these alarms
)",
              Heard("/failed"));
}

TEST_F(TheWords, OfAlarms) {
    EXPECT_EQ(R"(Alarms
[/alarms][search]Group, or PLANT/* [group]
Pager [pager][selected]any[duty]duty[boss]boss
State [state]any[new][selected]new[being paged]being paged[acknowledged]acknowledged[resolved]resolved[off limit]off limit[done]done
Since [since]
Until [until]
Search
[/alarms]Show all
Alarms, the last first
Alarm | Raised | Severity | Group | State | Text
[/alarm?number=N]N | 2001-01-08 10:00:00 UTC | major | ops/1 | new | Disk full
)",
              Heard("/alarms?state=new"));
}

TEST_F(TheWords, OfHours) {
    EXPECT_EQ(R"(Hours
office
Pagers: duty
Hours &quot;office&quot;: x where a page may leave, a dot where none does
Day | Hours | From 0, 8 and 16 on
mon | 8-16 | ........ xxxxxxxx ........
tue | none | ........ ........ ........
wed | none | ........ ........ ........
thu | none | ........ ........ ........
fri | none | ........ ........ ........
sat | none | ........ ........ ........
sun | none | ........ ........ ........
)",
              Heard("/hours"));
}

TEST_F(TheWords, OfTests) {
    EXPECT_EQ(R"(Tests
The running engine does it, behind the page that is on the line.
[/test-page][form][N]Send a test page
It leaves at once, whatever the pager's hours are.
Pager [pager][duty]duty[boss]boss
Line [line]any that its pages may go by[north]north[south]south
Send
[/test-call][form][N]Try a line
It dials a number, and hangs up when it is answered. Nobody is paged.
Line [line][north]north[south]south
Number, whole, with the digit for an outside line [number]
Dial
)",
              Heard("/tests"));
}

TEST_F(TheWords, OfATest) {
    Send("/test-page", "pager=duty&line=north");
    EXPECT_EQ(R"(Test 1
[status]Not done yet. A page, or a call, takes up to some minutes; without an engine that runs, nobody does it.
[/tests]Another test
)",
              Heard("/test?number=1"));
    AnswerTestPage(connection, 1, {0, ""});
    EXPECT_EQ(R"(Test 1
[status]sent
[/tests]Another test
)",
              Heard("/test?number=1"));
    AnswerTestPage(connection, 1, {6, ""});
    EXPECT_EQ(R"(Test 1
[status]dialling failed: busy, no answer, no carrier or no dial tone (result 6)
Is the telephone line plugged in, and the dial command of the port right?
[/tests]Another test
)",
              Heard("/test?number=1"));
    AnswerTestPage(connection, 1, {0, "CONNECT 2400"});
    EXPECT_EQ(R"(Test 1
[status]connected, and hung up: CONNECT 2400
[/tests]Another test
)",
              Heard("/test?number=1"));
    AnswerTestPage(connection, 1, {1, "BUSY"});
    EXPECT_EQ(R"(Test 1
[status]not connected: BUSY
[/tests]Another test
)",
              Heard("/test?number=1"));
}

TEST_F(TheWords, OfTheTrail) {
    EXPECT_EQ(R"(Trail
What people, and programs in their name, have done.
Nobody has done anything yet.
)",
              Heard("/trail"));
    Send("/pause", "line=north");
    EXPECT_EQ(R"(Trail
What people, and programs in their name, have done.
The last first
At | Who | What | Alarm | Note
2001-01-08 10:00:00 UTC | maria | line paused | - | north
)",
              Heard("/trail"));
}

TEST_F(TheWords, OfACall) {
    EXPECT_EQ(R"(Call 1
Alarm | [/alarm?number=N]N
Pager | duty
Line | north
Ended | 2001-01-08 10:00:20 UTC
Took | 20 s
Outcome | not sent
Reason | dialling failed: BUSY
This host has no trace of this line: it lies on the host whose modem dialled.
)",
              Heard("/call?send=1"));
}

TEST_F(TheWords, OfThoseThatAreOfNoPage) {
    EXPECT_EQ(R"(Not found
[alert]There is nothing of this name.
)",
              Heard("/nothing"));
    EXPECT_EQ(R"(Sign in
[/sign-in]Token [token]
Sign in
)",
              Heard("/sign-in"));
}

}  // namespace
}  // namespace host
