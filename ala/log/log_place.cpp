#include "ala/driver/log_place.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "ala/base/record.h"
#include "ala/log/open_log.h"

using namespace qvledger;

std::int64_t qvledger::nextRecordOffset(ALA_acctLogHandle_t log) {
    return log->bytes.position();
}

void qvledger::continueAt(ALA_acctLogHandle_t log, std::int64_t offset) {
    log->bytes.moveTo(offset);
}

// Like FNV-1a, but with words instead of bytes, which is faster.
static void add(const std::uint8_t *bytes, std::size_t size, std::uint64_t *checksum) {
    constexpr std::uint64_t kPrime = 0x100000001b3;
    for (std::size_t at = 0; at < size; at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + at, std::min(sizeof word, size - at));
        *checksum = (*checksum ^ word) * kPrime;
        *checksum ^= *checksum >> 29; // so that the highest bits of a word change all bits
    }
}

bool qvledger::addToChecksum(ALA_acctLogHandle_t log, std::int64_t begin, std::int64_t end,
                             std::uint64_t *checksum) {
    std::array<std::uint8_t, 16 * 1024> piece; // whole words
    for (std::int64_t at = begin; at < end;) {
        const auto size = static_cast<unsigned>(std::min<std::int64_t>(piece.size(), end - at));
        if (OS_ReadAt(log->fd, at, piece.data(), size) != static_cast<int>(size))
            return false;
        add(piece.data(), size, checksum);
        at += size;
    }
    return true;
}

void qvledger::addToChecksum(ALA_record_t jobRecord, std::uint64_t *checksum) {
    add(jobRecord->bytes, jobRecord->size, checksum);
}

std::int64_t qvledger::attributesSize(ALA_record_t jobRecord) {
    return static_cast<std::int64_t>(jobRecord->size);
}
