#include "service/thread.h"

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <type_traits>

#include <pthread.h>

using namespace qvledger;

// ---- Mutexes ----

// Guards the user counts of all mutex words.
static std::mutex countLock;

// The mutex in a word's storage.
static pthread_mutex_t *mutexOf(THR_mutex_t *word) {
    static_assert(sizeof(pthread_mutex_t) <= sizeof word->mutex);
    return reinterpret_cast<pthread_mutex_t *>(word->mutex);
}

static std::int32_t makeMutex(pthread_mutex_t *mutex) {
    // An error-checking mutex reports a second lock by the same thread instead of deadlocking.
    pthread_mutexattr_t kind;
    if (const int result = pthread_mutexattr_init(&kind); result != 0)
        return result;
    int result = pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_ERRORCHECK);
    if (result == 0)
        result = pthread_mutex_init(mutex, &kind);
    pthread_mutexattr_destroy(&kind);
    return result;
}

static bool isLive(THR_mutex_t *mutex) {
    return mutex != nullptr && std::atomic_ref(mutex->users).load(std::memory_order_acquire) > 0;
}

std::int32_t THR_InitMutex(THR_mutex_t *inoutp_mutex) {
    if (inoutp_mutex == nullptr)
        return EINVAL;
    const std::lock_guard guard(countLock);
    if (!isLive(inoutp_mutex)) {
        if (const std::int32_t result = makeMutex(mutexOf(inoutp_mutex)); result != 0)
            return result;
    }
    std::atomic_ref(inoutp_mutex->users).fetch_add(1, std::memory_order_release);
    return 0;
}

std::int32_t THR_LockMutex(THR_mutex_t *inoutp_mutex) {
    return isLive(inoutp_mutex) ? pthread_mutex_lock(mutexOf(inoutp_mutex)) : EINVAL;
}

std::int32_t THR_UnlockMutex(THR_mutex_t *inoutp_mutex) {
    return isLive(inoutp_mutex) ? pthread_mutex_unlock(mutexOf(inoutp_mutex)) : EINVAL;
}

std::int32_t THR_TermMutex(THR_mutex_t *inoutp_mutex) {
    const std::lock_guard guard(countLock);
    if (!isLive(inoutp_mutex))
        return EINVAL;
    if (inoutp_mutex->users == 1) {
        if (const int result = pthread_mutex_destroy(mutexOf(inoutp_mutex)); result != 0)
            return result;
    }
    std::atomic_ref(inoutp_mutex->users).fetch_sub(1, std::memory_order_release);
    return 0;
}

// ---- Once ----

// States of a control word.
constexpr std::int32_t kNotRun = 0;
constexpr std::int32_t kRunning = 1;
constexpr std::int32_t kDone = 2;

// All control words share this lock.  It is not locked while a function runs, so calls with different words
// do not wait for each other.
static std::mutex onceLock;
static std::condition_variable onceDone;

std::int32_t THR_Once(std::int32_t *inoutp_control, void (*in_function)()) {
    if (inoutp_control == nullptr || in_function == nullptr)
        return EINVAL;
    const std::atomic_ref<std::int32_t> control(*inoutp_control);
    if (control.load(std::memory_order_acquire) == kDone)
        return 0;

    std::unique_lock guard(onceLock);
    onceDone.wait(guard, [&] { return control.load(std::memory_order_relaxed) != kRunning; });
    if (control.load(std::memory_order_relaxed) != kNotRun)
        return 0;
    control.store(kRunning, std::memory_order_relaxed);
    guard.unlock();
    in_function();
    guard.lock();
    control.store(kDone, std::memory_order_release);
    onceDone.notify_all();
    return 0;
}

// ---- The end of a thread ----

static_assert(std::is_same_v<pthread_key_t, std::uint32_t>);

ThreadsEnd::ThreadsEnd(void (*function)(void *)) : made_(pthread_key_create(&key_, function) == 0) {}

ThreadsEnd::~ThreadsEnd() {
    if (made_)
        pthread_key_delete(key_);
}

bool ThreadsEnd::enter(const void *argument) {
    return made_ && pthread_setspecific(key_, argument) == 0;
}
