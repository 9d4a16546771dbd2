#include "ala/repair/tag_scan.h"

#include <array>
#include <bit>
#include <cstring>

#include "ala/base/record.h"

using namespace qvledger;

constexpr std::size_t kTopOfCount = std::endian::native == std::endian::little ? 3 : 0;
constexpr std::size_t kDigit = offsetof(attrTag, decoid);
constexpr std::size_t kDot = kDigit + 1;
constexpr std::size_t kSecondArc = kDot + 1;
constexpr std::size_t kSeen = kSecondArc + 1; // bytes of a tag that are looked at

static std::uint8_t isBelow(std::uint8_t byte, std::uint8_t first, std::uint8_t count) {
    return static_cast<std::uint8_t>(byte - first) < count ? 1 : 0;
}

static std::uint8_t couldBeTag(const std::uint8_t *at) {
    const std::uint8_t count = at[kTopOfCount] == 0 ? 1 : 0;
    const std::uint8_t dot = at[kDot] == '.' ? 1 : 0;
    return static_cast<std::uint8_t>(count & dot & isBelow(at[kDigit], '0', 3) &
                                     isBelow(at[kSecondArc], '0', 10));
}

// Most blocks without a tag have no dot where one would have it.
template <std::size_t Places>
static bool haveDot(const std::uint8_t *at) {
    std::uint8_t found = 0;
    for (std::size_t i = 0; i < Places; ++i)
        found = static_cast<std::uint8_t>(found | (at[i + kDot] == '.' ? 1 : 0));
    return found != 0;
}

// A bit for each of so many places.
template <std::size_t Places>
static std::uint64_t markTags(const std::uint8_t *at) {
    std::array<std::uint8_t, Places> could;
    for (std::size_t i = 0; i < Places; ++i) // without a branch, so that many are looked at at once
        could[i] = couldBeTag(at + i);
    std::uint64_t marks = 0;
    for (std::size_t i = 0; i < Places; i += sizeof(std::uint64_t)) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, could.data() + i, sizeof eight);
        if (eight == 0)
            continue;
        for (std::size_t j = i; j < i + sizeof eight; ++j)
            marks |= std::uint64_t{could[j]} << j;
    }
    return marks;
}

std::int64_t TagScan::inBlock(std::int64_t from) const {
    const std::int64_t into = from - block;
    if (block < 0 || into < 0 || into >= static_cast<std::int64_t>(kBlock) || marks >> into == 0)
        return -1;
    return from + std::countr_zero(marks >> into);
}

std::int64_t TagScan::next(std::int64_t from, std::int64_t until) {
    if (const std::int64_t tag = inBlock(from); tag >= 0)
        return tag;
    if (block >= 0 && from >= block && from < block + static_cast<std::int64_t>(kBlock))
        from = block + static_cast<std::int64_t>(kBlock);
    while (from < until) {
        const auto stretch = bytes.stretch(from);
        if (stretch.size() < kSeen)
            return -1;
        const std::size_t places = stretch.size() - kSeen + 1;
        std::size_t at = 0;
        for (; at + kBlock <= places; at += kBlock) {
            if (!haveDot<kBlock>(stretch.data() + at))
                continue;
            const std::uint64_t found = markTags<kBlock>(stretch.data() + at);
            if (found == 0)
                continue;
            block = from + static_cast<std::int64_t>(at);
            marks = found;
            return inBlock(block);
        }
        for (; at < places; ++at)
            if (couldBeTag(stretch.data() + at) != 0)
                return from + static_cast<std::int64_t>(at);
        from += static_cast<std::int64_t>(at);
        bytes.passedOver(from);
    }
    return -1;
}
