#include "ala/repair/log_bytes.h"

#include <cerrno>

#include "platform/os.h"

using namespace qvledger;

constexpr std::size_t kStretch = std::size_t{128} << 10; // stays in the processor's cache
constexpr std::size_t kProbe = std::size_t{32} << 10;    // where the last one ends
constexpr std::size_t kFarProbe = std::size_t{4} << 10;
constexpr std::int64_t kCostOfFarProbe = 16 << 10;

bool LogBytes::load(Window &window, std::int64_t position, std::size_t wanted) {
    window.start = position;
    window.bytes.resize(wanted);
    const int got = OS_ReadAt(fd, position, window.bytes.data(), static_cast<unsigned>(wanted));
    if (got == static_cast<int>(wanted))
        return true;
    failure = got < 0 ? errno : 0;
    hasFailed = true;
    window.bytes.clear();
    return false;
}

const std::uint8_t *LogBytes::elsewhere(std::int64_t position, std::size_t wanted) {
    if (hasFailed || position < 0 || position > fileSize ||
        wanted > static_cast<std::uint64_t>(fileSize - position))
        return nullptr;
    const std::int64_t behind = probe.start + static_cast<std::int64_t>(probe.bytes.size());
    const bool isNear = position >= probe.start && position - behind < std::int64_t{kProbe};
    const std::size_t ahead = isNear ? kProbe : kFarProbe;
    const auto left = static_cast<std::size_t>(fileSize - position);
    const std::size_t size = std::max(wanted, std::min(ahead, left));
    pay(static_cast<std::int64_t>(size) + (isNear ? 0 : kCostOfFarProbe));
    return load(probe, position, size) ? probe.bytes.data() : nullptr;
}

std::span<const std::uint8_t> LogBytes::nextStretch(std::int64_t position) {
    if (hasFailed || position >= fileSize)
        return {};
    const auto left = static_cast<std::size_t>(fileSize - position);
    if (scan.holds(position, left))
        return scan.behind(position);
    return load(scan, position, std::min(kStretch, left)) ? std::span<const std::uint8_t>(scan.bytes)
                                                          : std::span<const std::uint8_t>();
}

void LogBytes::passedOver(std::int64_t position) {
    if (position <= reached)
        return;
    credit = std::min(kMost, credit + position - reached);
    reached = position;
}
