// The process-wide locks, and the one way in which they are taken.
#ifndef ZOR_RUN_LOCKS_H
#define ZOR_RUN_LOCKS_H

#include <pthread.h>

#include "anchors.h"

namespace zor {

extern pthread_mutex_t InitLock;     // creation and end of run units, choice of the main program
extern pthread_mutex_t EntryLock;    // IPCB.ent and Runcom.nest
extern pthread_mutex_t PlleLock;     // program list lookup and insertion
extern pthread_mutex_t StdFileLock;  // opening the standard files
extern pthread_mutex_t ExternalLock; // tables of EXTERNAL data

// Takes a lock; contention is told on stderr ahead of the wait. A lock that fails stops the
// process.
void takeLock(pthread_mutex_t &lock);
void giveLock(pthread_mutex_t &lock);

// Inside the transaction monitor one thread at a time is in COBOL, and no lock is taken.
inline bool locksAreUsed() {
    const Proccom *process = proccom();
    return process == nullptr || process->kots == 0;
}

// Holds a lock for a scope, except inside the transaction monitor.
class ScopedLock {
public:
    explicit ScopedLock(pthread_mutex_t &lock) : lock_(locksAreUsed() ? &lock : nullptr) {
        if (lock_ != nullptr) {
            takeLock(*lock_);
        }
    }
    ~ScopedLock() {
        if (lock_ != nullptr) {
            giveLock(*lock_);
        }
    }
    ScopedLock(const ScopedLock &) = delete;
    ScopedLock &operator=(const ScopedLock &) = delete;

private:
    pthread_mutex_t *lock_;
};

} // namespace zor

#endif
