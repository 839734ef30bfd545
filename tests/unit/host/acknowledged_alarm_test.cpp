// What the database does by itself: an acknowledged alarm stays so.
#include <gtest/gtest.h>

#include "tests/unit/host/service_test.h"

namespace host {
namespace {

class AnAcknowledgedAlarm : public ServiceTest {
 protected:
    AnAcknowledgedAlarm() {
        AddAlarm("7", "2");
        AddAlarm("8", "2");
        EXPECT_EQ(Acknowledged::kNow, AcknowledgeAlarm(connection, 7, kNow));
    }
};

TEST_F(AnAcknowledgedAlarm, IsInStateOneAtOnce) {
    EXPECT_EQ("1", StateOf("7"));
    EXPECT_EQ("2", StateOf("8"));
}

TEST_F(AnAcknowledgedAlarm, StaysThereWhateverIsWritten) {
    for (const int32_t state : {0, 1, 2, 3, 4, 22}) {
        EXPECT_EQ(1, Fold(7, state));  // the library counts its row all the same
        EXPECT_EQ("1", StateOf("7")) << state;
    }
    Execute("UPDATE AlarmLog SET pagerstate = ''");
    EXPECT_EQ("1", StateOf("7"));
    EXPECT_EQ("", StateOf("8"));
}

TEST_F(AnAcknowledgedAlarm, MayBeAcknowledgedByAnyProgram) {
    Execute("UPDATE AlarmLog SET alarmack = '1', acktime = '978948000' WHERE alarmlogID = '8'");
    EXPECT_EQ("1", StateOf("8"));
    Execute("UPDATE AlarmLog SET alarmack = '0' WHERE alarmlogID = '8'");
    Execute("UPDATE AlarmLog SET pagerstate = '2' WHERE alarmlogID = '8'");
    EXPECT_EQ("2", StateOf("8"));
}

}  // namespace
}  // namespace host
