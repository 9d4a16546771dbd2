// An open log that is being checked or saved.
#pragma once

#include <cstdint>

#include "ala/driver/check.h"
#include "ala/log/open_log.h"
#include "ala/salvage/resync.h"

namespace qvledger {

struct CheckedLog {
    logParams log = {}; // argument of the operations that read records; fd is -1 until the file is open
    std::int64_t size = 0;
    std::int64_t headerEnd = 0;
    std::uint32_t created = 0;
    std::uint32_t accessEntries = 0;
};

inline FoundNext foundNext(const FoundRecord &record) {
    return record.inStep ? FoundNext::InStep : FoundNext::OutOfStep;
}

} // namespace qvledger
