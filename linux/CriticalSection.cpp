// The re-entrant lock. Tested by tests/unit/linux/critical_section_test.cpp.
#include "linux/CriticalSection.h"

#include <cerrno>

CCriticalSection::CCriticalSection() {
    pthread_mutex_init(&m_mutex, nullptr);
}

CCriticalSection::~CCriticalSection() {
    pthread_mutex_destroy(&m_mutex);
}

void CCriticalSection::Lock() {
    const int busy = pthread_mutex_trylock(&m_mutex);
    if (busy == EBUSY && m_count > 0 && pthread_equal(m_owner, pthread_self())) {
        ++m_count;
        return;
    }
    if (busy != 0) {
        pthread_mutex_lock(&m_mutex);
    }
    Own();
}

void CCriticalSection::Unlock() {
    if (--m_count == 0) {
        pthread_mutex_unlock(&m_mutex);
    }
}

// Requires: mutex held. The order matters: see the members.
void CCriticalSection::Own() {
    m_owner = pthread_self();
    m_count = 1;
}
