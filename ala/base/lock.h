// The facility's mutexes, and a guard that locks one for a block.
#pragma once

#include "service/thread.h"

namespace qvledger {

// Locks the mutex if it can; see isLocked().
class Lock {
public:
    explicit Lock(THR_mutex_t &mutex) : mutex_(mutex), locked_(THR_LockMutex(&mutex_) == 0) {}
    ~Lock() { static_cast<void>(release()); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
    bool isLocked() const { return locked_; }
    // False if the mutex is locked but cannot be unlocked.
    bool release() { return !locked_ || (locked_ = false, THR_UnlockMutex(&mutex_) == 0); }

private:
    THR_mutex_t &mutex_;
    bool locked_;
};

// timeLock guards time conversion, localeLock the formatting of times.  No thread locks both at once.
extern THR_mutex_t timeLock;
extern THR_mutex_t localeLock;

} // namespace qvledger

// Initialises both mutexes, or adds a user to them, at every registration.
void ALA__InitMutex();
