#include "ala/driver/log_place.h"

#include <algorithm>
#include <array>

#include "ala/log/open_log.h"

using namespace qvledger;

std::int64_t qvledger::nextRecordOffset(ALA_acctLogHandle_t log) {
    return log->bytes.position();
}

void qvledger::continueAt(ALA_acctLogHandle_t log, std::int64_t offset) {
    log->bytes.moveTo(offset);
}

// Adds a range of a file to an FNV-1a checksum.
static bool addRange(int fd, std::int64_t begin, std::int64_t end, std::uint64_t *checksum) {
    constexpr std::uint64_t kPrime = 0x100000001b3;
    std::array<std::uint8_t, 16 * 1024> piece;
    for (std::int64_t at = begin; at < end;) {
        const auto size = static_cast<unsigned>(std::min<std::int64_t>(piece.size(), end - at));
        if (OS_ReadAt(fd, at, piece.data(), size) != static_cast<int>(size))
            return false;
        for (unsigned i = 0; i < size; ++i)
            *checksum = (*checksum ^ piece[i]) * kPrime;
        at += size;
    }
    return true;
}

bool qvledger::checksumAt(ALA_acctLogHandle_t log, const LogPlace &place, std::uint64_t *checksum) {
    constexpr std::uint64_t kStart = 0xcbf29ce484222325;
    *checksum = kStart;
    return addRange(log->fd, 0, place.firstEnd, checksum) &&
           addRange(log->fd, place.lastBegin, place.end, checksum);
}
