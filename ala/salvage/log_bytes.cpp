#include "ala/salvage/log_bytes.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "ala/base/record.h"
#include "platform/os.h"

using namespace qvledger;

constexpr std::size_t kScan = std::size_t{128} << 10; // stays in the processor's cache
constexpr std::size_t kProbe = std::size_t{32} << 10; // where the last one ends
constexpr std::size_t kFarProbe = std::size_t{4} << 10;
constexpr std::int64_t kCostOfFarProbe = 16 << 10;
constexpr std::int64_t kCostOfDot = 64;

bool LogBytes::load(Window &window, std::int64_t position, std::size_t wanted) {
    window.start = position;
    window.bytes.resize(wanted);
    const int got = OS_ReadAt(fd_, position, window.bytes.data(), static_cast<unsigned>(wanted));
    if (got == static_cast<int>(wanted))
        return true;
    error_ = got < 0 ? errno : 0;
    hasFailed_ = true;
    window.bytes.clear();
    return false;
}

const std::uint8_t *LogBytes::elsewhere(std::int64_t position, std::size_t wanted) {
    if (hasFailed_ || position < 0 || position > size_ ||
        wanted > static_cast<std::uint64_t>(size_ - position))
        return nullptr;
    const std::int64_t end = probe_.start + static_cast<std::int64_t>(probe_.bytes.size());
    const bool isNear = position >= probe_.start && position - end < std::int64_t{kProbe};
    const std::size_t ahead = isNear ? kProbe : kFarProbe;
    const std::size_t size = std::max(wanted, std::min(ahead, static_cast<std::size_t>(size_ - position)));
    cost_ += static_cast<std::int64_t>(size) + (isNear ? 0 : kCostOfFarProbe);
    return load(probe_, position, size) ? probe_.bytes.data() : nullptr;
}

std::int64_t LogBytes::nextTag(std::int64_t from, std::int64_t until) {
    constexpr std::size_t kTopOfCount = std::endian::native == std::endian::little ? 3 : 0;
    constexpr std::size_t kDigit = offsetof(attrTag, decoid);
    constexpr std::size_t kDot = kDigit + 1;
    constexpr std::size_t kSecondArc = kDot + 1;
    until = std::min(until, size_);
    while (from < until) {
        const std::size_t wanted = std::min(kSecondArc + 1, static_cast<std::size_t>(size_ - from));
        if (wanted <= kSecondArc || hasFailed_)
            return until;
        if (!scan_.has(from, wanted) &&
            !load(scan_, from, std::min(kScan, static_cast<std::size_t>(size_ - from))))
            return until;
        const std::uint8_t *tag = scan_.from(from);
        const std::uint8_t *last = scan_.bytes.data() + scan_.bytes.size() - 1; // of a second arc
        const auto *dot = static_cast<const std::uint8_t *>(
            std::memchr(tag + kDot, '.', static_cast<std::size_t>(last - (tag + kDot))));
        const std::uint8_t *found = dot != nullptr ? dot - kDot : last - kDot;
        from += found - tag;
        if (dot == nullptr)
            continue;
        if (from >= until)
            return until;
        if (found[kTopOfCount] == 0 && found[kDigit] >= '0' && found[kDigit] <= '2' &&
            found[kSecondArc] >= '0' && found[kSecondArc] <= '9')
            return from;
        cost_ += kCostOfDot;
        ++from;
    }
    return until;
}
