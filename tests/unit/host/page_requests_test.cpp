// What an operator asks of a page.
#include "host/pages/page_requests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/page_owner.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ARequest : public ServiceTest {
 protected:
    ARequest() {
        AddAlarm("7", "2");
        AddDelivery("7", 0, "duty");
    }
    void Ask(const std::string& to, const std::string& note) {
        AskForPage(connection, {0, {"7", "ops", "duty"}, to, note});
    }
    void CarryOutAll() {
        for (const PageRequest& request : OpenRequests(connection)) {
            CarryOut(connection, request);
        }
    }
};

TEST_F(ARequest, WaitsUntilItIsCarriedOut) {
    Ask("south", "nearer");
    const std::vector<PageRequest> requests = OpenRequests(connection);
    ASSERT_EQ(1U, requests.size());
    EXPECT_EQ("7", requests[0].page.alarm);
    EXPECT_EQ("ops", requests[0].page.group);
    EXPECT_EQ("duty", requests[0].page.pager);
    EXPECT_EQ("south", requests[0].to);
    EXPECT_EQ("nearer", requests[0].note);
    CarryOutAll();
    EXPECT_THAT(OpenRequests(connection), IsEmpty());
    EXPECT_EQ("south", LineOf(connection, {"7", "ops", "duty"}));
}

TEST_F(ARequest, TakesThePlaceOfTheOneBefore) {
    Ask("south", "nearer");
    Ask("", "the pump is off");
    CarryOutAll();
    EXPECT_EQ("3", StateOf("7"));
    EXPECT_THAT(Rows("change || ': ' || note FROM Host_History"),
                ElementsAre("cancelled: the pump is off"));
}

TEST_F(ARequest, IsGoneWhereThePageHasEndedMeanwhile) {
    Ask("", "the pump is off");
    AcknowledgeAlarm(connection, 7, kNow);
    Execute("UPDATE Host_Deliveries SET answer = 2");
    CarryOutAll();
    EXPECT_THAT(OpenRequests(connection), IsEmpty());
    EXPECT_THAT(Rows("change FROM Host_History"), IsEmpty());
}

}  // namespace
}  // namespace host
