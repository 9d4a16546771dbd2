// How long the log waits for what takes its entries: the system's log, or the reader of a pipe.
#pragma once

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>

namespace qvledger {

// A reader that is busy for a moment is waited for, so that a burst of entries is not lost on it; one that
// takes nothing must not hold the program up.  So a wait is short, little is waited in all, and after a wait
// in vain there is no other one until an entry was taken.
//
// Threads may share it: at worst one of them waits once more than another one would have.
class LogPatience {
public:
    static constexpr std::int64_t kLongestWait = 20'000; // microseconds, in one go and within a second

    // Entries were refused less than a second ago: another one is not worth a try.
    bool isOver() const {
        const std::int64_t refused = refusedAt.load(std::memory_order_relaxed);
        return refused != kNever && now() - refused < kSecond;
    }

    // Hands an entry over by tryOnce(wait), which is true when it was taken, and false with errno otherwise:
    // EAGAIN when a wait may help.  With wait it waits for kLongestWait at most.
    template <class Try>
    bool attempt(Try tryOnce) {
        if (tryOnce(false))
            return taken();
        if (errno != EAGAIN || refusedAt.load(std::memory_order_relaxed) != kNever)
            return refused();
        const std::int64_t start = now();
        if (waitedIn.exchange(start / kSecond, std::memory_order_relaxed) != start / kSecond)
            waited.store(0, std::memory_order_relaxed);
        if (waited.load(std::memory_order_relaxed) >= kLongestWait)
            return false; // it reads, though too slowly for all: the next entry may find room
        const bool isTaken = tryOnce(true);
        waited.fetch_add(now() - start, std::memory_order_relaxed);
        return isTaken ? taken() : refused();
    }

    // As if nothing had been refused yet.
    void renew() { refusedAt.store(kNever, std::memory_order_relaxed); }

private:
    static constexpr std::int64_t kSecond = 1'000'000;
    static constexpr std::int64_t kNever = INT64_MIN;

    static std::int64_t now() {
        const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::microseconds>(sinceStart).count();
    }
    bool taken() {
        renew();
        return true;
    }
    bool refused() {
        refusedAt.store(now(), std::memory_order_relaxed);
        return false;
    }

    std::atomic<std::int64_t> refusedAt = kNever;
    std::atomic<std::int64_t> waitedIn = 0; // the second of which `waited` tells
    std::atomic<std::int64_t> waited = 0;
};

} // namespace qvledger
