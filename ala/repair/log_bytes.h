// The bytes of a log that may be damaged, by their position, in bounded memory; and what looking at them may
// cost.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qvledger {

class LogBytes {
public:
    // Of the first size bytes of an open file; what is appended later does not show.
    LogBytes(int givenFd, std::int64_t size) : fd(givenFd), fileSize(size) {}
    // The same bytes for another search, from there on and with its own credit.
    LogBytes again(std::int64_t begin, std::int64_t givenCredit) const {
        return LogBytes(fd, fileSize, begin, givenCredit);
    }
    LogBytes(const LogBytes &) = delete;
    LogBytes &operator=(const LogBytes &) = delete;

    std::int64_t size() const { return fileSize; }

    // The bytes at a position, good until the next call of a member.  Null where they reach beyond the end.
    const std::uint8_t *at(std::int64_t position, std::size_t wanted) {
        if (scan.holds(position, wanted))
            return scan.from(position);
        return probe.holds(position, wanted) ? probe.from(position) : elsewhere(position, wanted);
    }

    // A long stretch of bytes from a position on, for one who goes through them in order; good until the next
    // call of this member.  Empty at the end.
    std::span<const std::uint8_t> stretch(std::int64_t position) {
        if (scan.holds(position, kShortStretch))
            return scan.behind(position);
        return nextStretch(position);
    }

    // Could not all be read, or was the file cut meanwhile?
    bool failed() const { return hasFailed; }
    // The system's reason; 0 when there are just fewer bytes.
    int error() const { return failure; }

    // ---- Cost ----
    // What is looked at in vain is paid for, so that no bytes, however made, cost more than their number. The
    // measure is a byte that is passed over, which earns one; there is credit to begin with, which random
    // damage does not use up.

    // False when there is no credit left.  On trust it never is.
    bool pay(std::int64_t cost) {
        if (isTrusted) {
            debt += cost;
            return true;
        }
        credit -= cost;
        if (credit <= 0 && !isSpent) {
            isSpent = true;
            enough = std::min(2 * enough, kMostEnough);
        }
        return credit > 0;
    }
    // Until settle is called nothing is paid, whatever it costs: for bytes where a record is expected.
    void trust() {
        isTrusted = true;
        debt = 0;
    }
    // What it has cost, to be paid by one who has found nothing.
    std::int64_t settle() {
        isTrusted = false;
        return debt;
    }
    // Once the credit was used up, only when there is enough for a few records again, which may be longer
    // than was thought the last time.
    bool hasCredit() {
        isSpent = isSpent && credit < enough;
        return !isSpent;
    }
    // Searched up to there, and nothing found.
    void passedOver(std::int64_t position);
    // A record of that size was found: what it cost was not in vain.
    void found(std::int64_t recordSize) {
        credit = std::min(kMost, credit + kOfFound * recordSize);
        enough = kEnough;
    }

private:
    static constexpr std::size_t kShortStretch = 4096; // too short for what begins in it
    static constexpr std::int64_t kMost = 256 << 20;
    static constexpr std::int64_t kEnough = 32 << 10;
    static constexpr std::int64_t kMostEnough = 512 << 10;
    static constexpr std::int64_t kOfFound = 64;

    struct Window {
        std::int64_t start = 0;
        std::vector<std::uint8_t> bytes;

        bool holds(std::int64_t position, std::size_t wanted) const {
            return position >= start && static_cast<std::uint64_t>(position - start) + wanted <= bytes.size();
        }
        const std::uint8_t *from(std::int64_t position) const { return bytes.data() + (position - start); }
        std::span<const std::uint8_t> behind(std::int64_t position) const {
            return std::span(bytes).subspan(static_cast<std::size_t>(position - start));
        }
    };

    LogBytes(int givenFd, std::int64_t size, std::int64_t begin, std::int64_t givenCredit)
        : fd(givenFd), fileSize(size), reached(begin), credit(givenCredit) {}

    const std::uint8_t *elsewhere(std::int64_t position, std::size_t wanted);
    std::span<const std::uint8_t> nextStretch(std::int64_t position);
    bool load(Window &window, std::int64_t position, std::size_t wanted);

    int fd;
    std::int64_t fileSize;
    Window probe;
    Window scan;
    std::int64_t reached = 0;
    std::int64_t credit = kMost;
    std::int64_t enough = kEnough;
    std::int64_t debt = 0;
    bool isTrusted = false;
    bool isSpent = false;
    bool hasFailed = false;
    int failure = 0;
};

} // namespace qvledger
