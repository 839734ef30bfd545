// Alarms in the alarm log.
#include "host/store/tables/alarm_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "host/alarms/mending.h"
#include "host/store/tables/states.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int32_t kLast = std::numeric_limits<int32_t>::max();

class Alarms : public ServiceTest {
 protected:
    int32_t Raise(time_t now) {
        return RaiseAlarm(connection, {"PLANT/1", "2", "pumps", "x"}, now);
    }

    static std::vector<std::string> Numbers(const std::vector<Alarm>& alarms) {
        std::vector<std::string> numbers;
        for (const Alarm& alarm : alarms) {
            numbers.push_back(alarm.number);
        }
        return numbers;
    }
};

TEST_F(Alarms, AreNumberedByTheirTime) {
    EXPECT_EQ(978948000, Raise(978948000));
    EXPECT_EQ(978949000, Raise(978949000));
}

TEST_F(Alarms, TakeTheNextNumberThatIsFree) {
    EXPECT_EQ(978948000, Raise(978948000));
    EXPECT_EQ(978948001, Raise(978948000));
    AddAlarm("978948002");
    EXPECT_EQ(978948003, Raise(978948000));
    EXPECT_EQ(978948004, Raise(978948001));
}

TEST_F(Alarms, OfABurstTakeTheNumberBehindTheLast) {
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(978948000 + i, Raise(978948000));
    }
    Execute("DELETE FROM AlarmLog WHERE alarmlogID = '978948020'");
    EXPECT_EQ(978948040, Raise(978948000)) << "no number is looked at that is surely used";
    AddAlarm("979999999");
    EXPECT_EQ(978948020, Raise(978948000)) << "one from elsewhere is no burst";
    EXPECT_EQ(978947999, Raise(978947999)) << "nor are they behind a clock that was set back";
}

TEST_F(Alarms, KeepTo32Bits) {
    EXPECT_EQ(kLast, Raise(kLast));
    EXPECT_EQ(1, Raise(kLast));
    EXPECT_EQ(2, Raise(kLast));
    AddAlarm("4");
    EXPECT_EQ(3, Raise(0));
    EXPECT_EQ(5, Raise(-7));
}

TEST_F(Alarms, AreNumberedFromOneWhereTheClockHasNoTime) {
    EXPECT_EQ(1, Raise(0));
    EXPECT_EQ(2, Raise(-7));
}

TEST_F(Alarms, AreFoundAsTheyWereRaised) {
    const NewAlarm raised{"PLANT/\"1'", "2", "%s", std::string(65536, 'x') + ";--"};
    const int32_t number = RaiseAlarm(connection, raised, kNow);
    const std::optional<Alarm> alarm = FindAlarm(connection, std::to_string(number));
    ASSERT_TRUE(alarm);
    EXPECT_EQ(raised.group, alarm->group);
    EXPECT_EQ("2", alarm->severity);
    EXPECT_EQ("%s", alarm->server);
    EXPECT_EQ(raised.details, alarm->details);
    EXPECT_EQ("0", alarm->state);
    EXPECT_EQ(kNow, alarm->raised);
    EXPECT_FALSE(alarm->acknowledged);
}

// The library reads every one of these as a number.
TEST_F(Alarms, HaveAllNumbersOfTheLibrary) {
    Raise(kNow);
    for (const char* column : {"acktime", "alarmack", "broadcaststate", "eventlogstate",
                               "execstate", "mailstate", "monitoronly", "stationstate"}) {
        EXPECT_THAT(OpenTable(database, "AlarmLog").ReadAll(column), ElementsAre("0")) << column;
    }
}

TEST_F(Alarms, AreOfTheGroupThatTheirNameSaysWhereTheyHaveNone) {
    Execute("INSERT INTO AlarmLog (alarmlogID, alarmName) VALUES ('7', 'PLANT/9')");
    EXPECT_EQ("PLANT/9", FindAlarm(connection, "7")->group);
    Execute("UPDATE AlarmLog SET alarm_group = 'QUAY/1'");
    EXPECT_EQ("QUAY/1", FindAlarm(connection, "7")->group);
}

TEST_F(Alarms, AreFoundWhereThereIsOneOfTheirNumber) {
    AddAlarm("7");
    AddAlarm("8");
    AddAlarm("8");
    EXPECT_TRUE(FindAlarm(connection, "7"));
    EXPECT_FALSE(FindAlarm(connection, "8"));
    EXPECT_FALSE(FindAlarm(connection, "9"));
    EXPECT_FALSE(FindAlarm(connection, "07"));
}

TEST_F(Alarms, AreAcknowledgedOnce) {
    AddAlarm("7", "2");
    EXPECT_EQ(Acknowledged::kUnknown, AcknowledgeAlarm(connection, 8, kNow));
    EXPECT_EQ(Acknowledged::kNow, AcknowledgeAlarm(connection, 7, kNow));
    EXPECT_EQ(Acknowledged::kBefore, AcknowledgeAlarm(connection, 7, kNow + 60));
    EXPECT_THAT(Rows("alarmack || '/' || acktime || '/' || pagerstate FROM AlarmLog"),
                ElementsAre("1/978948000/1"));
    EXPECT_TRUE(FindAlarm(connection, "7")->acknowledged);
}

TEST_F(Alarms, AreNewOpenOrOver) {
    const std::vector<std::string> states = {"", "0", "1", "2", "3", "4"};
    for (size_t i = 0; i < states.size(); ++i) {
        AddAlarm(std::to_string(i), states[i]);
    }
    EXPECT_THAT(Numbers(NewAlarms(connection)), ElementsAre("0", "1"));
    EXPECT_THAT(Numbers(OpenAlarms(connection)), ElementsAre("0", "1", "3"));
    AcknowledgeAlarm(connection, 3, kNow);
    EXPECT_THAT(Numbers(OpenAlarms(connection)), ElementsAre("0", "1"));
    EXPECT_THAT(Numbers(LastAlarms(connection, 2)), ElementsAre("4", "5"));
    EXPECT_THAT(Numbers(LastAlarms(connection, 9)), ElementsAre("0", "1", "2", "3", "4", "5"));
    EXPECT_THAT(Numbers(LastAlarms(connection, 0)), IsEmpty());
}

TEST(AlarmStates, HaveWords) {
    EXPECT_EQ("new", StateWord(""));
    EXPECT_EQ("new", StateWord("0"));
    EXPECT_EQ("acknowledged", StateWord("1"));
    EXPECT_EQ("being paged", StateWord("2"));
    EXPECT_EQ("off limit", StateWord("3"));
    EXPECT_EQ("done", StateWord("4"));
    EXPECT_EQ("state 22", StateWord("22"));
}

// --- Rows of other programs.

TEST(MendedAlarm, HasItsSeverityAsANumber) {
    const std::pair<const char*, const char*> kCases[] = {
        {"1", "1"},  {"5", "5"},           {"critical", "1"}, {"Minor", "3"},   {"UNKNOWN", "5"},
        {" 2", "2"}, {"4.0", "4"},         {"0", "1"},        {"", "1"},        {"urgent", "1"},
        {"6", "5"},  {"99999999999", "5"}, {"-1", "5"},       {"majority", "1"}};
    for (const auto& [written, mended] : kCases) {
        Alarm alarm;
        alarm.severity = written;
        EXPECT_EQ(mended, Mended(alarm, Encoding::kLatin1).severity) << written;
    }
}

TEST_F(Alarms, AreMendedInTheirRowOnly) {
    for (const char* number : {"7", "8"}) {
        Statement(connection,
                  "INSERT INTO AlarmLog (alarmlogID, alarmName, severity, server, details)"
                  " VALUES (?, 'n\xC3\xBC', 'minor', 's\xC3\xBC', 'd\xC3\xBC')")
            .Bind(number)
            .Run();
    }
    const Alarm now = MendAlarm(connection, *FindAlarm(connection, "7"), Encoding::kLatin1);
    EXPECT_EQ("n\xFC s\xFC d\xFC 3",
              now.group + " " + now.server + " " + now.details + " " + now.severity);
    EXPECT_THAT(Rows("alarm_group || ' ' || server || ' ' || details || ' ' || severity FROM"
                     " AlarmLog ORDER BY row_id"),
                ElementsAre("n\xFC s\xFC d\xFC 3", " s\xC3\xBC d\xC3\xBC minor"));
}

TEST_F(Alarms, ThatNeedNoMendingAreNotWritten) {
    Raise(978948000);
    const int64_t before = connection.TotalChanges();
    const Alarm alarm = *FindAlarm(connection, "978948000");
    EXPECT_EQ("x", MendAlarm(connection, alarm, Encoding::kLatin1).details);
    EXPECT_EQ(before, connection.TotalChanges());
}

}  // namespace
}  // namespace host
