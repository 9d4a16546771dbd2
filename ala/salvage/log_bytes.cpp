#include "ala/salvage/log_bytes.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "ala/base/record.h"
#include "platform/os.h"

using namespace qvledger;

constexpr std::size_t kScan = std::size_t{128} << 10; // bytes; they fit into the processor's cache
constexpr std::size_t kProbe = std::size_t{16} << 10;
constexpr std::int64_t kCostOfProbe = 8 << 10; // added to the cost of the bytes read
constexpr std::int64_t kCostOfDot = 64;

bool LogBytes::load(Window &window, std::int64_t position, std::size_t wanted) {
    window.start = position;
    window.bytes.resize(wanted);
    const int got = OS_ReadAt(fd_, position, window.bytes.data(), static_cast<unsigned>(wanted));
    if (got == static_cast<int>(wanted))
        return true;
    error_ = got < 0 ? errno : 0;
    window.bytes.clear();
    return false;
}

const std::uint8_t *LogBytes::elsewhere(std::int64_t position, std::size_t wanted) {
    if (failed() || position < 0 || position > size_ || wanted > static_cast<std::uint64_t>(size_ - position))
        return nullptr;
    const std::size_t size = std::max(wanted, std::min(kProbe, static_cast<std::size_t>(size_ - position)));
    cost_ += static_cast<std::int64_t>(size) + kCostOfProbe;
    return load(probe_, position, size) ? probe_.bytes.data() : nullptr;
}

std::int64_t LogBytes::nextTag(std::int64_t from, std::int64_t until) {
    constexpr std::size_t kTopOfCount = std::endian::native == std::endian::little ? 3 : 0;
    constexpr std::size_t kDigit = offsetof(attrTag, decoid);
    constexpr std::size_t kDot = kDigit + 1;
    constexpr std::size_t kSecondArc = kDot + 1;
    const std::int64_t end = std::min(until, size_ - static_cast<std::int64_t>(kSecondArc));
    while (from < end && (scan_.has(from, kSecondArc + 1) ||
                          load(scan_, from, std::min(kScan, static_cast<std::size_t>(size_ - from))))) {
        const std::uint8_t *tag = scan_.from(from);
        const auto tags =
            static_cast<std::size_t>(scan_.bytes.data() + scan_.bytes.size() - tag) - kSecondArc;
        const auto *dot = static_cast<const std::uint8_t *>(std::memchr(tag + kDot, '.', tags));
        const std::uint8_t *found = dot != nullptr ? dot - kDot : tag + tags;
        from += found - tag;
        if (dot == nullptr || from >= end)
            continue;
        if (found[kTopOfCount] == 0 && found[kDigit] >= '0' && found[kDigit] <= '2' &&
            found[kSecondArc] >= '0' && found[kSecondArc] <= '9')
            return from;
        cost_ += kCostOfDot;
        ++from;
    }
    return until;
}
