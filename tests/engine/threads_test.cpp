// Tests of the engine under several service threads at once, beside its worker. The thread
// sanitizer, the address check and the leak check say most of it.
#include <atomic>
#include <thread>

#include "engine/pager_fwd.h"
#include "linux/win_system.h"
#include "tests/engine/engine_test.h"

namespace {

using ::testing::IsEmpty;

class Threads : public EngineTest {
 protected:
    Threads() {
        AddPager({"anna", kAlphanumeric, 1, 5});
        AddPager({"bert", kAlphanumeric, 0, 45});
        AddPager({"sms", kSms1, 1, 5});
        for (int alarm = 1; alarm <= kAlarmCount; ++alarm) {
            AddAlarm(alarm);
        }
    }

    // Runs the body in so many threads, each with its number from 0 on.
    static void InThreads(int count, const std::function<void(int)>& body) {
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i) {
            threads.emplace_back(body, i);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    // Acknowledges everything, and waits until the worker has seen it.
    void Drain() {
        for (int alarm = 1; alarm <= kAlarmCount; ++alarm) {
            SetAlarmState(alarm, 1);
        }
        UntilWorkerEnds();
    }

    static constexpr int kAlarmCount = 24;
};

TEST_F(Threads, FirstAlarmsOfSeveralThreadsMakeOneEngine) {
    InThreads(4, [this](int i) { EXPECT_EQ(1, Forward(i + 1, {"sms"})); });
    EXPECT_EQ(4U, Rows().size());
    EXPECT_EQ(1, CountInTrace("CPagerHdl::CPagerHdl: alarms\n"));
    UntilWorkerEnds();
    EXPECT_EQ(1, CountInTrace("Start Check4DialThread\n"));
    EXPECT_EQ(4U, Pages().size());
}

TEST_F(Threads, ForwardingAcknowledgingAndAskingAtOnce) {
    Start();
    InThreads(4, [this](int i) {
        for (int round = 0; round < kAlarmCount; ++round) {
            const int alarm = (round * 5 + i * 7) % kAlarmCount + 1;
            switch ((round + i) % 4) {
                case 0:
                    Forward(alarm, {"anna", "sms", "bert"});
                    break;
                case 1:
                    CPagerHdl::AckPagingAlarm(alarm);
                    break;
                case 2:
                    EXPECT_NE(1, CPagerHdl::GetPagingState(alarm));
                    EXPECT_EQ(1, CPagerHdl::GetServerState(4711));
                    EXPECT_EQ(0, NXIsInTimeModel(database, "always"));
                    break;
                case 3:
                    Forward(alarm, {"bert"});
                    Wait(7s);
                    break;
            }
        }
    });
    Drain();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    for (int alarm = 1; alarm <= kAlarmCount; ++alarm) {
        while (CPagerHdl::GetPagingState(alarm) != 0) {
        }
    }
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
}

TEST_F(Threads, AcknowledgingAllWhileOthersForward) {
    Start();
    InThreads(3, [this](int i) {
        for (int round = 0; round < 8; ++round) {
            if (i == 0) {
                Wait(13s);
                CPagerHdl::AckAllPagingAlarms();
            } else {
                Forward(round * 2 + i, {"anna", "sms"});
                Wait(9s);
            }
        }
    });
    Drain();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
}

TEST_F(Threads, TestPagesBesideTheWorker) {
    Start();
    Forward(1, {"sms", "anna"});
    InThreads(2, [this](int i) {
        if (i == 0) {
            EXPECT_EQ(0, Test({"test", kSms1}));
            EXPECT_EQ(0, Test({"test", kSms1}));
        } else {
            Wait(5s);
            EXPECT_EQ(1, Forward(2, {"sms"}));
        }
    });
    Drain();
}

// Pages queued in the very instant in which the worker looks at the queue for the last time. Either
// it sees them, or a new worker is started; none is left behind.
TEST_F(Threads, NoPageIsLeftBehindAtTheWorkersEnd) {
    Start();
    for (int alarm = 1; alarm <= kAlarmCount; ++alarm) {
        SetAlarmState(alarm, 1);  // a pass drops them and takes no time
    }
    for (int round = 0; round < 200; ++round) {
        Forward(1, {"sms"});
        // The worker is at the end of its pause when these threads are at the end of theirs.
        InThreads(2, [this](int i) {
            Wait(60s);
            Forward(i + 2, {"sms"});
        });
        UntilWorkerEnds();
        ASSERT_THAT(EntriesIn(m_pPagingQ), IsEmpty()) << "in round " << round;
    }
}

// Many starts at once, of which one may win. The last lines of a worker may come behind the first
// of the next, but no two are at work.
TEST_F(Threads, ThereIsNeverASecondWorker) {
    Start();
    for (int round = 0; round < 50; ++round) {
        InThreads(4, [this](int i) { Forward(i + 1, {"sms"}); });
        UntilWorkerEnds();
    }
    Stop();
    const std::vector<std::string> trace = EngineTrace();
    int working = 0;
    for (const std::string& entry : trace) {
        working += entry == "Loop Check4DialThread\n" ? 1 : 0;
        ASSERT_LE(working, 1);
        working -= entry == "Check4DialThread: sleep\n" ? 1 : 0;
    }
    EXPECT_EQ(0, working);
    EXPECT_EQ(CountInTrace("Start Check4DialThread\n"), CountInTrace("End Check4DialThread\n"));
}

}  // namespace
