// The facility's mutexes, and a class that locks a mutex until the end of a block.
#pragma once

#include "service/thread.h"

namespace qvledger {

// Locks a mutex for the lifetime of the object.  isLocked() is false if locking failed.
class Lock {
public:
    explicit Lock(THR_mutex_t &mutex) : mutex_(mutex), locked_(THR_LockMutex(&mutex_) == 0) {}
    ~Lock() { static_cast<void>(release()); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
    bool isLocked() const { return locked_; }
    // Unlocks the mutex if this object has locked it.  False if unlocking fails.
    bool release() { return !locked_ || (locked_ = false, THR_UnlockMutex(&mutex_) == 0); }

private:
    THR_mutex_t &mutex_;
    bool locked_;
};

// timeLock guards the conversion of times, localeLock the formatting of times.  No thread locks both mutexes
// at once.
extern THR_mutex_t timeLock;
extern THR_mutex_t localeLock;

} // namespace qvledger

// Initialises both mutexes unless they are in use.  Every registration calls this function; the last
// ALA_Unregister destroys the mutexes.
void ALA__InitMutex();
