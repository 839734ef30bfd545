// Start and end of the library's thread.
// Tested by tests/unit/engine/worker_thread_test.cpp.
#include "engine/worker_thread.h"

#include <new>
#include <utility>

#include "linux/win_system.h"

namespace {

using ThreadGuard = std::lock_guard<std::mutex>;

}  // namespace

void WorkerThread::Prepare() {
    auto signals = std::make_unique<Signals>();
    if (!signals->AreOpen()) {
        throw std::bad_alloc();
    }
    m_signals = std::move(signals);
}

void WorkerThread::Release() {
    m_signals.reset();
}

// The lock is held over the start: a thread can't announce its end before it is known.
bool WorkerThread::Start(Body body) {
    LetGo();
    m_signals->ended.Lower();
    const ThreadGuard guard(m_lock);
    // 0 = started.
    if (_beginthread(body, 0, nullptr) != 0) {
        return false;
    }
    m_thread = win_thread_id.load();
    return true;
}

// The wait comes before the join, which knows no limit.
bool WorkerThread::Stop(int timeoutMs) {
    if (!HasThread()) {
        return true;
    }
    m_signals->stopRequested = true;
    m_signals->stop.Raise();
    if (!m_signals->ended.Wait(timeoutMs)) {
        return false;
    }
    pthread_join(*TakeThread(), nullptr);
    return true;
}

void WorkerThread::LetGo() {
    if (const std::optional<pthread_t> thread = TakeThread()) {
        pthread_detach(*thread);
    }
}

bool WorkerThread::StopRequested() const {
    return m_signals->stopRequested;
}

void WorkerThread::Pause(int timeoutMs) {
    m_signals->stop.Wait(timeoutMs);
}

// The end of one that was let go of is nobody's concern any more.
void WorkerThread::AnnounceEnd() {
    const ThreadGuard guard(m_lock);
    if (m_thread && pthread_equal(*m_thread, pthread_self()) != 0) {
        m_signals->ended.Raise();
    }
}

bool WorkerThread::HasThread() {
    const ThreadGuard guard(m_lock);
    return m_thread.has_value();
}

std::optional<pthread_t> WorkerThread::TakeThread() {
    const ThreadGuard guard(m_lock);
    return std::exchange(m_thread, std::nullopt);
}
