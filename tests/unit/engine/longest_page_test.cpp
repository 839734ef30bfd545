// Tests of engine/longest_page.h.
#include "engine/longest_page.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "modem/COMHdl.h"

namespace {

// Sets the waits for one test.
class LongestPage : public ::testing::Test {
 protected:
    LongestPage() {
        CCOMHdl::MDialTimeOut = 120000;
        CCOMHdl::MTAPReadyTimeOut = 30000;
        CCOMHdl::MUCPReadyTimeOut = 30000;
        CCOMHdl::MPagerReadyTimeOut = 30000;
        CCOMHdl::MUCPWaitForHandShake = 13000;
        CCOMHdl::MNTTWaitForAnswer = 20000;
    }
    ~LongestPage() override {
        CCOMHdl::MDialTimeOut = before_[0];
        CCOMHdl::MTAPReadyTimeOut = before_[1];
        CCOMHdl::MUCPReadyTimeOut = before_[2];
        CCOMHdl::MPagerReadyTimeOut = before_[3];
        CCOMHdl::MUCPWaitForHandShake = before_[4];
        CCOMHdl::MNTTWaitForAnswer = before_[5];
    }

    // Opening, initialising, hanging up, and the margin.
    static constexpr int kFixed = 62000 + 13000 + 10000 + 60000;

 private:
    const DWORD before_[6] = {CCOMHdl::MDialTimeOut,         CCOMHdl::MTAPReadyTimeOut,
                              CCOMHdl::MUCPReadyTimeOut,     CCOMHdl::MPagerReadyTimeOut,
                              CCOMHdl::MUCPWaitForHandShake, CCOMHdl::MNTTWaitForAnswer};
};

TEST_F(LongestPage, IsATAPPageThatFailsAtItsLastWait) {
    EXPECT_EQ(kFixed + 120000 + 180000, LongestPageMs());
}

TEST_F(LongestPage, FollowsTheLongestDialogue) {
    CCOMHdl::MUCPReadyTimeOut = 400000;
    EXPECT_EQ(kFixed + 120000 + 413000, LongestPageMs());
    CCOMHdl::MPagerReadyTimeOut = 200000;
    EXPECT_EQ(kFixed + 120000 + 600000, LongestPageMs());
    CCOMHdl::MNTTWaitForAnswer = 500000;
    EXPECT_EQ(kFixed + 120000 + 622000, LongestPageMs());
}

// The system ends a service by force when it takes longer than its unit says.
TEST_F(LongestPage, IsOverBeforeTheServiceIsEndedByForce) {
    const std::string key = "TimeoutStopSec=";
    std::ifstream unit(SERVICE_UNIT);
    std::string line;
    while (std::getline(unit, line) && line.rfind(key, 0) != 0) {
    }
    size_t digits = 0;
    const int minutes = std::stoi(line.substr(key.size()), &digits);
    ASSERT_EQ("min", line.substr(key.size() + digits));
    EXPECT_LT(LongestPageMs(), minutes * 60 * 1000);
}

}  // namespace
