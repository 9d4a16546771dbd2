// How long the log waits for what takes its entries: the system's log, or the reader of a pipe.
#pragma once

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <thread>

namespace qvledger {

// A reader that is busy for a moment is waited for, so that a burst of entries is not lost on it; one that
// takes nothing must not hold the program up.  So a wait is short, little is waited in all, and after a wait
// in vain there is no other one until an entry was taken.
//
// Threads may share it: at worst one of them waits once more than another one would have.
class LogPatience {
public:
    static constexpr std::int64_t kLongestWait = 20'000; // microseconds, in one go and within a second

    // Entries were refused just now: another one is not worth a try, for a second after a wait in vain, and
    // for a few milliseconds when it reads, though too slowly for all.
    bool isOver() const {
        const std::int64_t length = pause.load(std::memory_order_relaxed);
        return length != 0 && now() - refusedAt.load(std::memory_order_relaxed) < length;
    }

    // Hands an entry over by tryOnce(), which does not wait, and is true when it was taken, and false with
    // errno otherwise: EAGAIN or EINTR when it may be taken a moment later.
    template <class Try>
    bool attempt(Try tryOnce) {
        if (tryOnce())
            return taken();
        const std::int64_t start = now(), longest = waitFrom(start);
        std::int64_t spent = 0;
        bool isTaken = false;
        while (!isTaken && isMomentary(errno) && spent < longest) {
            // Steps grow from what a reader needs that only had to be woken.
            const std::int64_t step = std::min(spent + kFirstStep, kLongestStep);
            std::this_thread::sleep_for(std::chrono::microseconds(step));
            isTaken = tryOnce();
            spent = now() - start;
        }
        const bool isInVain = !isMomentary(errno) || spent >= kLongestWait;
        waited.fetch_add(spent, std::memory_order_relaxed);
        return isTaken ? taken() : refused(isInVain);
    }

    // As if nothing had been refused yet, nor waited.  The wait that comes may be a longer one.
    void renew(std::int64_t longest = kLongestWait) {
        pause.store(0, std::memory_order_relaxed);
        waitedSince.store(now(), std::memory_order_relaxed);
        waited.store(kLongestWait - longest, std::memory_order_relaxed);
    }

private:
    static constexpr std::int64_t kSecond = 1'000'000;
    static constexpr std::int64_t kMoment = 5'000;
    static constexpr std::int64_t kFirstStep = 50;
    static constexpr std::int64_t kLongestStep = 1'000;

    static std::int64_t now() {
        const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::microseconds>(sinceStart).count();
    }
    static bool isMomentary(int reason) { return reason == EAGAIN || reason == EINTR; }
    // How long may be waited now.
    std::int64_t waitFrom(std::int64_t time) {
        if (time - waitedSince.load(std::memory_order_relaxed) >= kSecond) {
            waitedSince.store(time, std::memory_order_relaxed);
            waited.store(0, std::memory_order_relaxed);
        }
        const bool wasInVain = pause.load(std::memory_order_relaxed) == kSecond;
        return wasInVain ? 0 : kLongestWait - waited.load(std::memory_order_relaxed);
    }
    bool taken() {
        pause.store(0, std::memory_order_relaxed);
        return true;
    }
    bool refused(bool isInVain) {
        refusedAt.store(now(), std::memory_order_relaxed);
        if (pause.load(std::memory_order_relaxed) != kSecond) // which only an entry that is taken ends
            pause.store(isInVain ? kSecond : kMoment, std::memory_order_relaxed);
        return false;
    }

    std::atomic<std::int64_t> refusedAt = 0;
    std::atomic<std::int64_t> pause = 0;       // from refusedAt; none since an entry was taken
    std::atomic<std::int64_t> waitedSince = 0; // the second of which `waited` tells
    std::atomic<std::int64_t> waited = 0;
};

} // namespace qvledger
