// The facility's locks, and one held for the length of a block.
#pragma once

#include "service/thread.h"

namespace qvledger {

// Held if it could be taken.
class Lock {
public:
    explicit Lock(THR_mutex_t &mutex) : mutex_(mutex), locked_(THR_LockMutex(&mutex_) == 0) {}
    ~Lock() { static_cast<void>(release()); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
    bool isLocked() const { return locked_; }
    bool release() { return !locked_ || (locked_ = false, THR_UnlockMutex(&mutex_) == 0); }

private:
    THR_mutex_t &mutex_;
    bool locked_;
};

// Guards of the time conversion and of the making of a time's text; never held together.
extern THR_mutex_t timeLock;
extern THR_mutex_t localeLock;

} // namespace qvledger

// Makes both, at every registration.
void ALA__InitMutex();
