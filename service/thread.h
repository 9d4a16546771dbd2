// THR_: mutexes and once-only initialisation.
#pragma once

#include <cstddef>
#include <cstdint>

// A mutex word; zero is "not initialised".  It counts its users: THR_InitMutex on an initialised word adds a
// user, and the last user's THR_TermMutex destroys the mutex.
struct THR_mutex_t {
    std::int32_t users;
    alignas(std::max_align_t) unsigned char mutex[64]; // storage for the system's mutex
};

extern "C" {

// All return 0, or non-zero on failure; it is a failure to lock, unlock or terminate a word that is not
// initialised.
std::int32_t THR_InitMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_LockMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_UnlockMutex(THR_mutex_t *inoutp_mutex);
std::int32_t THR_TermMutex(THR_mutex_t *inoutp_mutex);

// Runs the function once per control word, which is 0 at first; other callers wait until it has run.  0, or
// non-zero for a null argument.  The function must not call THR_Once.
std::int32_t THR_Once(std::int32_t *inoutp_control, void (*in_function)());

} // extern "C"

namespace qvledger {

// Calls a function at the end of each thread that entered.  Registering a thread_local destructor would end
// the program when memory runs out; enter() only fails.
class ThreadsEnd {
public:
    explicit ThreadsEnd(void (*function)(void *));
    ~ThreadsEnd();
    ThreadsEnd(const ThreadsEnd &) = delete;
    ThreadsEnd &operator=(const ThreadsEnd &) = delete;

    // Has the function called with the argument, which must not be null, when this thread ends.  False on
    // failure.
    bool enter(const void *argument);

private:
    std::uint32_t key_ = 0; // the thread-specific key
    bool made_;
};

} // namespace qvledger
