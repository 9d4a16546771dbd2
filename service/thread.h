// THR_: mutexes and once-only initialisation.
#pragma once

#include <cstddef>
#include <cstdint>

// A mutex word; zero means "not initialised".  The word counts its users: THR_InitMutex on an initialised
// word adds a user, and the last user's THR_TermMutex destroys the mutex.
struct THR_mutex_t {
    std::int32_t users;
    alignas(std::max_align_t) unsigned char mutex[64]; // storage for the system's mutex
};

extern "C" {

// All return 0, or non-zero on failure.  Locking, unlocking or terminating a word that is not initialised
// fails.
std::int32_t THR_InitMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_LockMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_UnlockMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_TermMutex(THR_mutex_t *inoutp_mutex);

// Runs the function at the first call with a control word.  The word must be 0 before that call.  Concurrent
// calls wait until the function has run.  Returns 0, or non-zero for a null argument.  The function must
// not call THR_Once with the same control word.
std::int32_t THR_Once(std::int32_t *inoutp_control, void (*in_function)());

} // extern "C"

namespace qvledger {

// Calls a function at the end of each thread that called enter(), but not when the process ends.  When memory
// runs out, enter() fails; registering the destructor of a thread_local object would end the program instead.
class ThreadsEnd {
public:
    explicit ThreadsEnd(void (*function)(void *));
    ~ThreadsEnd();
    ThreadsEnd(const ThreadsEnd &) = delete;
    ThreadsEnd &operator=(const ThreadsEnd &) = delete;

    // Requests a call of the function with this argument at the end of this thread, instead of an earlier
    // argument.  Returns false on failure.  REQUIRES: the argument is not null.
    bool enter(const void *argument);

private:
    std::uint32_t key_ = 0; // the thread-specific key
    bool made_;
};

} // namespace qvledger
