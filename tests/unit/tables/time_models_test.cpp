// Time models, and the exported question whether a page may leave now.
#include "tables/time_models.h"

#include <pagerfwd/pagerfwd.h>

#include <cstdlib>
#include <ctime>

#include "sim/testing.h"
#include "tests/support/store_test.h"
#include "tests/unit/tables/records.h"

namespace {

using test_support::Call;
using test_support::MemoryStore;

constexpr char kHoursTable[] = "AlarmFwd_TMSetting";
constexpr size_t kHoursOfWeek = 168;
constexpr time_t kMonday = 978912000;  // 8 January 2001, 0:00 UTC
constexpr time_t kHour = 3600;

// Local time is the zone's while it lives.
class Zone {
 public:
    explicit Zone(const char* zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~Zone() {
        unsetenv("TZ");
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
};

class TimeModels : public test_support::StoreTest {
 protected:
    int32_t InModel(const char* description) {
        return NXIsInTimeModel(MemoryStore::kDatabase, description);
    }

    pagersim::VirtualClock clock;
    CDB_TimeModels models{MemoryStore::kDatabase};
};

// Every hour but one is `others`.
std::string Hours(char others, size_t which, char that) {
    std::string hours(kHoursOfWeek, others);
    hours[which] = that;
    return hours;
}

TEST_F(TimeModels, HoldsTheFirstCharacterOfEachOfTheFirst169Columns) {
    std::string hours;
    for (size_t i = 0; i < kHoursOfWeek; ++i) {
        hours += static_cast<char>('0' + i % 10);
    }
    store.InsertTimeModel("office", hours);

    const auto model = Hold(models.FindTimeModel("office"));

    ASSERT_NE(nullptr, model);
    EXPECT_EQ(hours, std::string(model->cells, kHoursOfWeek));
    EXPECT_EQ('o', model->cells[168]) << "the description stands behind the hours";
    EXPECT_EQ('\0', model->cells[169]) << "never filled";
    const Lines expected = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_TMSetting)",
        "GetAllEntriesByCondition(AlarmFwd_TMSetting, description = \"office\") -> 1", "Free()",
        "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(TimeModels, UnknownModelIsNull) {
    EXPECT_EQ(nullptr, models.FindTimeModel("office"));

    const Lines expected = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_TMSetting)",
        "GetAllEntriesByCondition(AlarmFwd_TMSetting, description = \"office\") -> 0", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(TimeModels, FirstOfTwoRowsWins) {
    store.InsertTimeModel("office", std::string(kHoursOfWeek, '1'));
    store.InsertTimeModel("office", std::string(kHoursOfWeek, '0'));

    const auto model = Hold(models.FindTimeModel("office"));

    ASSERT_NE(nullptr, model);
    EXPECT_EQ(std::string(kHoursOfWeek, '1'), std::string(model->cells, kHoursOfWeek));
}

TEST_F(TimeModels, ACellCountsByItsFirstCharacter) {
    store.InsertTimeModel("odd", "");
    store.Update(kHoursTable, {"description", "odd"},
                 {{"Mo00", "1x"},
                  {"Mo01", ""},
                  {"Mo02", "0"},
                  {"Mo03", std::nullopt},
                  {"Mo04", "x1"},
                  {"Mo05", "1"}});

    const auto model = Hold(models.FindTimeModel("odd"));

    ASSERT_NE(nullptr, model);
    const bool expected[] = {true, false, false, false, false, true};
    for (int hour = 0; hour < 6; ++hour) {
        EXPECT_EQ(expected[hour], CDB_TimeModels::IsHourSet(model.get(), 0, hour)) << hour;
    }
}

TEST_F(TimeModels, HourOfADayIsDayTimes24PlusHour) {
    TimeModel model = {};
    model.cells[5 * 24 + 7] = '1';
    for (int day = 0; day < 7; ++day) {
        for (int hour = 0; hour < 24; ++hour) {
            EXPECT_EQ(day == 5 && hour == 7, CDB_TimeModels::IsHourSet(&model, day, hour));
        }
    }
}

TEST_F(TimeModels, EachHourOfTheWeekReadsItsOwnByte) {
    const Zone zone("UTC0");
    for (size_t i = 0; i < kHoursOfWeek; ++i) {
        store.InsertTimeModel("only " + std::to_string(i), Hours('0', i, '1'));
        store.InsertTimeModel("all but " + std::to_string(i), Hours('1', i, '0'));
    }
    for (size_t i = 0; i < kHoursOfWeek; ++i) {
        pagersim::VirtualClock::Set(kMonday + static_cast<time_t>(i) * kHour + 1800);
        EXPECT_EQ(0, InModel(("only " + std::to_string(i)).c_str())) << i;
        EXPECT_EQ(1, InModel(("all but " + std::to_string(i)).c_str())) << i;
    }
}

TEST_F(TimeModels, SundayHalfPastElevenAtNightLocalTimeReadsTheLastHour) {
    const Zone zone("EET-2");
    store.InsertTimeModel("last hour", Hours('0', 167, '1'));
    pagersim::VirtualClock::Set(kMonday + 7 * 24 * kHour - 2 * kHour - 1800);
    EXPECT_EQ(0, InModel("last hour"));
    pagersim::VirtualClock::Set(kMonday + 7 * 24 * kHour - 1800);  // already Monday there
    EXPECT_EQ(1, InModel("last hour"));
}

TEST_F(TimeModels, MondayTenPastMidnightLocalTimeReadsTheFirstHour) {
    const Zone zone("EET-2");
    store.InsertTimeModel("first hour", Hours('0', 0, '1'));
    pagersim::VirtualClock::Set(kMonday - 2 * kHour + 600);
    EXPECT_EQ(0, InModel("first hour"));
}

TEST_F(TimeModels, QuestionAboutAnUnknownModelIsMinus1) {
    EXPECT_EQ(-1, InModel("office"));
}

TEST_F(TimeModels, QuestionWithoutATableIsMinus1) {
    store.Fail(Call::kTableOpen);
    EXPECT_EQ(-1, InModel("office"));
}

TEST_F(TimeModels, NullArgumentsAreMinus1WithoutTouchingTheTables) {
    MemoryStore nameless("");  // what a null name could be taken for
    nameless.AddAllTables();
    nameless.InsertTimeModel("office", "1");
    store.InsertTimeModel("", "1");

    EXPECT_EQ(-1, NXIsInTimeModel(nullptr, "office"));
    EXPECT_EQ(-1, NXIsInTimeModel(MemoryStore::kDatabase, nullptr));
    EXPECT_EQ(-1, NXIsInTimeModel(nullptr, nullptr));

    EXPECT_EQ(Lines{}, store.Calls());
    EXPECT_EQ(Lines{}, nameless.Calls());
}

}  // namespace
