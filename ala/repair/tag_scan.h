// Where bytes could be an attribute's tag.
#pragma once

#include <cstdint>
#include <limits>

#include "ala/repair/log_bytes.h"

namespace qvledger {

// Cheap, at the speed of memory: what it looks for is a count of values below 2^24, and an object identifier
// that begins with a digit from 0 to 2, a dot and a digit.
class TagScan {
public:
    explicit TagScan(LogBytes &givenBytes) : bytes(givenBytes) {}

    // The first position from there on where a tag could begin, or -1.  It may give up beyond until.
    std::int64_t next(std::int64_t from, std::int64_t until = std::numeric_limits<std::int64_t>::max());

private:
    static constexpr std::size_t kBlock = 64;

    std::int64_t inBlock(std::int64_t from) const;

    LogBytes &bytes;
    std::int64_t block = -1; // the one looked at last
    std::uint64_t marks = 0; // a bit for each place in it where a tag could begin
};

} // namespace qvledger
