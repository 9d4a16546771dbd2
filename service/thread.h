// THR_: mutexes and once-only initialisation.
#pragma once

#include <cstddef>
#include <cstdint>

// A mutex word; zero is "not initialised".  It counts its users: THR_InitMutex on a live one adds a user, and
// the THR_TermMutex of the last user ends it.
struct THR_mutex_t {
    std::int32_t users;
    alignas(std::max_align_t) unsigned char mutex[64]; // room for one of the system's
};

extern "C" {

// All give 0, or non-zero on failure; locking or ending a word that is not initialised is one.
std::int32_t THR_InitMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_LockMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_UnlockMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_TermMutex(THR_mutex_t *inoutp_mutex);

// Runs the function if the control word, 0 at first, says that it has not run in this process; other callers
// wait until it has.  The function must not call THR_Once.
std::int32_t THR_Once(std::int32_t *inoutp_control, void (*in_function)());

} // extern "C"

namespace qvledger {

// Has a function called at the end of each thread that entered.  Unlike the registration of a thread_local
// destructor, which ends the program when memory runs out, entering can fail.
class ThreadsEnd {
public:
    explicit ThreadsEnd(void (*function)(void *));
    ~ThreadsEnd();
    ThreadsEnd(const ThreadsEnd &) = delete;
    ThreadsEnd &operator=(const ThreadsEnd &) = delete;

    // argument: what the function gets; not null.
    bool enter(const void *argument);

private:
    std::uint32_t key_ = 0; // the system's number for it
    bool made_;
};

} // namespace qvledger
