// The process-wide locks, and the one way in which they are taken.
#ifndef ZOR_BASE_LOCKS_H
#define ZOR_BASE_LOCKS_H

#include <pthread.h>

#include "base/anchors.h"

namespace zor {

extern pthread_mutex_t InitLock;      // creation and end of run units, choice of the main program
extern pthread_mutex_t EntryLock;     // IPCB.ent and Runcom.nest
extern pthread_mutex_t PlleLock;      // program list lookup and insertion
extern pthread_mutex_t StdFileLock;   // opening the standard files
extern pthread_mutex_t ExternalLock;  // tables of EXTERNAL data
extern pthread_mutex_t CollatingLock; // tables of the locale's order
extern pthread_mutex_t EbcdicLock;    // tables of the EBCDIC order

// Storage is asked for on any thread, also where none of the others is taken; its holders are
// quick, and contention is not worth a word.
extern pthread_mutex_t TrackedLock; // lists of tracked storage

// Takes a lock; contention is told on stderr ahead of the wait. A lock that fails stops the
// process.
void takeLock(pthread_mutex_t &lock);
void giveLock(pthread_mutex_t &lock);

// Takes a lock unless another holder keeps it for a second, and tells nothing; false then.
bool takeLockWithinASecond(pthread_mutex_t &lock);

// Takes a lock for an ending, which must come through: contention is told, and after a second the
// ending goes on without it; false then.
bool takeLockToEnd(pthread_mutex_t &lock);

// True when any thread holds the lock, and when the calling thread does.
bool lockIsHeld(const pthread_mutex_t &lock);
bool holdsLock(const pthread_mutex_t &lock);

// Gives back every lock that the calling thread holds: control is about to leave the code that
// took them, by a long jump or for good.
void giveHeldLocks();

// Holds a lock for a scope, except inside the transaction monitor.
class ScopedLock {
public:
    explicit ScopedLock(pthread_mutex_t &lock) : lock_(isInMonitor() ? nullptr : &lock) {
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

// Holds a lock for a scope of an ending, which must come through: where the thread has the lock
// already, or another one keeps it for a second, the scope goes on without it.
class EndingLock {
public:
    explicit EndingLock(pthread_mutex_t &lock);
    ~EndingLock();
    EndingLock(const EndingLock &) = delete;
    EndingLock &operator=(const EndingLock &) = delete;

private:
    pthread_mutex_t *lock_;
};

} // namespace zor

#endif
