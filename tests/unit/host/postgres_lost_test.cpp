// A connection that is lost at any moment of a page's life: before each statement, and behind it
// while its answer is on the way. What is written comes to the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/pages/backlog.h"
#include "host/pages/page_requests.h"
#include "host/pages/takeover.h"
#include "host/store/line_view.h"
#include "host/store/once.h"
#include "host/store/patience.h"
#include "host/store/postgres_session.h"
#include "host/store/tables/history.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/page_requests.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/test_pages.h"
#include "tests/support/own_postgres.h"
#include "tests/support/postgres_proxy.h"
#include "tests/unit/host/intake_fixture.h"

namespace host {
namespace {

using test_support::PostgresProxy;
using ::testing::HasSubstr;
using Fault = PostgresProxy::Fault;

// In virtual time, for the pauses; and in that of proxy and server.
void Pause() {
    constexpr timespec kMoment{0, 5'000'000};
    poll(nullptr, 0, 50);
    syscall(SYS_nanosleep, &kMoment, nullptr);
}

// Repeats what a node, a line or a person at a terminal would, until it goes through.
template <typename Work>
void Repeat(Work work) {
    constexpr int kMost = 200;
    for (int tries = 0; tries < kMost; ++tries) {
        try {
            return work();
        } catch (const StoreAway&) {
            Pause();
        }
    }
    FAIL() << "never went through";
}

class ALostConnection : public ServiceTest {
 protected:
    ALostConnection() {
        WaitForTables([](int) { Pause(); });
        SetLineView(LineView{"north"});
        Execute("INSERT INTO Host_Routes VALUES (1, 'ops', '')");
        for (const char* pager : {"a", "b"}) {
            AddPager(pager);
            Execute(std::string("INSERT INTO Host_RoutePagers VALUES (1, ") +
                    (*pager == 'a' ? "0" : "1") + ", '" + pager + "')");
        }
        Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north'), ('south')");
    }
    ~ALostConnection() override {
        SetLineView({});
        WaitForTables({});
    }

    std::string ByProxy() const {
        std::string name = database;
        return name.replace(name.find("?host=") + 6, std::string::npos, proxy.Folder().string());
    }

    // An alarm to two pagers: one is sent, one moves to another line and is given up.
    void LivesOver(const std::string& name) {
        std::optional<Lease> lease;
        Repeat([&] { lease.emplace(name); });
        Connection& site = lease->Database();
        int32_t alarm = 0;
        Repeat([&] { alarm = RaiseAlarm(site, {"ops", "1", "pumps", "x"}, kNow); });
        const std::string number = std::to_string(alarm);
        Intake intake(Encoding::kLatin1, log);
        Repeat([&] { intake.Run(site); });
        Repeat([&] {
            for (const Delivery& delivery : OpenDeliveries(site)) {
                GiveToLine(site, delivery, "north");
            }
        });
        HandOver hand_over(
            "north", Encoding::kLatin1,
            [&](const Alarm& /*alarm*/, const Delivery& delivery) {
                Write(name, alarm, delivery.pager.c_str(), 2, 0);
                return 1;
            },
            log);
        TracedPage traced;
        traced.alarm = "ops";
        for (const char* pager : {"a", "b"}) {
            Repeat([&] { hand_over.Run(site); });
            traced.pager = pager;
            hand_over.Saw(traced);
        }
        Repeat([&] { NoteEngineStart(site, "north"); });
        Repeat([&] { SetDoing(site, "north", "page to a", kNow); });
        // The library tries the first, and is done with it.
        Rewrite(name, alarm, "a", 2, 1);
        Rewrite(name, alarm, "a", 4, 1);
        Once recording;
        Repeat([&] {
            recording.Run(site, [&] {
                RecordSend(site,
                           {kNow, 20, number, "a", "north", TracedPage::Outcome::kSent, 0, ""});
            });
        });
        Repeat([&] { SetHealth(site, "north", Health::kSick, "no dial tone", kNow); });
        Repeat([&] { TakeUnboundPages(site, "north", "no dial tone"); });
        Repeat([&] {
            for (const Delivery& delivery : OpenDeliveries(site)) {
                GiveToLine(site, delivery, "south");
            }
        });
        const PageRequest request{0, {number, "ops", "b"}, "", "cancelled by ann"};
        Repeat([&] { AskForPage(site, request); });
        Repeat([&] {
            for (const PageRequest& open : OpenRequests(site)) {
                CarryOut(site, open);
            }
        });
        Repeat([&] { MendAlarmStates(site); });
        Repeat([&] { EndFinishedAlarms(site); });
        Repeat([&] { AcknowledgeAlarm(site, alarm, kNow); });
    }

    static void Write(const std::string& name, int32_t alarm, const char* pager, int32_t state,
                      int32_t tries) {
        ASSERT_EQ(0, OpenTable(name, "AlarmFwd_PagerEvents")
                         .Insert({{"AlmLogID", alarm},
                                  {"AlmGroup", "ops"},
                                  {"PagerDescr", pager},
                                  {"PagerState", state},
                                  {"PagerRetries", tries}}));
    }
    static void Rewrite(const std::string& name, int32_t alarm, const char* pager, int32_t state,
                        int32_t tries) {
        OpenTable(name, "AlarmFwd_PagerEvents")
            .Delete("WHERE AlmGroup = \"ops\" AND AlmLogID = " + std::to_string(alarm) +
                    " AND PagerDescr = \"" + pager + "\"");
        Write(name, alarm, pager, state, tries);
    }

    // All that a site has come to, but for the numbers of rows; and a page that is queued already
    // is as good as one that is now.
    std::vector<std::string> Site() {
        std::vector<std::string> rows;
        for (const char* what :
             {"alarmlogID || alarmack || pagerstate || alarmName FROM AlarmLog",
              "AlmLogID || PagerDescr || PagerState || PagerRetries || line"
              " FROM AlarmFwd_PagerEvents",
              "alarm || place || pager || CASE WHEN answer IN (1, 3) THEN 'queued' END || line || "
              "tries"
              " FROM Host_Deliveries ORDER BY place",
              "change || alarm || pager || state || tries || line || note FROM Host_History"
              " WHERE change <> 'engine starts' ORDER BY row_id",
              "alarm || pager || port || outcome FROM Host_Sends ORDER BY row_id",
              "line || health || doing || reason FROM Host_Lines ORDER BY line",
              "pager || note FROM Host_PageRequests"}) {
            for (std::string& row : Rows(what)) {
                rows.push_back(std::move(row));
            }
        }
        return rows;
    }
    void Empty() {
        Execute(
            "DELETE FROM AlarmLog; DELETE FROM AlarmFwd_PagerEvents; DELETE FROM Host_Deliveries;"
            " DELETE FROM Host_History; DELETE FROM Host_Sends; DELETE FROM Host_Lines;"
            " DELETE FROM Host_PageRequests");
    }

    // The site that is come to where each statement in turn is lost so.
    void ExpectNoDifference(Fault fault) {
        LivesOver(ByProxy());
        const int statements = proxy.Statements();
        const std::vector<std::string> undisturbed = Site();
        EXPECT_GT(statements, 60);
        EXPECT_GT(undisturbed.size(), 8U);
        for (int statement = 1; statement <= statements; ++statement) {
            CloseDatabases();
            Empty();
            proxy.Plan(fault, statement);
            LivesOver(ByProxy());
            EXPECT_TRUE(proxy.HasFailed()) << statement;
            EXPECT_EQ(undisturbed, Site()) << "at statement " << statement;
        }
    }

    PostgresProxy proxy{test_support::TheServer().Folder()};
};

TEST_F(ALostConnection, BeforeAnyStatementOfAPagesLifeChangesNothing) {
    ExpectNoDifference(Fault::kCutBefore);
}

TEST_F(ALostConnection, BehindAnyStatementOfAPagesLifeChangesNothing) {
    ExpectNoDifference(Fault::kCutBehind);
}

// A node that takes over what another has left behind: two pages that a library had, of which one
// was on the line, and one that was still to be handed over.
class ALostTakeover : public ALostConnection {
 protected:
    void LeavePages() {
        Empty();
        Execute("DELETE FROM Host_Nodes");
        west = TakeLease(connection, "west", "a process", std::chrono::seconds(0)).value();
        ClaimLine(connection, "north", "west");
        AddAlarm("7", "2");
        for (const char* pager : {"a", "b", "c"}) {
            AddDelivery("7", *pager - 'a', pager);
            GiveToLine(connection, DeliveriesOf(connection, "7").back(), "north");
        }
        for (const char* pager : {"a", "b"}) {
            WriteEvent(7, pager, 2, 0);
        }
        SetPageOnLine(connection, "north", {"7", "ops", "b"});
    }
    void TakeOverAndHaveAll(const std::string& name) {
        std::optional<Connection> site;
        Repeat([&] { site.emplace(name); });
        // A try whose commit took effect finds nothing to take any more.
        Repeat([&] { TakeOver(*site, "west", west.term); });
    }
    std::vector<std::string> All() {
        std::vector<std::string> all = Site();
        for (std::string& node : Rows("term || holder FROM Host_Nodes")) {
            all.push_back(std::move(node));
        }
        return all;
    }
    void ExpectTheSameOver(Fault fault) {
        LeavePages();
        const std::vector<std::string> left = All();
        TakeOverAndHaveAll(ByProxy());
        const int statements = proxy.Statements();
        const std::vector<std::string> undisturbed = All();
        EXPECT_GT(statements, 15);
        EXPECT_NE(left, undisturbed);
        for (int statement = 1; statement <= statements; ++statement) {
            LeavePages();
            proxy.Plan(fault, statement);
            TakeOverAndHaveAll(ByProxy());
            EXPECT_TRUE(proxy.HasFailed()) << statement;
            EXPECT_EQ(undisturbed, All()) << "at statement " << statement;
        }
    }

    Tenure west;
};

TEST_F(ALostTakeover, BeforeAnyOfItsStatementsIsRepeated) {
    ExpectTheSameOver(Fault::kCutBefore);
}

TEST_F(ALostTakeover, BehindAnyOfItsStatementsIsWholeOrRepeated) {
    ExpectTheSameOver(Fault::kCutBehind);
}

// The server still has the session, and its right to write: both are ended.
TEST_F(ALostConnection, ThatOnlyStallsIsGivenUpAndItsTransactionEnded) {
    PostgresSession::LimitSilence(std::chrono::milliseconds(300));
    Connection site(ByProxy());
    {
        WriteTransaction transaction(site);
        WriteSetting(site, "a", "1");
        proxy.Plan(Fault::kStall, 1);
        try {
            WriteSetting(site, "b", "1");
            FAIL();
        } catch (const StoreAway& away) {
            EXPECT_THAT(away.what(), HasSubstr(": can't be reached (it says nothing any more)"));
            EXPECT_THAT(away.what(), HasSubstr(away.Outage()));
        }
    }
    WriteSetting(site, "c", "3");
    {
        WriteTransaction nobody_else_holds_the_right(connection);
        EXPECT_EQ("", ReadSetting(connection, "a"));
        EXPECT_EQ("3", ReadSetting(connection, "c"));
    }
    PostgresSession::LimitSilence(std::chrono::seconds(25));
}

TEST_F(ALostConnection, WithACommitIsInDoubtUntilTheServerIsBackAndThenKnown) {
    for (const auto& [fault, was_made] :
         {std::pair{Fault::kCutBefore, false}, std::pair{Fault::kCutBehind, true}}) {
        const bool took_effect = was_made;
        Connection site(ByProxy());
        std::optional<StoreInDoubt> doubt;
        {
            WriteTransaction transaction(site);
            WriteSetting(site, "a", took_effect ? "2" : "1");
            proxy.Plan(fault, 2);  // behind the question for the transaction's number
            proxy.RefuseOnceFailed(true);
            try {
                transaction.Commit();
                FAIL();
            } catch (const StoreInDoubt& in_doubt) {
                doubt.emplace(in_doubt);
                EXPECT_THAT(in_doubt.what(), HasSubstr("whether a change was made isn't known"));
            }
        }
        EXPECT_THROW(site.TookEffect(*doubt), StoreAway);
        proxy.RefuseOnceFailed(false);
        Repeat([&] { EXPECT_EQ(took_effect, site.TookEffect(*doubt)); });
        EXPECT_EQ(took_effect ? "2" : "", ReadSetting(connection, "a"));
    }
}

// As a file's would, while the library waits; and no answer is given before it is known.
TEST_F(ALostConnection, WithACommitInDoubtHasTheLibraryWait) {
    int waited = 0;
    WaitForTables([&](int) {
        ++waited;
        proxy.RefuseOnceFailed(false);
        Pause();
    });
    const std::string name = ByProxy();
    OpenTable events(name, "AlarmFwd_PagerEvents");
    proxy.RefuseOnceFailed(true);
    proxy.Plan(Fault::kCutBehind, 5);  // begin, insert, history, number, commit
    EXPECT_EQ(0,
              events.Insert(
                  {{"AlmLogID", 7}, {"AlmGroup", "ops"}, {"PagerDescr", "a"}, {"PagerState", 2}}));
    EXPECT_TRUE(proxy.HasFailed());
    EXPECT_GT(waited, 0);
    EXPECT_THAT(Rows("PagerDescr FROM AlarmFwd_PagerEvents"), testing::ElementsAre("a"));
    EXPECT_THAT(faults, testing::IsEmpty());
}

// Whoever asks often hears so at once, and nobody waits.
TEST_F(ALostConnection, IsTriedWithPausesAndToldInOneWording) {
    Connection site(ByProxy());
    proxy.Refuse(true);
    std::string outage;
    std::set<std::string> reasons;
    for (int asked = 0; asked < 20; ++asked) {
        try {
            ReadSetting(site, "a");
            FAIL();
        } catch (const StoreAway& away) {
            EXPECT_TRUE(outage.empty() || outage == away.Outage());
            outage = away.Outage();
            reasons.insert(away.what());
        }
    }
    EXPECT_THAT(outage, testing::EndsWith(": can't be reached"));
    EXPECT_EQ(2U, reasons.size()) << "the loss, and a try that failed";
    proxy.Refuse(false);
    Repeat([&] { EXPECT_EQ("", ReadSetting(site, "a")); });
}

}  // namespace
}  // namespace host
