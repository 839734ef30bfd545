// A call's dialogue and picture in the browser, from the trace of its line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/lines/line_folder.h"
#include "host/store/tables/sends.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/recorded_trace.h"
#include "tests/unit/host/web_fixture.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class TheCall : public WebTest {
 protected:
    TheCall() {
        SignIn("look");
        WriteEvent(978948000, "duty", 2, 0, "OPS/7");
        Execute(
            "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group, severity,"
            " timestamp) VALUES ('978948000', '2', '0', 'OPS/7', '1', '978948000')");
        RecordSend(connection, {kNow + 17, 17, "978948000", "duty", "north",
                                TracedPage::Outcome::kNotSent, 6, "dialling failed: BUSY"});
    }
    static std::string AtTheAlarmsTime(std::string trace) {
        const std::string other = "01/01/70 / 00:00:00";
        for (size_t at = 0; (at = trace.find(other)) != std::string::npos;) {
            trace.replace(at, other.size(), "01/08/01 / 10:00:00");
        }
        return trace;
    }
    static std::string Traced(const std::string& pager = "duty") {
        TraceWriter trace;
        trace.Begin(pager).Pass(2).Message().Say("Before Dial").Say("OUT: ATDT1< d>!!!!");
        trace.Say("WaitString( int 7, CString CONNECT, DWORD 120000, BOOL 1 ) L:%d %s").Pass(9);
        trace.Say("WaitString [modemsay=BUSY] L:%d").Say("Modem FAILURE: BUSY");
        trace.Say("WaitString() == 0 L:%d %").Say("Dialing fails!").Pass(6).End();
        return AtTheAlarmsTime(trace.Text());
    }
    void WriteTrace(const std::string& text, const std::string& behind = "") {
        const std::string line = LineFolder(database, "north");
        std::filesystem::create_directories(line);
        WriteFile(line + "/" + kTraceFile + behind, text);
    }
};

TEST_F(TheCall, IsLinkedFromItsAlarm) {
    EXPECT_THAT(Get("/alarm?number=978948000").body,
                AllOf(HasSubstr("<a href=\"/call?send=1\">Call 1</a>"),
                      HasSubstr("dialling failed: BUSY")));
}

TEST_F(TheCall, IsShownAsADialogueAndAsAPicture) {
    WriteTrace(Traced("night") + Traced());
    EXPECT_THAT(Get("/call?send=1").body,
                AllOf(HasSubstr("&gt; ATDT1&lt;cr&gt;"), HasSubstr("&lt; BUSY"),
                      HasSubstr("<img src=\"/picture?send=1\" alt=\""),
                      HasSubstr("&quot;duty&quot;"), Not(HasSubstr("night"))));
    const WebAnswer picture = Get("/picture?send=1");
    EXPECT_EQ(200, picture.status);
    EXPECT_STREQ("image/svg+xml; charset=utf-8", picture.type);
    EXPECT_THAT(picture.body, AllOf(HasSubstr("<svg"), HasSubstr("BUSY")));
}

TEST_F(TheCall, IsFoundInATraceThatWasMovedAside) {
    WriteTrace("");
    WriteTrace(Traced(), ".3");
    EXPECT_THAT(Get("/call?send=1").body, HasSubstr("&lt; BUSY"));
}

TEST_F(TheCall, IsNotAnotherOfThisPager) {
    Execute("UPDATE Host_Sends SET at = at + 3600");
    WriteTrace(Traced());
    EXPECT_THAT(Get("/call?send=1").body, HasSubstr("The trace of this line doesn&#39;t have it"));
    EXPECT_EQ(404, Get("/picture?send=1").status);
}

TEST_F(TheCall, IsSaidToBeElsewhereWhereThisHostHasNoTrace) {
    EXPECT_THAT(Get("/call?send=1").body, HasSubstr("This host has no trace of this line"));
    EXPECT_EQ(404, Get("/picture?send=1").status);
}

TEST_F(TheCall, IsNoneOfAnotherNumber) {
    for (const char* number : {"2", "0", "-1", "x", ""}) {
        EXPECT_EQ(404, Get(std::string("/call?send=") + number).status);
        EXPECT_EQ(404, Get(std::string("/picture?send=") + number).status);
    }
}

TEST_F(TheCall, ShowsWhatAFarEndSaysAsText) {
    TraceWriter trace;
    trace.Begin("duty").Pass(2).Message().Say("OUT: ATDT1< d>!!!!");
    trace.Say("WaitString( int 7, CString CONNECT, DWORD 120000, BOOL 1 ) L:%d %s").Pass(9);
    trace.Say("WaitString [modemsay=<script>\"x\"] L:%d").Say("WaitString() == 0 L:%d %");
    trace.Say("Dialing fails!").Pass(6).End();
    WriteTrace(AtTheAlarmsTime(trace.Text()));
    EXPECT_THAT(Get("/call?send=1").body,
                AllOf(HasSubstr("&lt;script&gt;"), Not(HasSubstr("<script>"))));
    EXPECT_THAT(Get("/picture?send=1").body, Not(HasSubstr("<script>")));
}

}  // namespace
}  // namespace host
