// The roles of `init --print` on a real server: each can do its work, and no more.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/alarms/raising.h"
#include "host/lines/pausing.h"
#include "host/node/intake.h"
#include "host/pages/backlog.h"
#include "host/pages/history.h"
#include "host/pages/page_owner.h"
#include "host/pages/page_requests.h"
#include "host/site/site_tables.h"
#include "host/store/line_view.h"
#include "host/store/pool.h"
#include "host/store/rights.h"
#include "host/store/tables/history.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/page_requests.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/test_pages.h"
#include "host/web/token.h"
#include "tests/support/own_postgres.h"
#include "tests/unit/host/intake_fixture.h"

namespace host {
namespace {

using test_support::OwnPostgres;
using ::testing::HasSubstr;

class AnAdministratorsSite : public ::testing::Test {
 protected:
    AnAdministratorsSite() {
        setenv("PAGERFWD_STATE", std::filesystem::current_path().c_str(), 1);
        OwnPostgres::Ask(database, SchemaForPostgres());
        for (const char* role : {"node", "line", "web", "reader"}) {
            const std::string user = std::string("a_") + role;
            OwnPostgres::Ask(database, "DO 'BEGIN CREATE ROLE " + user +
                                           " LOGIN; EXCEPTION WHEN duplicate_object THEN NULL;"
                                           " END'; GRANT pagerfwd_" +
                                           role + " TO " + user);
        }
        OwnPostgres::Ask(database,
                         "INSERT INTO Host_Routes VALUES (1, 'ops', '');"
                         "INSERT INTO Host_RoutePagers VALUES (1, 0, 'a'), (1, 1, 'b');"
                         "INSERT INTO AlarmFwd_PagerSetting (description, numretries, retrydelay)"
                         " VALUES ('a', '5', '45'), ('b', '5', '45');"
                         "INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north')");
    }
    ~AnAdministratorsSite() override {
        SetLineView({});
        CloseDatabases();
    }

    std::string As(const std::string& role) const {
        std::string name = database;
        return name.replace(name.find("pager@"), 5, "a_" + role);
    }

    // Why a user of the role may not.
    std::string Refusal(const std::string& role, const std::string& sql) const {
        try {
            Connection connection(As(role));
            connection.Execute(sql);
            return "";
        } catch (const StoreError& error) {
            return error.what();
        }
    }
    void ExpectRefused(const std::string& role, const std::vector<std::string>& statements) const {
        for (const std::string& sql : statements) {
            EXPECT_THAT(Refusal(role, sql), ::testing::AnyOf(HasSubstr("permission denied"),
                                                             HasSubstr("must be owner")))
                << role << ": " << sql;
        }
    }

    const test_support::TempDir folder;
    const pagersim::VirtualClock clock{978948000};
    const std::string database = test_support::TheServer().MakeDatabase();
    std::ostringstream said;
    OperatorLog log{said, true};
};

TEST_F(AnAdministratorsSite, IsCompleteAndItsRightsMayBeGivenAgain) {
    Connection connection(database);
    EXPECT_EQ(Made::kNothing, CreateTables(connection));
    Connection made(test_support::TheServer().MakeDatabase());
    CreateTables(made);
    for (const TableRights& rights : AllTables()) {
        EXPECT_EQ(made.ColumnsOf(rights.table), connection.ColumnsOf(rights.table));
        EXPECT_FALSE(made.ColumnsOf(rights.table).empty()) << rights.table;
    }
    const std::string schema = SchemaForPostgres();
    OwnPostgres::Ask(database, schema.substr(schema.rfind("BEGIN;\nDO")));
}

TEST_F(AnAdministratorsSite, LetsTheWebEndAnAlarmAndTellWhoHadAPageOfIt) {
    OwnPostgres::Ask(database, "INSERT INTO Host_Settings VALUES ('page resolved', '1')");
    Connection web(As("web"));
    Connection line(As("line"));
    Send send;
    send.alarm =
        std::to_string(RaiseAlarm(web, {"ops", "1", "pumps", "x", "icinga", "disk"}, 978948000));
    send.pager = "a";
    send.outcome = TracedPage::Outcome::kSent;
    RecordSend(line, send);
    WriteTransaction transaction(web);
    EXPECT_EQ(send.alarm, WithdrawBy(web, AlarmKey{"icinga", "disk"}, {"maria", 978948060}));
    transaction.Commit();
    EXPECT_EQ(1U, OpenDeliveries(web).size());
}

TEST_F(AnAdministratorsSite, LetsTheWebKnowTokensAndMakeNone) {
    Connection owner(database);
    WriteTransaction transaction(owner);
    const std::string token = MakeToken(owner, {"maria", "look", 0, 978948000});
    transaction.Commit();
    Connection web(As("web"));
    EXPECT_TRUE(TokenFor(web, token, 978948000));
    EXPECT_EQ(978948000, ReadTokens(web).at(0).used);
    ExpectRefused("web", {"INSERT INTO Host_Tokens VALUES ('x', 'manage', 0, 0, 0, 'x', 'x')",
                          "DELETE FROM Host_Tokens"});
}

TEST_F(AnAdministratorsSite, LetsEachRoleDoItsPartOfAPagesLife) {
    Connection web(As("web"));
    Connection node(As("node"));
    Lease line(As("line"));
    Connection& line_site = line.Database();
    RequireTables(web);
    const int32_t alarm = RaiseAlarm(web, {"ops", "1", "pumps", "x"}, 978948000);
    const std::string number = std::to_string(alarm);

    Intake(Encoding::kLatin1, log).Run(node);
    for (const Delivery& delivery : OpenDeliveries(node)) {
        GiveToLine(node, delivery, "north");
    }
    SetProcess(node, "north", 1);

    SetLineView(LineView{"north"});
    NoteEngineStart(line_site, "north");
    HandOver hand_over(
        "north", Encoding::kLatin1,
        [&](const Alarm&, const Delivery& delivery) {
            return OpenTable(As("line"), "AlarmFwd_PagerEvents")
                               .Insert({{"AlmLogID", alarm},
                                        {"AlmGroup", "ops"},
                                        {"PagerDescr", delivery.pager.c_str()},
                                        {"PagerState", 2}}) == 0
                       ? 1
                       : 0;
        },
        log);
    TracedPage traced;
    traced.alarm = "ops";
    for (const char* pager : {"a", "b"}) {
        hand_over.Run(line_site);
        traced.pager = pager;
        hand_over.Saw(traced);
    }
    OpenTable events(As("line"), "AlarmFwd_PagerEvents");
    EXPECT_EQ(1, events.Delete("WHERE AlmGroup = \"ops\" AND AlmLogID = " + number +
                               " AND PagerDescr = \"a\""));
    EXPECT_EQ(
        0, events.Insert(
               {{"AlmLogID", alarm}, {"AlmGroup", "ops"}, {"PagerDescr", "a"}, {"PagerState", 4}}));
    OpenTable alarms(As("line"), "AlarmLog");
    EXPECT_EQ(1, alarms.Set("WHERE alarmlogID = " + number, {{"pagerstate", 2}}));
    RecordSend(line_site, {978948000, 20, number, "a", "north", TracedPage::Outcome::kSent, 0, ""});
    SetDoing(line_site, "north", "idle", 978948000);

    EXPECT_TRUE(PauseLine(web, "north", true, {"maria", 978948000}));
    AskForPage(web, {0, {number, "ops", "b"}, "", "cancelled"});
    for (const PageRequest& request : OpenRequests(node)) {
        CarryOut(node, request);
    }
    TakeUnboundPages(node, "north", "paused");
    MendTexts(node);
    MendAlarmStates(node);
    EndFinishedAlarms(node);
    ForgetHistory(node, 1);
    EXPECT_EQ(Acknowledged::kNow, AcknowledgeAlarm(web, alarm, 978948001));

    Connection reader(As("reader"), Connection::Mode::kLook);
    EXPECT_EQ(1U, SendsOf(reader, number).size());
    EXPECT_EQ(2U, PagesOf(reader, number).size());
    EXPECT_EQ(1U, ReadLines(reader).size());
    EXPECT_EQ("1", FindAlarm(reader, number)->state);
}

TEST_F(AnAdministratorsSite, LetsTestPagesBeAskedForAndAnswered) {
    Lease web(As("web"));
    Lease node(As("node"));
    Lease line(As("line"));
    const int64_t asked = AskForTestPage(web.Database(), web.Owners(), "a", "");
    ASSERT_EQ(1U, AskedTestPages(node.Database(), node.Owners()).size());
    GiveTestPage(node.Database(), asked, "north");
    AnswerTestPage(line.Database(), asked, {0, ""});
    EXPECT_TRUE(TestPageAnswer(web.Database(), asked).has_value());
    ForgetTestPage(web.Database(), asked);
    EXPECT_THAT(AskedTestPages(node.Database(), node.Owners()), ::testing::IsEmpty());
}

TEST_F(AnAdministratorsSite, LetsNobodyDoMore) {
    ExpectRefused("reader", {"INSERT INTO AlarmLog (alarmlogID) VALUES ('1')",
                             "UPDATE AlarmLog SET pagerstate = '1'", "DELETE FROM Host_History",
                             "CREATE TABLE own (a int)", "SELECT hash FROM Host_Tokens"});
    ExpectRefused("web", {"DELETE FROM AlarmLog", "UPDATE AlarmFwd_PagerSetting SET pgnumber = '1'",
                          "INSERT INTO AlarmFwd_PagerEvents (AlmLogID) VALUES ('1')",
                          "UPDATE Host_Deliveries SET answer = 1",
                          "INSERT INTO Host_Tokens VALUES ('x', '', 0, 0, 0, '', '')",
                          "UPDATE AlarmFwd_COMProperties SET Init = 'x'", "DROP TABLE AlarmLog"});
    ExpectRefused("line",
                  {"INSERT INTO AlarmLog (alarmlogID) VALUES ('1')",
                   "UPDATE AlarmFwd_PagerSetting SET pgnumber = '1'", "DELETE FROM Host_History",
                   "DELETE FROM Host_Sends", "INSERT INTO Host_Routes VALUES (2, '*', '')",
                   ("INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
                    " VALUES ('1', 0, '', '', 0)")});
    ExpectRefused("node", {"INSERT INTO AlarmFwd_PagerSetting (description) VALUES ('x')",
                           "DELETE FROM AlarmLog", "INSERT INTO Host_Routes VALUES (2, '*', '')",
                           "UPDATE Host_Settings SET value = ''", "DROP TABLE AlarmLog",
                           "COMMENT ON TABLE Host_Settings IS '99'"});
}

}  // namespace
}  // namespace host
