// The bytes of a log that may be damaged, by position, in bounded memory, and a count of what reading costs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qvledger {

class LogBytes {
public:
    // The first `size` bytes of an open file; what is appended later is not seen.
    LogBytes(int fd, std::int64_t size) : fd_(fd), size_(size) {}
    LogBytes(const LogBytes &) = delete;
    LogBytes &operator=(const LogBytes &) = delete;

    std::int64_t size() const { return size_; }

    // The bytes at a position, valid until the next call of a member.  Null where they reach past the end.
    const std::uint8_t *at(std::int64_t position, std::size_t wanted) {
        if (scan_.has(position, wanted))
            return scan_.from(position);
        return probe_.has(position, wanted) ? probe_.from(position) : elsewhere(position, wanted);
    }

    // The first position from `from` on, and before `until`, whose bytes look like a tag: a count of values
    // below 2^24, and an object identifier that begins with a digit from 0 to 2, a dot and a digit.  `until`
    // if there is none.
    std::int64_t nextTag(std::int64_t from, std::int64_t until);

    // Could not all bytes be read, or was the file cut meanwhile?
    bool failed() const { return error_.has_value(); }
    // The system's reason (errno); 0 if there are just fewer bytes.
    int error() const { return error_.value_or(0); }

    // What was looked at so far costs as much as reading that many bytes in order.  Bytes that nextTag passes
    // are not counted.
    std::int64_t cost() const { return cost_; }
    void addCost(std::int64_t cost) { cost_ += cost; }

private:
    struct Window {
        std::int64_t start = 0;
        std::vector<std::uint8_t> bytes;

        bool has(std::int64_t position, std::size_t wanted) const {
            const auto into = static_cast<std::uint64_t>(position - start); // huge if it lies before
            return into <= bytes.size() && wanted <= bytes.size() - into;
        }
        const std::uint8_t *from(std::int64_t position) const { return bytes.data() + (position - start); }
    };

    const std::uint8_t *elsewhere(std::int64_t position, std::size_t wanted);
    bool load(Window &window, std::int64_t position, std::size_t wanted);

    int fd_;
    std::int64_t size_;
    Window scan_;  // where tags are looked for
    Window probe_; // where attributes are read
    std::int64_t cost_ = 0;
    std::optional<int> error_;
};

} // namespace qvledger
