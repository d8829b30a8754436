// CriticalSection.h - CQZCriticalSection, a thin wrapper over a pthread mutex.
//
// Guards reference counts of shared objects. Each instance owns its own mutex;
// a copy gets a fresh, unlocked mutex of its own.
#ifndef QZXML_FOUNDATION_CRITICALSECTION_H
#define QZXML_FOUNDATION_CRITICALSECTION_H

#include <pthread.h>

class CQZCriticalSection {
public:
    CQZCriticalSection() { pthread_mutex_init(&m_mutex, nullptr); }
    // A copy never shares or copies the lock state.
    CQZCriticalSection(const CQZCriticalSection&) { pthread_mutex_init(&m_mutex, nullptr); }
    CQZCriticalSection& operator=(const CQZCriticalSection&) { return *this; }
    virtual ~CQZCriticalSection() { pthread_mutex_destroy(&m_mutex); }

    void Enter() { pthread_mutex_lock(&m_mutex); }
    void Leave() { pthread_mutex_unlock(&m_mutex); }

private:
    pthread_mutex_t m_mutex;
};

#endif
