// Waiting for an engine. Tested by tests/unit/host/cli_test_page_test.cpp.
#include "host/cli/running_engine.h"

#include <poll.h>

#include <optional>

#include "host/cli/program.h"
#include "host/process/database_locks.h"

namespace host {

TestPageResult AwaitAnswer(const std::string& database, Lease& lease, int64_t asked,
                           const std::function<void()>& meanwhile) {
    constexpr int kBetweenLooksMs = 200;
    LockFile lock = NodeLock(database);
    std::optional<TestPageResult> answer;
    do {
        poll(nullptr, 0, kBetweenLooksMs);
        meanwhile();
        answer = TestPageAnswer(lease.Database(), asked);
    } while (!answer && lock.IsTaken());
    if (!answer) {
        answer = TestPageAnswer(lease.Database(), asked);
    }
    ForgetTestPage(lease.Database(), asked);
    if (!answer) {
        throw Failure(kCannot, "the engine that was running ended before it had done it");
    }
    return *answer;
}

}  // namespace host
