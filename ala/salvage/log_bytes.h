// Reads a log that may be damaged, at any position and in bounded memory, and counts what reading costs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qvledger {

class LogBytes {
public:
    // Reads the first `size` bytes of an open file; bytes appended later are not seen.
    LogBytes(int fd, std::int64_t size) : fd_(fd), size_(size) {}
    LogBytes(const LogBytes &) = delete;
    LogBytes &operator=(const LogBytes &) = delete;

    std::int64_t size() const { return size_; }

    // The bytes at a position, valid until the next call of at() or nextTag().  Null if the bytes extend past
    // the end or cannot be read.
    const std::uint8_t *at(std::int64_t position, std::size_t wanted) {
        if (scan_.has(position, wanted))
            return scan_.from(position);
        return probe_.has(position, wanted) ? probe_.from(position) : elsewhere(position, wanted);
    }

    // The first position in [from, until) whose bytes look like a tag: a count of values below 2^24, and an
    // object identifier that begins with a digit from 0 to 2, a dot and a digit.  If no bytes look like a tag
    // or a read fails, returns `until`.
    std::int64_t nextTag(std::int64_t from, std::int64_t until);

    // True if some bytes could not be read, or the file was truncated meanwhile.  at() then reads no more
    // bytes.
    bool failed() const { return error_.has_value(); }
    // The errno; 0 if the file was truncated.
    int error() const { return error_.value_or(0); }

    // The cost of all reading so far.  The unit is the cost of reading one byte sequentially.  nextTag adds
    // to it only for each dot that belongs to no tag.
    std::int64_t cost() const { return cost_; }
    void addCost(std::int64_t cost) { cost_ += cost; }

private:
    struct Window {
        std::int64_t start = 0;
        std::vector<std::uint8_t> bytes;

        bool has(std::int64_t position, std::size_t wanted) const {
            const auto into = static_cast<std::uint64_t>(position - start); // huge if position < start
            return into <= bytes.size() && wanted <= bytes.size() - into;
        }
        const std::uint8_t *from(std::int64_t position) const { return bytes.data() + (position - start); }
    };

    const std::uint8_t *elsewhere(std::int64_t position, std::size_t wanted);
    bool load(Window &window, std::int64_t position, std::size_t wanted);

    int fd_;
    std::int64_t size_;
    Window scan_;  // bytes that nextTag loaded; at() uses them, too
    Window probe_; // bytes that at() loaded because scan_ lacks them
    std::int64_t cost_ = 0;
    std::optional<int> error_;
};

} // namespace qvledger
