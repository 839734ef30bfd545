// Start and end of the library's thread.
// Tested by tests/unit/engine/worker_thread_test.cpp.
#include "engine/worker_thread.h"

#include <new>
#include <utility>

#include "linux/win_system.h"

namespace {

constexpr int kWithoutLimit = -1;

}  // namespace

bool WorkerThread::Start(Body body) {
    Join(kWithoutLimit);
    std::unique_ptr<Run> run(new (std::nothrow) Run);
    if (run == nullptr || !run->stop.IsOpen() || !run->ended.IsOpen()) {
        return false;
    }
    m_run = std::move(run);
    // 0 = started.
    if (_beginthread(body, 0, nullptr) != 0) {
        m_run.reset();
        return false;
    }
    m_run->thread = win_thread_id;
    return true;
}

bool WorkerThread::Stop(int timeoutMs) {
    if (!m_run) {
        return true;
    }
    m_run->stopRequested = true;
    m_run->stop.Raise();
    return Join(timeoutMs);
}

// The wait comes before the join, which knows no limit.
bool WorkerThread::Join(int timeoutMs) {
    if (!m_run) {
        return true;
    }
    if (!m_run->ended.Wait(timeoutMs)) {
        return false;
    }
    pthread_join(m_run->thread, nullptr);
    m_run.reset();
    return true;
}

bool WorkerThread::StopRequested() const {
    return m_run->stopRequested;
}

void WorkerThread::Pause(int timeoutMs) {
    m_run->stop.Wait(timeoutMs);
}

void WorkerThread::AnnounceEnd() {
    m_run->ended.Raise();
}
